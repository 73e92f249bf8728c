#pragma once

#include <cstdint>

namespace Velmor {

// 15-bit linear congruential generator: values 0..32767, like the classic
// C library rand() that the sampling formulas divide by 32767.0. One per
// synthesis run, so concurrent runs do not disturb each other.
class RandomGenerator
{
public:
    static constexpr int maxValue = 32767;

    explicit RandomGenerator(uint32_t seed = 1) : state(seed) {}
    void seed(uint32_t value) { state = value; }
    int next()
    {
        state = state * 214013u + 2531011u;
        return int((state >> 16) & 0x7FFFu);
    }

private:
    uint32_t state;
};

} // namespace Velmor
