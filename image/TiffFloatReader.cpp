#include "TiffFloatReader.h"

#include "Image.h"
#include "ImageFile.h"
#include "ImageFileSupport.h"
#include "LogMessage.h"

#include <tiffio.h>

#include <memory>

namespace {
struct TiffCloser
{
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

TiffHandle openTiff(const QString& path)
{
    prepareImageLibraries();
    return TiffHandle(TIFFOpen(encodedPath(path).constData(), "r"));
}

TiffLayout layoutOf(TIFF* tiff)
{
    TiffLayout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samplesPerPixel);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bitsPerSample);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.sampleFormat);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planarConfig);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric);
    layout.tiled = TIFFIsTiled(tiff) != 0;
    return layout;
}
}

bool readTiffLayout(const QString& path, TiffLayout& layout)
{
    TiffHandle tiff = openTiff(path);
    if (!tiff)
        return false;
    layout = layoutOf(tiff.get());
    return true;
}

bool freeImageHandlesTiff(const TiffLayout& layout)
{
    if (layout.photometric == PHOTOMETRIC_PALETTE && layout.samplesPerPixel != 1)
        return false;
    if (layout.photometric == PHOTOMETRIC_SEPARATED
        && (layout.sampleFormat == SAMPLEFORMAT_IEEEFP || layout.samplesPerPixel < 3))
        return false;
    if (layout.planarConfig == PLANARCONFIG_SEPARATE && layout.bitsPerSample < 8)
        return false;
    return true;
}

bool readFloatTiff(const QString& path, ImageFileInfo& info, Image& image)
{
    // What FreeImage's attempt reported stays: it is often the only reason.
    TiffHandle tiff = openTiff(path);
    if (!tiff) {
        logLoadFailure(path, imageLibraryMessage().isEmpty() ? QStringLiteral("libtiff cannot read its header")
                                                             : imageLibraryMessage());
        return false;
    }
    const TiffLayout layout = layoutOf(tiff.get());
    if (!imageSizeAllowed(path, layout.width, layout.height))
        return false;
    // Every sample is taken to be a 32-bit float, so the row length gives the
    // channel count.
    const uint64_t scanlineSize = uint64_t(TIFFScanlineSize64(tiff.get()));
    const uint64_t channels = scanlineSize / layout.width / 4;
    if (channels != 3 && channels != 4) {
        logMessage(Error, "Unknown TIFF pixel format. Channel num:%i", int(channels));
        logLoadFailure(path, QStringLiteral("only three or four float channels can be read"));
        return false;
    }
    // Not in the count above: other samples would be copied as if they were
    // floats, which gives no picture at all.
    if (layout.bitsPerSample != 32 || layout.sampleFormat != SAMPLEFORMAT_IEEEFP) {
        logLoadFailure(path, QStringLiteral("its %1-bit samples are neither read by FreeImage nor 32-bit floats")
                                 .arg(layout.bitsPerSample));
        return false;
    }
    if (layout.planarConfig != PLANARCONFIG_CONTIG || layout.tiled) {
        logLoadFailure(path, QStringLiteral("float samples are read only from interleaved strips"));
        return false;
    }
    // The rows are read straight into the image, so they must be exactly one
    // image row long.
    if (scanlineSize != uint64_t(layout.width) * channels * 4 || layout.samplesPerPixel != channels) {
        logLoadFailure(path, QStringLiteral("its rows are %1 bytes long for %2 pixels of %3 samples")
                                 .arg(scanlineSize)
                                 .arg(layout.width)
                                 .arg(layout.samplesPerPixel));
        return false;
    }

    const uint32_t c = uint32_t(channels);
    float* pixels = allocatePixels(path, layout.width, layout.height, c);
    if (!pixels)
        return false;
    // The file's first row is the top of the picture; images keep the bottom row first.
    for (uint32_t r = 0; r < layout.height; ++r) {
        float* row = pixels + uint64_t(layout.width) * c * (layout.height - 1 - r);
        if (TIFFReadScanline(tiff.get(), row, r, 0) != 1) {
            Image::freePixels(pixels);
            logLoadFailure(path, QStringLiteral("row %1 cannot be read (%2)").arg(r).arg(imageLibraryMessage()));
            return false;
        }
    }

    adoptPixels(image, pixels, layout.width, layout.height, c == 3 ? RGB : RGBA, FileTIFF, Float32);
    info.width = layout.width;
    info.height = layout.height;
    info.bitsPerPixel = 32 * c;
    info.channels = c;
    return true;
}
