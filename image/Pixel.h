#pragma once

#include "PixelFormat.h"

// Value handle for one pixel of any format. A Pixel made by Image::pixelAt is a
// view into the image's buffer; one made by the format constructor owns its
// channels (held inline, so making one never touches the heap). Copying or
// assigning copies channel values, never the pointer.
class Pixel
{
public:
    Pixel() = default;
    explicit Pixel(PixelFormat format);
    // A view of `values`, which must hold channelCount(format) floats.
    // Returned as a prvalue, so the view is never copied into an owned pixel.
    static Pixel view(PixelFormat format, float* values) { return Pixel(format, values); }

    // An owned copy of a view. (Copy-initialising from pixelAt's result
    // keeps the view: C++17 elides that copy.)
    Pixel clone() const { return Pixel(*this); }

    Pixel(const Pixel& other);
    Pixel& operator=(const Pixel& other);

    // out = (b - a) * t + a per channel of a's format; a Normal result is
    // divided by its length.
    static void lerp(const Pixel& a, const Pixel& b, float t, Pixel& out);

    uint32_t channels() const { return channelCount(format); }
    float& operator[](int channel) { return values[channel]; }
    float operator[](int channel) const { return values[channel]; }

    PixelFormat format = None;
    float* values = nullptr;
    bool owned = false;

private:
    Pixel(PixelFormat viewFormat, float* viewValues)
        : format(viewFormat)
        , values(viewValues)
    {
    }

    float storage[4] = {0.0f, 0.0f, 0.0f, 0.0f};
};
