#include "PbrImport.h"

#include "Dialogs.h"
#include "LogMessage.h"
#include "NormalMap.h"
#include "PbrPurpose.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "RecordCommands.h"

#include <QFileInfo>
#include <QUndoStack>

namespace PbrImport {

const char* const imageFilters =
    "JPEG Image(*.jpg, *.jpeg);; Windows BMP Image(*.bmp);; TarGA Image(*.tga);; TIFF Image(*.tif, *.tiff);; PNG "
    "Image(*.png);; EXR Image (*.exr);; All image files (*.jpg *.jpeg *.bmp *.tga *.tif *.tiff *.png *.exr)";
const char* const allImagesFilter = "All image files (*.jpg *.jpeg *.bmp *.tga *.tif *.tiff *.png *.exr)";

namespace {

using ProjectData = Velmor::ProjectData;

// Adds the files' textures and the surface's layers; runs inside the
// caller's undo macro.
void addLayers(ProjectDocument& document, ProjectData::SurfaceData* surface, const QStringList& paths)
{
    ProjectData::TextureData* chosen[pbrPurposeCount] = {};
    for (const QString& path : paths) {
        const int purpose = pbrPurposeOfFile(path);
        if (purpose < 0) {
            logMessage(Warning, QStringLiteral("Could not determine PBR purpose of image file, skipping."));
            continue;
        }
        ProjectData::TextureData* texture = document.store().addTexture(path, "Texture");
        if (purpose == pbrNormalPurpose && !convertToNormalLayer(texture->image))
            logMessage(Warning, QString::fromUtf8(normalLayerImportWarning));
        document.push(new AddRecordCommand(&document, texture, QStringLiteral("Import Image")));
        chosen[purpose] = texture;
    }
    std::vector<ProjectData::SurfaceLayer> layers;
    for (int purpose = 0; purpose < pbrPurposeCount; ++purpose) {
        if (!chosen[purpose])
            continue;
        ProjectData::SurfaceLayer layer;
        layer.name = pbrLayerName(purpose).toStdString();
        layer.texture = chosen[purpose];
        layer.mode = ProjectData::LayerMode(purpose);
        layers.push_back(layer);
    }
    if (!layers.empty())
        ProjectEdits::setLayers(document, surface, layers, QStringLiteral("Set Layers"));
}

ProjectData::SurfaceData* addSurface(ProjectDocument& document)
{
    ProjectData::SurfaceData* surface = document.store().addSurface("NewSurface");
    document.push(new AddRecordCommand<ProjectData::SurfaceData>(&document, surface, QStringLiteral("New Surface")));
    return surface;
}

} // namespace

RecordRef importWithChooser(ProjectDocument& document, Dialogs& dialogs, QString& directory)
{
    if (document.isReadOnly())
        return RecordRef();
    document.undoStack()->beginMacro(QStringLiteral("Import PBR Images"));
    ProjectData::SurfaceData* surface = addSurface(document);
    const QStringList paths = dialogs.chooseFiles(QStringLiteral("Import PBR Images"), directory,
                                                  QString::fromUtf8(imageFilters), QString::fromUtf8(allImagesFilter));
    if (!paths.isEmpty())
        directory = QFileInfo(paths.first()).absolutePath();
    addLayers(document, surface, paths);
    document.undoStack()->endMacro();
    return RecordRef(surface);
}

RecordRef importFiles(ProjectDocument& document, const QStringList& paths)
{
    if (document.isReadOnly())
        return RecordRef();
    document.undoStack()->beginMacro(QStringLiteral("Import PBR Images"));
    ProjectData::SurfaceData* surface = addSurface(document);
    addLayers(document, surface, paths);
    document.undoStack()->endMacro();
    return RecordRef(surface);
}

} // namespace PbrImport
