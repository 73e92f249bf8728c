#include "ExrHeaderCheck.h"

#include "ImageFile.h"
#include "ImageFileSupport.h"

#include <QFile>

#include <algorithm>
#include <cstring>

namespace {
constexpr uint32_t tiledFlag = 0x200;
constexpr uint32_t longNamesFlag = 0x400;
constexpr uint32_t deepFlag = 0x800;
constexpr uint32_t multiPartFlag = 0x1000;
// Offsets of more tiles than this would take OpenEXR hundreds of megabytes.
constexpr uint64_t maxTiles = uint64_t(1) << 22;

// Bounds-checked reading of little-endian values.
class Cursor
{
public:
    Cursor(const uchar* begin, const uchar* end) : at(begin), end(end) {}

    // A zero-terminated string of at most `maxLength` characters.
    bool text(QByteArray& out, size_t maxLength)
    {
        const size_t available = size_t(end - at);
        const void* zero = std::memchr(at, 0, std::min(available, maxLength + 1));
        if (!zero)
            return false;
        out = QByteArray(reinterpret_cast<const char*>(at), int(static_cast<const uchar*>(zero) - at));
        at = static_cast<const uchar*>(zero) + 1;
        return true;
    }
    bool int32(int32_t& value)
    {
        uint32_t bits = 0;
        if (!bytes(&bits, 4))
            return false;
        value = int32_t(bits);
        return true;
    }
    bool bytes(void* out, size_t n)
    {
        if (size_t(end - at) < n)
            return false;
        std::memcpy(out, at, n); // the machines we build for are little-endian, like the file
        at += n;
        return true;
    }
    bool skip(size_t n)
    {
        if (size_t(end - at) < n)
            return false;
        at += n;
        return true;
    }
    bool atEnd() const { return at == end; }
    const uchar* position() const { return at; }

private:
    const uchar* at;
    const uchar* end;
};

bool channelListSound(Cursor value)
{
    for (;;) {
        QByteArray name;
        if (!value.text(name, 255))
            return false;
        if (name.isEmpty())
            return value.atEnd();
        int32_t pixelType = 0, xSampling = 0, ySampling = 0;
        if (!value.int32(pixelType) || !value.skip(4) || !value.int32(xSampling) || !value.int32(ySampling))
            return false;
        if (pixelType < 0 || pixelType > 2 || xSampling < 1 || ySampling < 1)
            return false;
    }
}

struct HeaderFacts
{
    bool hasDataWindow = false;
    int64_t width = 0, height = 0;
    uint32_t tileWidth = 0, tileHeight = 0;
};

// One header: attributes up to the empty name that ends it.
bool headerSound(Cursor& file, size_t maxNameLength, HeaderFacts& facts, QString& problem)
{
    for (;;) {
        QByteArray name, type;
        int32_t size = 0;
        if (!file.text(name, maxNameLength)) {
            problem = QStringLiteral("its header is cut short");
            return false;
        }
        if (name.isEmpty())
            return true;
        if (!file.text(type, maxNameLength) || !file.int32(size) || size < 0) {
            problem = QStringLiteral("its header is cut short");
            return false;
        }
        const uchar* valueStart = file.position();
        if (!file.skip(size_t(size))) {
            problem = QStringLiteral("its attribute \"%1\" runs past the end of the file").arg(QString::fromLatin1(name));
            return false;
        }
        Cursor content(valueStart, valueStart + size);
        bool sound = true;
        if (type == "chlist") {
            sound = channelListSound(content);
        } else if (type == "box2i" && name == "dataWindow") {
            int32_t box[4] = {};
            sound = size == 16 && content.bytes(box, 16);
            facts.hasDataWindow = sound;
            facts.width = int64_t(box[2]) - box[0] + 1;
            facts.height = int64_t(box[3]) - box[1] + 1;
        } else if (type == "preview") {
            uint32_t dims[2] = {};
            sound = size >= 8 && content.bytes(dims, 8) && uint64_t(dims[0]) * dims[1] * 4 + 8 == uint64_t(size);
        } else if (type == "tiledesc") {
            uint32_t dims[2] = {};
            sound = size == 9 && content.bytes(dims, 8) && dims[0] > 0 && dims[1] > 0;
            facts.tileWidth = dims[0];
            facts.tileHeight = dims[1];
        }
        if (!sound) {
            problem = QStringLiteral("its attribute \"%1\" is malformed").arg(QString::fromLatin1(name));
            return false;
        }
    }
}
}

bool checkExrHeader(const QString& path)
{
    QFile file(path);
    const qint64 size = file.size();
    const uchar* bytes = size > 0 && file.open(QIODevice::ReadOnly) ? file.map(0, size) : nullptr;
    if (!bytes) {
        logLoadFailure(path, QStringLiteral("the file cannot be read"));
        return false;
    }
    Cursor cursor(bytes, bytes + size);
    const uchar magic[4] = {0x76, 0x2f, 0x31, 0x01};
    uchar start[4] = {};
    uint32_t version = 0;
    if (!cursor.bytes(start, 4) || std::memcmp(start, magic, 4) != 0 || !cursor.bytes(&version, 4)) {
        logLoadFailure(path, QStringLiteral("it is not an OpenEXR file"));
        return false;
    }
    if (version & deepFlag) {
        logLoadFailure(path, QStringLiteral("deep OpenEXR images cannot be loaded"));
        return false;
    }

    const size_t maxNameLength = (version & longNamesFlag) ? 255 : 31;
    HeaderFacts first;
    QString problem;
    // A multi-part file holds headers one after another up to an empty one;
    // only the first part is loaded, but every header must be whole.
    for (int part = 0;; ++part) {
        HeaderFacts facts;
        if (!headerSound(cursor, maxNameLength, facts, problem)) {
            logLoadFailure(path, problem);
            return false;
        }
        if (part == 0)
            first = facts;
        if (!(version & multiPartFlag))
            break;
        QByteArray next;
        Cursor peek = cursor;
        if (!peek.text(next, maxNameLength)) {
            logLoadFailure(path, QStringLiteral("its header is cut short"));
            return false;
        }
        if (next.isEmpty())
            break;
    }

    if (!first.hasDataWindow) {
        logLoadFailure(path, QStringLiteral("its header has no data window"));
        return false;
    }
    if (first.width <= 0 || first.height <= 0) {
        logLoadFailure(path, QStringLiteral("its data window is empty"));
        return false;
    }
    if (!imageSizeAllowed(path, uint64_t(first.width), uint64_t(first.height)))
        return false;
    if ((version & tiledFlag) || first.tileWidth > 0) {
        const uint64_t tiles = (uint64_t(first.width) + first.tileWidth - 1) / std::max(first.tileWidth, 1u)
                               * ((uint64_t(first.height) + first.tileHeight - 1) / std::max(first.tileHeight, 1u));
        if (first.tileWidth == 0 || first.tileHeight == 0 || tiles > maxTiles) {
            logLoadFailure(path, QStringLiteral("its tiles are too small for its size"));
            return false;
        }
    }
    return true;
}
