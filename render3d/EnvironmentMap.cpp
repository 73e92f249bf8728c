#include "EnvironmentMap.h"

#include "LogMessage.h"

#include <FreeImage.h>

#include <QFile>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

namespace {

// Environment maps beyond this are refused before any pixel is converted.
constexpr uint32_t maxEnvironmentSide = 16384;

// Reads the resolution line of a Radiance header ("-Y height +X width") so
// that absurd sizes are refused before FreeImage allocates anything.
bool readHdrSize(const QString& path, uint32_t& width, uint32_t& height)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    for (int line = 0; line < 64 && !file.atEnd(); ++line) {
        const QList<QByteArray> parts = file.readLine(256).trimmed().split(' ');
        if (parts.size() == 4 && parts[0].size() == 2 && parts[2].size() == 2 && parts[0][1] == 'Y') {
            bool okHeight = false, okWidth = false;
            height = parts[1].toUInt(&okHeight);
            width = parts[3].toUInt(&okWidth);
            return okHeight && okWidth;
        }
    }
    return false;
}

} // namespace

EnvironmentMap plainEnvironment(float r, float g, float b)
{
    EnvironmentMap map;
    uint32_t width = 16, height = 8;
    for (EnvironmentLevel& level : map.levels) {
        level.width = width;
        level.height = height;
        level.rgb.resize(size_t(width) * height * 3);
        for (size_t i = 0; i < level.rgb.size(); i += 3) {
            level.rgb[i] = r;
            level.rgb[i + 1] = g;
            level.rgb[i + 2] = b;
        }
        width = std::max(1u, width / 2);
        height = std::max(1u, height / 2);
    }
    return map;
}

EnvironmentLevel filterEnvironmentLevel(const EnvironmentLevel& level)
{
    EnvironmentLevel half;
    if (level.isEmpty())
        return half;
    half.width = std::max(1u, level.width / 2);
    half.height = std::max(1u, level.height / 2);
    std::vector<float> box(size_t(half.width) * half.height * 3, 0.0f);
    for (uint32_t y = 0; y < half.height; ++y)
        for (uint32_t x = 0; x < half.width; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                int count = 0;
                for (uint32_t sy = y * 2; sy < std::min(level.height, y * 2 + 2); ++sy)
                    for (uint32_t sx = x * 2; sx < std::min(level.width, x * 2 + 2); ++sx, ++count)
                        sum += level.rgb[(size_t(sy) * level.width + sx) * 3 + c];
                box[(size_t(y) * half.width + x) * 3 + c] = sum / float(std::max(count, 1));
            }
    half.rgb.resize(box.size());
    const float weights[3] = {0.25f, 0.5f, 0.25f};
    const int w = int(half.width), h = int(half.height);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx) {
                        const int sx = (x + dx + w) % w;
                        const int sy = std::clamp(y + dy, 0, h - 1);
                        sum += weights[dx + 1] * weights[dy + 1] * box[(size_t(sy) * w + sx) * 3 + c];
                    }
                half.rgb[(size_t(y) * w + x) * 3 + c] = sum;
            }
    return half;
}

bool loadRadianceHdr(const QString& path, EnvironmentLevel& level)
{
    const QByteArray name = path.toUtf8();
    if (!QFileInfo::exists(path)) {
        logMessage(Warning, QStringLiteral("Environment map %1 not found.").arg(path));
        return false;
    }
    uint32_t headerWidth = 0, headerHeight = 0;
    if (!readHdrSize(path, headerWidth, headerHeight) || headerWidth == 0 || headerHeight == 0 ||
        headerWidth > maxEnvironmentSide || headerHeight > maxEnvironmentSide) {
        logMessage(Error, QStringLiteral("Environment map %1 has no usable Radiance header or an absurd size.").arg(path));
        return false;
    }
    FIBITMAP* bitmap = FreeImage_Load(FIF_HDR, name.constData(), 0);
    if (!bitmap) {
        logMessage(Error, QStringLiteral("Environment map %1 is not a readable Radiance HDR file.").arg(path));
        return false;
    }
    const uint32_t width = FreeImage_GetWidth(bitmap), height = FreeImage_GetHeight(bitmap);
    if (FreeImage_GetImageType(bitmap) != FIT_RGBF || width == 0 || height == 0 || width > maxEnvironmentSide ||
        height > maxEnvironmentSide) {
        logMessage(Error, QStringLiteral("Environment map %1 has an unsupported size or type.").arg(path));
        FreeImage_Unload(bitmap);
        return false;
    }
    level.width = width;
    level.height = height;
    level.rgb.resize(size_t(width) * height * 3);
    // FreeImage keeps row 0 at the bottom, as the texture wants it.
    for (uint32_t y = 0; y < height; ++y)
        std::memcpy(&level.rgb[size_t(y) * width * 3], FreeImage_GetScanLine(bitmap, int(y)), size_t(width) * 12);
    FreeImage_Unload(bitmap);
    return true;
}

bool saveRadianceHdr(const QString& path, const EnvironmentLevel& level)
{
    if (level.isEmpty())
        return false;
    FIBITMAP* bitmap = FreeImage_AllocateT(FIT_RGBF, int(level.width), int(level.height));
    if (!bitmap)
        return false;
    for (uint32_t y = 0; y < level.height; ++y)
        std::memcpy(FreeImage_GetScanLine(bitmap, int(y)), &level.rgb[size_t(y) * level.width * 3],
                    size_t(level.width) * 12);
    const bool saved = FreeImage_Save(FIF_HDR, bitmap, path.toUtf8().constData(), 0);
    FreeImage_Unload(bitmap);
    if (!saved)
        logMessage(Error, QStringLiteral("Unable to write %1.").arg(path));
    return saved;
}

EnvironmentMap loadEnvironmentSet(const QString& directory)
{
    EnvironmentMap map;
    if (!loadRadianceHdr(directory + QStringLiteral("/envmap1.hdr"), map.levels[0])) {
        logMessage(Warning, QStringLiteral("Using a plain environment instead of %1 (working directory %2).")
                                .arg(directory, QDir::currentPath()));
        return plainEnvironment(0.5f, 0.5f, 0.5f);
    }
    for (int k = 1; k < environmentLevelCount; ++k) {
        EnvironmentLevel& level = map.levels[k];
        const QString path = directory + QStringLiteral("/envmap%1.hdr").arg(k + 1);
        const EnvironmentLevel& above = map.levels[k - 1];
        const uint32_t expectedWidth = std::max(1u, above.width / 2), expectedHeight = std::max(1u, above.height / 2);
        if (loadRadianceHdr(path, level) && level.width == expectedWidth && level.height == expectedHeight)
            continue;
        if (!level.isEmpty())
            logMessage(Warning, QStringLiteral("%1 is not half the size of the level above it; filtering instead.")
                                    .arg(path));
        level = filterEnvironmentLevel(above);
    }
    return map;
}
