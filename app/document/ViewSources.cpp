#include "ViewSources.h"

#include "ImageSynthesizer.h"
#include "LayeredImage.h"

using Velmor::ProjectData;

namespace ViewSources {

namespace {

const LayeredImage* outputOf(const ProjectData::SurfaceData* surface)
{
    const Velmor::ImageSynthesizer* synthesizer = surface ? surface->synthesizer() : nullptr;
    return synthesizer ? synthesizer->target : nullptr;
}

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

} // namespace

std::vector<InputChoice> inputChoices(ProjectData& store, const RecordRef& record)
{
    std::vector<InputChoice> choices;
    if (const ProjectData::SurfaceData* surface = record.surface()) {
        for (const ProjectData::SurfaceLayer& layer : surface->layers) {
            if (layer.texture)
                choices.push_back({QStringLiteral("%1 (%2)").arg(text(layer.name), text(layer.texture->name)),
                                   &layer.texture->image});
            else
                choices.push_back({QStringLiteral("%1 (no texture)").arg(text(layer.name)), nullptr});
        }
        if (surface->maskTexture)
            choices.push_back({QStringLiteral("Mask: %1").arg(text(surface->maskTexture->name)),
                               &surface->maskTexture->image});
        if (surface->directionMap)
            choices.push_back({QStringLiteral("Direction Map: %1").arg(text(surface->directionMap->name)),
                               &surface->directionMap->image});
        if (surface->scaleMap)
            choices.push_back({QStringLiteral("Scale Map: %1").arg(text(surface->scaleMap->name)),
                               &surface->scaleMap->image});
    } else if (const Image* image = record.image()) {
        choices.push_back({text(record.name()), image});
    }
    choices.push_back({QStringLiteral("Project Mask"), &store.projectMask});
    return choices;
}

std::vector<std::string> outputLayerNames(const ProjectData::SurfaceData* surface)
{
    const LayeredImage* output = outputOf(surface);
    if (!output)
        return {};
    std::vector<std::string> names;
    for (size_t i = 0; i < output->layerCount(); ++i)
        if (output->layers[i] && !output->layers[i]->isEmpty())
            names.push_back(output->names[i]);
    return names;
}

const Image* outputLayer(const ProjectData::SurfaceData* surface, const std::string& name)
{
    const LayeredImage* output = outputOf(surface);
    const Image* layer = output ? output->layer(name) : nullptr;
    return layer && !layer->isEmpty() ? layer : nullptr;
}

} // namespace ViewSources
