#pragma once

#include <cstdint>

class Image;

namespace Velmor {

// Yields, one by one, the top-left corners (target pixels) at which patches
// are placed. A position is the top-left of the full patch (core plus
// boundary on every side).
class PixelDestGenerator
{
public:
    virtual ~PixelDestGenerator() = default;

    // Takes the size from `image` (the target's first layer), then reset().
    void init(const Image& image, int32_t patchSize, int32_t boundary);
    virtual bool next(int32_t& x, int32_t& y) = 0;
    virtual void reset() {}

    int32_t width = 0;
    int32_t height = 0;
    int32_t patchSize = 0;
    int32_t patchBoundary = 0;
    int32_t fullSize = 0;
    int32_t halfSize = 0;
    int32_t curX = 0;
    int32_t curY = 0;
};

} // namespace Velmor
