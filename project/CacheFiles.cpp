#include "CacheFiles.h"

#include "LogMessage.h"
#include "SafeFileWriter.h"
#include "SurfaceSynthesisContext.h"

#include <QFile>
#include <QFileInfo>

#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace Velmor {

bool cacheCompression = true;

namespace {

// A mixed cache with more layers than this is taken for a damaged file.
const uint32_t maxCacheLayers = 1024;

// Blocks are built in memory; keep them well inside what a QByteArray holds.
const uint64_t maxBlockBytes = 0x70000000;

bool validImageSize(uint64_t width, uint64_t height)
{
    return width > 0 && height > 0 && width <= maxCacheImageSide && height <= maxCacheImageSide
           && width * height <= maxCacheImagePixels;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Builds the text-and-bytes stream of a cache file: numbers and words each
// followed by one space, blocks right after the space of their length.
class CacheWriter
{
public:
    void number(uint64_t value) { bytes += QByteArray::number(qulonglong(value)) + ' '; }
    void word(const std::string& text)
    {
        // A space inside a word would split it on reading.
        QByteArray w = QByteArray::fromStdString(text);
        for (char& c : w)
            if (isSpace(c))
                c = '_';
        bytes += (w.isEmpty() ? QByteArray("_") : w) + ' ';
    }
    bool block(const Image& image)
    {
        const uint64_t rawSize = image.floatCount() * sizeof(float);
        if (rawSize > maxBlockBytes)
            return false;
        const Bytef* raw = reinterpret_cast<const Bytef*>(image.data);
        if (!cacheCompression) {
            number(rawSize);
            bytes.append(reinterpret_cast<const char*>(raw), int(rawSize));
            return true;
        }
        // compressBound, not the raw size: noisy float data may not shrink.
        QByteArray packed(int(compressBound(rawSize)), Qt::Uninitialized);
        uLongf packedSize = uLongf(packed.size());
        if (compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize, raw, rawSize, 9) != Z_OK)
            return false;
        number(packedSize);
        bytes.append(packed.constData(), int(packedSize));
        return true;
    }
    // The three descriptors of a mixed cache image.
    void descriptors(const Image& image)
    {
        number(image.format);
        number(image.fileType);
        number(image.sampleType);
    }

    QByteArray bytes;
};

// Reads the stream written by CacheWriter; every failure leaves a reason in
// `problem` and makes all later reads fail.
class CacheReader
{
public:
    explicit CacheReader(QFile& input) : file(input) {}

    bool word(QByteArray& text)
    {
        text.clear();
        if (!problem.isEmpty())
            return false;
        char c = 0;
        do {
            if (!file.getChar(&c))
                return fail(QStringLiteral("file ends early"));
        } while (isSpace(c));
        while (!isSpace(c)) {
            if (text.size() >= 4096)
                return fail(QStringLiteral("overlong field"));
            text += c;
            if (!file.getChar(&c))
                break; // the last field of a file may end without its space
        }
        return true;
    }
    bool number(uint32_t& value)
    {
        QByteArray text;
        if (!word(text))
            return false;
        bool ok = false;
        const qulonglong parsed = text.toULongLong(&ok);
        if (ok && parsed <= UINT32_MAX && !text.startsWith('+') && !text.startsWith('-')) {
            value = uint32_t(parsed);
            return true;
        }
        const QString shown = QString::fromLatin1(text.left(40));
        const QByteArray digits = text.startsWith('-') ? text.mid(1) : text;
        const bool integer = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), [](char c) {
            return c >= '0' && c <= '9';
        });
        return fail(integer ? QStringLiteral("%1 is out of range").arg(shown)
                           : QStringLiteral("\"%1\" is not a number").arg(shown));
    }
    // 0 or 1.
    bool flag(uint32_t& value)
    {
        if (!number(value))
            return false;
        if (value > 1)
            return fail(QStringLiteral("flag %1 is out of range (0 or 1)").arg(value));
        return true;
    }
    // Reads "width height" and checks them before anything is allocated.
    bool size(uint32_t& width, uint32_t& height)
    {
        if (!number(width) || !number(height))
            return false;
        if (!validImageSize(width, height))
            return fail(QStringLiteral("image size %1 x %2 is out of range").arg(width).arg(height));
        return true;
    }
    bool format(uint32_t& value)
    {
        if (!number(value))
            return false;
        if (channelCount(value) == 0)
            return fail(QStringLiteral("unknown pixel format %1").arg(value));
        return true;
    }
    // Length, then the block into `image`. A block that is short, corrupt or
    // of another size fills what it holds and leaves the rest of `image` as it
    // was; it is reported as a problem, since nothing after it can be trusted.
    bool block(Image& image)
    {
        uint32_t length = 0;
        if (!number(length))
            return false;
        if (length > maxBlockBytes)
            return fail(QStringLiteral("block length %1 is out of range").arg(length));
        const uint64_t expected = image.floatCount() * sizeof(float);
        // Never more than the file still holds: a damaged length must not
        // make the read allocate it.
        const qint64 left = std::max<qint64>(0, file.size() - file.pos());
        const QByteArray stored = file.read(std::min<qint64>(length, left));
        if (!cacheCompression) {
            const uint64_t used = std::min<uint64_t>(expected, uint64_t(stored.size()));
            std::memcpy(image.data, stored.constData(), used);
            if (uint64_t(stored.size()) < length)
                return fail(QStringLiteral("block of %1 bytes is cut after %2").arg(length).arg(stored.size()));
            if (length != expected)
                return fail(QStringLiteral("block of %1 bytes where %2 are expected").arg(length).arg(expected));
            return true;
        }
        // zlib writes what it decodes before it stops, so a damaged block
        // still fills the image up to the damage.
        uLongf unpackedSize = uLongf(expected);
        const int result = uncompress(reinterpret_cast<Bytef*>(image.data), &unpackedSize,
                                      reinterpret_cast<const Bytef*>(stored.constData()), uLong(stored.size()));
        if (uint64_t(stored.size()) < length)
            return fail(QStringLiteral("block of %1 bytes is cut after %2").arg(length).arg(stored.size()));
        if (result != Z_OK || unpackedSize != expected)
            return fail(QStringLiteral("block does not decompress to %1 bytes").arg(expected));
        return true;
    }

    QString problem;

private:
    bool fail(const QString& reason)
    {
        if (problem.isEmpty())
            problem = reason;
        return false;
    }

    QFile& file;
};

bool openForReading(QFile& file)
{
    if (file.open(QIODevice::ReadOnly))
        return true;
    logMessage(Warning, QStringLiteral("Cannot open %1, its defaults are kept: %2")
                            .arg(file.fileName(), file.errorString()));
    return false;
}

void warnDamaged(const QFile& file, const QString& problem)
{
    logMessage(Warning,
               QStringLiteral("Damaged file %1 (%2), its defaults are kept").arg(file.fileName(), problem));
}

void warnPartlyRead(const QFile& file, const QString& problem)
{
    logMessage(Warning,
               QStringLiteral("Damaged file %1 (%2), its image is only partly read").arg(file.fileName(), problem));
}

// The map and mask formats store the width twice and read the second as the
// height; the block holds the image's own width x height data. A non-square
// image therefore comes back width x width, filled as far as its data goes.
bool writeImage(CacheWriter& out, const Image& image)
{
    if (image.isEmpty())
        return false;
    out.number(image.width);
    out.number(image.width);
    return out.block(image);
}

// Reads width, height, length and block into `image`: false and `image`
// unchanged when the size is unusable; true when the size was read, with
// `in.problem` set when the block only partly filled the image. What the
// block does not reach keeps the old contents when the size is unchanged.
bool readImage(CacheReader& in, Image& image)
{
    uint32_t width = 0, height = 0;
    if (!in.size(width, height))
        return false;
    if (width != image.width || height != image.height) {
        Image resized(width, height, image.format);
        resized.wrapMode = image.wrapMode;
        image = std::move(resized);
    }
    in.block(image);
    return true;
}

template <class Map>
bool writeMap(const QString& path, const Map& map)
{
    CacheWriter out;
    out.number(uint32_t(map.id));
    out.word(map.name);
    if (!writeImage(out, map.image)) {
        logMessage(Error, QStringLiteral("Cannot store map %1 in %2")
                              .arg(QString::fromStdString(map.name), path));
        return false;
    }
    return writeFileSafely(path, out.bytes);
}

// The ID and name come first and are kept even when the pixels that follow
// are damaged, so that the surfaces referring to the map still find it.
template <class Map>
void readMap(const QString& path, Map& map)
{
    QFile file(path);
    if (!openForReading(file))
        return;
    CacheReader in(file);
    uint32_t id = 0;
    QByteArray name;
    if (!in.number(id) || !in.word(name)) {
        warnDamaged(file, in.problem);
        return;
    }
    map.id = int32_t(id);
    map.name = ProjectData::mapName(name.toStdString());
    if (!readImage(in, map.image))
        warnDamaged(file, in.problem);
    else if (!in.problem.isEmpty())
        warnPartlyRead(file, in.problem);
}

// One mixed cache image: descriptors, [name,] block, into `width` x `height`.
// Null when the descriptors are unreadable; a damaged block gives a partly
// filled image and leaves its reason in `in.problem`.
std::unique_ptr<Image> readCachedImage(CacheReader& in, uint32_t width, uint32_t height, QByteArray* name)
{
    uint32_t format = 0, fileType = 0, sampleType = 0;
    if (!in.format(format) || !in.number(fileType) || !in.number(sampleType) || (name && !in.word(*name)))
        return nullptr;
    auto image = std::make_unique<Image>(width, height, PixelFormat(format));
    image->fileType = fileType;
    image->sampleType = sampleType;
    in.block(*image);
    return image;
}

} // namespace

bool writeMapFile(const QString& path, const ProjectData::DirectionMapData& map)
{
    return writeMap(path, map);
}

bool writeMapFile(const QString& path, const ProjectData::ScaleMapData& map)
{
    return writeMap(path, map);
}

ProjectData::DirectionMapData* readDirectionMapFile(const QString& path, ProjectData& store)
{
    ProjectData::DirectionMapData* map = store.addDirectionMap();
    readMap(path, *map);
    return map;
}

ProjectData::ScaleMapData* readScaleMapFile(const QString& path, ProjectData& store)
{
    ProjectData::ScaleMapData* map = store.addScaleMap();
    readMap(path, *map);
    return map;
}

bool writeMaskCache(const QString& path, const ProjectData& store)
{
    const Image& mask = store.projectMask;
    CacheWriter out;
    if (!writeImage(out, mask)) {
        logMessage(Error, QStringLiteral("Cannot store the project mask in %1").arg(path));
        return false;
    }
    return writeFileSafely(path, out.bytes);
}

bool readMaskCache(const QString& path, ProjectData& store)
{
    // A project that never stored a mask keeps the default one, silently.
    if (!QFileInfo::exists(path))
        return false;
    QFile file(path);
    if (!openForReading(file))
        return false;
    CacheReader in(file);
    if (!readImage(in, store.projectMask)) {
        warnDamaged(file, in.problem);
        return false;
    }
    if (!in.problem.isEmpty()) {
        warnPartlyRead(file, in.problem);
        return false;
    }
    return true;
}

bool writeMixedCache(const QString& path, const ProjectData::MixedSurfaceData& mixed)
{
    const SurfaceSynthesisContext& context = *mixed.synthesisContext;
    auto usable = [](const std::unique_ptr<LayeredImage>& result) {
        return result && result->layerCount() > 0;
    };
    const bool hasMask = usable(context.maskResult) && mixed.freezeMask;
    const bool hasWhite = usable(context.whiteResult) && mixed.freezeWhiteSurface;
    const bool hasBlack = usable(context.blackResult) && mixed.freezeBlackSurface;
    if (!hasMask && !hasWhite && !hasBlack) {
        // An old file would otherwise come back as frozen results on load.
        if (QFileInfo::exists(path))
            QFile::remove(path);
        return true;
    }

    // The first present part sets the size and, deliberately, the number of
    // surface layers stored: with a frozen mask that is one.
    const LayeredImage& first = *(hasMask ? context.maskResult : hasWhite ? context.whiteResult : context.blackResult);
    const uint32_t width = first.layers[0]->width;
    const uint32_t height = first.layers[0]->height;
    const size_t count = first.layerCount();

    CacheWriter out;
    bool ok = true;
    auto writeImage = [&](const Image* image, const std::string* name) {
        ok = ok && image && !image->isEmpty() && image->width == width && image->height == height;
        if (!ok)
            return;
        out.descriptors(*image);
        if (name)
            out.word(*name);
        ok = out.block(*image);
    };
    auto writeLayers = [&](const LayeredImage& result) {
        ok = ok && result.layerCount() >= count;
        for (size_t i = 0; ok && i < count; ++i)
            writeImage(result.layers[i], &result.names[i]);
    };
    out.number(hasMask);
    out.number(hasWhite);
    out.number(hasBlack);
    out.number(width);
    out.number(height);
    if (hasMask)
        writeImage(context.maskResult->layers[0], nullptr);
    if (hasWhite || hasBlack)
        out.number(count);
    if (hasWhite)
        writeLayers(*context.whiteResult);
    if (hasBlack)
        writeLayers(*context.blackResult);
    if (!ok) {
        logMessage(Error, QStringLiteral("Cannot store the frozen results of %1: their images do not fit one cache file")
                              .arg(QString::fromStdString(mixed.name)));
        return false;
    }
    return writeFileSafely(path, out.bytes);
}

bool readMixedCache(const QString& path, ProjectData::MixedSurfaceData& mixed)
{
    if (!mixed.freezeMask && !mixed.freezeWhiteSurface && !mixed.freezeBlackSurface)
        return false;
    // Frozen but never made: the writer left no file, which is no damage.
    if (!QFileInfo::exists(path))
        return false;
    QFile file(path);
    if (!openForReading(file))
        return false;

    CacheReader in(file);
    uint32_t hasMask = 0, hasWhite = 0, hasBlack = 0, width = 0, height = 0, count = 0;
    if (!in.flag(hasMask) || !in.flag(hasWhite) || !in.flag(hasBlack) || !in.size(width, height)) {
        warnDamaged(file, in.problem);
        return false;
    }

    // From here on a damaged part ends the reading; what was read before it,
    // a partly filled image included, is kept.
    std::unique_ptr<LayeredImage> maskResult, whiteResult, blackResult;
    auto readLayers = [&](std::unique_ptr<LayeredImage>& result) {
        result = std::make_unique<LayeredImage>();
        for (uint32_t i = 0; i < count && in.problem.isEmpty(); ++i) {
            QByteArray name;
            std::unique_ptr<Image> image = readCachedImage(in, width, height, &name);
            if (image)
                result->setLayer(name.toStdString(), image.release());
        }
        if (result->layerCount() == 0)
            result.reset();
    };
    if (hasMask) {
        if (std::unique_ptr<Image> mask = readCachedImage(in, width, height, nullptr)) {
            maskResult = std::make_unique<LayeredImage>();
            maskResult->setLayer("Mask", mask.release());
        }
    }
    if ((hasWhite || hasBlack) && in.number(count) && count > maxCacheLayers)
        in.problem = QStringLiteral("layer count %1 is out of range").arg(count);
    if (hasWhite && in.problem.isEmpty())
        readLayers(whiteResult);
    if (hasBlack && in.problem.isEmpty())
        readLayers(blackResult);
    const bool whole = in.problem.isEmpty();
    if (!whole)
        warnPartlyRead(file, in.problem);
    SurfaceSynthesisContext& context = *mixed.synthesisContext;
    context.maskResult = std::move(maskResult);
    context.whiteResult = std::move(whiteResult);
    context.blackResult = std::move(blackResult);
    return whole;
}

} // namespace Velmor
