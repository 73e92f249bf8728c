#pragma once

#include "RandomGenerator.h"

#include <cstdint>

class LayeredImage;

namespace Velmor {

// Yields candidate top-left corners of full patches in the source.
class PixelSourceGenerator
{
public:
    virtual ~PixelSourceGenerator() = default;

    // Size is the minimum over the source layers (and its mask); differing
    // sizes log a warning. Then prepare(source).
    void init(const LayeredImage& source, int32_t patchSize, int32_t boundary);
    virtual void next(int32_t& x, int32_t& y) = 0;
    virtual void prepare(const LayeredImage& /*source*/) {}

    int32_t width = 0;
    int32_t height = 0;
    int32_t patchSize = 0;
    int32_t patchBoundary = 0;
    int32_t fullSize = 0;
    int32_t halfSize = 0;
    // Seeded by ImageSynthesizer::synthesize at the start of every run.
    RandomGenerator random;
};

} // namespace Velmor
