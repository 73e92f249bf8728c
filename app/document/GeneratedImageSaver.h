#pragma once

#include "ProjectData.h"
#include "RecordRef.h"

#include <QString>
#include <QStringList>

class Dialogs;
class LayeredImage;
class ProjectDocument;

// Writes the generated layers of a surface to image files, one per output
// layer, named after the surface's layers with the extension of the file
// type the layer's source came from. The second command also loads the
// written files back as a new surface, as one undo step.
namespace GeneratedImageSaver {

using ProjectData = Velmor::ProjectData;

// ".bmp", ".exr", ".jpg", ".png", ".tga", ".tif" for the file types 0 to 5;
// nothing for other values.
QString extensionFor(uint32_t fileType);
// The path of output image `index`: `directory` (ending in "/"), the name of
// the surface's layer `index` (the output's own name where the surface has
// fewer layers), the extension of the image's file type.
QString fileNameFor(const QString& directory, const ProjectData::SurfaceData& surface, const LayeredImage& output,
                    size_t index);

// The surface's current output, or null when there is none to save.
const LayeredImage* outputOf(const ProjectData::SurfaceData& surface);

// "Save Generated Images": asks for a directory and writes every output
// layer there. False when there is no output or the chooser was cancelled.
bool saveImages(ProjectDocument& document, Dialogs& dialogs, const ProjectData::SurfaceData& surface);
// "Save Generated Images and Load as Surface": a new surface "NewSurface",
// then the saved files as textures and its layers (name and mode of the
// source's layers; a Normal output is loaded as a Normal image with the same
// flags). A cancelled chooser leaves the new surface empty. Returns the new
// surface; null when the document is read-only or there is no output.
RecordRef saveImagesAsSurface(ProjectDocument& document, Dialogs& dialogs, const ProjectData::SurfaceData& surface);

} // namespace GeneratedImageSaver
