#include "ProjectData.h"

#include "ImageSynthesizer.h"
#include "MethodNames.h"
#include "LogMessage.h"
#include "SurfaceSynthesisContext.h"
#include "SynthesizerFactory.h"

#include <climits>

namespace Velmor {

namespace {

const char* const synthesizerTypes[] = {Velmor::blendedMethodName, Velmor::cutoutMethodName};

// Mixes `white` and `black` (each stretched over `out`) by the mask value:
// 1 shows white, 0 black. Both must have out's format.
void blendByMask(const Image& white, const Image& black, const Image& mask, uint32_t maskChannel, Image& out)
{
    Pixel w(out.format), b(out.format), mixed(out.format);
    const float wx = float(white.width) / float(out.width), wy = float(white.height) / float(out.height);
    const float bx = float(black.width) / float(out.width), by = float(black.height) / float(out.height);
    for (uint32_t y = 0; y < out.height; ++y) {
        for (uint32_t x = 0; x < out.width; ++x) {
            white.sample(float(x) * wx, float(y) * wy, Linear, w);
            black.sample(float(x) * bx, float(y) * by, Linear, b);
            Pixel::lerp(b, w, mask.pixelAt(int32_t(x), int32_t(y))[int(maskChannel)], mixed);
            Pixel target = out.pixelAt(int32_t(x), int32_t(y));
            target = mixed;
        }
    }
}

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
    const uint32_t channel = uint32_t(maskChannel) < mask.channels() ? uint32_t(maskChannel) : 0;
    for (size_t i = 0; i < whiteSurface->layers.size(); ++i) {
        const SurfaceLayer& whiteLayer = whiteSurface->layers[i];
        const SurfaceLayer& blackLayer = blackSurface->layers[i];
        auto texture = std::make_unique<TextureData>();
        texture->name = name + "_" + whiteLayer.name;
        // A layer whose inputs cannot be mixed pixel by pixel (missing or of
        // different formats) stays a black placeholder of the mask's size.
        const Image* white = whiteLayer.texture ? &whiteLayer.texture->image : nullptr;
        const Image* black = blackLayer.texture ? &blackLayer.texture->image : nullptr;
        if (white && black && !white->isEmpty() && !black->isEmpty() && white->format == black->format) {
            texture->image.allocate(mask.width, mask.height, white->format);
            texture->image.fileType = white->fileType;
            texture->image.sampleType = std::max(white->sampleType, black->sampleType);
            texture->image.flipNormalX = white->flipNormalX;
            texture->image.flipNormalY = white->flipNormalY;
            texture->image.mappedNormalXY = white->mappedNormalXY;
            texture->image.mappedNormalZ = white->mappedNormalZ;
            blendByMask(*white, *black, mask, channel, texture->image);
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
