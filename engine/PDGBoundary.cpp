#include "PDGBoundary.h"

namespace Velmor {

bool PDGBoundary::next(int32_t& x, int32_t& y)
{
    // A step below 1 would never leave the first row.
    if (curY > height || patchSize < 1)
        return false;
    x = curX;
    y = curY;
    if (curY == -halfSize)
        curX += patchSize;
    else
        curX = width + 1;
    if (curX > width) {
        curY += patchSize;
        curX = -halfSize;
    }
    return true;
}

void PDGBoundary::reset()
{
    curX = -halfSize;
    curY = -halfSize;
}

} // namespace Velmor
