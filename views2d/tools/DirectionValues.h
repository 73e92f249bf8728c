#pragma once

#include <cmath>
#include <cstdint>

// A direction as the engine reads it from a direction map pixel: channels 0
// and 1, in pixels of the synthesized image; (0, 1) leaves patches upright
// and (0, 0) is no direction.
struct Direction
{
    float x = 0.0f;
    float y = 0.0f;
};

// Values that are not finite numbers read as no direction, like the engine.
inline Direction readDirection(const float* pixel, uint32_t channels)
{
    const float x = channels > 0 ? pixel[0] : 0.0f;
    const float y = channels > 1 ? pixel[1] : 0.0f;
    if (!std::isfinite(x) || !std::isfinite(y))
        return {};
    return {x, y};
}

// Writes a direction; a third channel (the Z of a Normal pixel) becomes 0.
inline void writeDirection(float* pixel, uint32_t channels, Direction d)
{
    if (channels > 0)
        pixel[0] = d.x;
    if (channels > 1)
        pixel[1] = d.y;
    if (channels > 2)
        pixel[2] = 0.0f;
}

// Unit length, or no direction for a vector too short to have one.
inline Direction normalised(Direction d)
{
    const float length = std::sqrt(d.x * d.x + d.y * d.y);
    if (!(length > 1e-6f))
        return {};
    return {d.x / length, d.y / length};
}

// Turns `from` towards the unit vector `to` by w (0..1). The result is a
// unit vector; where the two cancel out, or `from` has no direction, the
// pixel takes `to`.
inline Direction blendDirections(Direction from, Direction to, float w)
{
    const Direction mixed = normalised({from.x + (to.x - from.x) * w, from.y + (to.y - from.y) * w});
    return mixed.x == 0.0f && mixed.y == 0.0f ? to : mixed;
}
