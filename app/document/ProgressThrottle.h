#pragma once

#include <cstdint>
#include <optional>

// Lets through at most two progress values a second, for every run in the
// process together: one time stamp is shared, taken at the first value
// offered, and a value is accepted only when 500 ms or more have passed
// since that stamp; an accepted value moves the stamp. The first value
// offered is therefore always dropped. Used on the GUI thread only.
class ProgressThrottle
{
public:
    static constexpr int64_t intervalMs = 500;

    // True when a value offered at `nowMs` (any monotonic millisecond clock,
    // the same for every caller) is to be shown.
    static bool accept(int64_t nowMs);
    // Forgets the stamp, as at process start (tests).
    static void reset();

private:
    static std::optional<int64_t> stamp;
};
