#pragma once

#include "MeshVertex.h"
#include "ProjectData.h"
#include "RecordRef.h"

#include <QString>

#include <vector>

class Image;
class ProjectDocument;

// The UV tools' changes to the project, each one undo step on the document.
// Nothing changes while the document is read-only (a run reads the store).
namespace UvEdits {

// The layers of the surface's generated output; empty before a run.
std::vector<Image*> generatedLayers(Velmor::ProjectData::SurfaceData* surface);

// "Fix UV Seams" on every generated layer of `surface` for the mesh.
bool fixSeams(ProjectDocument& document, Velmor::ProjectData::SurfaceData* surface,
              const std::vector<MeshVertex>& vertices);

// The record whose pixels `image` is: the project mask (the output mask) or
// a direction map; a null reference for any other image.
RecordRef ownerOf(Velmor::ProjectData& store, const Image* image);

// Turns a write into `image` (a direction map or the output mask, `before`
// its pixels from before) into one undo step. When the document refuses it
// (read-only) the old pixels come back; an image of no record of the store
// (perhaps of a project replaced since) is not touched.
bool recordImageEdit(ProjectDocument& document, Image* image, const Image& before, const QString& text);

} // namespace UvEdits
