#include "Core/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace vel {

void AssertFailed(const char* condition, const char* file, int line, const char* message)
{
    if (message)
        std::fprintf(stderr, "Assertion failed: %s (%s)\n  at %s:%d\n", condition, message, file, line);
    else
        std::fprintf(stderr, "Assertion failed: %s\n  at %s:%d\n", condition, file, line);
    std::fflush(stderr);
    std::abort();
}

} // namespace vel
