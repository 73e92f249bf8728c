#include "ImageFile.h"

#include "ExrHeaderCheck.h"
#include "ImageFileSupport.h"
#include "LogMessage.h"
#include "PngWriter.h"
#include "SafeFileWriter.h"
#include "TiffFloatReader.h"

#include <FreeImage.h>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

namespace {
// Row conversions below this size are not worth waking a thread team for.
constexpr uint64_t parallelPixels = 1 << 16;

struct BitmapDeleter
{
    void operator()(FIBITMAP* dib) const { FreeImage_Unload(dib); }
};
using Bitmap = std::unique_ptr<FIBITMAP, BitmapDeleter>;

// Where FreeImage encodes a file before it is stored. Unlike FreeImage's own
// memory stream, bytes skipped by a seek past the end read as zeros, as in a
// real file: libtiff pads its directory offset that way, and uninitialised
// padding would make two saves of one image differ.
struct EncodedFile
{
    QByteArray bytes;
    qint64 position = 0;
    bool failed = false;

    static unsigned DLL_CALLCONV read(void* buffer, unsigned size, unsigned count, fi_handle handle)
    {
        auto& file = *static_cast<EncodedFile*>(handle);
        if (size == 0 || file.position >= file.bytes.size())
            return 0;
        const qint64 items = std::min<qint64>(count, (file.bytes.size() - file.position) / size);
        std::memcpy(buffer, file.bytes.constData() + file.position, size_t(items * size));
        file.position += items * size;
        return unsigned(items);
    }

    static unsigned DLL_CALLCONV write(void* buffer, unsigned size, unsigned count, fi_handle handle)
    {
        auto& file = *static_cast<EncodedFile*>(handle);
        const qint64 length = qint64(size) * count;
        const qint64 end = file.position + length;
        if (file.failed || end > qint64(std::numeric_limits<int>::max())) {
            file.failed = true;
            return 0;
        }
        try {
            const qint64 oldSize = file.bytes.size();
            if (end > oldSize) {
                file.bytes.resize(int(end));
                std::memset(file.bytes.data() + oldSize, 0, size_t(end - oldSize));
            }
        } catch (...) {
            file.failed = true;
            return 0;
        }
        std::memcpy(file.bytes.data() + file.position, buffer, size_t(length));
        file.position = end;
        return count;
    }

    static int DLL_CALLCONV seek(fi_handle handle, long offset, int origin)
    {
        auto& file = *static_cast<EncodedFile*>(handle);
        const qint64 base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file.position : file.bytes.size();
        if (base + offset < 0)
            return -1;
        file.position = base + offset;
        return 0;
    }

    static long DLL_CALLCONV tell(fi_handle handle) { return long(static_cast<EncodedFile*>(handle)->position); }
};

uint32_t storedFileType(FREE_IMAGE_FORMAT fif)
{
    switch (fif) {
    case FIF_BMP: return FileBMP;
    case FIF_EXR: return FileEXR;
    case FIF_JPEG: return FileJPEG;
    case FIF_PNG: return FilePNG;
    case FIF_TARGA: return FileTGA;
    case FIF_TIFF: return FileTIFF;
    default: return uint32_t(fif);
    }
}

// ---- Loading ----

// How the samples of one loaded bitmap become floats.
enum class Decoder
{
    None,
    Bits,         // 1 bit per pixel
    Byte,         // / 255
    UInt16,       // / 65535
    Int16,        // / 32767
    UInt32,       // x 1 / 2^32
    Int32,        // x 1 / 2^31
    Float         // copied
};

template <typename T, typename Convert>
void readRows(FIBITMAP* dib, float* pixels, uint32_t width, uint32_t height, uint32_t channels,
              uint32_t stride, const int* position, Convert convert)
{
#pragma omp parallel for schedule(static) if (uint64_t(width) * height >= parallelPixels)
    for (int64_t y = 0; y < int64_t(height); ++y) {
        const T* source = reinterpret_cast<const T*>(FreeImage_GetScanLine(dib, int(y)));
        float* target = pixels + uint64_t(width) * channels * uint64_t(y);
        for (uint32_t x = 0; x < width; ++x, source += stride, target += channels)
            for (uint32_t k = 0; k < channels; ++k)
                target[k] = convert(source[position[k]]);
    }
}

// Most significant bit first; `setValue` is what a set bit means.
void readBits(FIBITMAP* dib, float* pixels, uint32_t width, uint32_t height, float setValue)
{
    const float clearValue = 1.0f - setValue;
#pragma omp parallel for schedule(static) if (uint64_t(width) * height >= parallelPixels)
    for (int64_t y = 0; y < int64_t(height); ++y) {
        const BYTE* source = FreeImage_GetScanLine(dib, int(y));
        float* target = pixels + uint64_t(width) * uint64_t(y);
        for (uint32_t x = 0; x < width; ++x)
            target[x] = ((source[x >> 3] >> (7 - (x & 7))) & 1) ? setValue : clearValue;
    }
}

// Position of a colour's byte in a pixel, from its mask: bit 0 is byte 0,
// bit 8 byte 1, bit 16 byte 2.
int bytePosition(unsigned mask, int fallback)
{
    if (mask & 0x1u)
        return 0;
    if (mask & 0x100u)
        return 1;
    if (mask & 0x10000u)
        return 2;
    if (mask & 0x1000000u)
        return 3;
    return fallback;
}

// Bitmaps the decoders do not take (palettes, CMYK, 4-bit grey, doubles)
// become the nearest layout they do take. Anything else, 16-bit 555 or 565
// colour included, is returned as it is, and the decoder reports what it
// cannot read.
Bitmap expandedBitmap(Bitmap dib)
{
    const FREE_IMAGE_TYPE type = FreeImage_GetImageType(dib.get());
    const FREE_IMAGE_COLOR_TYPE colour = FreeImage_GetColorType(dib.get());
    const unsigned bpp = FreeImage_GetBPP(dib.get());
    FIBITMAP* expanded = nullptr;
    if (type == FIT_BITMAP) {
        const bool grey = colour == FIC_MINISBLACK || colour == FIC_MINISWHITE;
        if (grey && bpp == 4)
            expanded = FreeImage_ConvertToGreyscale(dib.get());
        else if (colour == FIC_CMYK)
            expanded = FreeImage_ConvertTo24Bits(dib.get());
        else if (colour == FIC_PALETTE)
            expanded = FreeImage_IsTransparent(dib.get()) ? FreeImage_ConvertTo32Bits(dib.get())
                                                          : FreeImage_ConvertTo24Bits(dib.get());
    } else if (type == FIT_DOUBLE) {
        expanded = FreeImage_ConvertToType(dib.get(), FIT_FLOAT, FALSE);
    }
    if (expanded)
        return Bitmap(expanded);
    return dib;
}

struct Decoding
{
    Decoder decoder = Decoder::None;
    uint32_t sampleType = 0;
};

Decoding decodingFor(FREE_IMAGE_TYPE type, uint32_t channels, uint32_t bits)
{
    if (channels == 1) {
        if (type == FIT_BITMAP && bits == 8)
            return {Decoder::Byte, UInt8}; // min-is-white too: the stored byte / 255
        if (type == FIT_BITMAP && bits == 1)
            return {Decoder::Bits, UInt8};
        switch (type) {
        case FIT_UINT16: return {Decoder::UInt16, UInt16};
        case FIT_INT16: return {Decoder::Int16, Int16};
        case FIT_UINT32: return {Decoder::UInt32, UInt32};
        case FIT_INT32: return {Decoder::Int32, Int32};
        case FIT_FLOAT: return {Decoder::Float, Float32};
        default: return {};
        }
    }
    if (bits == 8 && type == FIT_BITMAP)
        return {Decoder::Byte, UInt8};
    if (bits == 16 && (type == FIT_RGB16 || type == FIT_RGBA16))
        return {Decoder::UInt16, UInt16};
    if (bits == 32 && (type == FIT_RGBF || type == FIT_RGBAF))
        return {Decoder::Float, Float32};
    return {};
}

bool decodeBitmap(const QString& path, FIBITMAP* dib, FREE_IMAGE_FORMAT fif, ImageFileInfo& info,
                  Image& image)
{
    const FREE_IMAGE_TYPE type = FreeImage_GetImageType(dib);
    const FREE_IMAGE_COLOR_TYPE colour = FreeImage_GetColorType(dib);
    const uint32_t width = FreeImage_GetWidth(dib);
    const uint32_t height = FreeImage_GetHeight(dib);
    const uint32_t bpp = FreeImage_GetBPP(dib);

    uint32_t channels = 0;
    if (colour == FIC_MINISBLACK || colour == FIC_MINISWHITE)
        channels = 1;
    else if (colour == FIC_RGB)
        channels = 3;
    else if (colour == FIC_RGBALPHA)
        channels = 4;
    if (channels == 0) {
        logMessage(Error, "Unsupported channel layout bpp:%i number of channels: %i", int(bpp), 0);
        logLoadFailure(path, QStringLiteral("its colour layout cannot be read"));
        return false;
    }
    uint32_t bits = bpp / channels;
    uint32_t stride = channels;
    // FreeImage calls a 32-bit bitmap RGB when every alpha byte is opaque.
    if (channels == 3 && bits == 10) {
        channels = 4;
        bits = 8;
        stride = 4;
    }

    const auto [decoder, sampleType] = decodingFor(type, channels, bits);
    if (decoder == Decoder::None) {
        logMessage(Error, "Unsupported channel layout. Bits per channel: %i Number of channels: %i.", int(bits),
                   int(channels));
        logLoadFailure(path, QStringLiteral("its samples of %1 bits cannot be read").arg(bits));
        // A colour layout of another depth leaves the image allocated with
        // zero pixels; the load still fails.
        if (channels >= 3) {
            if (float* zeros = allocatePixels(path, width, height, channels))
                adoptPixels(image, zeros, width, height, channels == 3 ? RGB : RGBA, storedFileType(fif), 0);
        }
        return false;
    }

    // Byte positions of red, green, blue and alpha. Only 8-bit bitmaps may
    // order them differently (BGR on little-endian machines); the 16-bit and
    // float types are always red, green, blue, alpha.
    int position[4] = {0, 1, 2, 3};
    if (type == FIT_BITMAP && channels >= 3) {
        position[0] = bytePosition(FreeImage_GetRedMask(dib), FI_RGBA_RED);
        position[1] = bytePosition(FreeImage_GetGreenMask(dib), FI_RGBA_GREEN);
        position[2] = bytePosition(FreeImage_GetBlueMask(dib), FI_RGBA_BLUE);
        position[3] = 6 - position[0] - position[1] - position[2]; // the byte left over
        if (position[3] < 0 || position[3] > 3)
            position[3] = FI_RGBA_ALPHA;
    }

    float* pixels = allocatePixels(path, width, height, channels);
    if (!pixels)
        return false;
    switch (decoder) {
    case Decoder::Bits: readBits(dib, pixels, width, height, colour == FIC_MINISBLACK ? 1.0f : 0.0f); break;
    case Decoder::Byte:
        readRows<BYTE>(dib, pixels, width, height, channels, stride, position, [](BYTE v) { return float(v) / 255.0f; });
        break;
    case Decoder::UInt16:
        readRows<uint16_t>(dib, pixels, width, height, channels, stride, position,
                           [](uint16_t v) { return float(v) / 65535.0f; });
        break;
    case Decoder::Int16:
        readRows<int16_t>(dib, pixels, width, height, 1, 1, position, [](int16_t v) { return float(v) / 32767.0f; });
        break;
    case Decoder::UInt32:
        readRows<uint32_t>(dib, pixels, width, height, 1, 1, position,
                           [](uint32_t v) { return float(v) * 2.3283064e-10f; });
        break;
    case Decoder::Int32:
        readRows<int32_t>(dib, pixels, width, height, 1, 1, position, [](int32_t v) { return float(v) * 4.656613e-10f; });
        break;
    case Decoder::Float:
        readRows<float>(dib, pixels, width, height, channels, stride, position, [](float v) { return v; });
        break;
    case Decoder::None: break;
    }

    adoptPixels(image, pixels, width, height, channels == 1 ? Gray : channels == 3 ? RGB : RGBA, storedFileType(fif),
                sampleType);
    info.width = width;
    info.height = height;
    info.channels = channels;
    return true;
}

// For the uncompressed layouts whose size the header fixes (BMP without RLE,
// TGA types 1 to 3), a text when the file is shorter than its header
// promises, which FreeImage does not report; empty otherwise.
QString missingPixelData(const QString& path, FREE_IMAGE_FORMAT fif, FIBITMAP* dib)
{
    if (fif != FIF_BMP && fif != FIF_TARGA)
        return QString();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray header = file.read(54);
    const qint64 size = file.size();
    auto le = [&](int at, int bytes) {
        uint32_t v = 0;
        for (int i = bytes - 1; i >= 0; --i)
            v = (v << 8) | uint8_t(header[at + i]);
        return v;
    };
    const uint64_t width = FreeImage_GetWidth(dib), height = FreeImage_GetHeight(dib);
    uint64_t expected = 0;
    if (fif == FIF_BMP && header.size() >= 34 && le(14, 4) >= 40 && le(30, 4) == 0) { // BI_RGB
        const uint64_t bits = le(28, 2);
        expected = uint64_t(le(10, 4)) + (width * bits + 31) / 32 * 4 * height;
    } else if (fif == FIF_TARGA && header.size() >= 18 && uint8_t(header[2]) >= 1 && uint8_t(header[2]) <= 3) {
        const uint64_t mapBytes = uint8_t(header[1]) ? le(5, 2) * ((uint64_t(uint8_t(header[7])) + 7) / 8) : 0;
        expected = 18 + uint8_t(header[0]) + mapBytes + width * height * ((uint64_t(uint8_t(header[16])) + 7) / 8);
    }
    if (expected == 0 || uint64_t(size) >= expected)
        return QString();
    return QStringLiteral("the file holds %1 bytes where its header promises %2").arg(size).arg(expected);
}

QString unreadableReason(const QString& path)
{
    const QFileInfo file(path);
    if (!file.exists())
        return QStringLiteral("the file does not exist");
    if (file.isDir())
        return QStringLiteral("it is a folder");
    if (file.size() == 0)
        return QStringLiteral("the file is empty");
    if (!file.isReadable())
        return QStringLiteral("the file cannot be read");
    return QStringLiteral("its format is not recognised");
}

// ---- Saving ----

// How floats become the samples of the bitmap that is written.
enum class Encoder
{
    None,
    Byte,   // x 255
    UInt16, // x 65535
    Int16,  // x 32767
    UInt32, // x 2^32
    Float   // copied
};

struct FileLayout
{
    FREE_IMAGE_TYPE type = FIT_UNKNOWN;
    unsigned bpp = 0;
    Encoder encoder = Encoder::None;
};

// The bitmap a format and sample type are written as; Encoder::None when there is none.
FileLayout fileLayout(PixelFormat format, uint32_t sampleType)
{
    switch (format) {
    case Gray:
        switch (sampleType) {
        case UInt16: return {FIT_UINT16, 16, Encoder::UInt16};
        case Int16: return {FIT_INT16, 16, Encoder::Int16};
        case UInt32: return {FIT_UINT32, 32, Encoder::UInt32};
        case Int32: return {};
        case Float32: return {FIT_FLOAT, 32, Encoder::Float};
        default: return {FIT_BITMAP, 8, Encoder::Byte};
        }
    case RGB:
    case Normal:
        switch (sampleType) {
        case UInt16: return {FIT_RGB16, 48, Encoder::UInt16};
        case Float32: return {FIT_RGBF, 96, Encoder::Float};
        default: return {FIT_BITMAP, 24, Encoder::Byte};
        }
    case RGBA:
        switch (sampleType) {
        case UInt8: return {FIT_BITMAP, 32, Encoder::Byte};
        case UInt16: return {FIT_RGBA16, 64, Encoder::UInt16};
        case Float32: return {FIT_RGBAF, 128, Encoder::Float};
        default: return {};
        }
    default: return {};
    }
}

bool formatWrites(FREE_IMAGE_FORMAT fif, const FileLayout& layout)
{
    return FreeImage_FIFSupportsExportType(fif, layout.type)
           && (layout.type != FIT_BITMAP || FreeImage_FIFSupportsExportBPP(fif, int(layout.bpp)));
}

// The layout for the image's sample type when the format can store it; none
// otherwise: a save never writes another depth than the image's.
FileLayout writableLayout(FREE_IMAGE_FORMAT fif, PixelFormat format, uint32_t sampleType)
{
    const FileLayout wanted = fileLayout(format, sampleType);
    if (wanted.encoder == Encoder::None || formatWrites(fif, wanted))
        return wanted;
    return {};
}

// Float to integer sample: truncated, not rounded and not clamped, so that
// 0.999 x 255 gives 254; out-of-range values wrap like the integer type does.
template <typename T>
inline T truncatedSample(float scaled)
{
    const int64_t whole = (scaled > -9.0e18f && scaled < 9.0e18f) ? int64_t(scaled) : 0;
    return T(whole);
}

template <typename T, typename Convert>
void writeRows(const Image& image, FIBITMAP* dib, uint32_t stride, const int* position, Convert convert)
{
    const uint32_t width = image.width;
    const uint32_t height = image.height;
    const uint32_t channels = image.channels();
    const bool normal = image.format == Normal;
#pragma omp parallel for schedule(static) if (image.pixelCount() >= parallelPixels)
    for (int64_t y = 0; y < int64_t(height); ++y) {
        T* target = reinterpret_cast<T*>(FreeImage_GetScanLine(dib, int(y)));
        const float* source = image.data + uint64_t(width) * channels * uint64_t(y);
        for (uint32_t x = 0; x < width; ++x, source += channels, target += stride) {
            float v[4] = {source[0], 0.0f, 0.0f, 0.0f};
            for (uint32_t k = 1; k < channels; ++k)
                v[k] = source[k];
            if (normal)
                image.normalToColour(v);
            for (uint32_t k = 0; k < channels; ++k)
                target[position[k]] = convert(v[k]);
        }
    }
}

Bitmap encodeBitmap(const Image& image, const FileLayout& layout)
{
    Bitmap dib(FreeImage_AllocateT(layout.type, int(image.width), int(image.height), int(layout.bpp),
                                   FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK));
    if (!dib)
        return dib;
    const uint32_t channels = image.channels();
    int position[4] = {0, 1, 2, 3};
    uint32_t stride = channels;
    if (layout.type == FIT_BITMAP) {
        if (channels >= 3) {
            position[0] = FI_RGBA_RED;
            position[1] = FI_RGBA_GREEN;
            position[2] = FI_RGBA_BLUE;
            position[3] = FI_RGBA_ALPHA;
        } else {
            // A grey palette makes the 8-bit bitmap a grey image, not an indexed one.
            RGBQUAD* palette = FreeImage_GetPalette(dib.get());
            for (int i = 0; i < 256; ++i)
                palette[i].rgbRed = palette[i].rgbGreen = palette[i].rgbBlue = BYTE(i);
        }
        stride = layout.bpp / 8;
    }
    FIBITMAP* d = dib.get();
    switch (layout.encoder) {
    case Encoder::Byte:
        writeRows<BYTE>(image, d, stride, position, [](float v) { return truncatedSample<BYTE>(v * 255.0f); });
        break;
    case Encoder::UInt16:
        writeRows<uint16_t>(image, d, stride, position, [](float v) { return truncatedSample<uint16_t>(v * 65535.0f); });
        break;
    case Encoder::Int16:
        writeRows<int16_t>(image, d, stride, position, [](float v) { return truncatedSample<int16_t>(v * 32767.0f); });
        break;
    case Encoder::UInt32:
        writeRows<uint32_t>(image, d, stride, position,
                            [](float v) { return truncatedSample<uint32_t>(v * 4294967296.0f); });
        break;
    case Encoder::Float: writeRows<float>(image, d, stride, position, [](float v) { return v; }); break;
    case Encoder::None: return nullptr;
    }
    return dib;
}

QString formatName(PixelFormat format)
{
    switch (format) {
    case Gray: return QStringLiteral("grey");
    case RGB: return QStringLiteral("RGB");
    case RGBA: return QStringLiteral("RGBA");
    case Normal: return QStringLiteral("normal-map");
    default: return QStringLiteral("empty");
    }
}

bool saveFailed(const QString& path, const QString& reason)
{
    logMessage(Error, "Unable to save output file.");
    logMessage(Error, QStringLiteral("Could not save the image file \"%1\": %2.")
                          .arg(QDir::toNativeSeparators(path), reason));
    return false;
}

}

bool loadImage(ImageFileInfo& info, const QString& path, Image& image)
{
    prepareImageLibraries();
    clearImageLibraryMessage();
    const QByteArray name = encodedPath(path);
    const FREE_IMAGE_FORMAT fif = FreeImage_GetFileType(name.constData(), 0);
    if (fif == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(fif)) {
        logMessage(Error, "Unable to load image, unknown FreeImage loading error");
        logLoadFailure(path, unreadableReason(path));
        return false;
    }
    if (fif == FIF_EXR && !checkExrHeader(path))
        return false;
    if (fif == FIF_TIFF) {
        TiffLayout layout;
        if (readTiffLayout(path, layout) && !freeImageHandlesTiff(layout))
            return readFloatTiff(path, info, image);
    }

    // The header first, so that an absurd size is refused before FreeImage
    // allocates it. Formats that cannot load a header alone are checked after.
    Bitmap dib;
    if (FreeImage_FIFSupportsNoPixels(fif)) {
        const Bitmap header(FreeImage_Load(fif, name.constData(), FIF_LOAD_NOPIXELS));
        if (header) {
            if (!imageSizeAllowed(path, FreeImage_GetWidth(header.get()), FreeImage_GetHeight(header.get())))
                return false;
            clearImageLibraryMessage(); // only what the pixel load says counts below
            dib.reset(FreeImage_Load(fif, name.constData(), 0));
        }
    } else {
        dib.reset(FreeImage_Load(fif, name.constData(), 0));
    }
    if (!dib) {
        if (fif == FIF_TIFF)
            return readFloatTiff(path, info, image);
        logMessage(Error, "Unable to load image, unknown FreeImage loading error");
        logLoadFailure(path);
        return false;
    }
    if (!imageSizeAllowed(path, FreeImage_GetWidth(dib.get()), FreeImage_GetHeight(dib.get())))
        return false;

    // Codecs report damaged data (libjpeg's "Premature end of JPEG file",
    // libtiff's strip read errors) and still return a partly black picture.
    QString damage = imageLibraryMessage();
    if (damage.isEmpty())
        damage = missingPixelData(path, fif, dib.get());
    const uint32_t fileBitsPerPixel = FreeImage_GetBPP(dib.get());
    dib = expandedBitmap(std::move(dib));
    if (!decodeBitmap(path, dib.get(), fif, info, image))
        return false;
    info.bitsPerPixel = fileBitsPerPixel;
    if (!damage.isEmpty())
        logMessage(Warning, QStringLiteral("The image file \"%1\" is damaged and only partly loaded: %2")
                                .arg(QDir::toNativeSeparators(path), damage));
    return true;
}

bool saveImage(const QString& path, const Image& image, int pngLevel, const std::function<void(double)>& progress)
{
    prepareImageLibraries();
    clearImageLibraryMessage();
    if (image.isEmpty() || image.channels() == 0)
        return saveFailed(path, QStringLiteral("the image has no pixels"));
    const QByteArray name = encodedPath(path);
    const FREE_IMAGE_FORMAT fif = FreeImage_GetFIFFromFilename(name.constData());
    if (fif == FIF_UNKNOWN || !FreeImage_FIFSupportsWriting(fif))
        return saveFailed(path, QStringLiteral("its extension names no image format that can be written"));

    const FileLayout layout = writableLayout(fif, image.format, image.sampleType);
    if (layout.encoder == Encoder::None)
        return saveFailed(path, QStringLiteral("%1 images of sample type %2 cannot be written as %3 at that depth")
                                    .arg(formatName(image.format))
                                    .arg(image.sampleType)
                                    .arg(QString::fromLatin1(FreeImage_GetFormatFromFIF(fif))));
    const Bitmap dib = encodeBitmap(image, layout);
    if (!dib)
        return saveFailed(path, QStringLiteral("there is not enough memory"));

    // EXR would halve float samples by default; the sample type asks for 32 bits.
    // (Deliberately kept: displacement needs the precision.)
    const int flags = fif == FIF_EXR ? EXR_FLOAT : 0;
    // A chosen PNG level goes through our own libpng writer, which also
    // picks the row filter and reports progress.
    if (fif == FIF_PNG && pngLevel >= 1 && pngLevel <= 9 && PngWriter::canWrite(dib.get())) {
        QByteArray encoded;
        QByteArray reason;
        if (!PngWriter::write(dib.get(), encoded, pngLevel, progress, reason))
            return saveFailed(path, QStringLiteral("libpng could not write it (%1)").arg(QString::fromUtf8(reason)));
        if (!Velmor::writeFileSafely(path, encoded))
            return saveFailed(path, QStringLiteral("the file could not be written; the previous file is kept"));
        return true;
    }
    // FreeImage ignores write errors of its own files, so it writes into memory
    // and the bytes reach the disk through a writer that checks every step.
    EncodedFile encoded;
    FreeImageIO io{EncodedFile::read, EncodedFile::write, EncodedFile::seek, EncodedFile::tell};
    if (!FreeImage_SaveToHandle(fif, dib.get(), &io, &encoded, flags) || encoded.failed) {
        const QString detail = imageLibraryMessage();
        return saveFailed(path, detail.isEmpty() ? QStringLiteral("FreeImage could not write it")
                                                 : QStringLiteral("FreeImage could not write it (%1)").arg(detail));
    }
    if (encoded.bytes.isEmpty())
        return saveFailed(path, QStringLiteral("FreeImage wrote no data"));
    if (!Velmor::writeFileSafely(path, encoded.bytes))
        return saveFailed(path, QStringLiteral("the file could not be written; the previous file is kept"));
    return true;
}

QString extensionForFileType(uint32_t fileType)
{
    switch (fileType) {
    case FileBMP: return QStringLiteral(".bmp");
    case FileEXR: return QStringLiteral(".exr");
    case FileJPEG: return QStringLiteral(".jpg");
    case FileTGA: return QStringLiteral(".tga");
    case FileTIFF: return QStringLiteral(".tif");
    default: return QStringLiteral(".png");
    }
}
