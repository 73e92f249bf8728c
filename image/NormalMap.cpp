#include "NormalMap.h"

#include "Image.h"
#include "LogMessage.h"

#include <cmath>
#include <vector>

const char* const normalLayerQuestion =
    "Layer mode is set as normal, but texture is not a normal map. Convert it to a normal map?";
const char* const normalLayerNotConvertible =
    "Layer mode is set as normal, but texture is not a normal map.\n"
    "This texture cannot be converted to a normal map (not an RGB image)!";
const char* const normalLayerImportWarning =
    "Could not convert normal layer to normal map, not an RGB or RGBA image.";

void Image::toNormalMap(bool flipX, bool flipY, bool mappedXY, bool mappedZ)
{
    if (format != RGB && format != RGBA)
        return;
    if (format == RGBA)
        dropAlpha();
    flipNormalX = flipX;
    flipNormalY = flipY;
    mappedNormalXY = mappedXY;
    mappedNormalZ = mappedZ;
    format = Normal;

    const int64_t pixels = int64_t(pixelCount());
#pragma omp parallel for schedule(static)
    for (int64_t i = 0; i < pixels; ++i) {
        float* p = data + 3 * i;
        if (mappedXY) {
            p[0] = 2.0f * p[0] - 1.0f;
            p[1] = 2.0f * p[1] - 1.0f;
        }
        if (mappedZ)
            p[2] = 2.0f * p[2] - 1.0f;
        if (flipX)
            p[0] = -p[0];
        if (flipY)
            p[1] = -p[1];
    }
}

void Image::fromNormalMap()
{
    if (format != Normal)
        return;
    const int64_t pixels = int64_t(pixelCount());
#pragma omp parallel for schedule(static)
    for (int64_t i = 0; i < pixels; ++i)
        normalToColour(data + 3 * i);
    format = RGB;
}

void Image::fixNormalMapSlope()
{
    if (format != Normal || isEmpty())
        return;
    // One partial sum per row, added in row order, so that the average does
    // not depend on the number of threads.
    const int64_t rows = height;
    std::vector<double> rowSumX(height), rowSumY(height);
#pragma omp parallel for schedule(static)
    for (int64_t y = 0; y < rows; ++y) {
        const float* row = data + uint64_t(width) * 3 * y;
        float sx = 0.0f, sy = 0.0f;
        for (uint32_t x = 0; x < width; ++x) {
            sx += row[3 * x];
            sy += row[3 * x + 1];
        }
        rowSumX[y] = sx;
        rowSumY[y] = sy;
    }
    double sumX = 0.0, sumY = 0.0;
    for (int64_t y = 0; y < rows; ++y) {
        sumX += rowSumX[y];
        sumY += rowSumY[y];
    }
    const float count = float(pixelCount());
    const float avgX = float(sumX) / count;
    const float avgY = float(sumY) / count;
    logMessage(Info, "Fixing normal map slope... Normal Map X Y average: %f %f", avgX, avgY);

    const int64_t pixels = int64_t(pixelCount());
#pragma omp parallel for schedule(static)
    for (int64_t i = 0; i < pixels; ++i) {
        float* p = data + 3 * i;
        p[0] -= avgX;
        p[1] -= avgY;
        const float length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
        p[0] /= length;
        p[1] /= length;
        p[2] /= length;
    }
}

NormalLayerRule normalLayerRule(const Image& image)
{
    NormalLayerRule rule;
    rule.convertible = image.format == RGB || image.format == RGBA;
    const bool mapped = image.sampleType != Float32;
    rule.conversion.mappedXY = mapped;
    rule.conversion.mappedZ = mapped;
    return rule;
}

bool convertToNormalLayer(Image& image)
{
    if (image.format == Normal)
        return true;
    const NormalLayerRule rule = normalLayerRule(image);
    if (!rule.convertible)
        return false;
    const NormalMapConversion& c = rule.conversion;
    image.toNormalMap(c.flipX, c.flipY, c.mappedXY, c.mappedZ);
    return true;
}
