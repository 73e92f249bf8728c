#include "Pixel.h"

#include <cmath>

Pixel::Pixel(PixelFormat pixelFormat)
    : format(pixelFormat)
{
    if (channelCount(format) > 0) {
        values = storage;
        owned = true;
    }
}

Pixel::Pixel(const Pixel& other)
    : format(other.format)
{
    const uint32_t n = channelCount(format);
    if (n == 0)
        return;
    values = storage;
    owned = true;
    if (other.values)
        for (uint32_t c = 0; c < n; ++c)
            storage[c] = other.values[c];
}

Pixel& Pixel::operator=(const Pixel& other)
{
    if (this == &other)
        return *this;
    if (!values) {
        // An empty pixel becomes an owned copy.
        format = other.format;
        if (channelCount(format) == 0)
            return *this;
        values = storage;
        owned = true;
    }
    const uint32_t n = channelCount(other.format) < 4 ? channelCount(other.format) : 4;
    if (other.values)
        for (uint32_t c = 0; c < n; ++c)
            values[c] = other.values[c];
    return *this;
}

void Pixel::lerp(const Pixel& a, const Pixel& b, float t, Pixel& out)
{
    const uint32_t n = channelCount(a.format);
    for (uint32_t c = 0; c < n; ++c)
        out.values[c] = (b.values[c] - a.values[c]) * t + a.values[c];
    if (a.format == Normal) {
        const float length = std::sqrt(out.values[0] * out.values[0] + out.values[1] * out.values[1]
                                       + out.values[2] * out.values[2]);
        for (uint32_t c = 0; c < 3; ++c)
            out.values[c] /= length;
    }
}
