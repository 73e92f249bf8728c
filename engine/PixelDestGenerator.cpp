#include "PixelDestGenerator.h"

#include "Image.h"

namespace Velmor {

void PixelDestGenerator::init(const Image& image, int32_t size, int32_t boundary)
{
    width = int32_t(image.width);
    height = int32_t(image.height);
    patchSize = size;
    patchBoundary = boundary;
    fullSize = patchSize + 2 * patchBoundary;
    halfSize = fullSize / 2;
    reset();
}

} // namespace Velmor
