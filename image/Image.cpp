#include "Image.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

Image::Image(uint32_t w, uint32_t h, PixelFormat f, float* pixels)
{
    if (pixels) {
        data = pixels;
        width = w;
        height = h;
        format = f;
    } else {
        allocate(w, h, f);
    }
}

Image::Image(const Image& other)
{
    *this = other;
}

Image& Image::operator=(const Image& other)
{
    if (this == &other)
        return *this;
    allocate(other.width, other.height, other.format);
    if (data && other.data)
        std::memcpy(data, other.data, floatCount() * sizeof(float));
    copyFieldsFrom(other);
    return *this;
}

Image::Image(Image&& other) noexcept
{
    *this = std::move(other);
}

Image& Image::operator=(Image&& other) noexcept
{
    if (this == &other)
        return *this;
    freePixels(data);
    data = std::exchange(other.data, nullptr);
    width = std::exchange(other.width, 0);
    height = std::exchange(other.height, 0);
    format = std::exchange(other.format, None);
    copyFieldsFrom(other);
    return *this;
}

Image::~Image()
{
    freePixels(data);
}

void Image::copyFieldsFrom(const Image& other)
{
    wrapMode = other.wrapMode;
    copyDescriptorsFrom(other);
}

void Image::copyDescriptorsFrom(const Image& other)
{
    fileType = other.fileType;
    sampleType = other.sampleType;
    flipNormalX = other.flipNormalX;
    flipNormalY = other.flipNormalY;
    mappedNormalXY = other.mappedNormalXY;
    mappedNormalZ = other.mappedNormalZ;
}

float* Image::newPixels(uint64_t floatCount)
{
    if (floatCount == 0 || floatCount > SIZE_MAX / sizeof(float))
        return nullptr;
    return static_cast<float*>(std::calloc(size_t(floatCount), sizeof(float)));
}

void Image::freePixels(float* pixels)
{
    std::free(pixels);
}

void Image::allocate(uint32_t w, uint32_t h, PixelFormat f)
{
    freePixels(data);
    data = nullptr;
    width = w;
    height = h;
    format = f;
    const uint64_t n = floatCount();
    if (n > 0)
        data = newPixels(n);
}

void Image::clear()
{
    if (data)
        std::fill(data, data + floatCount(), 0.0f);
}

void Image::copyTo(Image& destination) const
{
    if (&destination == this || destination.format != format || destination.width != width
        || destination.height != height || !data || !destination.data)
        return;
    std::memcpy(destination.data, data, floatCount() * sizeof(float));
}

void Image::sample(float x, float y, SampleMode mode, Pixel& out) const
{
    if (isEmpty())
        return;
    const float fw = float(width);
    const float fh = float(height);
    wrapSamplePosition(x, y, fw, fh, wrapMode);
    // Positions still out of range after one period are folded by pixelAt.
    const int32_t ix = truncateSamplePosition(x);
    const int32_t iy = truncateSamplePosition(y);

    if (mode == Nearest) {
        out = pixelAt(ix, iy);
    } else if (mode == Linear) {
        const float fx = x - float(ix);
        const float fy = y - float(iy);
        Pixel top(format);
        Pixel bottom(format);
        Pixel::lerp(pixelAt(ix, iy), pixelAt(ix + 1, iy), fx, top);
        Pixel::lerp(pixelAt(ix, iy + 1), pixelAt(ix + 1, iy + 1), fx, bottom);
        Pixel::lerp(top, bottom, fy, out);
    }
}

void Image::resample(uint32_t newWidth, uint32_t newHeight)
{
    if (!data) {
        allocate(newWidth, newHeight, RGB);
        return;
    }
    Image resized(newWidth, newHeight, format);
    const uint32_t c = channels();
    const float oldWidth = float(width);
    const float oldHeight = float(height);
#pragma omp parallel for schedule(static)
    for (int64_t y = 0; y < int64_t(newHeight); ++y) {
        Pixel value(format);
        for (uint32_t x = 0; x < newWidth; ++x) {
            const float sx = oldWidth * (float(x) / float(newWidth));
            const float sy = (float(y) / float(newHeight)) * oldHeight;
            sample(sx, sy, Linear, value);
            float* target = resized.data + c * (uint64_t(x) + uint64_t(newWidth) * uint64_t(y));
            for (uint32_t k = 0; k < c; ++k)
                target[k] = value.values[k];
        }
    }
    std::swap(data, resized.data);
    width = newWidth;
    height = newHeight;
}

void Image::dropAlpha()
{
    if (!data) {
        allocate(width, height, RGB);
        return;
    }
    const uint64_t pixels = pixelCount();
    const uint32_t c = channels();
    float* rgb = newPixels(pixels * 3);
    if (!rgb) {
        allocate(width, height, RGB);
        return;
    }
    const uint32_t copied = std::min<uint32_t>(c, 3);
    for (uint64_t i = 0; i < pixels; ++i)
        for (uint32_t k = 0; k < copied; ++k)
            rgb[3 * i + k] = data[c * i + k];
    freePixels(data);
    data = rgb;
}

QImage Image::toDisplayImage() const
{
    if (format == Normal) {
        Image colour(*this);
        colour.fromNormalMap();
        return colour.toDisplayImage();
    }
    QImage display(int(width), int(height), QImage::Format_RGB888);
    if (isEmpty() || display.isNull())
        return display;
    const uint32_t c = channels();
    auto toByte = [](float v) { return uchar(std::clamp(v, 0.0f, 1.0f) * 255.0f); };
    for (uint32_t y = 0; y < height; ++y) {
        uchar* line = display.scanLine(int(height - 1 - y));
        const float* row = data + uint64_t(width) * c * y;
        for (uint32_t x = 0; x < width; ++x) {
            const float* p = row + c * x;
            if (c == 1) {
                line[3 * x] = line[3 * x + 1] = line[3 * x + 2] = toByte(p[0]);
            } else {
                line[3 * x] = toByte(p[0]);
                line[3 * x + 1] = toByte(p[1]);
                line[3 * x + 2] = toByte(p[2]);
            }
        }
    }
    return display;
}
