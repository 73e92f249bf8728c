#include "Check.h"

#include "LogMessage.h"

#include <cstdio>
#include <cstdlib>

namespace Check {

void reportFailure(const char* condition, const char* file, int line)
{
    logMessage(Error, "Internal error: check '%s' failed at %s:%i.", condition, file, line);
}

void abortOnFailure(const char* condition, const char* file, int line)
{
    std::fprintf(stderr, "Internal error: check '%s' failed at %s:%i.\n", condition, file, line);
    std::abort();
}

} // namespace Check
