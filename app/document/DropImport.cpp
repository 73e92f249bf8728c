#include "DropImport.h"

#include "LogMessage.h"
#include "PbrImport.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"

#include <QFileInfo>
#include <QUndoStack>

namespace DropImport {

bool isImageFile(const QString& path)
{
    static const QStringList extensions = {"jpg", "jpeg", "bmp", "tga", "tif", "tiff", "png", "exr"};
    return extensions.contains(QFileInfo(path).suffix().toLower());
}

bool isMeshFile(const QString& path)
{
    static const QStringList extensions = {"obj", "3ds", "fbx"};
    return extensions.contains(QFileInfo(path).suffix().toLower());
}

bool canImport(const QStringList& paths)
{
    for (const QString& path : paths)
        if (isImageFile(path) || isMeshFile(path))
            return true;
    return false;
}

void importFiles(ProjectDocument& document, const QStringList& paths, bool ontoSurfaces)
{
    QStringList images, meshes;
    for (const QString& path : paths) {
        if (isImageFile(path))
            images << path;
        else if (isMeshFile(path))
            meshes << path;
        else
            logMessage(Warning, QStringLiteral("Not an image or mesh file, skipping: ") + path);
    }
    if ((images.isEmpty() && meshes.isEmpty()) || document.isReadOnly())
        return;
    document.undoStack()->beginMacro(QStringLiteral("Import Dropped Files"));
    if (ontoSurfaces && !images.isEmpty())
        PbrImport::importFiles(document, images);
    else
        ProjectEdits::importImages(document, images);
    ProjectEdits::importModels(document, meshes);
    document.undoStack()->endMacro();
}

} // namespace DropImport
