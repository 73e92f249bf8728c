#include "ImageFile.h"
#include "MessageHandler.h"
#include "../ChildWithFileLimit.h"

#include <FreeImage.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <cmath>
#include <gtest/gtest.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {
struct LogCapture
{
    QStringList errors, warnings;
    QMetaObject::Connection connection = QObject::connect(
        MessageHandler::instance(), &MessageHandler::onMessage, [this](QString text, int severity) {
            if (severity == 2)
                errors << text;
            if (severity == 1)
                warnings << text;
        });
    LogCapture() = default;
    LogCapture(const LogCapture&) = delete; // the connection captures this
    ~LogCapture() { QObject::disconnect(connection); }
    bool hasError(const QString& part) const { return !errors.filter(part).isEmpty(); }
};

// Smooth gradients of a different slope in each channel and along each axis,
// so that swapped channels or flipped rows show up even through JPEG.
Image rampImage(uint32_t w, uint32_t h, PixelFormat format, uint32_t sampleType)
{
    Image image(w, h, format);
    image.sampleType = sampleType;
    const uint32_t c = image.channels();
    for (uint64_t i = 0; i < image.floatCount(); ++i) {
        const uint64_t k = i % c, x = (i / c) % w, y = i / c / w;
        image.data[i] = 0.05f + 0.9f * float((x + 1) * (k + 1) + 3 * y) / float(w * c + 3 * h);
    }
    return image;
}

// Loads `path`, failing the test (and giving an empty image) when it cannot.
Image load(const QString& path, ImageFileInfo* info = nullptr)
{
    ImageFileInfo scratch;
    Image image;
    EXPECT_TRUE(loadImage(info ? *info : scratch, path, image)) << path.toStdString();
    return image;
}

// What a value reads back as after the truncating integer save.
float stored(float v, uint32_t sampleType)
{
    switch (sampleType) {
    case UInt8: return float(int64_t(v * 255.0f)) / 255.0f;
    case UInt16: return float(int64_t(v * 65535.0f)) / 65535.0f;
    case Int16: return float(int64_t(v * 32767.0f)) / 32767.0f;
    case UInt32: return float(uint32_t(int64_t(v * 4294967296.0f))) * 2.3283064e-10f;
    default: return v;
    }
}

void putUInt32(QByteArray& bytes, int offset, uint32_t value, bool bigEndian)
{
    for (int i = 0; i < 4; ++i)
        bytes[offset + i] = char(value >> (bigEndian ? 24 - 8 * i : 8 * i));
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A TIFF written straight with libtiff, one row per strip; sample (x, y, k)
// of float files holds y + x / 100 + k / 1000.
void writeTiff(const QString& path, uint32_t w, uint32_t h, uint32_t spp, uint32_t bps, uint32_t sampleFormat,
               uint32_t photometric, uint32_t planar = PLANARCONFIG_CONTIG, const uint8_t* bytes = nullptr)
{
    TIFF* tiff = TIFFOpen(QFile::encodeName(path).constData(), "w");
    ASSERT_NE(tiff, nullptr);
    const bool floats = bps == 32 && sampleFormat == SAMPLEFORMAT_IEEEFP;
    for (auto [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, w}, {TIFFTAG_IMAGELENGTH, h},
                              {TIFFTAG_SAMPLESPERPIXEL, spp}, {TIFFTAG_BITSPERSAMPLE, bps},
                              {TIFFTAG_SAMPLEFORMAT, sampleFormat}, {TIFFTAG_PHOTOMETRIC, photometric},
                              {TIFFTAG_PLANARCONFIG, planar}, {TIFFTAG_ROWSPERSTRIP, 1u}})
        TIFFSetField(tiff, tag, value);
    if (floats) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_FLOATINGPOINT);
    }
    std::vector<uint8_t> row(size_t(TIFFScanlineSize64(tiff)));
    for (uint16_t p = 0; p < (planar == PLANARCONFIG_CONTIG ? 1 : spp); ++p)
        for (uint32_t y = 0; y < h; ++y) {
            if (bytes)
                std::memcpy(row.data(), bytes + row.size() * y, row.size());
            for (size_t i = 0; floats && i < row.size() / 4; ++i) {
                const float v = float(y) + float(i / spp) / 100.0f + float(i % spp) / 1000.0f;
                std::memcpy(row.data() + 4 * i, &v, 4);
            }
            ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), y, p), 1);
        }
    TIFFClose(tiff);
}
}

TEST(ImageFile, RoundTripsEveryFormatAndDepth)
{
    const struct { const char* name; PixelFormat format; uint32_t sampleType;
                   FREE_IMAGE_TYPE fileType; unsigned bpp; float tolerance; } cases[] = {
        {"grey8.png", Gray, UInt8, FIT_BITMAP, 8, 0},      {"grey16.png", Gray, UInt16, FIT_UINT16, 16, 0},
        {"rgb16.png", RGB, UInt16, FIT_RGB16, 48, 0},      {"rgba16.png", RGBA, UInt16, FIT_RGBA16, 64, 0},
        {"rgb8.bmp", RGB, UInt8, FIT_BITMAP, 24, 0},       {"rgba8.tga", RGBA, UInt8, FIT_BITMAP, 32, 0},
        {"rgb16.tif", RGB, UInt16, FIT_RGB16, 48, 0},      {"grey16s.tif", Gray, Int16, FIT_INT16, 16, 0},
        {"grey32u.tif", Gray, UInt32, FIT_UINT32, 32, 0},  {"greyf.tif", Gray, Float32, FIT_FLOAT, 32, 0},
        {"rgbaf.tif", RGBA, Float32, FIT_RGBAF, 128, 0},   {"rgbf.exr", RGB, Float32, FIT_RGBF, 96, 0},
        {"greyf.exr", Gray, Float32, FIT_FLOAT, 32, 0},    {"rgb8.jpg", RGB, UInt8, FIT_BITMAP, 24, 0.06f},
    };
    QTemporaryDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromLatin1(c.name));
        const Image original = rampImage(13, 7, c.format, c.sampleType);
        ASSERT_TRUE(saveImage(path, original));

        // The depth actually written, seen by FreeImage rather than by our loader.
        const QByteArray name = QFile::encodeName(path);
        FIBITMAP* dib = FreeImage_Load(FreeImage_GetFileType(name.constData(), 0), name.constData(), 0);
        ASSERT_NE(dib, nullptr);
        EXPECT_EQ(FreeImage_GetImageType(dib), c.fileType);
        EXPECT_EQ(FreeImage_GetBPP(dib), c.bpp);
        FreeImage_Unload(dib);

        ImageFileInfo info;
        const Image loaded = load(path, &info);
        EXPECT_TRUE(loaded.format == c.format && loaded.sampleType == c.sampleType);
        EXPECT_TRUE(path.endsWith(extensionForFileType(loaded.fileType)));
        EXPECT_TRUE(info.width == 13 && info.height == 7 && info.channels == original.channels());
        ASSERT_EQ(loaded.floatCount(), original.floatCount());
        for (uint64_t i = 0; i < original.floatCount(); ++i)
            ASSERT_NEAR(loaded.data[i], stored(original.data[i], c.sampleType), c.tolerance + 1e-7f) << "float " << i;
    }
}

TEST(ImageFile, NormalMapsAreSavedAsColourAndKeptUnchanged)
{
    QTemporaryDir dir;
    Image normal(3, 2, RGB);
    for (uint64_t i = 0; i < normal.floatCount(); ++i)
        normal.data[i] = float(i) / 18.0f;
    normal.toNormalMap(true, false, true, true);
    normal.sampleType = UInt8;
    const Image before = normal;
    ASSERT_TRUE(saveImage(dir.filePath("n.png"), normal));
    EXPECT_TRUE(normal.format == Normal && normal.flipNormalX && !normal.flipNormalY);
    EXPECT_EQ(std::memcmp(normal.data, before.data, before.floatCount() * sizeof(float)), 0);
    Image colour = before;
    colour.fromNormalMap();
    ImageFileInfo info;
    Image loaded;
    loaded.wrapMode = Clamp;
    ASSERT_TRUE(loadImage(info, dir.filePath("n.png"), loaded));
    EXPECT_TRUE(loaded.format == RGB && loaded.wrapMode == Clamp); // the wrap mode is kept, as allocate keeps it
    for (uint64_t i = 0; i < colour.floatCount(); ++i)
        EXPECT_FLOAT_EQ(loaded.data[i], stored(colour.data[i], UInt8));
}

TEST(ImageFile, ChannelOrderAndRowsMatchWhatOtherEncodersWrite)
{
    // Qt writes PNG as RGB and BMP as BGR, both top row first.
    QImage picture(3, 2, QImage::Format_RGB32);
    const QRgb colours[6] = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255),
                             qRgb(10, 20, 30), qRgb(200, 100, 50), qRgb(1, 2, 3)};
    for (int i = 0; i < 6; ++i)
        picture.setPixel(i % 3, i / 3, colours[i]);
    QTemporaryDir dir;
    for (const char* name : {"q.png", "q.bmp", "q.tif"}) {
        SCOPED_TRACE(name);
        const QString path = dir.filePath(QString::fromLatin1(name));
        if (!picture.save(path)) {
            EXPECT_TRUE(path.endsWith(".tif")); // Qt's TIFF plugin is optional
            continue;
        }
        const Image image = load(path);
        ASSERT_TRUE(image.width == 3 && image.height == 2);
        for (int i = 0; i < 6; ++i) {
            const float* p = image.data + image.channels() * ((i % 3) + 3 * (1 - i / 3)); // top row is image row 1
            const int rgb[3] = {qRed(colours[i]), qGreen(colours[i]), qBlue(colours[i])};
            for (int k = 0; k < 3; ++k)
                EXPECT_FLOAT_EQ(p[k], rgb[k] / 255.0f) << i;
        }
    }
}

TEST(ImageFile, HalfFloatExrLoadsAsFloat)
{
    // FreeImage's default EXR flags store half floats, as many tools do.
    QTemporaryDir dir;
    const QString path = dir.filePath("half.exr");
    FIBITMAP* dib = FreeImage_AllocateT(FIT_RGBF, 4, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            reinterpret_cast<FIRGBF*>(FreeImage_GetScanLine(dib, y))[x] = {0.25f * float(x), 0.5f * float(y), 3.0f};
    ASSERT_TRUE(FreeImage_Save(FIF_EXR, dib, QFile::encodeName(path).constData(), EXR_DEFAULT));
    FreeImage_Unload(dib);

    const Image image = load(path);
    EXPECT_TRUE(image.format == RGB && image.sampleType == Float32 && image.fileType == FileEXR);
    ASSERT_EQ(image.floatCount(), 24u);
    for (int i = 0; i < 8; ++i) {
        const float* p = image.data + 3 * i;
        EXPECT_TRUE(p[0] == 0.25f * float(i % 4) && p[1] == 0.5f * float(i / 4) && p[2] == 3.0f) << i;
    }
}

TEST(ImageFile, PaletteCmykAndOneBitFilesLoadAsColourOrGrey)
{
    QTemporaryDir dir;
    QImage indexed(2, 1, QImage::Format_Indexed8);
    indexed.setColorTable({qRgba(255, 128, 0, 255), qRgba(0, 64, 255, 100)});
    indexed.setPixel(0, 0, 0);
    indexed.setPixel(1, 0, 1);
    ASSERT_TRUE(indexed.save(dir.filePath("pal.png")));
    ImageFileInfo info;
    Image image = load(dir.filePath("pal.png"), &info);
    ASSERT_EQ(image.format, RGBA);
    EXPECT_EQ(info.bitsPerPixel, 8u);
    const float expected[8] = {1, 128 / 255.f, 0, 1, 0, 64 / 255.f, 1, 100 / 255.f};
    for (int i = 0; i < 8; ++i)
        EXPECT_FLOAT_EQ(image.data[i], expected[i]) << i;

    // Cyan ink only, and cyan with half black.
    const uint8_t cmyk[8] = {255, 0, 0, 0, 255, 0, 0, 128};
    writeTiff(dir.filePath("cmyk.tif"), 2, 1, 4, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_SEPARATED, PLANARCONFIG_CONTIG, cmyk);
    image = load(dir.filePath("cmyk.tif"));
    ASSERT_EQ(image.format, RGB);
    EXPECT_NEAR(image.data[0], 0.0f, 0.01f);
    EXPECT_NEAR(image.data[1], 1.0f, 0.01f);
    EXPECT_NEAR(image.data[4], 0.5f, 0.01f);

    // Ten pixels in two bytes per row: the last six bits are padding.
    const uint8_t bits[4] = {0xA5, 0xC0, 0xA5, 0xC0};
    const float pattern[10] = {1, 0, 1, 0, 0, 1, 0, 1, 1, 1};
    for (uint32_t photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE}) {
        writeTiff(dir.filePath("bits.tif"), 10, 2, 1, 1, SAMPLEFORMAT_UINT, photometric, PLANARCONFIG_CONTIG, bits);
        image = load(dir.filePath("bits.tif"));
        ASSERT_TRUE(image.format == Gray && image.sampleType == UInt8);
        for (int x = 0; x < 10; ++x)
            EXPECT_EQ(image.data[x], photometric == PHOTOMETRIC_MINISBLACK ? pattern[x] : 1 - pattern[x]) << x;
    }
    const uint8_t whiteIsZero[2] = {0, 255};
    writeTiff(dir.filePath("white.tif"), 2, 1, 1, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG,
              whiteIsZero);
    image = load(dir.filePath("white.tif"));
    ASSERT_EQ(image.format, Gray);
    EXPECT_TRUE(image.data[0] == 0.0f && image.data[1] == 1.0f); // the stored byte / 255, not inverted

    // 16-bit 555 colour has no decoder: the error names the layout, the image is
    // allocated with zero pixels and the load fails.
    FIBITMAP* dib = FreeImage_Allocate(3, 2, 16, FI16_555_RED_MASK, FI16_555_GREEN_MASK, FI16_555_BLUE_MASK);
    std::memset(FreeImage_GetBits(dib), 0xff, FreeImage_GetPitch(dib) * 2);
    ASSERT_TRUE(FreeImage_Save(FIF_BMP, dib, QFile::encodeName(dir.filePath("555.bmp")).constData(), 0));
    FreeImage_Unload(dib);
    LogCapture log;
    ASSERT_FALSE(loadImage(info, dir.filePath("555.bmp"), image));
    EXPECT_TRUE(log.hasError("Unsupported channel layout. Bits per channel: 5 Number of channels: 3."));
    ASSERT_TRUE(image.width == 3 && image.height == 2 && image.format == RGB);
    EXPECT_TRUE(std::all_of(image.data, image.data + 18, [](float v) { return v == 0.0f; }));
}

TEST(ImageFile, FloatTiffsFreeImageRefusesLoadThroughLibtiff)
{
    QTemporaryDir dir;
    // Lab float files are refused by FreeImage; float CMYK would make it abort.
    const struct { const char* name; uint32_t spp, photometric; PixelFormat format; } cases[] = {
        {"lab3.tif", 3, PHOTOMETRIC_CIELAB, RGB},
        {"cmyk4.tif", 4, PHOTOMETRIC_SEPARATED, RGBA},
        {"wärme テクスチャ.tif", 3, PHOTOMETRIC_CIELAB, RGB},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromUtf8(c.name));
        writeTiff(path, 5, 3, c.spp, 32, SAMPLEFORMAT_IEEEFP, c.photometric);
        if (c.photometric == PHOTOMETRIC_CIELAB) { // so the fall-back is really exercised
            ASSERT_EQ(FreeImage_Load(FIF_TIFF, QFile::encodeName(path).constData(), 0), nullptr);
        }
        ImageFileInfo info;
        const Image image = load(path, &info);
        ASSERT_TRUE(image.format == c.format && image.fileType == FileTIFF && image.sampleType == Float32);
        EXPECT_EQ(info.bitsPerPixel, 32u * c.spp);
        for (uint32_t y = 0; y < 3; ++y)
            for (uint32_t x = 0; x < 5; ++x)
                for (uint32_t k = 0; k < c.spp; ++k) // file row 0 is the top, image row 2
                    ASSERT_FLOAT_EQ(image.pixelAt(x, 2 - y)[k], float(y) + float(x) / 100.0f + float(k) / 1000.0f);
    }
}

TEST(ImageFile, BadFilesFailWithAMessageAndLeaveTheImageAlone)
{
    QTemporaryDir dir;
    Image valid = rampImage(64, 64, RGB, UInt8);
    const std::pair<const char*, uint32_t> kinds[] = {{"valid.png", UInt8},  {"valid.jpg", UInt8},
                                                      {"valid.tif", UInt16}, {"valid.exr", Float32},
                                                      {"valid.bmp", UInt8}};
    for (const auto& [name, sampleType] : kinds) {
        valid.sampleType = sampleType;
        ASSERT_TRUE(saveImage(dir.filePath(name), valid));
        const QByteArray bytes = readFile(dir.filePath(name));
        writeFile(dir.filePath(QStringLiteral("cut-%1").arg(name)), bytes.left(bytes.size() / 3));
        writeFile(dir.filePath(QStringLiteral("head-%1").arg(name)), bytes.left(40));
    }
    QByteArray hugePng = readFile(dir.filePath("valid.png")); // IHDR width and height, then its CRC
    putUInt32(hugePng, 16, 100000, true);
    putUInt32(hugePng, 20, 100000, true);
    putUInt32(hugePng, 29, uint32_t(crc32(0, reinterpret_cast<const Bytef*>(hugePng.constData() + 12), 17)), true);
    writeFile(dir.filePath("huge.png"), hugePng);
    QByteArray hugeBmp = readFile(dir.filePath("valid.bmp"));
    putUInt32(hugeBmp, 18, 100000, false);
    putUInt32(hugeBmp, 22, 100000, false);
    writeFile(dir.filePath("huge.bmp"), hugeBmp);
    writeFile(dir.filePath("empty.png"), QByteArray());
    for (const char* name : {"text.png", "text.tga", "text.tif", "text.exr", "text.jpg"})
        writeFile(dir.filePath(name), "This is a note, not a picture.\n");
    writeTiff(dir.filePath("two.tif"), 4, 4, 2, 32, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_RGB);
    writeTiff(dir.filePath("wide.tif"), 40000, 1, 3, 32, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_CIELAB);
    writeTiff(dir.filePath("half.tif"), 4, 4, 3, 16, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_CIELAB);
    // Layouts FreeImage's TIFF reader crashes on; these must fail cleanly instead.
    writeTiff(dir.filePath("pal4.tif"), 8, 8, 4, 4, SAMPLEFORMAT_UINT, PHOTOMETRIC_PALETTE);
    writeTiff(dir.filePath("sep1bit.tif"), 8, 8, 4, 1, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE);

    QStringList names = QDir(dir.path()).entryList({"huge.*", "empty.*", "text.*", "cut-*", "head-*", "two.*",
                                                    "wide.*", "half.*", "pal4.*", "sep1bit.*"}, QDir::Files);
    names << "missing.png";
    Image image = rampImage(3, 3, Gray, Int16);
    const Image before = image;
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        LogCapture log;
        ImageFileInfo info;
        const float* data = image.data;
        if (loadImage(info, dir.filePath(name), image)) {
            // Cut JPEGs and TIFFs may still decode what is there; anything else must be refused.
            EXPECT_TRUE(name.startsWith("cut-")) << "loaded";
            image = before;
            continue;
        }
        EXPECT_TRUE(log.hasError(name)) << "no error names the file";
        EXPECT_TRUE(image.data == data && image.format == Gray && image.sampleType == Int16);
        EXPECT_EQ(std::memcmp(image.data, before.data, before.floatCount() * sizeof(float)), 0);
        if (name.startsWith("huge") || name == "wide.tif") {
            EXPECT_TRUE(log.hasError(name.startsWith("huge") ? "100000 x 100000" : "40000 x 1"));
        }
        // The libtiff fall-back counts 32-bit samples in a row: three 16-bit ones make one.
        if (name == "half.tif" || name == "two.tif") {
            EXPECT_TRUE(log.hasError(name == "half.tif" ? "Unknown TIFF pixel format. Channel num:1"
                                                        : "Unknown TIFF pixel format. Channel num:2"));
        }
        if (name.startsWith("text.") && name != "text.tif") {
            EXPECT_TRUE(log.hasError("Unable to load image, unknown FreeImage loading error"));
        }
    }
}

TEST(ImageFile, SavesFailCleanlyOrFallBackToADepthTheFormatHolds)
{
    QTemporaryDir dir;
    const QString kept = dir.filePath("kept.png");
    ASSERT_TRUE(saveImage(kept, rampImage(4, 4, RGB, UInt8)));
    const QByteArray keptBytes = readFile(kept);

    const Image int32Grey = rampImage(4, 4, Gray, Int32), plainRgba = rampImage(4, 4, RGBA, 0);
    const Image rgb = rampImage(4, 4, RGB, UInt8), rgba = rampImage(4, 4, RGBA, UInt8), empty;
    const struct { QString path; const Image* image; } failures[] = {
        {kept, &int32Grey}, // no bitmap layout; the old file must survive
        {dir.filePath("a.png"), &plainRgba},
        {dir.filePath("a.png"), &empty},
        {dir.filePath("a.xyz"), &plainRgba},
        {dir.filePath("no/such/folder/a.png"), &int32Grey},
        {dir.filePath("no/such/folder/b.png"), &rgb},
        {dir.filePath("a.jpg"), &rgba}, // JPEG holds no alpha
    };
    for (const auto& f : failures) {
        SCOPED_TRACE(f.path.toStdString());
        LogCapture log;
        EXPECT_FALSE(saveImage(f.path, *f.image));
        EXPECT_TRUE(log.hasError("Unable to save output file.") && log.hasError(QFileInfo(f.path).fileName()));
    }
    EXPECT_EQ(readFile(kept), keptBytes);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"kept.png"}); // no temporary left over

    // A depth the format cannot hold is not written at another depth: 16-bit
    // to JPEG and 8-bit to EXR fail; floats go to EXR as 32-bit floats, and
    // non-ASCII names work.
    for (const auto& [name, image] : {std::make_pair("deep.jpg", rampImage(4, 4, RGB, UInt16)),
                                      std::make_pair("byte.exr", rampImage(4, 4, Gray, UInt8))}) {
        LogCapture log;
        EXPECT_FALSE(saveImage(dir.filePath(name), image)) << name;
        EXPECT_TRUE(log.hasError("Unable to save output file.")) << name;
        EXPECT_FALSE(QFileInfo::exists(dir.filePath(name))) << name;
    }
    Image floatImage = rampImage(4, 4, Gray, Float32);
    floatImage.data[3] = 0.1234567f;
    const QString exr = dir.filePath(QString::fromUtf8("Größe_法線.exr"));
    ASSERT_TRUE(saveImage(exr, floatImage));
    const Image loaded = load(exr);
    ASSERT_EQ(loaded.sampleType, uint32_t(Float32));
    EXPECT_EQ(std::memcmp(loaded.data, floatImage.data, floatImage.floatCount() * sizeof(float)), 0);
}

TEST(ImageFile, AFullDiskKeepsTheOldFileAndFailsTheSave)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("out.png");
    ASSERT_TRUE(saveImage(path, rampImage(4, 4, RGB, UInt8)));
    const QByteArray good = readFile(path);

    // A larger, noisy image cannot fit under the limit: the write fails part way.
    Image big(96, 96, RGB);
    uint32_t state = 1;
    for (uint64_t i = 0; i < big.floatCount(); ++i, state = state * 214013u + 2531011u)
        big.data[i] = float((state >> 16) & 0xff) / 255.0f;
    big.fileType = FilePNG;
    big.sampleType = UInt8;
    EXPECT_EQ(writeWithFileLimit(2000, [&] { return saveImage(path, big); }), LimitedWrite::FailedWithReason);
    EXPECT_EQ(readFile(path), good);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"out.png"}); // no temporary left over

    // The same save with room for it replaces the file.
    EXPECT_EQ(writeWithFileLimit(1 << 20, [&] { return saveImage(path, big); }), LimitedWrite::Succeeded);
    EXPECT_EQ(load(path).width, 96u);
}

TEST(ImageFile, TruncatedFilesAreRefusedOrLoadWithAWarningNamingTheFile)
{
    QTemporaryDir dir;
    Image noisy(64, 64, RGB);
    uint32_t state = 7;
    for (uint64_t i = 0; i < noisy.floatCount(); ++i, state = state * 214013u + 2531011u)
        noisy.data[i] = float((state >> 16) & 0xff) / 255.0f;
    noisy.sampleType = UInt8;
    for (const char* name : {"t.tif", "t.tga", "t.bmp", "t.jpg", "t.png"}) {
        const QString path = dir.filePath(name);
        ASSERT_TRUE(saveImage(path, noisy)) << name;
        const QByteArray whole = readFile(path);
        for (double part : {0.3, 0.6, 0.95}) {
            SCOPED_TRACE(std::string(name) + " cut to " + std::to_string(part));
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(whole.left(int(whole.size() * part)));
            file.close();
            LogCapture log;
            ImageFileInfo info;
            Image image;
            if (loadImage(info, path, image))
                EXPECT_TRUE(!log.warnings.filter(QStringLiteral("damaged")).filter(name).isEmpty()) << log.warnings.join("\n").toStdString();
            else
                EXPECT_TRUE(log.hasError(name));
        }
    }
}

// A chosen PNG level goes through our own libpng writer: same pixels, depth
// and channel order as FreeImage's writer, progress rising to 1, and a
// failed save that leaves nothing behind.
TEST(ImageFile, PngLevelsKeepPixelsAndReportProgress)
{
    const struct { PixelFormat format; uint32_t sampleType; } cases[] = {
        {Gray, UInt8}, {RGB, UInt8}, {RGBA, UInt8}, {Gray, UInt16}, {RGB, UInt16}, {RGBA, UInt16}, {Normal, UInt8}};
    QTemporaryDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "format " << int(c.format) << " sample type " << c.sampleType);
        const Image original = rampImage(13, 230, c.format, c.sampleType);
        const QString reference = dir.filePath("reference.png");
        ASSERT_TRUE(saveImage(reference, original));
        const Image expected = load(reference);
        for (int level : {1, 9}) {
            const QString path = dir.filePath(QStringLiteral("level%1.png").arg(level));
            std::vector<double> steps;
            ASSERT_TRUE(saveImage(path, original, level, [&](double f) { steps.push_back(f); }));
            ASSERT_GE(steps.size(), 3u);
            EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
            EXPECT_GE(steps.front(), 0.0);
            EXPECT_EQ(steps.back(), 1.0);
            const Image loaded = load(path);
            EXPECT_TRUE(loaded.format == expected.format && loaded.sampleType == expected.sampleType);
            ASSERT_EQ(loaded.floatCount(), expected.floatCount());
            EXPECT_EQ(std::memcmp(loaded.data, expected.data, sizeof(float) * expected.floatCount()), 0);
        }
    }

    // A folder in the way: written under a temporary name, not moved into place, removed.
    LogCapture log;
    ASSERT_TRUE(QDir(dir.path()).mkdir("blocked.png"));
    EXPECT_FALSE(saveImage(dir.filePath("blocked.png"), rampImage(4, 4, RGB, UInt8), 1));
    EXPECT_TRUE(log.hasError("Unable to save output file."));
    EXPECT_TRUE(QDir(dir.path()).entryList({"*.saving"}, QDir::Files).isEmpty());
    EXPECT_FALSE(saveImage(dir.filePath("no/such/folder/out.png"), rampImage(4, 4, RGB, UInt8), 1));
}

// The fast PNG level keeps smooth pictures, which shrink clearly more with a
// thorough search, within 15% of the default writer's size: the sample
// project's stones, whose fast files are a fifth larger without the check.
TEST(ImageFile, FastPngStaysNearTheDefaultSizeOnSmoothPictures)
{
    QTemporaryDir dir;
    for (const char* name : {"cobblestones_color.png", "cobblestones_normal.png", "cobblestones_displacement.png"}) {
        SCOPED_TRACE(name);
        const Image smooth = load(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR "/Images/") + name);
        ASSERT_TRUE(saveImage(dir.filePath("default.png"), smooth));
        ASSERT_TRUE(saveImage(dir.filePath("fast.png"), smooth, 1));
        const double ratio = double(QFileInfo(dir.filePath("fast.png")).size())
            / double(QFileInfo(dir.filePath("default.png")).size());
        EXPECT_LT(ratio, 1.15);
    }
}
