#include "PngWriter.h"

#include <FreeImage.h>
#include <png.h>

#include <csetjmp>
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

// Everything that libpng may jump out of lives here, with no C++ objects
// that need destroying.
bool encode(png_structp png, png_infop info, FILE* file, FIBITMAP* dib, const Layout& layout, int level,
            const std::function<void(double)>* progress)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    const unsigned width = FreeImage_GetWidth(dib);
    const unsigned height = FreeImage_GetHeight(dib);
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, layout.bitDepth, layout.colourType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, level);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, level <= 3 ? PNG_FILTER_UP : PNG_ALL_FILTERS);
    png_write_info(png, info);
    if (layout.bgr)
        png_set_bgr(png);
    if (layout.bitDepth == 16)
        png_set_swap(png); // PNG samples are big-endian
    // The bitmap's first scan line is the bottom row; PNG starts at the top.
    const unsigned step = height / 100 + 1;
    for (unsigned row = 0; row < height; ++row) {
        png_write_row(png, FreeImage_GetScanLine(dib, int(height - 1 - row)));
        if (*progress && row % step == 0)
            (*progress)(double(row) / double(height));
    }
    png_write_end(png, info);
    return true;
}

} // namespace

bool canWrite(FIBITMAP* dib)
{
    return dib && layoutOf(dib).colourType >= 0 && FreeImage_GetWidth(dib) > 0 && FreeImage_GetHeight(dib) > 0;
}

bool write(FIBITMAP* dib, const QByteArray& path, int level, const std::function<void(double)>& progress,
           QByteArray& reason)
{
    if (!canWrite(dib)) {
        reason = "the bitmap has no PNG layout";
        return false;
    }
    FILE* file = std::fopen(path.constData(), "wb");
    if (!file) {
        reason = "the file cannot be created";
        return false;
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &reason, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    bool ok = png && info && encode(png, info, file, dib, layoutOf(dib), level < 0 ? 0 : (level > 9 ? 9 : level),
                                    &progress);
    if (png)
        png_destroy_write_struct(&png, info ? &info : nullptr);
    if (std::fclose(file) != 0 && ok) {
        reason = "the file could not be completed";
        ok = false;
    }
    if (!ok && reason.isEmpty())
        reason = "libpng could not write it";
    if (ok && progress)
        progress(1.0);
    return ok;
}

} // namespace PngWriter
