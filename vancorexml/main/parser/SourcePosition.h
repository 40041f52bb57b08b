// A position in a source.
#pragma once

#include <cstdint>

// Lines and columns count from 1, columns in UTF-16 code units. Line 0 means that the position is unknown.
struct SourcePosition {
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    friend bool operator==(const SourcePosition&, const SourcePosition&) = default;
};
