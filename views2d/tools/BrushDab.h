#pragma once

#include "Image.h"

#include <QPointF>

#include <cmath>
#include <cstdint>

// One dab of a round brush, in the pixels of the map it paints. The brush is
// round on the shown image, so it is an ellipse on a map of another aspect.
// Maps tile like the synthesized output, so a dab over an edge wraps round.
struct BrushDab
{
    // `uv` in texture coordinates, `radius` in units of the shown image's
    // width, `aspect` the shown image's width / height.
    BrushDab(const Image& map, QPointF uv, double radius, double aspect, double hardness);

    // 0..1 at the offset (dx, dy) in pixels from the centre: 1 within the
    // hard core, a smooth fade to 0 at the rim.
    double weight(double dx, double dy) const;

    // Calls visit(x, y, weight) once for every pixel of a width x height map
    // with a weight above 0; x and y are wrapped into the map.
    template <class Visit>
    void forEachPixel(uint32_t width, uint32_t height, Visit&& visit) const;

    double centreX = 0.0;
    double centreY = 0.0;
    double radiusX = 1.0;
    double radiusY = 1.0;
    double hardness = 0.5;

    // First pixel and pixel count of the dab along one axis. A dab wider than
    // the map covers every pixel once, at its offset to the nearest copy of
    // the centre.
    struct Span
    {
        int64_t first;
        int64_t count;
        bool wraps;
    };
    Span columns(uint32_t width) const { return span(centreX, radiusX, width); }
    Span rows(uint32_t height) const { return span(centreY, radiusY, height); }
    // Offset in pixels from the centre of the pixel `i` of a span.
    double offsetX(int64_t i, const Span& s, uint32_t width) const { return offset(i, centreX, s, width); }
    double offsetY(int64_t j, const Span& s, uint32_t height) const { return offset(j, centreY, s, height); }

private:
    static Span span(double centre, double radius, uint32_t size);
    static double offset(int64_t pixel, double centre, const Span& span, uint32_t size);
};

template <class Visit>
void BrushDab::forEachPixel(uint32_t width, uint32_t height, Visit&& visit) const
{
    if (width == 0 || height == 0)
        return;
    const Span across = columns(width);
    const Span down = rows(height);
    for (int64_t j = down.first; j < down.first + down.count; ++j) {
        const double dy = offsetY(j, down, height);
        const int32_t y = wrapCoordinate(int32_t(j), int32_t(height), Repeat);
        for (int64_t i = across.first; i < across.first + across.count; ++i) {
            const double w = weight(offsetX(i, across, width), dy);
            if (w > 0.0)
                visit(wrapCoordinate(int32_t(i), int32_t(width), Repeat), y, w);
        }
    }
}
