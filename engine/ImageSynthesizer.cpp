#include "ImageSynthesizer.h"

#include "SynthesisLimits.h"

#include "LayeredImage.h"
#include "LogMessage.h"
#include "Patch.h"
#include "PatchSource.h"
#include "PixelDestGenerator.h"
#include "PSGBoundaryAll.h"
#include "PSGMasked.h"
#include "PixelSourceGenerator.h"
#include "RingErrorFloor.h"
#include "StructuredSearch.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cfloat>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <typeinfo>
#include <vector>

namespace Velmor {

namespace {


bool validTargetSize(int64_t width, int64_t height)
{
    return width >= 1 && height >= 1 && width <= maxTargetSide && height <= maxTargetSide
        && width * height <= maxTargetPixels;
}

void appendText(tinyxml2::XMLElement* parent, const char* key, unsigned value)
{
    tinyxml2::XMLElement* element = parent->GetDocument()->NewElement(key);
    element->SetText(value);
    parent->InsertEndChild(element);
}

void readUnsigned(const tinyxml2::XMLElement* parent, const char* key, uint32_t& field)
{
    unsigned value = 0;
    if (const tinyxml2::XMLElement* element = parent->FirstChildElement(key);
        element && element->QueryUnsignedText(&value) == tinyxml2::XML_SUCCESS)
        field = value;
}

void readSigned(const tinyxml2::XMLElement* parent, const char* key, int32_t& field)
{
    uint32_t value = uint32_t(field);
    readUnsigned(parent, key, value);
    field = int32_t(value);
}

// Seed from the steady clock in nanoseconds, truncated to 32 bits.
uint32_t clockSeed()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return uint32_t(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

// Index into a guidance map of `mapSize` for target coordinate `c`.
int32_t mapCoordinate(int32_t c, uint32_t targetSize, uint32_t mapSize)
{
    return truncateToInt(float(c) / float(int64_t(targetSize) - 1) * float(int64_t(mapSize) - 1));
}

// Direction and scale at a destination centre from the guidance maps; warns
// once per map about values that are not finite.
struct Guidance
{
    const Image* direction;
    const Image* scaling;
    const Image& target;
    bool warnedDirection = false;
    bool warnedScale = false;

    void at(int32_t cx, int32_t cy, float& dirX, float& dirY, float& scale)
    {
        if (direction) {
            const Pixel d = direction->pixelAt(mapCoordinate(cx, target.width, direction->width),
                                               mapCoordinate(cy, target.height, direction->height));
            const float vx = d[0];
            const float vy = d.channels() > 1 ? d[1] : 0.0f;
            if (!std::isfinite(vx) || !std::isfinite(vy)) {
                if (!warnedDirection)
                    logMessage(Warning, "The direction map holds values that are not finite numbers; those pixels "
                                        "count as no direction.");
                warnedDirection = true;
            } else if (!(vx == 0.0f && vy == 0.0f)) {
                dirX = vx;
                dirY = vy;
            }
        }
        if (scaling) {
            const float v = scaling->pixelAt(mapCoordinate(cx, target.width, scaling->width),
                                             mapCoordinate(cy, target.height, scaling->height))[0];
            if (!std::isfinite(v)) {
                if (!warnedScale)
                    logMessage(Warning, "The scale map holds values that are not finite numbers; those pixels count "
                                        "as scale 1.");
                warnedScale = true;
            } else {
                scale = v < 1.0f ? (1.0f - v) + (1.0f - v) + 1.0f : 1.0f - (v - 1.0f) * 0.1f;
            }
        }
    }
};

void logFinished(int timedOut, int total)
{
    logMessage(Success, "Texture synthesis finished.");
    char buffer[512];
    std::snprintf(buffer, sizeof(buffer), "%i patches out of %i timed out", timedOut, total);
    logMessage(Info, QString::fromLatin1(buffer));
    if (float(timedOut) / float(total) > 0.5f)
        logMessage(Warning, "More than half of the patches timed out. Try using higher error or more patch tries!");
}

} // namespace

// Parameter records

void ImageSynthesizer::ImageSynthesizerParams::writeXml(tinyxml2::XMLElement* parent) const
{
    if (!parent)
        return;
    tinyxml2::XMLElement* type = parent->GetDocument()->NewElement("Type");
    type->SetText(methodName().c_str());
    parent->InsertEndChild(type);
    appendText(parent, "TargetWidth", targetWidth);
    appendText(parent, "TargetHeight", targetHeight);
    tinyxml2::XMLElement* all = parent->GetDocument()->NewElement("UseAllLayers");
    all->SetText(useAllLayers);
    parent->InsertEndChild(all);
}

void ImageSynthesizer::ImageSynthesizerParams::readXml(const tinyxml2::XMLElement* parent)
{
    if (!parent)
        return;
    readUnsigned(parent, "TargetWidth", targetWidth);
    readUnsigned(parent, "TargetHeight", targetHeight);
    bool value = useAllLayers;
    if (const tinyxml2::XMLElement* element = parent->FirstChildElement("UseAllLayers");
        element && element->QueryBoolText(&value) == tinyxml2::XML_SUCCESS)
        useAllLayers = value;
}

void ImageSynthesizer::PatchSynthesizerParams::writeXml(tinyxml2::XMLElement* parent) const
{
    ImageSynthesizerParams::writeXml(parent);
    if (!parent)
        return;
    appendText(parent, "PatchSize", unsigned(patchSize));
    appendText(parent, "PatchBoundary", unsigned(patchBoundary));
    appendText(parent, "MaxTries", maxTries);
    tinyxml2::XMLElement* threshold = parent->GetDocument()->NewElement("ErrorThreshold");
    threshold->SetText(errorThreshold);
    parent->InsertEndChild(threshold);
    if (sourceSearch != SourceSearch::Random) {
        tinyxml2::XMLElement* search = parent->GetDocument()->NewElement("SourceSearch");
        search->SetText(sourceSearchName(sourceSearch));
        parent->InsertEndChild(search);
    }
}

void ImageSynthesizer::PatchSynthesizerParams::readXml(const tinyxml2::XMLElement* parent)
{
    ImageSynthesizerParams::readXml(parent);
    if (!parent)
        return;
    readSigned(parent, "PatchSize", patchSize);
    readSigned(parent, "PatchBoundary", patchBoundary);
    readUnsigned(parent, "MaxTries", maxTries);
    float value = errorThreshold;
    if (const tinyxml2::XMLElement* element = parent->FirstChildElement("ErrorThreshold");
        element && element->QueryFloatText(&value) == tinyxml2::XML_SUCCESS)
        errorThreshold = value;
    if (const tinyxml2::XMLElement* element = parent->FirstChildElement("SourceSearch");
        element && !sourceSearchFromName(element->GetText(), sourceSearch))
        logMessage(Warning, "Unknown source search '%s' in the synthesizer settings; keeping '%s'.",
                   element->GetText() ? element->GetText() : "", sourceSearchName(sourceSearch));
}

ImageSynthesizer::ImageSynthesizerParams*
ImageSynthesizer::PatchSynthesizerParams::copyPatchFieldsTo(ImageSynthesizerParams* other) const
{
    if (!other)
        return nullptr;
    other->targetWidth = targetWidth;
    other->targetHeight = targetHeight;
    other->useAllLayers = useAllLayers;
    if (typeid(*other) != typeid(*this))
        return nullptr;
    auto* same = static_cast<PatchSynthesizerParams*>(other);
    same->patchSize = patchSize;
    same->patchBoundary = patchBoundary;
    same->errorThreshold = errorThreshold;
    same->maxTries = maxTries;
    same->sourceSearch = sourceSearch;
    return other;
}

// Synthesizer

ImageSynthesizer::~ImageSynthesizer()
{
    reset();
}

void ImageSynthesizer::setInputs(LayeredImage* sourceImage, int32_t targetWidth, int32_t targetHeight,
                                 Image* direction, Image* scale, Image* mask)
{
    source = sourceImage;
    bool keep = target && !target->layers.empty() && target->layers[0]
        && int64_t(target->layers[0]->width) == targetWidth && int64_t(target->layers[0]->height) == targetHeight;
    if (keep && source) {
        keep = target->layerCount() == source->layerCount();
        for (size_t i = 0; keep && i < source->layerCount(); ++i)
            keep = target->layers[i] && source->layers[i] && target->layers[i]->format == source->layers[i]->format;
    } else if (keep && !source) {
        keep = target->layerCount() == 0;
    }
    if (!keep)
        makeTarget(targetWidth, targetHeight);
    ownsTarget = true;
    directionMap = direction;
    scaleMap = scale;
    writeMask = mask;
    onInputsSet(0);
}

void ImageSynthesizer::makeTarget(int32_t targetWidth, int32_t targetHeight)
{
    reset();
    if (!validTargetSize(targetWidth, targetHeight)) {
        logMessage(Error, "Cannot make an output of %i x %i pixels: each side must be 1 to %lld pixels and the "
                          "whole at most %lld pixels.",
                   targetWidth, targetHeight, (long long)maxTargetSide, (long long)maxTargetPixels);
        return;
    }
    target = new LayeredImage();
    if (!source)
        return;
    for (size_t i = 0; i < source->layerCount(); ++i) {
        const Image* layer = source->layers[i];
        const PixelFormat format = layer ? layer->format : Gray;
        auto* image = new Image(uint32_t(targetWidth), uint32_t(targetHeight), format);
        if (layer)
            image->copyDescriptorsFrom(*layer);
        target->setLayer(source->names[i], image);
    }
}

void ImageSynthesizer::reset()
{
    targetReady = false;
    if (target && ownsTarget) {
        target->deleteLayers();
        delete target;
    }
    target = nullptr;
    directionMap = nullptr;
    scaleMap = nullptr;
    onReset();
}

LayeredImage* ImageSynthesizer::detachTarget()
{
    LayeredImage* output = target;
    target = nullptr;
    ownsTarget = false;
    return output;
}

void ImageSynthesizer::forgetInputs()
{
    source = nullptr;
    directionMap = nullptr;
    scaleMap = nullptr;
    writeMask = nullptr;
}

bool ImageSynthesizer::checkSettings() const
{
    bool ok = true;
    if (!params) {
        logMessage(Error, "The synthesizer has no parameters.");
        return false;
    }
    if (!validTargetSize(params->targetWidth, params->targetHeight)) {
        logMessage(Error, "Target size %u x %u is out of range: each side must be 1 to %lld pixels and the whole at "
                          "most %lld pixels.",
                   params->targetWidth, params->targetHeight, (long long)maxTargetSide, (long long)maxTargetPixels);
        ok = false;
    }
    if (const PatchSynthesizerParams* p = dynamic_cast<const PatchSynthesizerParams*>(params)) {
        if (p->patchSize < 1) {
            logMessage(Error, "Patch size must be at least 1, but it is %i.", p->patchSize);
            ok = false;
        }
        if (p->patchBoundary < 0) {
            logMessage(Error, "Patch boundary must not be negative, but it is %i.", p->patchBoundary);
            ok = false;
        }
        const int64_t full = int64_t(p->patchSize) + 2 * int64_t(p->patchBoundary);
        if (p->patchSize >= 1 && p->patchBoundary >= 0 && full > maxFullPatchSize) {
            logMessage(Error, "Patch size %i with boundary %i makes patches of %lld pixels; at most %lld are allowed.",
                       p->patchSize, p->patchBoundary, (long long)full, (long long)maxFullPatchSize);
            ok = false;
        }
    }
    if (!source) {
        logMessage(Error, "There is no source image.");
        return false;
    }
    if (source->layerCount() == 0) {
        logMessage(Error, "The source has no layers.");
        ok = false;
    }
    for (size_t i = 0; i < source->layerCount(); ++i) {
        const Image* layer = source->layers[i];
        if (!layer || layer->isEmpty() || layer->channels() == 0) {
            logMessage(Error, "Source layer '%s' is smaller than one pixel (%u x %u).", source->names[i].c_str(),
                       layer ? layer->width : 0u, layer ? layer->height : 0u);
            ok = false;
        }
    }
    if (source->mask && (source->mask->isEmpty() || source->mask->channels() == 0)) {
        logMessage(Error, "The source mask is smaller than one pixel (%u x %u).", source->mask->width,
                   source->mask->height);
        ok = false;
    }
    // An output made earlier must still match the source layer by layer.
    if (target) {
        bool matches = target->layerCount() == source->layerCount() && !target->layers.empty() && target->layers[0];
        for (size_t i = 0; matches && i < target->layerCount(); ++i) {
            const Image* out = target->layers[i];
            const Image* in = source->layers[i];
            matches = out && in && out->format == in->format && out->width == target->layers[0]->width
                && out->height == target->layers[0]->height && !out->isEmpty();
        }
        if (!matches) {
            logMessage(Error, "The output does not match the source layers; set the inputs again.");
            ok = false;
        }
    }
    return ok;
}

void ImageSynthesizer::synthesize(PixelDestGenerator* destGenerator, PixelSourceGenerator* sourceGenerator,
                                  Progress progress, int32_t startFilled)
{
    if (!checkSettings())
        return;
    if (!target || target->layers.empty()) {
        logMessage(Error, "There is no output image: set the inputs with a valid size first.");
        return;
    }
    if (!destGenerator || !sourceGenerator) {
        logMessage(Error, "The synthesizer needs a destination and a source generator.");
        return;
    }
    cancelRequested = false;
    logMessage(Info, "Synthesizer started");
    sourceGenerator->random.seed(seed ? *seed : clockSeed());

    const PatchSynthesizerParams* p = patchParams();
    const Image& T = *target->layers[0];
    sourceGenerator->init(*source, p->patchSize, p->patchBoundary);
    destGenerator->init(T, p->patchSize, p->patchBoundary);
    const float L = float(source->layerCount());
    const int32_t halfSize = (p->patchSize + 2 * p->patchBoundary) / 2;

    Patch* patch = preparePatch();
    const float errorThreshold = p->errorThreshold;
    const uint32_t maxTries = p->maxTries;
    const bool useAllLayers = p->useAllLayers;

    std::vector<uint8_t> filledMask(size_t(T.width) * T.height, startFilled == 1 ? 1 : 0);
    // Guidance maps without pixels are ignored rather than read.
    const Image* direction = directionMap && !directionMap->isEmpty() && directionMap->channels() > 0 ? directionMap
                                                                                                         : nullptr;
    const Image* scaling = scaleMap && !scaleMap->isEmpty() && scaleMap->channels() > 0 ? scaleMap : nullptr;
    const double errorFloor = ringErrorFloor(*source, useAllLayers, direction || scaling, startFilled == 1);
    patch->setEarlyExit(errorFloor >= 0.0, errorFloor);

    // The structured search picks its own positions, which a source mask
    // would have to restrict: masked runs keep the random tries.
    const auto* masked = dynamic_cast<const PSGMasked*>(sourceGenerator);
    if (p->sourceSearch == SourceSearch::Structured) {
        if (!(masked && masked->useMask)) {
            synthesizeStructured(patch, destGenerator, sourceGenerator, progress, filledMask, direction, scaling);
            return;
        }
        logMessage(Info, "The structured source search does not take a source mask into account; using random "
                         "tries.");
    }

    logMessage(Info, "Texture synthesis started.");
    int total = 0;
    int timedOut = 0;
    int lastPercent = -1;
    Guidance guidance{direction, scaling, T};
    // Drawing source positions ahead of their tries keeps the generator's
    // sequence only when no one else draws from it: not so for the masked
    // generator's process-wide sequence.
    const bool drawAhead = dynamic_cast<const PSGBoundaryAll*>(sourceGenerator) || (masked && !masked->useMask);
    // Two candidates per thread in the first batch of a position: fewer
    // thread-team wake-ups, for a little work wasted where the first
    // candidate already passes.
    const uint32_t team = drawAhead ? uint32_t(patch->batchTeamSize(useAllLayers)) : 1u;
    const uint32_t firstBatch = team > 1 ? 2 * team : 1u;
    const uint32_t maxBatch = 4 * firstBatch;
    std::vector<PatchSource> candidates(maxBatch, PatchSource(source, 0, 0, halfSize, 0.0f, 1.0f, 1.0f));
    std::vector<float> errors(maxBatch, 0.0f);
    std::deque<std::pair<int32_t, int32_t>> drawn;

    int32_t x = 0;
    int32_t y = 0;
    while (!cancelRequested && destGenerator->next(x, y)) {
        if (progress) {
            const int percent = int(float(y) * 100.0 / float(T.height));
            if (percent > lastPercent) {
                lastPercent = percent;
                progress(percent);
            }
        }
        patch->x = x;
        patch->y = y;
        if (cancelRequested)
            break;

        // Guidance at the destination centre.
        float dirX = 0.0f;
        float dirY = 1.0f;
        float scale = 1.0f;
        guidance.at(x + halfSize, y + halfSize, dirX, dirY, scale);

        // Tries run in batches evaluated side by side, growing while the
        // position keeps rejecting candidates; every try is still judged in
        // order, so the outcome is the one of trying them one by one.
        const uint32_t allowedTries = std::max(1u, maxTries);
        uint32_t tries = 0;
        uint32_t batch = firstBatch;
        bool placed = false;
        while (!placed) {
            const uint32_t n = std::min(batch, allowedTries - tries);
            while (drawn.size() < n) {
                int32_t sx = 0;
                int32_t sy = 0;
                sourceGenerator->next(sx, sy);
                drawn.push_back({sx, sy});
            }
            for (uint32_t i = 0; i < n; ++i)
                candidates[i].place(drawn[i].first, drawn[i].second, halfSize, dirX, dirY, scale);
            if (n == 1)
                errors[0] = patch->evaluate(candidates[0], filledMask.data(), useAllLayers);
            else
                patch->evaluateBatch(candidates.data(), int(n), filledMask.data(), useAllLayers, L, errorThreshold,
                                     errors.data());
            uint32_t used = 0;
            bool cancelled = false;
            for (uint32_t i = 0; i < n && !placed && !cancelled; ++i) {
                if (n > 1)
                    patch->takeEvaluated(int(i), candidates[i], errors[i]);
                ++used;
                ++tries;
                const float normalised = errors[i] / L;
                if (normalised > errorThreshold && tries < maxTries) {
                    cancelled = cancelRequested;
                    continue;
                }
                ++total;
                patch->paste(filledMask.data(), writeMask);
                if (normalised > errorThreshold)
                    ++timedOut;
                placed = true;
            }
            // Positions drawn but not tried serve the next tries.
            drawn.erase(drawn.begin(), drawn.begin() + used);
            if (cancelled)
                break;
            batch = std::min(batch * 2, maxBatch);
        }
    }

    logFinished(timedOut, total);
}

void ImageSynthesizer::synthesizeStructured(Patch* patch, PixelDestGenerator* destGenerator,
                                            PixelSourceGenerator* sourceGenerator, const Progress& progress,
                                            std::vector<uint8_t>& filledMask, const Image* direction,
                                            const Image* scaling)
{
    using Position = StructuredSearch::Position;
    const PatchSynthesizerParams* p = patchParams();
    const Image& T = *target->layers[0];
    const float L = float(source->layerCount());
    const int32_t halfSize = (p->patchSize + 2 * p->patchBoundary) / 2;
    const bool useAllLayers = p->useAllLayers;
    const int32_t W = sourceGenerator->width;
    const int32_t H = sourceGenerator->height;

    const bool tiles = sourceTiles ? *sourceTiles : Velmor::sourceTiles(*source, W, H);
    // A patch counts as matched when its ring differs from its surroundings
    // no more than the source differs from itself shifted by half the ring's
    // width: a match that fits about as well as the texture's own content a
    // few pixels on. The absolute threshold of the random tries means little
    // on real textures; this one scales with the source's contrast and
    // noise.
    const int32_t shift = std::max(1, p->patchBoundary / 2);
    const double shifted = neighbourDifference(*source, W, H, useAllLayers, shift);
    const float threshold = float(shifted / double(L));
    // The search itself stops early only for a patch as close as one pixel
    // off a perfect fit.
    const float closeEnough = float(neighbourDifference(*source, W, H, useAllLayers, 1) / double(L));
    logMessage(Info, "Structured source search: %s; error threshold %g (the source's mean difference between pixels "
                     "%i apart).",
               tiles ? "the source tiles, patches may wrap around its edges" : "patches stay inside the source",
               double(threshold), shift);

    // The whole-source search keeps a fifth of the tries for full
    // comparison (4 of the default 20).
    const int keep = int(std::clamp<uint32_t>(p->maxTries / 5, 1, 16));
    StructuredSearch search;
    search.init(*source, *target, W, H, p->patchSize, p->patchBoundary, useAllLayers, tiles, keep,
                direction || scaling);
    std::vector<Position> found(size_t(keep) + StructuredSearch::maxContinuations);
    Position continued[StructuredSearch::maxContinuations];
    int sides[StructuredSearch::maxContinuations];
    // Candidates are measured in batches, side by side on the thread team,
    // each judged as if tried one after the other.
    constexpr int maxBatch = 16;
    std::vector<PatchSource> batch(maxBatch, PatchSource(source, 0, 0, halfSize, 0.0f, 1.0f, 1.0f));
    std::vector<float> batchErrors(maxBatch, 0.0f);
    int batchSize = 0;

    logMessage(Info, "Texture synthesis started.");
    int total = 0;
    int timedOut = 0;
    int lastPercent = -1;
    Guidance guidance{direction, scaling, T};
    int32_t x = 0;
    int32_t y = 0;
    while (!cancelRequested && destGenerator->next(x, y)) {
        if (progress) {
            const int percent = int(float(y) * 100.0 / float(T.height));
            if (percent > lastPercent) {
                lastPercent = percent;
                progress(percent);
            }
        }
        patch->x = x;
        patch->y = y;
        float dirX = 0.0f;
        float dirY = 1.0f;
        float scale = 1.0f;
        guidance.at(x + halfSize, y + halfSize, dirX, dirY, scale);
        const auto flush = [&] {
            if (batchSize == 1) {
                patch->evaluate(batch[0], filledMask.data(), useAllLayers);
            } else if (batchSize > 1) {
                patch->evaluateBatch(batch.data(), batchSize, filledMask.data(), useAllLayers, L, FLT_MAX,
                                     batchErrors.data());
                for (int i = 0; i < batchSize; ++i)
                    patch->takeEvaluated(i, batch[size_t(i)], batchErrors[size_t(i)]);
            }
            batchSize = 0;
        };
        const auto tryAt = [&](int32_t sx, int32_t sy) {
            if (batchSize == maxBatch)
                flush();
            batch[size_t(batchSize++)].place(sx, sy, halfSize, dirX, dirY, scale);
        };
        const auto fitsClosely = [&] { return patch->bestError / L <= closeEnough; };

        // Continue the placed neighbours first: exact for a regular texture.
        search.beginPosition(x, y);
        const int continuedCount = search.continuations(x, y, continued, sides);
        for (int i = 0; i < continuedCount; ++i)
            tryAt(continued[i].sx, continued[i].sy);
        flush();

        if (!fitsClosely() && !cancelRequested) {
            const int count = search.coarseSearch(x, y, filledMask.data(), dirX, dirY, scale,
                                                  sourceGenerator->random, found.data());
            if (count == 0 && continuedCount == 0) {
                // Nothing around it is filled yet: any position fits.
                int32_t sx = 0;
                int32_t sy = 0;
                sourceGenerator->next(sx, sy);
                if (tiles)
                    search.usable(sx, sy);
                tryAt(sx, sy);
            }
            for (int i = 0; i < count; ++i)
                tryAt(found[size_t(i)].sx, found[size_t(i)].sy);
            flush();
            // Try the best one's eight neighbours in full: the sparse search
            // may miss the last pixel. More rounds measured no better.
            if (patch->bestSource && !fitsClosely()) {
                const int32_t bx = patch->bestSource->sx;
                const int32_t by = patch->bestSource->sy;
                for (int32_t oy = -1; oy <= 1; ++oy)
                    for (int32_t ox = -1; ox <= 1; ++ox) {
                        int32_t sx = bx + ox;
                        int32_t sy = by + oy;
                        if ((ox != 0 || oy != 0) && search.usable(sx, sy))
                            tryAt(sx, sy);
                    }
                flush();
            }
        }
        if (cancelRequested)
            break;

        // Remember where the patch came from, and whether it continued a
        // neighbour, for the positions that follow.
        if (patch->bestSource) {
            const PatchSource& best = *patch->bestSource;
            Placement placement{best.sx, best.sy, best.dirX, best.dirY, best.scale, 0, 0};
            for (int i = 0; i < continuedCount; ++i) {
                if (continued[i].sx != best.sx || continued[i].sy != best.sy)
                    continue;
                const Placement* from = search.placedAt(sides[i] == 0 ? x - p->patchSize : x,
                                                        sides[i] == 1 ? y - p->patchSize : y);
                if (sides[i] == 0 && from)
                    placement.runX = from->runX + 1;
                if (sides[i] == 1 && from)
                    placement.runY = from->runY + 1;
            }
            search.record(x, y, placement);
        }
        ++total;
        if (!(patch->bestError / L <= threshold))
            ++timedOut;
        patch->paste(filledMask.data(), writeMask);
    }
    logFinished(timedOut, total);
}

} // namespace Velmor
