#pragma once

#include <cstdint>

// Layout of one pixel's floats.
enum PixelFormat : uint32_t
{
    Gray = 0,   // one float
    RGB = 1,    // red, green, blue
    RGBA = 2,   // red, green, blue, alpha
    Normal = 3, // vector X, Y, Z in -1..1, normally of unit length
    None = 4    // no pixels
};

// How coordinates outside an image are folded back into it.
enum WrapMode : uint32_t
{
    Clamp = 0,
    Repeat = 1
};

enum SampleMode : uint32_t
{
    Nearest = 0,
    Linear = 1
};

inline constexpr uint32_t channelCount(uint32_t format)
{
    switch (format) {
    case Gray: return 1;
    case RGB: return 3;
    case RGBA: return 4;
    case Normal: return 3;
    default: return 0;
    }
}
