#include "SmoothBrush.h"

#include "DirectionValues.h"

#include <algorithm>
#include <cmath>

namespace {

// Box half-width of the blur: a quarter of the brush radius.
int blurRadius(const BrushDab& dab)
{
    return std::clamp(int(std::lround(std::min(dab.radiusX, dab.radiusY) * 0.25)), 1, 256);
}

} // namespace

void SmoothBrush::paintDab(const BrushDab& dab, QPointF)
{
    Image& map = *target.image;
    const int32_t width = int32_t(map.width);
    const int32_t height = int32_t(map.height);
    const uint32_t channels = map.channels();
    const bool directions = paintMap() == PaintMap::Direction;
    // Numbers averaged per pixel: a direction's x and y, or every channel.
    const size_t values = directions ? 2 : std::min<size_t>(channels, 4);
    const BrushDab::Span across = dab.columns(map.width);
    const BrushDab::Span down = dab.rows(map.height);
    const int k = blurRadius(dab);
    const size_t bandWidth = size_t(across.count);
    const size_t bandHeight = size_t(down.count) + 2 * size_t(k);

    // Every read happens here, before the first write: the values of the
    // band of pixels the boxes reach, then their sums along each row.
    const size_t readWidth = bandWidth + 2 * size_t(k);
    band.resize(bandHeight * readWidth * values);
    for (size_t r = 0; r < bandHeight; ++r) {
        const int32_t y = wrapCoordinate(int32_t(down.first - k + int64_t(r)), height, Repeat);
        const float* row = map.data + size_t(channels) * size_t(width) * size_t(y);
        float* out = band.data() + r * readWidth * values;
        for (size_t i = 0; i < readWidth; ++i, out += values) {
            const int32_t x = wrapCoordinate(int32_t(across.first - k + int64_t(i)), width, Repeat);
            const float* pixel = row + size_t(channels) * size_t(x);
            if (directions) {
                const Direction d = readDirection(pixel, channels);
                out[0] = d.x;
                out[1] = d.y;
            } else {
                for (size_t c = 0; c < values; ++c)
                    out[c] = std::isfinite(pixel[c]) ? pixel[c] : 0.0f;
            }
        }
    }
    // Sliding sums: each step adds the value entering the box and drops the
    // one leaving it.
    rowSums.resize(bandHeight * bandWidth * values);
    for (size_t r = 0; r < bandHeight; ++r) {
        const float* in = band.data() + r * readWidth * values;
        float* sums = rowSums.data() + r * bandWidth * values;
        for (size_t c = 0; c < values; ++c) {
            float sum = 0.0f;
            for (size_t i = 0; i <= 2 * size_t(k); ++i)
                sum += in[i * values + c];
            sums[c] = sum;
            for (size_t i = 1; i < bandWidth; ++i) {
                sum += in[(i + 2 * size_t(k)) * values + c] - in[(i - 1) * values + c];
                sums[i * values + c] = sum;
            }
        }
    }
    columnSums.assign(bandWidth * values, 0.0f);
    for (size_t r = 0; r <= 2 * size_t(k); ++r)
        for (size_t i = 0; i < bandWidth * values; ++i)
            columnSums[i] += rowSums[r * bandWidth * values + i];

    const float strength = float(context->settings.strength);
    const float boxArea = float((2 * k + 1) * (2 * k + 1));
    float average[4] = {};
    for (size_t j = 0; j < size_t(down.count); ++j) {
        const double dy = dab.offsetY(down.first + int64_t(j), down, map.height);
        const int32_t y = wrapCoordinate(int32_t(down.first + int64_t(j)), height, Repeat);
        for (size_t i = 0; i < bandWidth; ++i) {
            const double weight = dab.weight(dab.offsetX(across.first + int64_t(i), across, map.width), dy);
            const float w = float(weight) * strength;
            if (w <= 0.0f)
                continue;
            for (size_t c = 0; c < values; ++c)
                average[c] = columnSums[i * values + c] / boxArea;
            const int32_t x = wrapCoordinate(int32_t(across.first + int64_t(i)), width, Repeat);
            float* pixel = map.data + size_t(channels) * (size_t(x) + size_t(width) * size_t(y));
            if (directions) {
                const Direction towards = normalised({average[0], average[1]});
                if (towards.x != 0.0f || towards.y != 0.0f)
                    writeDirection(pixel, channels, blendDirections(readDirection(pixel, channels), towards, w));
            } else {
                for (size_t c = 0; c < values; ++c) {
                    const float from = std::isfinite(pixel[c]) ? pixel[c] : average[c];
                    pixel[c] = from + (average[c] - from) * w;
                }
            }
        }
        // Move the boxes one row down.
        if (j + 1 < size_t(down.count)) {
            const float* entering = rowSums.data() + (j + 2 * size_t(k) + 1) * bandWidth * values;
            const float* leaving = rowSums.data() + j * bandWidth * values;
            for (size_t i = 0; i < bandWidth * values; ++i)
                columnSums[i] += entering[i] - leaving[i];
        }
    }
}
