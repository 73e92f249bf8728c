#include "ThreadWaits.h"

#include <cstdlib>
#include <unistd.h>

namespace {
// A few microseconds of spinning before a waiting thread sleeps: long enough
// for the next parallel loop of a patch on idle cores, short enough not to
// take a shared core from the thread that everyone waits for.
constexpr const char* shortSpinCount = "1000";
}

void useShortThreadWaits(char** argv)
{
#ifdef __linux__
    if (!argv || std::getenv("OMP_WAIT_POLICY") || std::getenv("GOMP_SPINCOUNT"))
        return;
    if (setenv("GOMP_SPINCOUNT", shortSpinCount, 1) != 0)
        return;
    execv("/proc/self/exe", argv);
    // Still here: the settings apply to programs this one starts, not to it.
#else
    (void)argv;
#endif
}
