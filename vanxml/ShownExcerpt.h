// The source lines of a message as people see them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vanxml/SourceLines.h"

// The line with the place of a message, and the line before it. Both are UTF-8 and cut around the place, with an
// ellipsis at each cut. Characters that control a terminal are escaped.
struct ShownExcerpt {
    std::optional<std::string> before;  // empty if that line is blank or does not reach the shown columns
    std::string line;
    // The marked bytes of `line`. The range is empty at its end if the place is behind the last character.
    std::size_t markStart = 0;
    std::size_t markEnd = 0;
    // The mark in columns of a terminal: the number of columns in front of it, and its width, at least 1.
    std::size_t markColumn = 0;
    std::size_t markColumns = 1;
};

// Linear in the excerpt.
ShownExcerpt ShowExcerpt(const ParseDiagnostic& diagnostic, const SourceExcerpt& excerpt);
