#include "IslandMask.h"

#include "Image.h"

#include <algorithm>
#include <vector>

uint32_t islandMaskSide(uint32_t width, uint32_t height)
{
    return std::max(width + (width & 1u), height + (height & 1u));
}

void writeIslandMask(const unsigned char* rgba, Image& mask, bool add)
{
    if (mask.isEmpty() || rgba == nullptr)
        return;
    const int32_t w = int32_t(mask.width), h = int32_t(mask.height);
    const uint32_t channels = mask.channels();

    // The window is separable: a maximum along rows, then along columns.
    std::vector<unsigned char> rows(size_t(w) * h);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            unsigned char v = 0;
            for (int32_t sx = std::max(0, x - 5); sx <= std::min(w - 1, x + 4) && v == 0; ++sx)
                v = rgba[4 * (size_t(y) * w + sx)] > 0 ? 1 : 0;
            rows[size_t(y) * w + x] = v;
        }
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            float v = 0.0f;
            for (int32_t sy = std::max(0, y - 5); sy <= std::min(h - 1, y + 4) && v == 0.0f; ++sy)
                v = rows[size_t(sy) * w + x] ? 1.0f : 0.0f;
            float& out = mask.data[channels * (size_t(y) * w + x)];
            out = add ? std::min(out + v, 1.0f) : v;
        }
}
