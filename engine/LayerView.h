#pragma once

#include "Image.h"
#include "PixelFormat.h"

#include <cmath>
#include <cstdint>

namespace Velmor {

// Raw view of one image layer for the engine's inner loops: a float pointer
// plus the numbers the wrap rule needs. Every read folds its coordinates the
// way Image::pixelAt does, so no read ever leaves the buffer; the sampler
// below gives bit for bit what Image::sample(Linear) gives.
struct LayerView
{
    const float* data = nullptr;
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    PixelFormat format = None;
    WrapMode wrap = Repeat;

    static LayerView of(const Image& image)
    {
        LayerView view;
        if (image.isEmpty())
            return view;
        view.data = image.data;
        view.width = int32_t(image.width);
        view.height = int32_t(image.height);
        view.channels = int32_t(image.channels());
        view.format = image.format;
        view.wrap = image.wrapMode;
        return view;
    }

    inline int32_t foldX(int32_t x) const { return fold(x, width, wrap); }
    inline int32_t foldY(int32_t y) const { return fold(y, height, wrap); }
    inline const float* row(int32_t foldedY) const { return data + int64_t(width) * channels * foldedY; }
    inline const float* at(int32_t x, int32_t y) const { return row(foldY(y)) + int64_t(channels) * foldX(x); }

    // Image::pixelAt's wrap rule. Deliberately folds Repeat coordinates that
    // lie more than one period away and clamps unknown wrap modes, where a
    // single fold would read outside the buffer.
    static inline int32_t fold(int32_t v, int32_t n, WrapMode mode) { return wrapCoordinate(v, n, mode); }
};

// Repeat folding for the target and its filled mask.
inline int32_t foldRepeat(int32_t v, int32_t n)
{
    return LayerView::fold(v, n, Repeat);
}

// Pixel::lerp on raw channels: out = (b - a) * t + a, a Normal divided by its
// length afterwards. `out` may alias `a` or `b`.
template <PixelFormat F>
inline void lerpValues(const float* a, const float* b, float t, float* out)
{
    constexpr int n = int(channelCount(F));
    for (int c = 0; c < n; ++c)
        out[c] = (b[c] - a[c]) * t + a[c];
    if constexpr (F == Normal) {
        const float length = std::sqrt(out[0] * out[0] + out[1] * out[1] + out[2] * out[2]);
        for (int c = 0; c < 3; ++c)
            out[c] /= length;
    }
}

// The same normalisation lerpValues<Normal> applies, for whole-pixel reads
// whose interpolation weights are 0.
inline void normalise(const float* a, float* out)
{
    const float length = std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
    for (int c = 0; c < 3; ++c)
        out[c] = a[c] / length;
}

// pixelDifference on raw channels.
template <PixelFormat F>
inline float pixelDifferenceOf(const float* a, const float* b)
{
    if constexpr (F == Gray) {
        return std::fabs(a[0] - b[0]);
    } else if constexpr (F == RGB || F == RGBA) {
        float sum = 0.0f;
        for (int c = 0; c < int(channelCount(F)); ++c) {
            const float d = a[c] - b[c];
            sum += d * d;
        }
        return sum;
    } else if constexpr (F == Normal) {
        const double dot = double(a[0]) * double(b[0]) + double(a[1]) * double(b[1]) + double(a[2]) * double(b[2]);
        return float(1.0 - dot);
    } else {
        return 0.0f;
    }
}

// Image::sample(x, y, Linear) of one layer into `out`.
template <PixelFormat F>
inline void sampleLinear(const LayerView& layer, float x, float y, float* out)
{
    const float fw = float(layer.width);
    const float fh = float(layer.height);
    wrapSamplePosition(x, y, fw, fh, layer.wrap);
    const int32_t ix = truncateSamplePosition(x);
    const int32_t iy = truncateSamplePosition(y);
    const float fx = x - float(ix);
    const float fy = y - float(iy);
    float top[4];
    float bottom[4];
    lerpValues<F>(layer.at(ix, iy), layer.at(ix + 1, iy), fx, top);
    lerpValues<F>(layer.at(ix, iy + 1), layer.at(ix + 1, iy + 1), fx, bottom);
    lerpValues<F>(top, bottom, fy, out);
}

// A float converted to int by truncation, with NaN and far-out values mapped
// into range instead of being undefined.
inline int32_t truncateToInt(float v)
{
    if (!(v > -2.0e9f && v < 2.0e9f))
        return v >= 2.0e9f ? 2000000000 : (v <= -2.0e9f ? -2000000000 : 0);
    return int32_t(v);
}

} // namespace Velmor
