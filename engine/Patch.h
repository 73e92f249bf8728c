#pragma once

#include "LayerView.h"

#include <atomic>
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

    // Evaluates `count` candidates at once, one per thread, for the tries of
    // one position, without touching the best candidate: errors[i] is what
    // evaluate would return for candidates[i] after the ones before it. A
    // candidate whose partial error already exceeds the best error or the
    // error of another candidate that `rejects` (error / layers > threshold)
    // stops early and gets a value above that error instead, which changes
    // neither which candidate is best nor whether it passes.
    void evaluateBatch(const PatchSource* candidates, int count, const uint8_t* filledMask, bool useAllLayers,
                       float layers, float threshold, float* errors);
    // What evaluate does with its result, for candidate i of the last batch.
    void takeEvaluated(int i, const PatchSource& candidate, float error);
    // Candidates evaluateBatch can work on at the same time.
    int batchTeamSize(bool useAllLayers) const;

    // Lets evaluations stop comparing a candidate as soon as its partial
    // ring error proves that it cannot beat the best one, which never
    // changes the candidate chosen. Only exact when every ring pixel's error
    // is at least -floor (ringErrorFloor gives it for a run); off by default.
    void setEarlyExit(bool allowed, double floor)
    {
        earlyExit = allowed;
        errorFloor = floor;
    }

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
    // What one thread needs to measure one candidate.
    struct RingScratch
    {
        std::vector<float> rowSums;
        std::vector<int64_t> rowCounts;
        std::vector<int32_t> sourceColumns; // per layer, whole-pixel placements only
    };

    // Errors of ring row dy into `errors` (the full patch's), the row's sum
    // and count into the scratch's rowSums and rowCounts.
    void ringRow(int32_t dy, const PatchSource& candidate, const uint8_t* filledMask, int layerCount, bool identity,
                 RingScratch& scratch, float* errors) const;
    // The mean ring error of one candidate, row by row on this thread. With
    // a finite `*beaten` it stops once the candidate provably exceeds it and
    // returns a value above it.
    float ringError(const PatchSource& candidate, const uint8_t* filledMask, int layerCount, int64_t filledCount,
                    const std::atomic<float>* beaten, RingScratch& scratch, float* errors, bool& complete) const;
    int64_t filledRingPixels(const uint8_t* filledMask) const;
    RowContext rowContext(int layer, const PatchSource& candidate, bool identity, int32_t ty, int32_t dy,
                          const int32_t* sourceColumns) const;
    bool prepare(const LayeredImage* source, const uint8_t* filledMask);
    void bindSource(const LayeredImage& source);
    void prepareSourceColumns(const PatchSource& candidate, int layerCount, RingScratch& scratch) const;
    int comparedLayers(bool useAllLayers) const;
    int teamFor(int layerCount) const;
    int pasteTeamSize(int layerCount) const;

    bool earlyExit = false;
    double errorFloor = 0.0;
    int32_t targetWidth = 0;
    int32_t targetHeight = 0;
    std::vector<LayerView> targetLayers;
    std::vector<LayerView> sourceLayers;
    std::vector<LayerView> wholePixelLayers; // sourceLayers, with Normal layers normalised as whole-pixel reads see them
    std::vector<std::vector<float>> unitNormals;
    const LayeredImage* boundSource = nullptr;
    std::vector<float> errorScratch;
    std::vector<float> rowWeights;
    std::vector<int32_t> targetColumns;
    std::vector<RingScratch> scratch; // one per team thread; [0] also serves evaluate and paste
    std::vector<float> batchErrors;   // fullSize x fullSize per candidate of the last batch
};

} // namespace Velmor
