#include "UvEdits.h"

#include "Image.h"
#include "ImageEditCommand.h"
#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ProjectDocument.h"
#include "UvSeamFixer.h"
#include "UvSpaceRenderer.h"

#include <QCoreApplication>

#include <memory>

using Velmor::ProjectData;

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("UvEdits", text);
}

// Pushes the edit of `image` (copied before as `before`) when it changed any
// pixel.
bool pushEdit(ProjectDocument& document, const RecordRef& owner, Image* image, const Image& before,
              const QString& text)
{
    auto command = std::make_unique<ImageEditCommand>(&document, owner, image, before, text);
    if (command->isEmpty())
        return true;
    return document.push(command.release());
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

bool generateAutoDirection(ProjectDocument& document, UvSpaceRenderer& renderer, Mesh* mesh,
                           ProjectData::DirectionMapData* map, int autoMode)
{
    if (document.isReadOnly() || map == nullptr)
        return false;
    const Image before = map->image;
    if (!renderer.generateAutoDirection(mesh, &map->image, autoMode))
        return false;
    return pushEdit(document, RecordRef(map), &map->image, before, tr("Auto Generate Direction Map"));
}

bool loadOutputMaskFromUVIsland(ProjectDocument& document, UvSpaceRenderer& renderer, Mesh* mesh,
                                const Image* generated, int island, bool add)
{
    if (document.isReadOnly())
        return false;
    Image& mask = document.store().projectMask;
    const Image before = mask;
    if (!renderer.loadOutputMaskFromUVIsland(mesh, &mask, generated, island, add))
        return false;
    const QString text = island < 0 ? tr("Load Output Mask from ALL UV Island") : tr("Load Output Mask from UV Island");
    return pushEdit(document, RecordRef::projectMask(document.store()), &mask, before, text);
}

} // namespace UvEdits
