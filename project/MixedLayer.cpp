#include "MixedLayer.h"

#include "ImageFile.h"
#include "LogMessage.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace Velmor {

namespace {

int teamSize()
{
    return std::max(1, std::min(16, omp_get_max_threads()));
}

// Column (or row) of a source of `sourceSize` read for output index i of
// `outputSize`: the identity for equal sizes, nearest stretching otherwise
// (a kept result may stem from an earlier target size).
std::vector<uint32_t> stretchIndex(uint32_t outputSize, uint32_t sourceSize)
{
    std::vector<uint32_t> index(outputSize);
    for (uint32_t i = 0; i < outputSize; ++i)
        index[i] = uint32_t(uint64_t(i) * sourceSize / outputSize);
    return index;
}

// Mask value as a blend weight; anything not above 0 (NaN included) is black.
inline float weight(float m)
{
    return m > 0.0f ? std::min(m, 1.0f) : 0.0f;
}

// A pixel of `image` as RGBA colour; normal vectors go back to colours the
// way the image's own flags say.
inline void toRgba(const Image& image, const float* p, float* out)
{
    switch (image.format) {
    case Gray:
        out[0] = out[1] = out[2] = p[0];
        out[3] = 1.0f;
        break;
    case RGB:
        out[0] = p[0];
        out[1] = p[1];
        out[2] = p[2];
        out[3] = 1.0f;
        break;
    case RGBA:
        std::memcpy(out, p, 4 * sizeof(float));
        break;
    case Normal:
        std::memcpy(out, p, 3 * sizeof(float));
        image.normalToColour(out);
        out[3] = 1.0f;
        break;
    default:
        out[0] = out[1] = out[2] = 0.0f;
        out[3] = 1.0f;
    }
}

// Blends black to white by w into out (c channels). The ends copy one input
// unchanged, so a pure mask reproduces that surface exactly.
inline void blend(const float* white, const float* black, float w, uint32_t c, bool normal, float* out)
{
    if (w <= 0.0f) {
        std::memcpy(out, black, c * sizeof(float));
        return;
    }
    if (w >= 1.0f) {
        std::memcpy(out, white, c * sizeof(float));
        return;
    }
    for (uint32_t k = 0; k < c; ++k)
        out[k] = (white[k] - black[k]) * w + black[k];
    if (normal) {
        const float length = std::sqrt(out[0] * out[0] + out[1] * out[1] + out[2] * out[2]);
        if (length > 0.0f)
            for (uint32_t k = 0; k < 3; ++k)
                out[k] /= length;
    }
}

} // namespace

uint32_t mixMaskChannel(int32_t channel, const Image& mask)
{
    if (channel < 0 || mask.channels() == 0)
        return 0;
    return std::min(uint32_t(channel), mask.channels() - 1);
}

void prepareMixedLayer(const Image& white, const Image& black, uint32_t width, uint32_t height, Image& out)
{
    const PixelFormat format = white.format == black.format ? white.format : RGBA;
    if (out.format != format || out.width != width || out.height != height || !out.data)
        out.allocate(width, height, format);
    if (white.format == black.format) {
        out.copyDescriptorsFrom(white);
        out.fileType = white.fileType == black.fileType ? white.fileType : uint32_t(FileTIFF);
        out.sampleType = std::max({uint32_t(UInt8), white.sampleType, black.sampleType});
        return;
    }
    logMessage(Warning, "The two input surface of the mixed surface have different channel layout!");
    out.copyDescriptorsFrom(Image());
    out.fileType = FileTGA;
    out.sampleType = UInt8;
    const Image& deeper = white.sampleType >= black.sampleType ? white : black;
    if (deeper.sampleType > out.sampleType) {
        out.sampleType = deeper.sampleType;
        out.fileType = deeper.fileType;
    }
}

void mixLayerRows(const Image& white, const Image& black, const Image& mask, uint32_t maskChannel, Image& out,
                  uint32_t first, uint32_t last)
{
    const uint32_t width = out.width;
    const uint32_t height = out.height;
    const bool sameFormat = white.format == black.format && white.format == out.format;
    const uint32_t c = out.channels();
    const uint32_t wc = white.channels();
    const uint32_t bc = black.channels();
    const uint32_t mc = mask.channels();
    // prepareMixedLayer and mixMaskChannel make these hold.
    if (maskChannel >= mc || (!sameFormat && c != 4) || last > height)
        return;
    const std::vector<uint32_t> whiteX = stretchIndex(width, white.width), whiteY = stretchIndex(height, white.height);
    const std::vector<uint32_t> blackX = stretchIndex(width, black.width), blackY = stretchIndex(height, black.height);
    const std::vector<uint32_t> maskX = stretchIndex(width, mask.width), maskY = stretchIndex(height, mask.height);
    const bool normal = out.format == Normal;
#pragma omp parallel for num_threads(teamSize()) schedule(static)
    for (int64_t y = first; y < int64_t(last); ++y) {
        const float* whiteRow = white.data + uint64_t(white.width) * wc * whiteY[y];
        const float* blackRow = black.data + uint64_t(black.width) * bc * blackY[y];
        const float* maskRow = mask.data + uint64_t(mask.width) * mc * maskY[y];
        float* outRow = out.data + uint64_t(width) * c * uint64_t(y);
        for (uint32_t x = 0; x < width; ++x) {
            const float w = weight(maskRow[uint64_t(mc) * maskX[x] + maskChannel]);
            const float* wp = whiteRow + uint64_t(wc) * whiteX[x];
            const float* bp = blackRow + uint64_t(bc) * blackX[x];
            if (sameFormat) {
                blend(wp, bp, w, c, normal, outRow + uint64_t(c) * x);
            } else {
                float wRgba[4], bRgba[4];
                toRgba(white, wp, wRgba);
                toRgba(black, bp, bRgba);
                blend(wRgba, bRgba, w, 4, false, outRow + 4 * uint64_t(x));
            }
        }
    }
}

} // namespace Velmor
