// A check for the fuzzers.
#pragma once

#include <cstdio>
#include <cstdlib>

// Aborts if the promise does not hold. The fuzzing engine reports an abort as a finding.
inline void Require(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}
