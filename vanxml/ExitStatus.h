// The exit status of the tool.
#pragma once

#include <algorithm>

enum class ExitStatus : int {
    Good = 0,    // done, and the documents are in order
    Faulty = 1,  // a document has errors, or lacks what was asked for
    Failed = 2,  // the command was wrong, or something could not be read or written
};

inline ExitStatus Worse(ExitStatus a, ExitStatus b) noexcept
{
    return std::max(a, b);
}
