#pragma once

#include <algorithm>
#include <cmath>

// The maps the tools paint: the current surface's direction and scale maps
// and the project's output mask.
enum class PaintMap
{
    Direction,
    Scale,
    Mask
};

// The mask brush paints masked-out areas (0, where synthesis writes nothing)
// and erases them back to 1, the value of a new mask.
enum class MaskMode
{
    Paint,
    Erase
};

enum class FillMode
{
    WholeMap,
    // The connected area of similar values around the pixel clicked.
    Flood
};

// Scale map values the engine reads: 0 copies features three times larger,
// 1 keeps them, 2 makes them 0.9 times as large.
constexpr float minScaleValue = 0.0f;
constexpr float maxScaleValue = 2.0f;

// What the tool bar sets and every tool reads when a stroke starts.
struct BrushSettings
{
    // In units of the shown image's width, like the view's brush outline.
    double radius = 0.05;
    // 0..1: how far one stroke moves a pixel towards the brush value.
    double strength = 1.0;
    // 0..1: the part of the radius painted at full strength; the rest fades.
    double hardness = 0.5;
    float scaleValue = 1.0f;
    // Fill direction in degrees, clockwise from up (0 is the identity).
    double directionDegrees = 0.0;
    MaskMode maskMode = MaskMode::Paint;
    FillMode fillMode = FillMode::WholeMap;
    // The map that fill and smooth work on.
    PaintMap targetMap = PaintMap::Direction;
    // Largest difference per channel a flood still spreads over.
    float floodTolerance = 0.05f;
};

// The value the scale and mask tools write with these settings: the scale
// within the engine's range, or the mask's 0 (paint) or 1 (erase).
inline float paintValue(const BrushSettings& settings, PaintMap map)
{
    if (map == PaintMap::Mask)
        return settings.maskMode == MaskMode::Paint ? 0.0f : 1.0f;
    const float scale = std::isfinite(settings.scaleValue) ? settings.scaleValue : 1.0f;
    return std::clamp(scale, minScaleValue, maxScaleValue);
}
