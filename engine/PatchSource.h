#pragma once

#include "LayeredImage.h"

#include <cstdint>

namespace Velmor {

// One candidate placement of a patch in the source: the full patch's
// top-left corner, its rotation centre, a direction ((0, 1) is the identity)
// and a scale.
class PatchSource
{
public:
    PatchSource() = default;
    PatchSource(const LayeredImage* source, int32_t sx, int32_t sy, int32_t halfSize, float dirX, float dirY,
                float scale);

    // Moves the candidate without touching the scratch pixel, so one object
    // can serve every try of a run.
    void place(int32_t sx, int32_t sy, int32_t halfSize, float dirX, float dirY, float scale);

    // Source position of patch offset (dx, dy) after rotation and scaling.
    inline void sourcePosition(int32_t dx, int32_t dy, float& X, float& Y) const
    {
        const float u = float(sx + dx) - float(cx);
        const float v = float(sy + dy) - float(cy);
        X = float(cx) + scale * (dirY * u - dirX * v);
        Y = float(cy) + scale * (dirX * u + dirY * v);
    }

    // Whole-pixel placement: sample positions are integers, so bilinear
    // sampling reduces to reading pixels.
    bool isIdentity() const { return dirX == 0.0f && dirY == 1.0f && scale == 1.0f; }

    // All layers sampled bilinearly at offset (dx, dy) inside the full patch,
    // Normal layers rotated back to follow the patch. The reference the
    // patches' raw loops must match.
    LayeredPixel sourcePixels(int32_t dx, int32_t dy);
    PatchSource* clone() const { return new PatchSource(*this); }

    const LayeredImage* source = nullptr;
    LayeredPixel scratch;
    int32_t sx = 0;
    int32_t sy = 0;
    int32_t cx = 0;
    int32_t cy = 0;
    float dirX = 0.0f;
    float dirY = 1.0f;
    float scale = 1.0f;
};

} // namespace Velmor
