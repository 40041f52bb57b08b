// Line endings.
#pragma once

#include <cstddef>

#include "vansys/Export.h"

namespace Unicode {

// Rewrites, in place, every carriage return with its line feed and every lone
// carriage return as one line feed; returns the new length in bytes.
VANSYS_API std::size_t normalizeLineEndings(char* utf8, std::size_t length) noexcept;

}  // namespace Unicode
