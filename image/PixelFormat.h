#pragma once

#include <cstdint>

// Layout of one pixel's floats.
enum PixelFormat : uint32_t
{
    Gray = 0,   // one float
    RGB = 1,    // red, green, blue
    RGBA = 2,   // red, green, blue, alpha
    Normal = 3, // vector X, Y, Z in -1..1, normally of unit length
    None = 4    // no pixels
};

// How coordinates outside an image are folded back into it.
enum WrapMode : uint32_t
{
    Clamp = 0,
    Repeat = 1
};

enum SampleMode : uint32_t
{
    Nearest = 0,
    Linear = 1
};

// Depth of one channel in the file a picture came from (Image::sampleType).
// 1-bit files count as UInt8.
enum SampleType : uint32_t
{
    UInt8 = 1,
    UInt16 = 2,
    Int16 = 3,
    UInt32 = 5,
    Int32 = 6,
    Float32 = 7
};

// The file type a picture came from (Image::fileType). Formats other than
// these six keep FreeImage's own format number.
enum ImageFileType : uint32_t
{
    FileBMP = 0,
    FileEXR = 1,
    FileJPEG = 2,
    FilePNG = 3,
    FileTGA = 4,
    FileTIFF = 5
};

inline constexpr uint32_t channelCount(uint32_t format)
{
    switch (format) {
    case Gray: return 1;
    case RGB: return 3;
    case RGBA: return 4;
    case Normal: return 3;
    default: return 0;
    }
}
