#include "TextureUpload.h"

#include <qopengl.h>

#include <algorithm>
#include <cmath>

std::vector<float> normalDisplayPixels(const Image& image)
{
    std::vector<float> pixels;
    if (image.isEmpty() || image.format != Normal)
        return pixels;
    pixels.assign(image.data, image.data + image.pixelCount() * 3);
    for (uint64_t i = 0; i < image.pixelCount(); ++i)
        image.normalToColour(&pixels[i * 3]);
    return pixels;
}

std::vector<float> normalisedPixels(const Image& image)
{
    std::vector<float> pixels;
    if (image.isEmpty())
        return pixels;
    const uint32_t channels = image.channels();
    const uint32_t colourChannels = std::min(channels, 3u);
    pixels.assign(image.data, image.data + image.floatCount());
    float low = INFINITY, high = -INFINITY;
    for (uint64_t i = 0; i < image.pixelCount(); ++i)
        for (uint32_t c = 0; c < colourChannels; ++c) {
            const float v = pixels[i * channels + c];
            if (std::isfinite(v)) {
                low = std::min(low, v);
                high = std::max(high, v);
            }
        }
    if (!(high - low > 1e-12f))
        return pixels;
    const float scale = 1.0f / (high - low);
    for (uint64_t i = 0; i < image.pixelCount(); ++i)
        for (uint32_t c = 0; c < colourChannels; ++c) {
            float& v = pixels[i * channels + c];
            v = std::isfinite(v) ? (v - low) * scale : (v > 0.0f ? 1.0f : 0.0f);
        }
    return pixels;
}

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
        upload.converted = normalDisplayPixels(image);
        upload.pixels = upload.converted.data();
        return upload;
    default:
        return upload;
    }
    if (normalise) {
        upload.converted = normalisedPixels(image);
        upload.pixels = upload.converted.data();
    } else {
        upload.pixels = image.data;
    }
    return upload;
}
