#include "ProgressThrottle.h"

std::optional<int64_t> ProgressThrottle::stamp;

bool ProgressThrottle::accept(int64_t nowMs)
{
    if (!stamp)
        stamp = nowMs;
    if (nowMs - *stamp < intervalMs)
        return false;
    stamp = nowMs;
    return true;
}

void ProgressThrottle::reset()
{
    stamp.reset();
}
