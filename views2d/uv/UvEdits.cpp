#include "UvEdits.h"

#include "Image.h"
#include "ImageEditCommand.h"
#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ProjectDocument.h"
#include "UvSeamFixer.h"

#include <QCoreApplication>

#include <memory>

using Velmor::ProjectData;

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("UvEdits", text);
}

} // namespace

namespace UvEdits {

std::vector<Image*> generatedLayers(ProjectData::SurfaceData* surface)
{
    std::vector<Image*> layers;
    const Velmor::ImageSynthesizer* synthesizer = surface ? surface->synthesizer() : nullptr;
    if (!synthesizer || !synthesizer->targetReady || !synthesizer->target)
        return layers;
    for (Image* layer : synthesizer->target->layers)
        if (layer && !layer->isEmpty())
            layers.push_back(layer);
    return layers;
}

bool fixSeams(ProjectDocument& document, ProjectData::SurfaceData* surface, const std::vector<MeshVertex>& vertices)
{
    if (document.isReadOnly())
        return false;
    const std::vector<Image*> layers = generatedLayers(surface);
    std::vector<Image> before;
    before.reserve(layers.size());
    for (const Image* layer : layers)
        before.push_back(*layer);
    if (!fixUvSeams(vertices, layers))
        return false;

    // One step for all layers: the layer edits are children of one command.
    auto command = std::make_unique<QUndoCommand>(tr("Fix UV Seams"));
    for (size_t i = 0; i < layers.size(); ++i)
        new ImageEditCommand(&document, RecordRef(surface), layers[i], before[i], QString(), command.get());
    return document.push(command.release());
}

RecordRef ownerOf(ProjectData& store, const Image* image)
{
    if (image == nullptr)
        return RecordRef();
    if (image == &store.projectMask)
        return RecordRef::projectMask(store);
    for (const auto& map : store.directionMaps)
        if (&map->image == image)
            return RecordRef(map.get());
    return RecordRef();
}

bool recordImageEdit(ProjectDocument& document, Image* image, const Image& before, const QString& text)
{
    // An image of no record may be gone with its project: leave it alone.
    const RecordRef owner = ownerOf(document.store(), image);
    if (owner.isNull())
        return false;
    if (document.isReadOnly()) {
        *image = before;
        return false;
    }
    auto command = std::make_unique<ImageEditCommand>(&document, owner, image, before, text);
    if (command->isEmpty())
        return true;
    return document.push(command.release());
}

} // namespace UvEdits
