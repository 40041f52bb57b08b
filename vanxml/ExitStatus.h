// The exit status of the tool.
#pragma once

#include <algorithm>

enum class ExitStatus : int {
    Good = 0,    // the command succeeded and found no errors
    Faulty = 1,  // a document has errors or declares no version, or a query found nothing
    Failed = 2,  // wrong arguments, or a file could not be read or written
};

inline ExitStatus Worse(ExitStatus a, ExitStatus b) noexcept
{
    return std::max(a, b);
}
