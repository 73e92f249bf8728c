#pragma once

#include "Patch.h"

#include <vector>

class Image;

namespace Velmor {

// A patch that cuts its way in: on each side of the boundary ring it finds
// the path of least error between the candidate and the target (dynamic
// programming along the side), keeps the target outside the path and the
// source inside, with a smooth transition `feather` pixels wide.
class CutoutPatch : public Patch
{
public:
    ~CutoutPatch() override;

    void init(LayeredImage* target, int32_t patchSize, int32_t patchBoundary) override;
    void paste(uint8_t* filledMask, const Image* writeMask) override;
    void recordError(int32_t dx, int32_t dy, float error) override;
    void onBetterCandidate() override;

    // Fills `weightImage` (fullSize x fullSize) with the source weight of
    // every patch pixel from bestErrorMap, and weight 1 wherever the target
    // at (x, y) is not filled in `filledMask` (when given). The paste then
    // writes lerp(target, source, weight) everywhere; public so the cut can
    // be checked.
    void computeWeights(const uint8_t* filledMask = nullptr);

    int32_t feather = 4;
    Image* errorMap = nullptr;
    Image* bestErrorMap = nullptr;
    // Work images of the cut: one strip of patchBoundary x fullSize per side
    // (side s in columns s * patchBoundary ...), and the resulting weights.
    Image* stripImage = nullptr;
    Image* weightImage = nullptr;

private:
    void cutSide(int side);

    // Per side: accumulated path cost and the step taken into each cell.
    std::vector<float> pathCost;
    std::vector<int8_t> pathStep;
};

} // namespace Velmor
