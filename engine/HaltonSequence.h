#pragma once

#include <mutex>

namespace Velmor {

// Low-discrepancy sequence in 0..1 (radical inverse, incremental form). The
// masked source generator draws candidate indices from one process-wide
// instance of base 13, which is never reset.
class HaltonSequence
{
public:
    explicit HaltonSequence(int base = 13) : inverseBase(1.0 / double(base)) {}

    double next();

    // The process-wide instance of base 13.
    static HaltonSequence& instance();

    double value = 0.0;
    double inverseBase;

private:
    std::mutex lock;
};

} // namespace Velmor
