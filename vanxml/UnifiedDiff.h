// Differences between two texts.
#pragma once

#include <string>
#include <string_view>

// Returns the unified diff between two contents of the file `name`, with three lines of context, in the form that the
// program `patch` applies. Empty if the contents are equal. A line ends with a line feed, and all other bytes, also
// carriage returns and bytes that are not UTF-8, are copied. Control characters in the name are escaped. If one of the
// texts contains a NUL, as UTF-16 and UTF-32 do, the result is a single line, which says that the file differs.
//
// The diff is not always the shortest: where many lines differ and none of them is unique, it replaces all of them.
//
// Cost: linear in the sizes, times the logarithm of the number of lines, for all texts. Memory: up to 60 bytes for each
// line between the first and the last difference, and the result.
std::string UnifiedDiff(std::string_view name, std::string_view before, std::string_view after);
