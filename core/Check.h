#pragma once

// Internal-consistency checks: states the code's own logic rules out, as
// opposed to bad input, which gets a message of its own.
//
// ONDRELS_CHECK(condition) is always on. It yields the condition, so the
// caller still takes its safe way out, and logs an Error naming the check
// once per place, so that a broken invariant is seen rather than hidden.
//
//     if (!ONDRELS_CHECK(rowWeights.size() == size_t(F) * F))
//         return;
//
// ONDRELS_DCHECK(condition) is for hot loops: in the sanitizer build
// (ONDRELS_SANITIZE) a failure prints the check and aborts, so the tests
// stop there; elsewhere it compiles to nothing and the condition is not
// evaluated.

#include <atomic>

namespace Check {

// Logs "Internal error: check `condition` failed at file:line." as an Error.
void reportFailure(const char* condition, const char* file, int line);
// Prints the same to stderr and aborts.
[[noreturn]] void abortOnFailure(const char* condition, const char* file, int line);

inline bool passes(bool condition, std::atomic<bool>& reported, const char* text, const char* file, int line)
{
    if (!condition && !reported.exchange(true))
        reportFailure(text, file, line);
    return condition;
}

} // namespace Check

#define ONDRELS_CHECK(condition)                                                                                   \
    ([&]() -> bool {                                                                                               \
        static std::atomic<bool> reported{false};                                                                  \
        return Check::passes(bool(condition), reported, #condition, __FILE__, __LINE__);                           \
    }())

#ifdef ONDRELS_SANITIZE
#define ONDRELS_DCHECK(condition)                                                                                  \
    ((condition) ? static_cast<void>(0) : Check::abortOnFailure(#condition, __FILE__, __LINE__))
#else
#define ONDRELS_DCHECK(condition) static_cast<void>(0)
#endif
