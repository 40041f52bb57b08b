// What a fuzzer promises of every input.
#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the program, which is what a fuzzer takes for a finding.
inline void Require(bool holds, const char* promise)
{
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}
