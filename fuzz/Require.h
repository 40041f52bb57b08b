// The check of a promise that holds for every input.
#pragma once

#include <cstdio>
#include <cstdlib>

// Aborts when the promise is broken. The fuzzer reports an abort as a finding.
inline void Require(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}
