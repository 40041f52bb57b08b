// What encoding a run of bytes is in.
#pragma once

#include <cstddef>

#include "vancoreplatform/Export.h"

enum class Encoding { Unknown, Utf8, Utf16 };

// Looks at the first `length` bytes of a text. UTF-8, with or without its mark, when
// they are valid, ASCII included; a sequence cut at the end counts as valid, a NUL
// byte does not. UTF-16 when they begin with its mark. Linear.
VANCOREPLATFORM_API Encoding DetectEncoding(const char* bytes, std::size_t length) noexcept;

// The offset of the first byte that is not part of a well-formed UTF-8 sequence (the
// start of that sequence), or `length` when all are. Linear.
VANCOREPLATFORM_API std::size_t FindInvalidUtf8(const char* bytes, std::size_t length) noexcept;
