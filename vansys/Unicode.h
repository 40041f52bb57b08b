// Line endings.
#pragma once

#include <cstddef>

#include "vansys/Export.h"

namespace Unicode {

// Replaces, in place, each carriage return with line feed and each lone carriage return by one line feed.
// Returns the new length in bytes. Linear.
VANSYS_API std::size_t normalizeLineEndings(char* utf8, std::size_t length) noexcept;

}  // namespace Unicode
