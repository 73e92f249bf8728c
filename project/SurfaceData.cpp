#include "ProjectData.h"

#include "ImageSynthesizer.h"
#include "MethodNames.h"
#include "LogMessage.h"
#include "MixedLayer.h"
#include "SurfaceSynthesisContext.h"
#include "SynthesizerFactory.h"

#include <climits>

namespace Velmor {

namespace {

const char* const synthesizerTypes[] = {Velmor::blendedMethodName, Velmor::cutoutMethodName};

} // namespace

ProjectData::SurfaceData::SurfaceData(ProjectData* owner, const std::string& surfaceName)
    : name(surfaceName)
    , synthesisContext(std::make_unique<SurfaceSynthesisContext>(this))
    , store(owner)
{
    for (const char* type : synthesizerTypes) {
        std::unique_ptr<ImageSynthesizer> synthesizer(createSynthesizer(type));
        if (synthesizer)
            synthesizers.push_back(std::move(synthesizer));
        else
            logMessage(Error, "Unknown synthesizer type: %s", type);
    }
}

ProjectData::SurfaceData::~SurfaceData() = default;

void ProjectData::SurfaceData::surfaceSize(int32_t& width, int32_t& height) const
{
    width = INT32_MAX;
    height = INT32_MAX;
    for (const SurfaceLayer& layer : layers) {
        if (!layer.texture)
            continue;
        width = std::min<int64_t>(width, layer.texture->image.width);
        height = std::min<int64_t>(height, layer.texture->image.height);
    }
}

ProjectData::SurfaceLayer& ProjectData::SurfaceData::addLayer()
{
    layers.emplace_back();
    return layers.back();
}

std::string ProjectData::SurfaceData::synthesizerMode() const
{
    const ImageSynthesizer* current = synthesizer();
    return current ? current->params->methodName() : std::string();
}

bool ProjectData::SurfaceData::selectSynthesizer(const std::string& typeName)
{
    for (size_t i = 0; i < synthesizers.size(); ++i) {
        if (synthesizers[i]->params->methodName() == typeName) {
            currentSynthesizerIndex = i;
            return true;
        }
    }
    return false;
}

ImageSynthesizer* ProjectData::SurfaceData::synthesizer() const
{
    return currentSynthesizerIndex < synthesizers.size() ? synthesizers[currentSynthesizerIndex].get() : nullptr;
}

ImageSynthesizer* ProjectData::SurfaceData::synthesizerOfType(const std::string& typeName) const
{
    for (const auto& synthesizer : synthesizers)
        if (synthesizer->params->methodName() == typeName)
            return synthesizer.get();
    return nullptr;
}

ProjectData::MixedSurfaceData::MixedSurfaceData(ProjectData* owner, const std::string& surfaceName)
    : SurfaceData(owner, surfaceName)
{
    // The mask texture of a mixed surface is its mix mask.
    masked = true;
}

void ProjectData::MixedSurfaceData::surfaceSize(int32_t& width, int32_t& height) const
{
    width = maskTexture ? int32_t(maskTexture->image.width) : 0;
    height = maskTexture ? int32_t(maskTexture->image.height) : 0;
}

void ProjectData::MixedSurfaceData::updateMixedLayers()
{
    layers.clear();
    generatedTextures.clear();
    if (!whiteSurface || !blackSurface)
        return;
    if (!maskTexture || maskTexture->image.isEmpty()) {
        logMessage(Warning, "MixedSurface: Mask image is invalid!");
        return;
    }
    if (whiteSurface->layers.size() != blackSurface->layers.size()) {
        logMessage(Warning, "MixedSurface: Number of layers of two surfaces does not match!");
        return;
    }

    const Image& mask = maskTexture->image;
    const uint32_t channel = mixMaskChannel(maskChannel, mask);
    for (size_t i = 0; i < whiteSurface->layers.size(); ++i) {
        const SurfaceLayer& whiteLayer = whiteSurface->layers[i];
        const SurfaceLayer& blackLayer = blackSurface->layers[i];
        auto texture = std::make_unique<TextureData>();
        texture->name = name + "_" + whiteLayer.name;
        // Mixed by the same rules as a synthesis run's merge; a layer with a
        // missing input stays a black placeholder of the mask's size.
        const Image* white = whiteLayer.texture ? &whiteLayer.texture->image : nullptr;
        const Image* black = blackLayer.texture ? &blackLayer.texture->image : nullptr;
        if (white && black && !white->isEmpty() && !black->isEmpty()) {
            prepareMixedLayer(*white, *black, mask.width, mask.height, texture->image);
            mixLayerRows(*white, *black, mask, channel, texture->image, 0, mask.height);
        } else {
            texture->image.allocate(mask.width, mask.height, RGB);
        }
        SurfaceLayer& layer = addLayer();
        layer.name = whiteLayer.name;
        layer.mode = whiteLayer.mode;
        layer.texture = texture.get();
        generatedTextures.push_back(std::move(texture));
    }
}

} // namespace Velmor
