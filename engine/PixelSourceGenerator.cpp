#include "PixelSourceGenerator.h"

#include "LayeredImage.h"
#include "LogMessage.h"

#include <algorithm>

namespace Velmor {

void PixelSourceGenerator::init(const LayeredImage& source, int32_t size, int32_t boundary)
{
    patchSize = size;
    patchBoundary = boundary;
    bool first = true;
    bool differ = false;
    auto include = [&](const Image* image) {
        if (!image)
            return;
        const int32_t w = int32_t(image->width);
        const int32_t h = int32_t(image->height);
        if (first) {
            width = w;
            height = h;
            first = false;
            return;
        }
        differ = differ || w != width || h != height;
        width = std::min(width, w);
        height = std::min(height, h);
    };
    width = height = 0;
    for (const Image* layer : source.layers)
        include(layer);
    include(source.mask);
    if (differ)
        logMessage(Warning, "Input textures have different resolutions. Using minimal lowest resolution.");
    fullSize = patchSize + 2 * patchBoundary;
    halfSize = fullSize / 2;
    prepare(source);
}

} // namespace Velmor
