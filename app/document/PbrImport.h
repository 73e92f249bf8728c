#pragma once

#include "RecordRef.h"

#include <QStringList>

class Dialogs;
class ProjectDocument;

// Builds one surface from a set of PBR image files: each file's name tells
// its purpose (colour, normal, ...), each file becomes a texture, and the
// surface gets one layer per purpose in the fixed order color, normal,
// displacement, roughness, metalness, occlusion. Normal images are converted
// to normal maps. All of it is one undo step.
namespace PbrImport {

// The image chooser's filters and the one preselected.
extern const char* const imageFilters;
extern const char* const allImagesFilter;

// Creates the surface "NewSurface", then asks for the files ("Import PBR
// Images", starting in `directory`, which becomes the files' folder). A
// cancelled chooser leaves the surface without layers.
RecordRef importWithChooser(ProjectDocument& document, Dialogs& dialogs, QString& directory);
// The same with files already chosen (dropped on the window).
RecordRef importFiles(ProjectDocument& document, const QStringList& paths);

} // namespace PbrImport
