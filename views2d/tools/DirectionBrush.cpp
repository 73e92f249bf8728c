#include "DirectionBrush.h"

#include "DirectionValues.h"

void DirectionBrush::paintDab(const BrushDab& dab, QPointF direction)
{
    Image& map = *target.image;
    const uint32_t channels = map.channels();
    const float strength = float(context->settings.strength);
    const float toX = float(direction.x());
    const float toY = float(direction.y());
    dab.forEachPixel(map.width, map.height, [&](int32_t x, int32_t y, double weight) {
        const float w = float(weight) * strength;
        if (!raiseCoverage(x, y, w))
            return;
        const size_t at = channels * (size_t(x) + size_t(map.width) * size_t(y));
        const Direction from = readDirection(before.data + at, channels);
        writeDirection(map.data + at, channels, blendDirections(from, {toX, toY}, w));
    });
}
