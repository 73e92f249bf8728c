#include "CutoutPatch.h"

#include "Check.h"
#include "Image.h"
#include "LayerView.h"
#include "LayeredImage.h"

#include <omp.h>

#include <algorithm>
#include <cmath>

namespace Velmor {

namespace {

// Patch pixel of strip cell (i across the side from the outer edge, j along
// it) on side 0 left, 1 right, 2 top (small dy), 3 bottom.
inline void stripToPatch(int side, int32_t i, int32_t j, int32_t fullSize, int32_t& dx, int32_t& dy)
{
    switch (side) {
    case 0: dx = i; dy = j; break;
    case 1: dx = fullSize - 1 - i; dy = j; break;
    case 2: dx = j; dy = i; break;
    default: dx = j; dy = fullSize - 1 - i; break;
    }
}

// Source weight of a strip cell `t` cells inside the cut (t < 0: outside).
inline float featherWeight(int32_t t, int32_t feather)
{
    if (feather <= 1)
        return t >= 0 ? 1.0f : 0.0f;
    float s = (float(t) + 0.5f) / float(feather) + 0.5f;
    s = std::min(1.0f, std::max(0.0f, s));
    return s * s * (3.0f - 2.0f * s);
}

} // namespace

CutoutPatch::~CutoutPatch()
{
    delete errorMap;
    delete bestErrorMap;
    delete stripImage;
    delete weightImage;
}

void CutoutPatch::init(LayeredImage* targetImage, int32_t size, int32_t boundary)
{
    Patch::init(targetImage, size, boundary);
    const uint32_t F = uint32_t(std::max(0, fullSize()));
    const uint32_t B = uint32_t(std::max(0, patchBoundary));
    delete errorMap;
    delete bestErrorMap;
    delete stripImage;
    delete weightImage;
    errorMap = new Image(F, F, Gray);
    bestErrorMap = new Image(F, F, Gray);
    stripImage = new Image(4 * B, F, Gray);
    weightImage = new Image(F, F, Gray);
    recordedErrors = errorMap->data;
    pathCost.assign(size_t(4) * B * F, 0.0f);
    pathStep.assign(size_t(4) * B * F, 0);
}

void CutoutPatch::recordError(int32_t dx, int32_t dy, float error)
{
    const int32_t F = fullSize();
    if (errorMap && errorMap->data && dx >= 0 && dy >= 0 && dx < F && dy < F)
        errorMap->data[int64_t(dy) * F + dx] = error;
}

void CutoutPatch::onBetterCandidate()
{
    std::swap(errorMap, bestErrorMap);
    if (errorMap)
        recordedErrors = errorMap->data;
}

// Minimum-error path along one side: for every cell j along the side one cut
// position c(j) across it, moving at most one cell per step. Cells before the
// cut keep the target, cells from the cut inward take the source.
void CutoutPatch::cutSide(int side)
{
    const int32_t F = fullSize();
    const int32_t B = patchBoundary;
    // Keep the cut far enough inside the strip for the feather to fit.
    const int32_t margin = std::min(std::max(0, feather) / 2, (B - 1) / 2);
    const int32_t lo = margin;
    const int32_t hi = B - 1 - margin;
    const int32_t middle = (lo + hi) / 2;
    float* cost = pathCost.data() + size_t(side) * B * F;
    int8_t* step = pathStep.data() + size_t(side) * B * F;
    const float* errors = bestErrorMap->data;
    auto error = [&](int32_t i, int32_t j) {
        int32_t dx;
        int32_t dy;
        stripToPatch(side, i, j, F, dx, dy);
        const float e = errors[int64_t(dy) * F + dx];
        return std::isnan(e) ? 1.0e30f : e;
    };

    for (int32_t j = 0; j < F; ++j) {
        for (int32_t i = lo; i <= hi; ++i) {
            float best = 0.0f;
            int8_t move = 0;
            if (j > 0) {
                // Straight on wins ties, so a flat error field gives a straight cut.
                best = cost[int64_t(j - 1) * B + i];
                if (i > lo && cost[int64_t(j - 1) * B + i - 1] < best) {
                    best = cost[int64_t(j - 1) * B + i - 1];
                    move = -1;
                }
                if (i < hi && cost[int64_t(j - 1) * B + i + 1] < best) {
                    best = cost[int64_t(j - 1) * B + i + 1];
                    move = 1;
                }
            }
            cost[int64_t(j) * B + i] = best + error(i, j);
            step[int64_t(j) * B + i] = move;
        }
    }
    int32_t cut = middle;
    for (int32_t i = lo; i <= hi; ++i) {
        const float c = cost[int64_t(F - 1) * B + i];
        const float b = cost[int64_t(F - 1) * B + cut];
        if (c < b || (c == b && std::abs(i - middle) < std::abs(cut - middle)))
            cut = i;
    }
    float* strip = stripImage->data;
    const int32_t stripWidth = 4 * B;
    for (int32_t j = F - 1; j >= 0; --j) {
        for (int32_t i = 0; i < B; ++i)
            strip[int64_t(j) * stripWidth + side * B + i] = featherWeight(i - cut, feather);
        cut += step[int64_t(j) * B + cut];
    }
}

void CutoutPatch::computeWeights(const uint8_t* filledMask)
{
    const int32_t F = fullSize();
    const int32_t B = patchBoundary;
    if (!ONDRELS_CHECK(weightImage && weightImage->data && int32_t(weightImage->width) == F))
        return;
    weightImage->clear();
    if (B > 0 && stripImage && stripImage->data) {
        std::fill(stripImage->data, stripImage->data + stripImage->floatCount(), 1.0f);
        // One side per thread, once the strips are big enough to pay for a team.
        const int sideTeam = int64_t(4) * B * fullSize() >= (int64_t(1) << 17) ? std::min(4, teamSize) : 1;
#pragma omp parallel for num_threads(sideTeam) schedule(static)
        for (int side = 0; side < 4; ++side)
            cutSide(side);
    }
    // A pixel takes the smallest weight of the sides it lies on; the core
    // lies on none and takes the source.
    float* weights = weightImage->data;
    std::fill(weights, weights + size_t(F) * F, 1.0f);
    const float* strip = B > 0 && stripImage ? stripImage->data : nullptr;
    for (int side = 0; strip && side < 4; ++side) {
        for (int32_t j = 0; j < F; ++j) {
            for (int32_t i = 0; i < B; ++i) {
                int32_t dx;
                int32_t dy;
                stripToPatch(side, i, j, F, dx, dy);
                float& w = weights[int64_t(dy) * F + dx];
                w = std::min(w, strip[int64_t(j) * 4 * B + side * B + i]);
            }
        }
    }
    // Where the target holds nothing yet there is nothing to blend with: the
    // cut gives those pixels to the source.
    const Image* first = target && !target->layers.empty() ? target->layers[0] : nullptr;
    if (!filledMask || !first || first->isEmpty())
        return;
    const int32_t width = int32_t(first->width);
    const int32_t height = int32_t(first->height);
    for (int32_t dy = 0; dy < F; ++dy) {
        const uint8_t* filledRow = filledMask + int64_t(foldRepeat(y + dy, height)) * width;
        for (int32_t dx = 0; dx < F; ++dx)
            if (!filledRow[foldRepeat(x + dx, width)])
                weights[int64_t(dy) * F + dx] = 1.0f;
    }
}

void CutoutPatch::paste(uint8_t* filledMask, const Image* writeMask)
{
    if (!bestSource || !ONDRELS_CHECK(weightImage && weightImage->data && int32_t(weightImage->width) == fullSize())) {
        discardBest();
        return;
    }
    computeWeights(filledMask);
    pasteWeighted(weightImage->data, false, filledMask, writeMask);
}

} // namespace Velmor
