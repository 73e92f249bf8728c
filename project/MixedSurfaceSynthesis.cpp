#include "MixedSurfaceSynthesis.h"

#include "CacheFiles.h"
#include "ImageFile.h"
#include "LogMessage.h"
#include "MixedLayer.h"
#include "RunProgress.h"
#include "SurfaceSynthesis.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace Velmor {

namespace {

using Progress = ImageSynthesizer::Progress;

int teamSize()
{
    return std::max(1, std::min(16, omp_get_max_threads()));
}

bool usable(const Image* image)
{
    return image && !image->isEmpty() && image->channels() > 0;
}

bool usable(const std::unique_ptr<LayeredImage>& result)
{
    if (!result || result->layerCount() == 0)
        return false;
    for (const Image* layer : result->layers)
        if (!usable(layer))
            return false;
    return true;
}

// Phase gating: an unfrozen result is always remade; a frozen one is kept
// when there is one. True when the phase has to run.
bool phaseRuns(std::unique_ptr<LayeredImage>& result, bool frozen)
{
    if (frozen && usable(result))
        return false;
    result.reset();
    return true;
}

// Every phase result must fit a cache file, so the same bounds apply here.
bool validTargetSize(uint32_t width, uint32_t height)
{
    return width >= 1 && height >= 1 && width <= maxCacheImageSide && height <= maxCacheImageSide
        && uint64_t(width) * height <= maxCacheImagePixels;
}

std::unique_ptr<Image> filledImage(const Image& source, uint32_t width, uint32_t height, bool tile, SampleMode mode)
{
    auto image = std::make_unique<Image>(width, height, source.format);
    image->copyDescriptorsFrom(source);
    fillFromSource(source, *image, tile, mode);
    return image;
}

// A clone of `original` that synthesizes `input` at the mixed surface's size
// with the mixed surface's seam and guidance settings; null when cancelled
// or refused.
std::unique_ptr<LayeredImage> synthesizePart(SurfaceSynthesisContext& context, const ImageSynthesizer& original,
                                             LayeredImage& input, const ProjectData::MixedSurfaceData& mixed,
                                             uint32_t width, uint32_t height, const Progress& progress)
{
    std::unique_ptr<ImageSynthesizer> part(original.clone());
    if (!part)
        return nullptr;
    part->params->targetWidth = width;
    part->params->targetHeight = height;
    if (!runSurfacePasses(context, *part, input, passSettingsOf(mixed), progress))
        return nullptr;
    std::unique_ptr<LayeredImage> output(part->detachTarget());
    return usable(output) ? std::move(output) : nullptr;
}

void logMissing(const ProjectData::MixedSurfaceData& mixed, const QString& what)
{
    logMessage(Error, QStringLiteral("Cannot synthesize mixed surface '%1': %2.")
                          .arg(QString::fromStdString(mixed.name), what));
}

// Phase 1. False when the run has to end.
bool makeMask(SurfaceSynthesisContext& context, ProjectData::MixedSurfaceData& mixed, uint32_t width,
              uint32_t height, const Progress& progress)
{
    if (!phaseRuns(context.maskResult, mixed.freezeMask))
        return true;
    if (mixed.maskTexture && !mixed.maskTexture->usable()) {
        logMissing(mixed, mixed.maskTexture->unusableReason());
        return false;
    }
    Image* mask = mixed.maskTexture ? &mixed.maskTexture->image : nullptr;
    if (!usable(mask)) {
        logMissing(mixed, "it has no mask image");
        return false;
    }
    if (!mixed.synthesizeMask) {
        logMessage(Info, "MixedSurface Phase 1/4: filling mask.");
        auto result = std::make_unique<LayeredImage>();
        result->setLayer("Mask", filledImage(*mask, width, height, mixed.tileMask,
                                             mixed.maskFilterMode == 1 ? Linear : Nearest)
                                     .release());
        context.maskResult = std::move(result);
        return !context.cancelRequested;
    }
    logMessage(Info, "MixedSurface Phase 1/4: mask synthesis.");
    BorrowedLayers input;
    input.image.setLayer("Mask", mask);
    context.maskResult = synthesizePart(context, *mixed.synthesizer(), input.image, mixed, width, height, progress);
    return context.maskResult != nullptr;
}

// Phases 2 and 3. False when the run has to end.
bool makeSide(SurfaceSynthesisContext& context, const ProjectData::MixedSurfaceData& mixed, bool white,
              uint32_t width, uint32_t height, const Progress& progress)
{
    std::unique_ptr<LayeredImage>& result = white ? context.whiteResult : context.blackResult;
    const ProjectData::SurfaceData* surface = white ? mixed.whiteSurface : mixed.blackSurface;
    // A cache written with the mask frozen too keeps only the first layer of
    // a frozen surface; merging that would silently drop the other layers.
    // A side that is not frozen is made again anyway, without a word.
    const bool frozen = white ? mixed.freezeWhiteSurface : mixed.freezeBlackSurface;
    if (frozen && result && surface && result->layerCount() < surface->layers.size()) {
        logMessage(Warning, QStringLiteral("The kept %1 surface of '%2' has %3 of its %4 layers; it is made again.")
                                .arg(QLatin1String(white ? "white" : "black"), QString::fromStdString(mixed.name))
                                .arg(result->layerCount())
                                .arg(surface->layers.size()));
        result.reset();
    }
    if (!phaseRuns(result, frozen))
        return true;
    if (context.cancelRequested)
        return false;
    if (!surface || surface->layers.empty()) {
        logMissing(mixed, white ? "the white surface is missing or has no layers"
                                : "the black surface is missing or has no layers");
        return false;
    }
    for (const ProjectData::SurfaceLayer& layer : surface->layers) {
        if (layer.texture && !layer.texture->usable()) {
            logMissing(mixed, layer.texture->unusableReason());
            return false;
        }
        if (!layer.texture || !usable(&layer.texture->image)) {
            logMissing(mixed, white ? "a layer of the white surface has no image"
                                    : "a layer of the black surface has no image");
            return false;
        }
    }

    if (!(white ? mixed.synthesizeWhiteSurface : mixed.synthesizeBlackSurface)) {
        logMessage(Info, white ? "MixedSurface Phase 2/4: filling white surface."
                               : "MixedSurface Phase 3/4: filling black surface.");
        const bool tile = white ? mixed.tileWhiteSurface : mixed.tileBlackSurface;
        const SampleMode mode = mixed.maskFilterMode == 1 ? Linear : Nearest;
        auto filled = std::make_unique<LayeredImage>();
        for (const ProjectData::SurfaceLayer& layer : surface->layers) {
            filled->setLayer(layer.name, filledImage(layer.texture->image, width, height, tile, mode).release());
            if (context.cancelRequested)
                return false;
        }
        result = std::move(filled);
        return true;
    }

    logMessage(Info, white ? "MixedSurface Phase 2/4: white surface synthesis."
                           : "MixedSurface Phase 3/4: black surface synthesis.");
    const ImageSynthesizer* own = surface->synthesizer();
    if (!own) {
        logMissing(mixed, white ? "the white surface has no synthesizer" : "the black surface has no synthesizer");
        return false;
    }
    BorrowedLayers input;
    if (!gatherSurfaceLayers(*surface, input.image))
        return false;
    result = synthesizePart(context, *own, input.image, mixed, width, height, progress);
    return result != nullptr;
}

// Reports merge progress from the calling thread as rows complete (the run's
// progress passes on only increases).
class MergeProgress
{
public:
    MergeProgress(const Progress& callback, uint64_t totalRows)
        : progress(callback)
        , total(std::max<uint64_t>(totalRows, 1))
    {
    }

    void rowsDone(uint64_t rows)
    {
        done += rows;
        if (progress)
            progress(int(done * 100 / total));
    }

private:
    const Progress& progress;
    uint64_t total;
    uint64_t done = 0;
};

// Merges one layer into `out` (target size) in bands of rows, checking for a
// cancel between bands. False when cancelled.
bool mergeLayer(const Image& white, const Image& black, const Image& mask, uint32_t maskChannel, Image& out,
                SurfaceSynthesisContext& context, MergeProgress& progress)
{
    const uint32_t height = out.height;
    const uint32_t band = std::max<uint32_t>(1, height / 50);
    for (uint32_t first = 0; first < height; first += band) {
        if (context.cancelRequested)
            return false;
        const uint32_t last = std::min<uint32_t>(first + band, height);
        mixLayerRows(white, black, mask, maskChannel, out, first, last);
        progress.rowsDone(last - first);
    }
    return true;
}

// Phase 4. The output takes the layer set of the result with fewer layers.
bool merge(SurfaceSynthesisContext& context, ProjectData::MixedSurfaceData& mixed, ImageSynthesizer& output,
           uint32_t width, uint32_t height, const Progress& progress)
{
    logMessage(Info, "MixedSurface Phase 4/4: merging surfaces.");
    const LayeredImage& white = *context.whiteResult;
    const LayeredImage& black = *context.blackResult;
    const Image& mask = *context.maskResult->layers[0];
    const uint32_t maskChannel = mixMaskChannel(mixed.maskChannel, mask);

    LayeredImage& fewer = white.layerCount() < black.layerCount() ? *context.whiteResult : *context.blackResult;
    output.setInputs(&fewer, int32_t(width), int32_t(height), nullptr, nullptr, nullptr);
    output.source = nullptr;
    if (!output.target || output.target->layerCount() != fewer.layerCount())
        return false;

    const size_t count = std::min(white.layerCount(), black.layerCount());
    MergeProgress mergeProgress(progress, uint64_t(count) * height);
    for (size_t i = 0; i < count; ++i) {
        const Image& W = *white.layers[i];
        const Image& B = *black.layers[i];
        Image*& out = output.target->layers[i];
        if (!out)
            out = new Image();
        prepareMixedLayer(W, B, width, height, *out);
        if (!mergeLayer(W, B, mask, maskChannel, *out, context, mergeProgress))
            return false;
    }
    logMessage(Success, "MixedSurface synthetize finished.");
    return true;
}

} // namespace

void fillFromSource(const Image& source, Image& target, bool tile, SampleMode mode)
{
    if (!usable(&source) || target.isEmpty() || source.format != target.format)
        return;
    const uint32_t c = target.channels();
    const int64_t rows = target.height;
    const float scaleX = float(source.width) / float(target.width);
    const float scaleY = float(source.height) / float(target.height);
#pragma omp parallel for num_threads(teamSize()) schedule(static)
    for (int64_t y = 0; y < rows; ++y) {
        float* row = target.data + uint64_t(target.width) * c * uint64_t(y);
        if (tile) {
            // Whole-pixel positions: the filter cannot change the value.
            const float* sourceRow = source.data + uint64_t(source.width) * c * (uint64_t(y) % source.height);
            for (uint32_t x = 0; x < target.width; ++x)
                std::memcpy(row + uint64_t(c) * x, sourceRow + uint64_t(c) * (x % source.width), c * sizeof(float));
            continue;
        }
        for (uint32_t x = 0; x < target.width; ++x) {
            Pixel out = Pixel::view(target.format, row + uint64_t(c) * x);
            source.sample(float(x) * scaleX, float(y) * scaleY, mode, out);
        }
    }
}

bool synthesizeMixedSurface(SurfaceSynthesisContext& context, ProjectData::MixedSurfaceData& mixed,
                            const Progress& progress)
{
    ImageSynthesizer* output = mixed.synthesizer();
    if (!output) {
        logMissing(mixed, "it has no synthesizer");
        return false;
    }
    const uint32_t width = output->params->targetWidth;
    const uint32_t height = output->params->targetHeight;
    if (!validTargetSize(width, height)) {
        logMessage(Error, "Cannot synthesize mixed surface '%s' at %u x %u: each side must be 1 to %u pixels and "
                          "the whole at most %llu pixels.",
                   mixed.name.c_str(), width, height, maxCacheImageSide, (unsigned long long)maxCacheImagePixels);
        return false;
    }

    // The phases share the bar by the layers they make; the merge is quick.
    const int whiteLayers = mixed.whiteSurface ? int(mixed.whiteSurface->layers.size()) : 0;
    const int blackLayers = mixed.blackSurface ? int(mixed.blackSurface->layers.size()) : 0;
    const int units = 2 + whiteLayers + blackLayers;
    const int maskEnd = 100 / units;
    const int whiteEnd = 100 * (1 + whiteLayers) / units;
    const int blackEnd = 100 * (1 + whiteLayers + blackLayers) / units;
    const RunProgress run(progress);
    if (!makeMask(context, mixed, width, height, run.stage(0, maskEnd)) || context.cancelRequested)
        return false;
    if (!makeSide(context, mixed, true, width, height, run.stage(maskEnd, whiteEnd)) || context.cancelRequested)
        return false;
    if (!makeSide(context, mixed, false, width, height, run.stage(whiteEnd, blackEnd)) || context.cancelRequested)
        return false;
    return merge(context, mixed, *output, width, height, run.stage(blackEnd, 100));
}

} // namespace Velmor
