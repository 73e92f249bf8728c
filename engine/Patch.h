#pragma once

#include "LayerView.h"

#include <cfloat>
#include <cstdint>
#include <vector>

class Image;
class LayeredImage;

namespace Velmor {

class PatchSource;
struct RowContext;

// What all patches share: measuring how well a candidate source placement
// fits the already-filled target around the destination (the boundary ring),
// keeping the best candidate of the current position, and pasting it.
class Patch
{
public:
    Patch() = default;
    Patch(const Patch&) = delete;
    Patch& operator=(const Patch&) = delete;
    virtual ~Patch();

    // Stores the target and sizes and makes the per-run scratch.
    virtual void init(LayeredImage* target, int32_t patchSize, int32_t patchBoundary);
    // Mean boundary-ring difference between the candidate and the filled
    // target pixels (0 when none is filled); remembers the candidate when it
    // beats the best one so far. Per-pixel errors land in recordedErrors.
    virtual float evaluate(const PatchSource& candidate, const uint8_t* filledMask, bool useAllLayers);
    // Pastes bestSource at (x, y), marks what it wrote filled and forgets it.
    virtual void paste(uint8_t* filledMask, const Image* writeMask) = 0;
    virtual void recordError(int32_t /*dx*/, int32_t /*dy*/, float /*error*/) {}
    virtual void onBetterCandidate() {}

    int32_t fullSize() const { return patchSize + 2 * patchBoundary; }

    int32_t x = 0;
    int32_t y = 0;
    int32_t patchSize = 0;
    int32_t patchBoundary = 0;
    LayeredImage* target = nullptr;
    PatchSource* bestSource = nullptr;
    float bestError = FLT_MAX;

protected:
    // Writes bestSource into the target with one weight per full-patch pixel
    // (row-major, fullSize wide): below 0 skips the pixel, 1 or more copies
    // the source, anything between cross-fades from the target. With
    // `skipUnfilledRing` a pixel of weight below 1 whose target is not filled
    // yet is skipped (a later core covers it); otherwise every weight is used
    // as given. Written pixels are marked filled.
    void pasteWeighted(const float* weights, bool skipUnfilledRing, uint8_t* filledMask, const Image* writeMask);
    void discardBest();

    // fullSize x fullSize per-pixel ring errors of the last evaluate (0 where
    // the target was not filled, and in the core).
    float* recordedErrors = nullptr;
    int32_t teamSize = 1;

private:
    RowContext rowContext(int layer, const PatchSource& candidate, bool identity, int32_t ty, int32_t dy) const;
    void bindSource(const LayeredImage& source);
    void prepareColumns(const PatchSource& candidate, bool identity, int layerCount);
    int teamFor(int layerCount) const;
    int pasteTeamSize(int layerCount) const;

    int32_t targetWidth = 0;
    int32_t targetHeight = 0;
    std::vector<LayerView> targetLayers;
    std::vector<LayerView> sourceLayers;
    const LayeredImage* boundSource = nullptr;
    std::vector<float> errorScratch;
    std::vector<float> rowWeights;
    std::vector<float> rowSums;
    std::vector<int64_t> rowCounts;
    std::vector<int32_t> targetColumns;
    std::vector<int32_t> sourceColumns;
};

} // namespace Velmor
