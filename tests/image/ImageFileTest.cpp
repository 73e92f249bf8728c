#include "ImageFile.h"
#include "MessageHandler.h"

#include <FreeImage.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <tiffio.h>
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {
struct LogCapture
{
    LogCapture()
    {
        connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                      [this](QString text, int severity) { lines.push_back({text, severity}); });
    }
    ~LogCapture() { QObject::disconnect(connection); }
    bool hasError(const QString& part) const
    {
        for (const auto& line : lines)
            if (line.second == 2 && line.first.contains(part))
                return true;
        return false;
    }
    std::vector<std::pair<QString, int>> lines;
    QMetaObject::Connection connection;
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

// Writes `value` over four bytes, most significant first or last.
void putUInt32(QByteArray& bytes, int offset, uint32_t value, bool bigEndian)
{
    ASSERT_LE(offset + 4, bytes.size());
    for (int i = 0; i < 4; ++i)
        bytes[offset + i] = char(value >> (bigEndian ? 24 - 8 * i : 8 * i));
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

// A TIFF of `spp` samples per pixel written straight with libtiff; sample
// (x, y, k) of float files holds y + x / 100 + k / 1000.
void writeTiff(const QString& path, uint32_t w, uint32_t h, uint16_t spp, uint16_t bps, uint16_t sampleFormat,
               uint16_t photometric, uint16_t planar = PLANARCONFIG_CONTIG, const uint8_t* bytes = nullptr)
{
    TIFF* tiff = TIFFOpen(QFile::encodeName(path).constData(), "w");
    ASSERT_NE(tiff, nullptr);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, w);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, h);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, spp);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bps);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, sampleFormat);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planar);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
    if (bps == 32 && sampleFormat == SAMPLEFORMAT_IEEEFP) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_FLOATINGPOINT);
    }
    const uint16_t planes = planar == PLANARCONFIG_CONTIG ? 1 : spp;
    std::vector<uint8_t> row(size_t(TIFFScanlineSize64(tiff)));
    for (uint16_t p = 0; p < planes; ++p)
        for (uint32_t y = 0; y < h; ++y) {
            if (bytes)
                std::memcpy(row.data(), bytes + row.size() * y, row.size());
            else if (bps == 32 && sampleFormat == SAMPLEFORMAT_IEEEFP)
                for (size_t i = 0; i < row.size() / 4; ++i) {
                    const float v = float(y) + float(i / spp) / 100.0f + float(i % spp) / 1000.0f;
                    std::memcpy(row.data() + 4 * i, &v, 4);
                }
            ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), y, p), 1);
        }
    TIFFClose(tiff);
}

bool freeImageLoads(const QString& path)
{
    FIBITMAP* dib = FreeImage_Load(FIF_TIFF, QFile::encodeName(path).constData(), 0);
    if (dib)
        FreeImage_Unload(dib);
    return dib != nullptr;
}
}

TEST(ImageFile, RoundTripsEveryFormatAndDepth)
{
    struct Case
    {
        const char* name;
        PixelFormat format;
        uint32_t sampleType;
        FREE_IMAGE_TYPE fileType;
        unsigned bpp;
        float tolerance;
    };
    const Case cases[] = {
        {"grey8.png", Gray, UInt8, FIT_BITMAP, 8, 0},      {"grey16.png", Gray, UInt16, FIT_UINT16, 16, 0},
        {"rgb16.png", RGB, UInt16, FIT_RGB16, 48, 0},      {"rgba16.png", RGBA, UInt16, FIT_RGBA16, 64, 0},
        {"rgb8.bmp", RGB, UInt8, FIT_BITMAP, 24, 0},       {"rgba8.tga", RGBA, UInt8, FIT_BITMAP, 32, 0},
        {"rgb16.tif", RGB, UInt16, FIT_RGB16, 48, 0},      {"grey16s.tif", Gray, Int16, FIT_INT16, 16, 0},
        {"grey32u.tif", Gray, UInt32, FIT_UINT32, 32, 0},  {"greyf.tif", Gray, Float32, FIT_FLOAT, 32, 0},
        {"rgbaf.tif", RGBA, Float32, FIT_RGBAF, 128, 0},   {"rgbf.exr", RGB, Float32, FIT_RGBF, 96, 0},
        {"greyf.exr", Gray, Float32, FIT_FLOAT, 32, 0},    {"rgb8.jpg", RGB, UInt8, FIT_BITMAP, 24, 0.06f},
    };
    QTemporaryDir dir;
    for (const Case& c : cases) {
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
        Image loaded;
        ASSERT_TRUE(loadImage(info, path, loaded));
        EXPECT_EQ(loaded.format, c.format);
        EXPECT_EQ(loaded.sampleType, c.sampleType);
        EXPECT_TRUE(path.endsWith(extensionForFileType(loaded.fileType)));
        EXPECT_EQ(info.width, 13u);
        EXPECT_EQ(info.height, 7u);
        EXPECT_EQ(info.channels, original.channels());
        ASSERT_EQ(loaded.floatCount(), original.floatCount());
        for (uint64_t i = 0; i < original.floatCount(); ++i)
            ASSERT_NEAR(loaded.data[i], stored(original.data[i], c.sampleType), c.tolerance + 1e-7f) << "float " << i;
    }
}

TEST(ImageFile, TruncatesAndKeepsImagesUnchanged)
{
    QTemporaryDir dir;
    Image grey(2, 1, Gray);
    grey.sampleType = UInt8;
    grey.data[0] = 1.0f;
    grey.data[1] = 0.999f;
    ASSERT_TRUE(saveImage(dir.filePath("t.png"), grey));
    FIBITMAP* dib = FreeImage_Load(FIF_PNG, QFile::encodeName(dir.filePath("t.png")).constData(), 0);
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(FreeImage_GetScanLine(dib, 0)[0], 255);
    EXPECT_EQ(FreeImage_GetScanLine(dib, 0)[1], 254);
    FreeImage_Unload(dib);

    // A normal map is written as colour and stays a normal map, flags and all.
    Image normal(3, 2, RGB);
    for (uint64_t i = 0; i < normal.floatCount(); ++i)
        normal.data[i] = float(i) / 18.0f;
    normal.toNormalMap(true, false, true, true);
    normal.sampleType = UInt8;
    const Image before = normal;
    ASSERT_TRUE(saveImage(dir.filePath("n.png"), normal));
    EXPECT_EQ(normal.format, Normal);
    EXPECT_TRUE(normal.flipNormalX && !normal.flipNormalY && normal.mappedNormalXY && normal.mappedNormalZ);
    EXPECT_EQ(std::memcmp(normal.data, before.data, before.floatCount() * sizeof(float)), 0);
    Image colour = before;
    colour.fromNormalMap();
    ImageFileInfo info;
    Image loaded;
    loaded.wrapMode = Clamp;
    ASSERT_TRUE(loadImage(info, dir.filePath("n.png"), loaded));
    EXPECT_EQ(loaded.format, RGB);
    EXPECT_EQ(loaded.wrapMode, Clamp); // kept, as allocate keeps it
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
        ImageFileInfo info;
        Image image;
        ASSERT_TRUE(loadImage(info, path, image));
        ASSERT_EQ(image.width, 3u);
        ASSERT_EQ(image.height, 2u);
        const uint32_t c = image.channels();
        for (int i = 0; i < 6; ++i) {
            const float* p = image.data + c * ((i % 3) + 3 * (1 - i / 3)); // top row is image row 1
            EXPECT_FLOAT_EQ(p[0], qRed(colours[i]) / 255.0f) << i;
            EXPECT_FLOAT_EQ(p[1], qGreen(colours[i]) / 255.0f) << i;
            EXPECT_FLOAT_EQ(p[2], qBlue(colours[i]) / 255.0f) << i;
        }
    }
}

TEST(ImageFile, HalfFloatExrLoadsAsFloat)
{
    // FreeImage's default EXR flags store half floats, as many tools do.
    QTemporaryDir dir;
    const QString path = dir.filePath("half.exr");
    FIBITMAP* dib = FreeImage_AllocateT(FIT_RGBF, 4, 2);
    ASSERT_NE(dib, nullptr);
    for (int y = 0; y < 2; ++y) {
        auto* row = reinterpret_cast<FIRGBF*>(FreeImage_GetScanLine(dib, y));
        for (int x = 0; x < 4; ++x)
            row[x] = FIRGBF{0.25f * float(x), 0.5f * float(y), 3.0f};
    }
    const QByteArray name = QFile::encodeName(path);
    ASSERT_TRUE(FreeImage_Save(FIF_EXR, dib, name.constData(), EXR_DEFAULT));
    FreeImage_Unload(dib);

    ImageFileInfo info;
    Image image;
    ASSERT_TRUE(loadImage(info, path, image));
    EXPECT_EQ(image.format, RGB);
    EXPECT_EQ(image.sampleType, uint32_t(Float32));
    EXPECT_EQ(image.fileType, uint32_t(FileEXR));
    ASSERT_EQ(image.floatCount(), 24u);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) {
            const float* p = image.data + 3 * (x + 4 * y);
            EXPECT_FLOAT_EQ(p[0], 0.25f * float(x));
            EXPECT_FLOAT_EQ(p[1], 0.5f * float(y));
            EXPECT_FLOAT_EQ(p[2], 3.0f);
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
    Image image;
    ASSERT_TRUE(loadImage(info, dir.filePath("pal.png"), image));
    ASSERT_EQ(image.format, RGBA);
    EXPECT_EQ(info.bitsPerPixel, 8u);
    const float expected[8] = {1, 128 / 255.f, 0, 1, 0, 64 / 255.f, 1, 100 / 255.f};
    for (int i = 0; i < 8; ++i)
        EXPECT_FLOAT_EQ(image.data[i], expected[i]) << i;

    // Cyan ink only, and cyan with half black.
    const uint8_t cmyk[8] = {255, 0, 0, 0, 255, 0, 0, 128};
    writeTiff(dir.filePath("cmyk.tif"), 2, 1, 4, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_SEPARATED, PLANARCONFIG_CONTIG, cmyk);
    ASSERT_TRUE(loadImage(info, dir.filePath("cmyk.tif"), image));
    ASSERT_EQ(image.format, RGB);
    EXPECT_NEAR(image.data[0], 0.0f, 0.01f);
    EXPECT_NEAR(image.data[1], 1.0f, 0.01f);
    EXPECT_NEAR(image.data[4], 0.5f, 0.01f);

    // Ten pixels in two bytes per row: the last six bits are padding.
    const uint8_t bits[4] = {0xA5, 0xC0, 0xA5, 0xC0};
    const float pattern[10] = {1, 0, 1, 0, 0, 1, 0, 1, 1, 1};
    for (uint16_t photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE}) {
        writeTiff(dir.filePath("bits.tif"), 10, 2, 1, 1, SAMPLEFORMAT_UINT, photometric, PLANARCONFIG_CONTIG, bits);
        ASSERT_TRUE(loadImage(info, dir.filePath("bits.tif"), image));
        ASSERT_EQ(image.format, Gray);
        EXPECT_EQ(image.sampleType, UInt8);
        for (int x = 0; x < 10; ++x)
            EXPECT_EQ(image.data[x], photometric == PHOTOMETRIC_MINISBLACK ? pattern[x] : 1 - pattern[x]) << x;
    }
    const uint8_t whiteIsZero[2] = {0, 255};
    writeTiff(dir.filePath("white.tif"), 2, 1, 1, 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISWHITE, PLANARCONFIG_CONTIG,
              whiteIsZero);
    ASSERT_TRUE(loadImage(info, dir.filePath("white.tif"), image));
    EXPECT_EQ(image.data[0], 1.0f);
    EXPECT_EQ(image.data[1], 0.0f);
}

TEST(ImageFile, FloatTiffsFreeImageRefusesLoadThroughLibtiff)
{
    QTemporaryDir dir;
    // Lab float files are refused by FreeImage; float CMYK would make it abort.
    const struct { const char* name; uint16_t spp, photometric; PixelFormat format; } cases[] = {
        {"lab3.tif", 3, PHOTOMETRIC_CIELAB, RGB},
        {"cmyk4.tif", 4, PHOTOMETRIC_SEPARATED, RGBA},
        {"wärme テクスチャ.tif", 3, PHOTOMETRIC_CIELAB, RGB},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromUtf8(c.name));
        writeTiff(path, 5, 3, c.spp, 32, SAMPLEFORMAT_IEEEFP, c.photometric);
        if (c.photometric == PHOTOMETRIC_CIELAB) {
            ASSERT_FALSE(freeImageLoads(path)); // so the fall-back is really exercised
        }
        ImageFileInfo info;
        Image image;
        ASSERT_TRUE(loadImage(info, path, image));
        EXPECT_EQ(image.format, c.format);
        EXPECT_EQ(image.fileType, uint32_t(FileTIFF));
        EXPECT_EQ(image.sampleType, uint32_t(Float32));
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
    ASSERT_TRUE(saveImage(dir.filePath("valid.png"), valid));
    ASSERT_TRUE(saveImage(dir.filePath("valid.jpg"), valid));
    valid.sampleType = UInt16;
    ASSERT_TRUE(saveImage(dir.filePath("valid.tif"), valid));
    valid.sampleType = Float32;
    ASSERT_TRUE(saveImage(dir.filePath("valid.exr"), valid));
    valid.sampleType = UInt8;
    ASSERT_TRUE(saveImage(dir.filePath("valid.bmp"), valid));

    const QByteArray png = readFile(dir.filePath("valid.png"));
    QByteArray hugePng = png; // IHDR width and height, then its CRC
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
    for (const char* name : {"valid.png", "valid.jpg", "valid.tif", "valid.exr", "valid.bmp"}) {
        const QByteArray bytes = readFile(dir.filePath(name));
        writeFile(dir.filePath(QStringLiteral("cut-%1").arg(name)), bytes.left(bytes.size() / 3));
        writeFile(dir.filePath(QStringLiteral("head-%1").arg(name)), bytes.left(40));
    }
    writeTiff(dir.filePath("two.tif"), 4, 4, 2, 32, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_RGB);
    writeTiff(dir.filePath("wide.tif"), 40000, 1, 3, 32, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_CIELAB);
    writeTiff(dir.filePath("half.tif"), 4, 4, 3, 16, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_CIELAB);
    // Layouts FreeImage's TIFF reader crashes on; these must fail cleanly instead.
    writeTiff(dir.filePath("pal4.tif"), 8, 8, 4, 4, SAMPLEFORMAT_UINT, PHOTOMETRIC_PALETTE);
    writeTiff(dir.filePath("sep1bit.tif"), 8, 8, 4, 1, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE);

    const QDir folder(dir.path());
    QStringList names = folder.entryList({"huge.*", "empty.*", "text.*", "cut-*", "head-*", "two.*", "wide.*",
                                          "half.*", "pal4.*", "sep1bit.*"}, QDir::Files);
    names << "missing.png";
    Image image = rampImage(3, 3, Gray, Int16);
    const Image before = image;
    const float* data = image.data;
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        LogCapture log;
        ImageFileInfo info;
        const bool loaded = loadImage(info, dir.filePath(name), image);
        // Cut JPEGs and TIFFs may still decode what is there; anything else must be refused.
        if (loaded) {
            EXPECT_TRUE(name.startsWith("cut-")) << "loaded";
            image = before;
            data = image.data;
            continue;
        }
        EXPECT_TRUE(log.hasError(name)) << "no error names the file";
        EXPECT_EQ(image.data, data);
        EXPECT_EQ(image.format, Gray);
        EXPECT_EQ(image.sampleType, uint32_t(Int16));
        EXPECT_EQ(std::memcmp(image.data, before.data, before.floatCount() * sizeof(float)), 0);
        if (name.startsWith("huge") || name == "wide.tif") {
            EXPECT_TRUE(log.hasError(name.startsWith("huge") ? "100000 x 100000" : "40000 x 1"));
        }
        if (name == "two.tif") {
            EXPECT_TRUE(log.hasError("Unknown TIFF pixel format. Channel num:2"));
        }
        if (name.startsWith("text") || name.startsWith("empty") || name.startsWith("missing")) {
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

    const Image int32Grey = rampImage(4, 4, Gray, Int32);
    const Image plainRgba = rampImage(4, 4, RGBA, 0);
    const Image rgb = rampImage(4, 4, RGB, UInt8);
    const Image rgba = rampImage(4, 4, RGBA, UInt8);
    const Image empty;
    const struct { QString path; const Image* image; } failures[] = {
        {kept, &int32Grey},                              // no bitmap layout; the old file must survive
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
        EXPECT_TRUE(log.hasError("Unable to save output file."));
        EXPECT_TRUE(log.hasError(QFileInfo(f.path).fileName()));
    }
    EXPECT_EQ(readFile(kept), keptBytes);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"kept.png"}); // no temporary left over

    // 16-bit to JPEG is written at 8 bits, 8-bit to EXR as floats.
    ImageFileInfo info;
    Image loaded;
    ASSERT_TRUE(saveImage(dir.filePath("deep.jpg"), rampImage(4, 4, RGB, UInt16)));
    ASSERT_TRUE(loadImage(info, dir.filePath("deep.jpg"), loaded));
    EXPECT_EQ(loaded.sampleType, uint32_t(UInt8));
    const Image byteImage = rampImage(4, 4, Gray, UInt8);
    ASSERT_TRUE(saveImage(dir.filePath("byte.exr"), byteImage));
    ASSERT_TRUE(loadImage(info, dir.filePath("byte.exr"), loaded));
    EXPECT_EQ(loaded.sampleType, uint32_t(Float32));
    EXPECT_EQ(std::memcmp(loaded.data, byteImage.data, byteImage.floatCount() * sizeof(float)), 0);

    // Non-ASCII names through FreeImage.
    const QString unicode = dir.filePath(QString::fromUtf8("Größe_法線.png"));
    ASSERT_TRUE(saveImage(unicode, byteImage));
    ASSERT_TRUE(loadImage(info, unicode, loaded));
    EXPECT_EQ(loaded.format, Gray);
}
