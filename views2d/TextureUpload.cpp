#include "TextureUpload.h"

#include <qopengl.h>

#include <algorithm>
#include <cmath>

namespace {

// Smallest and largest finite colour value; low > high when there is none.
void colourRange(const Image& image, float& low, float& high)
{
    const uint32_t channels = image.channels();
    const uint32_t colourChannels = std::min(channels, 3u);
    low = INFINITY;
    high = -INFINITY;
    for (uint64_t i = 0; i < image.pixelCount(); ++i)
        for (uint32_t c = 0; c < colourChannels; ++c) {
            const float v = image.data[i * channels + c];
            if (std::isfinite(v)) {
                low = std::min(low, v);
                high = std::max(high, v);
            }
        }
}

} // namespace

TextureUpload textureUploadOf(const Image& image, bool normalise)
{
    TextureUpload upload;
    if (image.isEmpty())
        return upload;
    switch (image.format) {
    case Gray:
        upload.sourceFormat = GL_LUMINANCE;
        upload.internalFormat = GL_RGB;
        break;
    case RGB:
        upload.sourceFormat = GL_RGB;
        upload.internalFormat = GL_RGB;
        break;
    case RGBA:
        upload.sourceFormat = GL_RGBA;
        upload.internalFormat = GL_RGBA;
        break;
    case Normal:
        upload.sourceFormat = GL_RGB;
        upload.internalFormat = GL_RGB;
        upload.convert = true;
        upload.normalVectors = true;
        upload.mapXY = normalise && !image.mappedNormalXY;
        upload.mapZ = normalise && !image.mappedNormalZ;
        return upload;
    default:
        return upload;
    }
    if (normalise) {
        float low, high;
        colourRange(image, low, high);
        // A flat image is left as it is.
        if (high - low > 1e-12f) {
            upload.convert = true;
            upload.low = low;
            upload.scale = 1.0f / (high - low);
        }
    }
    return upload;
}

void displayRows(const Image& image, const TextureUpload& upload, uint32_t first, uint32_t count, float* out)
{
    if (image.isEmpty() || first >= image.height)
        return;
    count = std::min(count, image.height - first);
    const uint32_t channels = image.channels();
    const uint64_t floats = uint64_t(count) * image.width * channels;
    const float* in = image.data + uint64_t(first) * image.width * channels;
    std::copy(in, in + floats, out);
    if (!upload.convert)
        return;
    const uint64_t pixels = uint64_t(count) * image.width;
    if (upload.normalVectors) {
        for (uint64_t i = 0; i < pixels; ++i) {
            float* v = out + i * 3;
            image.normalToColour(v);
            if (upload.mapXY) {
                v[0] = v[0] * 0.5f + 0.5f;
                v[1] = v[1] * 0.5f + 0.5f;
            }
            if (upload.mapZ)
                v[2] = v[2] * 0.5f + 0.5f;
        }
        return;
    }
    const uint32_t colourChannels = std::min(channels, 3u);
    for (uint64_t i = 0; i < pixels; ++i)
        for (uint32_t c = 0; c < colourChannels; ++c) {
            float& v = out[i * channels + c];
            v = std::isfinite(v) ? (v - upload.low) * upload.scale : (v > 0.0f ? 1.0f : 0.0f);
        }
}
