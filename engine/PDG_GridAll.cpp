#include "PDG_GridAll.h"

namespace Velmor {

bool PDG_GridAll::next(int32_t& x, int32_t& y)
{
    // A step below 1 would never leave the first row.
    if (curY > height || patchSize < 1)
        return false;
    x = curX;
    y = curY;
    curX += patchSize;
    if (curX > width) {
        curY += patchSize;
        curX = -halfSize;
    }
    return true;
}

void PDG_GridAll::reset()
{
    curX = -halfSize;
    curY = -halfSize;
}

} // namespace Velmor
