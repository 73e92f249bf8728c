#include "PSGBoundaryAll.h"

namespace Velmor {

void PSGBoundaryAll::next(int32_t& x, int32_t& y)
{
    const int r1 = random.next();
    const int r2 = random.next();
    x = int32_t(double(width - fullSize) * (r1 / double(RandomGenerator::maxValue)));
    y = int32_t(double(height - fullSize) * (r2 / double(RandomGenerator::maxValue)));
}

} // namespace Velmor
