#pragma once

#include <QString>

#include <cstdint>

class Image;
struct ImageFileInfo;

// The tags of a TIFF file's first image that decide who can read its pixels.
struct TiffLayout
{
    uint32_t width = 0;
    uint32_t height = 0;
    uint16_t samplesPerPixel = 1;
    uint16_t bitsPerSample = 1;
    uint16_t sampleFormat = 1; // SAMPLEFORMAT_UINT
    uint16_t photometric = 0;
    uint16_t planarConfig = 1; // PLANARCONFIG_CONTIG
    bool tiled = false;
};

// Reads the layout without any pixel; false when libtiff cannot open the file.
bool readTiffLayout(const QString& path, TiffLayout& layout);

// False for layouts on which FreeImage's TIFF loader aborts or reads out of
// bounds instead of failing (palette images with extra samples, float CMYK,
// sub-byte samples in separate planes); those go to readFloatTiff directly.
bool freeImageHandlesTiff(const TiffLayout& layout);

// Reads a TIFF of 32-bit float samples, three or four per pixel, as an RGB or
// RGBA image with the file's first row at the top (image row height - 1).
// Anything else is refused with an error naming the file, and `image` and
// `info` are left as they were.
bool readFloatTiff(const QString& path, ImageFileInfo& info, Image& image);
