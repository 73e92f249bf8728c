#include "PatchSource.h"

namespace Velmor {

PatchSource::PatchSource(const LayeredImage* sourceImage, int32_t x, int32_t y, int32_t halfSize, float directionX,
                         float directionY, float scaleFactor)
    : source(sourceImage)
{
    if (source && source->layerCount() > 0)
        scratch = source->pixelAt(0, 0);
    place(x, y, halfSize, directionX, directionY, scaleFactor);
}

void PatchSource::place(int32_t x, int32_t y, int32_t halfSize, float directionX, float directionY, float scaleFactor)
{
    sx = x;
    sy = y;
    cx = x + halfSize;
    cy = y + halfSize;
    dirX = directionX;
    dirY = directionY;
    scale = scaleFactor;
}

LayeredPixel PatchSource::sourcePixels(int32_t dx, int32_t dy)
{
    float X;
    float Y;
    sourcePosition(dx, dy, X, Y);
    source->sample(X, Y, Linear, scratch);
    for (Pixel& pixel : scratch) {
        if (pixel.format != Normal)
            continue;
        const float nx = pixel[0];
        const float ny = pixel[1];
        pixel[0] = nx * dirY + ny * dirX;
        pixel[1] = ny * dirY - nx * dirX;
    }
    return scratch;
}

} // namespace Velmor
