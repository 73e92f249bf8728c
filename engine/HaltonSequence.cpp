#include "HaltonSequence.h"

namespace Velmor {

double HaltonSequence::next()
{
    std::lock_guard<std::mutex> guard(lock);
    const double r = 1.0 - value - 1e-10;
    if (inverseBase < r) {
        value += inverseBase;
    } else {
        double h = inverseBase;
        double hh;
        do {
            hh = h;
            h *= inverseBase;
        } while (h >= r);
        value = hh + h - 1.0 + value;
    }
    return value;
}

HaltonSequence& HaltonSequence::instance()
{
    static HaltonSequence sequence(13);
    return sequence;
}

} // namespace Velmor
