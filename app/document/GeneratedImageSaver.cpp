#include "GeneratedImageSaver.h"

#include "Dialogs.h"
#include "ImageFile.h"
#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "LogMessage.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "RecordCommands.h"

#include <QUndoStack>

namespace GeneratedImageSaver {

namespace {

const char* const chooserTitle = "Save Generated Image";

// The chosen directory with "/" appended; empty when cancelled.
QString chooseDirectory(ProjectDocument& document, Dialogs& dialogs)
{
    const QString answer = dialogs.chooseDirectory(QString::fromLatin1(chooserTitle), document.directory());
    return answer.isEmpty() ? QString() : answer + QStringLiteral("/");
}

} // namespace

QString extensionFor(uint32_t fileType)
{
    static const char* const extensions[] = {".bmp", ".exr", ".jpg", ".png", ".tga", ".tif"};
    return fileType < 6 ? QString::fromLatin1(extensions[fileType]) : QString();
}

QString fileNameFor(const QString& directory, const ProjectData::SurfaceData& surface, const LayeredImage& output,
                    size_t index)
{
    const std::string& name = index < surface.layers.size() ? surface.layers[index].name : output.names[index];
    const Image* image = output.layers[index];
    return directory + QString::fromStdString(name) + extensionFor(image ? image->fileType : 0);
}

const LayeredImage* outputOf(const ProjectData::SurfaceData& surface)
{
    const Velmor::ImageSynthesizer* synthesizer = surface.synthesizer();
    const LayeredImage* output = synthesizer ? synthesizer->target : nullptr;
    return output && !output->layers.empty() ? output : nullptr;
}

bool saveImages(ProjectDocument& document, Dialogs& dialogs, const ProjectData::SurfaceData& surface)
{
    const LayeredImage* output = outputOf(surface);
    if (!output) {
        logMessage(Warning, QStringLiteral("Surface '%1' has no generated images to save.")
                                .arg(QString::fromStdString(surface.name)));
        return false;
    }
    logMessage(Info, QStringLiteral("Saving started."));
    const QString directory = chooseDirectory(document, dialogs);
    if (directory.isEmpty())
        return false;
    for (size_t i = 0; i < output->layers.size(); ++i)
        if (output->layers[i])
            saveImage(fileNameFor(directory, surface, *output, i), *output->layers[i]);
    logMessage(Success, QStringLiteral("Saving finished."));
    return true;
}

RecordRef saveImagesAsSurface(ProjectDocument& document, Dialogs& dialogs, const ProjectData::SurfaceData& surface)
{
    const LayeredImage* output = outputOf(surface);
    if (!output) {
        logMessage(Warning, QStringLiteral("Surface '%1' has no generated images to save.")
                                .arg(QString::fromStdString(surface.name)));
        return RecordRef();
    }
    if (document.isReadOnly())
        return RecordRef();
    ProjectData& store = document.store();
    QUndoStack* stack = document.undoStack();
    stack->beginMacro(QStringLiteral("Save Generated Images and Load as Surface"));

    ProjectData::SurfaceData* created = store.addSurface("NewSurface");
    document.push(new AddRecordCommand<ProjectData::SurfaceData>(&document, created, QStringLiteral("New Surface")));

    logMessage(Info, QStringLiteral("Saving started."));
    const QString directory = chooseDirectory(document, dialogs);
    if (!directory.isEmpty()) {
        std::vector<ProjectData::SurfaceLayer> layers;
        for (size_t i = 0; i < output->layers.size(); ++i) {
            const Image* image = output->layers[i];
            if (!image)
                continue;
            const QString path = fileNameFor(directory, surface, *output, i);
            // A failed write has been logged; the texture is made from the
            // path all the same and reports its own failed load.
            saveImage(path, *image);
            ProjectData::TextureData* texture = store.addTexture(path, "Texture");
            if (image->format == Normal)
                texture->image.toNormalMap(image->flipNormalX, image->flipNormalY, image->mappedNormalXY,
                                           image->mappedNormalZ);
            document.push(new AddRecordCommand(&document, texture, QStringLiteral("Load Generated Image")));

            ProjectData::SurfaceLayer layer;
            if (i < surface.layers.size()) {
                layer.name = surface.layers[i].name;
                layer.mode = surface.layers[i].mode;
            } else {
                layer.name = output->names[i];
            }
            layer.texture = texture;
            layers.push_back(layer);
        }
        ProjectEdits::setLayers(document, created, layers, QStringLiteral("Set Layers"));
    }
    stack->endMacro();
    logMessage(Success, QStringLiteral("Saving finished."));
    return RecordRef(created);
}

} // namespace GeneratedImageSaver
