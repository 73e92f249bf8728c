#include "PngWriter.h"

#include <FreeImage.h>
#include <png.h>

#include <csetjmp>
#include <cstdint>
#include <limits>
#include <cstdio>

namespace PngWriter {

namespace {

struct Layout
{
    int colourType = -1;
    int bitDepth = 0;
    bool bgr = false; // 8-bit colour bitmaps hold blue first on this platform
};

Layout layoutOf(FIBITMAP* dib)
{
    Layout layout;
    const unsigned bpp = FreeImage_GetBPP(dib);
    switch (FreeImage_GetImageType(dib)) {
    case FIT_BITMAP:
        layout.bitDepth = 8;
        layout.bgr = FI_RGBA_RED == 2;
        if (bpp == 8 && FreeImage_GetColorType(dib) == FIC_MINISBLACK)
            layout.colourType = PNG_COLOR_TYPE_GRAY;
        else if (bpp == 24)
            layout.colourType = PNG_COLOR_TYPE_RGB;
        else if (bpp == 32)
            layout.colourType = PNG_COLOR_TYPE_RGB_ALPHA;
        break;
    case FIT_UINT16: layout = {PNG_COLOR_TYPE_GRAY, 16, false}; break;
    case FIT_RGB16: layout = {PNG_COLOR_TYPE_RGB, 16, false}; break;
    case FIT_RGBA16: layout = {PNG_COLOR_TYPE_RGB_ALPHA, 16, false}; break;
    default: break;
    }
    return layout;
}

void onError(png_structp png, png_const_charp message)
{
    auto* reason = static_cast<QByteArray*>(png_get_error_ptr(png));
    if (reason)
        *reason = message;
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

// How the rows are compressed: zlib level and libpng row filters.
struct Settings
{
    int level = 1;
    int filters = PNG_FILTER_UP;
};

void countBytes(png_structp png, png_bytep, size_t length)
{
    *static_cast<uint64_t*>(png_get_io_ptr(png)) += length;
}

void appendBytes(png_structp png, png_bytep data, size_t length)
{
    QByteArray& out = *static_cast<QByteArray*>(png_get_io_ptr(png));
    if (length > size_t(std::numeric_limits<int>::max() - out.size()))
        png_error(png, "the encoded picture is larger than 2 GB");
    try {
        out.append(reinterpret_cast<const char*>(data), int(length));
    } catch (...) {
        png_error(png, "there is not enough memory for the encoded picture");
    }
}

void flushNothing(png_structp) {}

// Encodes the picture rows [begin, end) (top-down) into `out`, or only
// counts the bytes into `counted` when `out` is null. Everything that libpng
// may jump out of lives here, with no C++ objects that need destroying.
bool encode(png_structp png, png_infop info, QByteArray* out, uint64_t* counted, FIBITMAP* dib, const Layout& layout,
            unsigned begin, unsigned end, Settings settings, const std::function<void(double)>* progress)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    const unsigned height = FreeImage_GetHeight(dib);
    if (out)
        png_set_write_fn(png, out, appendBytes, flushNothing);
    else
        png_set_write_fn(png, counted, countBytes, flushNothing);
    png_set_IHDR(png, info, FreeImage_GetWidth(dib), end - begin, layout.bitDepth, layout.colourType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, settings.level);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, settings.filters);
    png_write_info(png, info);
    if (layout.bgr)
        png_set_bgr(png);
    if (layout.bitDepth == 16)
        png_set_swap(png); // PNG samples are big-endian
    // The bitmap's first scan line is the bottom row; PNG starts at the top.
    const unsigned step = (end - begin) / 100 + 1;
    for (unsigned row = begin; row < end; ++row) {
        png_write_row(png, FreeImage_GetScanLine(dib, int(height - 1 - row)));
        if (progress && *progress && (row - begin) % step == 0)
            (*progress)(double(row - begin) / double(end - begin));
    }
    png_write_end(png, info);
    return true;
}

// Compressed bytes of the rows [begin, end) with `settings`.
uint64_t sampleBytes(FIBITMAP* dib, const Layout& layout, unsigned begin, unsigned end, Settings settings)
{
    uint64_t bytes = 0;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (png && info)
        encode(png, info, nullptr, &bytes, dib, layout, begin, end, settings, nullptr);
    if (png)
        png_destroy_write_struct(&png, info ? &info : nullptr);
    return bytes;
}

// Up filtering at a fast level suits photo-like pictures, which every filter
// and a longer search hardly shrink; smooth pictures shrink by a fifth or
// more with them. Three strips of rows decide which kind this is.
Settings chooseSettings(FIBITMAP* dib, const Layout& layout, int level)
{
    if (level > 3)
        return {level, PNG_ALL_FILTERS};
    const Settings fast{level, PNG_FILTER_UP};
    const Settings thorough{6, PNG_ALL_FILTERS};
    const unsigned height = FreeImage_GetHeight(dib);
    const unsigned rows = height < 32 ? height : 32;
    uint64_t fastBytes = 0;
    uint64_t thoroughBytes = 0;
    for (unsigned strip = 0; strip < 3; ++strip) {
        const unsigned begin = (height - rows) * strip / 2;
        fastBytes += sampleBytes(dib, layout, begin, begin + rows, fast);
        thoroughBytes += sampleBytes(dib, layout, begin, begin + rows, thorough);
    }
    return fastBytes * 10 <= thoroughBytes * 11 ? fast : Settings{3, PNG_ALL_FILTERS};
}

} // namespace

bool canWrite(FIBITMAP* dib)
{
    return dib && layoutOf(dib).colourType >= 0 && FreeImage_GetWidth(dib) > 0 && FreeImage_GetHeight(dib) > 0;
}

bool write(FIBITMAP* dib, QByteArray& out, int level, const std::function<void(double)>& progress,
           QByteArray& reason)
{
    out.clear();
    if (!canWrite(dib)) {
        reason = "the bitmap has no PNG layout";
        return false;
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &reason, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const Layout layout = layoutOf(dib);
    const Settings settings = chooseSettings(dib, layout, level < 0 ? 0 : (level > 9 ? 9 : level));
    bool ok = png && info
        && encode(png, info, &out, nullptr, dib, layout, 0, FreeImage_GetHeight(dib), settings, &progress);
    if (png)
        png_destroy_write_struct(&png, info ? &info : nullptr);
    if (!ok && reason.isEmpty())
        reason = "libpng could not write it";
    if (ok && progress)
        progress(1.0);
    return ok;
}

} // namespace PngWriter
