#pragma once

#include "Pixel.h"
#include "PixelFormat.h"

#include <QImage>

#include <cstdint>

// The wrap rule of pixelAt for one integer coordinate of an axis of n pixels.
// Callers stay within one period. Deliberately more than a one-period fold:
// Repeat folds any distance and unknown modes clamp, because a single fold
// of a wild coordinate would read outside the buffer.
inline int32_t wrapCoordinate(int32_t v, int32_t n, WrapMode mode)
{
    if (v >= 0 && v < n)
        return v;
    if (mode == Repeat) {
        if (v < 0) {
            v += n;
            if (v < 0)
                v = n - 1 - int32_t(uint32_t(-(v + 1)) % uint32_t(n));
            return v;
        }
        return int32_t(uint32_t(v) % uint32_t(n));
    }
    return v < 0 ? 0 : n - 1;
}

// The wrap rule of sample for float coordinates: Repeat moves a coordinate
// one period back into range, Clamp pins it to the edge pixel.
inline void wrapSamplePosition(float& x, float& y, float width, float height, WrapMode mode)
{
    if (x >= 0.0f && y >= 0.0f && x < width && y < height)
        return;
    if (mode == Repeat) {
        if (x < 0.0f)
            x += width;
        else if (x >= width)
            x -= width;
        if (y < 0.0f)
            y += height;
        else if (y >= height)
            y -= height;
    } else if (mode == Clamp) {
        if (x < 0.0f)
            x = 0.0f;
        else if (x >= width)
            x = width - 1.0f;
        if (y < 0.0f)
            y = 0.0f;
        else if (y >= height)
            y = height - 1.0f;
    }
}

// Truncation toward zero of a sample position; coordinates still far out of
// range (or not numbers) become 0 and are then folded by the wrap rule.
inline int32_t truncateSamplePosition(float v)
{
    return (v > -2.0e9f && v < 2.0e9f) ? int32_t(v) : 0;
}

// One layer of 32-bit float pixels, interleaved and row-major, row 0 at the
// bottom. The first float of pixel (x, y) is at channels * (x + width * y).
class Image
{
public:
    Image() = default;
    // Takes ownership of `data` (from newPixels); a null pointer gets a
    // zero-filled buffer of the right size.
    Image(uint32_t width, uint32_t height, PixelFormat format, float* data = nullptr);
    Image(const Image& other);            // deep copy
    Image& operator=(const Image& other); // deep copy
    Image(Image&& other) noexcept;
    Image& operator=(Image&& other) noexcept;
    ~Image();

    // Pixel buffers come from calloc: a large one arrives as fresh zeroed
    // pages, without a separate pass that writes zeros over it. Null when the
    // memory cannot be had (the image is then empty).
    static float* newPixels(uint64_t floatCount);
    static void freePixels(float* pixels);

    // Replaces the buffer by a zero-filled one of the given size and format.
    void allocate(uint32_t width, uint32_t height, PixelFormat format);
    void clear();
    // Copies all pixels when `destination` has the same format and size;
    // otherwise does nothing.
    void copyTo(Image& destination) const;

    uint32_t channels() const { return channelCount(format); }
    uint64_t pixelCount() const { return uint64_t(width) * height; }
    uint64_t floatCount() const { return pixelCount() * channels(); }
    bool isEmpty() const { return data == nullptr || width == 0 || height == 0; }

    // Folds x into 0..width-1 by the wrap mode.
    inline int32_t wrapX(int32_t x) const { return wrap(x, width); }
    inline int32_t wrapY(int32_t y) const { return wrap(y, height); }

    // A view (no allocation) of the pixel at (x, y) after the wrap rule. The
    // view's pointer is null for an empty image.
    inline Pixel pixelAt(int32_t x, int32_t y) const
    {
        if (isEmpty())
            return Pixel::view(format, nullptr);
        const uint32_t c = channels();
        return Pixel::view(format, data + c * (uint64_t(wrapX(x)) + uint64_t(width) * uint32_t(wrapY(y))));
    }

    // Samples at float coordinates into `out`, which must have this format.
    void sample(float x, float y, SampleMode mode, Pixel& out) const;
    // Rescales by bilinear sampling; an image without data becomes a zero RGB
    // image of the new size.
    void resample(uint32_t newWidth, uint32_t newHeight);
    // Keeps the first three channels of every pixel; the format tag is left
    // to the caller.
    void dropAlpha();

    // Normal-map conversions: colour to Normal and back, recording in the
    // flags how the vectors were mapped so that the conversion is reversible.
    void toNormalMap(bool flipX, bool flipY, bool mappedXY, bool mappedZ);
    void fromNormalMap();
    // fromNormalMap on one vector: the colour this image's flags give it.
    inline void normalToColour(float* v) const
    {
        if (flipNormalX)
            v[0] = -v[0];
        if (flipNormalY)
            v[1] = -v[1];
        if (mappedNormalXY) {
            v[0] = v[0] * 0.5f + 0.5f;
            v[1] = v[1] * 0.5f + 0.5f;
        }
        if (mappedNormalZ)
            v[2] = v[2] * 0.5f + 0.5f;
    }
    // Removes the average X/Y tilt of a Normal image and renormalises.
    void fixNormalMapSlope();

    // 8-bit RGB picture for display, top row first.
    QImage toDisplayImage() const;

    float* data = nullptr;
    uint32_t width = 0;
    uint32_t height = 0;
    PixelFormat format = None;
    WrapMode wrapMode = Repeat;
    uint32_t fileType = 0;
    uint32_t sampleType = 0;
    bool flipNormalX = false;
    bool flipNormalY = false;
    bool mappedNormalXY = false;
    bool mappedNormalZ = false;

    // Takes the descriptors of `other`: file type, sample type and the four
    // normal-map flags (not the size, format, pixels or wrap mode).
    void copyDescriptorsFrom(const Image& other);

private:
    inline int32_t wrap(int32_t v, uint32_t size) const { return wrapCoordinate(v, int32_t(size), wrapMode); }

    void copyFieldsFrom(const Image& other);
};
