#include "BrushDab.h"

#include <algorithm>

BrushDab::BrushDab(const Image& map, QPointF uv, double radius, double aspect, double hardness)
    : centreX(uv.x() * map.width)
    , centreY(uv.y() * map.height)
    // At least one pixel, so that the pixel under the centre is always hit.
    , radiusX(std::max(1.0, radius * map.width))
    , radiusY(std::max(1.0, radius * aspect * map.height))
    , hardness(std::clamp(hardness, 0.0, 0.999))
{
}

double BrushDab::weight(double dx, double dy) const
{
    const double nx = dx / radiusX;
    const double ny = dy / radiusY;
    const double d2 = nx * nx + ny * ny;
    if (!(d2 < 1.0))
        return 0.0;
    const double d = std::sqrt(d2);
    if (d <= hardness)
        return 1.0;
    const double t = (1.0 - d) / (1.0 - hardness);
    return t * t * (3.0 - 2.0 * t);
}

BrushDab::Span BrushDab::span(double centre, double radius, uint32_t size)
{
    const int64_t first = int64_t(std::floor(centre - radius));
    const int64_t last = int64_t(std::ceil(centre + radius));
    if (last - first + 1 <= int64_t(size))
        return {first, last - first + 1, false};
    return {int64_t(std::floor(centre)) - int64_t(size / 2), int64_t(size), true};
}

double BrushDab::offset(int64_t pixel, double centre, const Span& span, uint32_t size)
{
    double d = double(pixel) + 0.5 - centre;
    if (span.wraps)
        d -= double(size) * std::round(d / double(size));
    return d;
}
