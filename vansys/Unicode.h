// Line endings.
#pragma once

#include <cstddef>

#include "vansys/Export.h"

namespace Unicode {

// Replaces each CR LF and each lone carriage return by one line feed, in place. Returns the new length in bytes.
// Linear.
VANSYS_API std::size_t normalizeLineEndings(char* utf8, std::size_t length) noexcept;

}  // namespace Unicode
