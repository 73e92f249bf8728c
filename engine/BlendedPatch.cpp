#include "BlendedPatch.h"

#include <cmath>

namespace Velmor {

void BlendedPatch::makeWeights()
{
    const int32_t F = fullSize();
    const int32_t B = patchBoundary;
    const int32_t P = patchSize;
    weights.assign(size_t(F) * F, 1.0f);
    weightsSize = F;
    weightsBoundary = B;
    // One-sided distance into the ring: 0 in the core, 1 at the outer edge.
    auto side = [B, P](int32_t v) -> float {
        if (v < B)
            return float(B - v) / float(B);
        if (v > P + B)
            return float(v - P - B) / float(B);
        return 0.0f;
    };
    for (int32_t dy = 0; dy < F; ++dy) {
        const float a = side(dy);
        for (int32_t dx = 0; dx < F; ++dx) {
            const float b = side(dx);
            const float d = (a > 0.0f && b > 0.0f) ? std::sqrt(a * a + b * b) : (a > 0.0f ? a : b);
            float& w = weights[size_t(dy) * F + dx];
            if (d > 1.0f)
                w = -1.0f;
            else if (d > 0.0f)
                w = 1.0f - d;
            else
                w = 1.0f;
        }
    }
}

void BlendedPatch::paste(uint8_t* filledMask, const Image* writeMask)
{
    if (weightsSize != fullSize() || weightsBoundary != patchBoundary)
        makeWeights();
    pasteWeighted(weights.data(), true, filledMask, writeMask);
}

} // namespace Velmor
