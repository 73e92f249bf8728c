#include "FloodFill.h"

#include <algorithm>
#include <cmath>

namespace {

bool similar(const float* a, const float* b, uint32_t compared, float tolerance)
{
    for (uint32_t c = 0; c < compared; ++c) {
        const bool finiteA = std::isfinite(a[c]);
        const bool finiteB = std::isfinite(b[c]);
        if (finiteA != finiteB)
            return false;
        if (finiteA && !(std::fabs(a[c] - b[c]) <= tolerance))
            return false;
    }
    return true;
}

} // namespace

std::vector<uint8_t> floodArea(const Image& image, int32_t x, int32_t y, uint32_t compared, float tolerance)
{
    if (image.isEmpty())
        return {};
    const int32_t width = int32_t(image.width);
    const int32_t height = int32_t(image.height);
    const uint32_t channels = image.channels();
    compared = std::min(compared, channels);
    x = wrapCoordinate(x, width, Repeat);
    y = wrapCoordinate(y, height, Repeat);

    std::vector<uint8_t> area(image.pixelCount(), 0);
    const float* seed = image.data + size_t(channels) * (size_t(x) + size_t(width) * size_t(y));
    // Pixels found to belong, whose neighbours are still to be looked at.
    std::vector<size_t> pending{size_t(x) + size_t(width) * size_t(y)};
    area[pending.front()] = 1;
    while (!pending.empty()) {
        const size_t at = pending.back();
        pending.pop_back();
        const int32_t px = int32_t(at % size_t(width));
        const int32_t py = int32_t(at / size_t(width));
        const int32_t neighbours[4][2] = {{px - 1, py}, {px + 1, py}, {px, py - 1}, {px, py + 1}};
        for (const auto& n : neighbours) {
            const size_t next = size_t(wrapCoordinate(n[0], width, Repeat))
                                + size_t(width) * size_t(wrapCoordinate(n[1], height, Repeat));
            if (area[next] || !similar(image.data + size_t(channels) * next, seed, compared, tolerance))
                continue;
            area[next] = 1;
            pending.push_back(next);
        }
    }
    return area;
}
