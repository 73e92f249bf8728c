#pragma once

#include <QStringList>

class ProjectDocument;

// Files dropped on the window or the browser: images become textures, mesh
// files models. Several images dropped on the surfaces make one surface
// through the PBR import instead. Other files are skipped with a warning.
namespace DropImport {

bool isImageFile(const QString& path);
bool isMeshFile(const QString& path);
// True when at least one file could be imported.
bool canImport(const QStringList& paths);
void importFiles(ProjectDocument& document, const QStringList& paths, bool ontoSurfaces);

} // namespace DropImport
