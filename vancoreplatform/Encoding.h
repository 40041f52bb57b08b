// Detection of text encodings.
#pragma once

#include <cstddef>

#include "vancoreplatform/Export.h"

enum class Encoding { Unknown, Utf8, Utf16 };

// Detects the encoding of a text from its first `length` bytes. Linear.
//   Utf16    the bytes begin with a UTF-16 byte order mark
//   Utf8     the bytes are valid UTF-8, with or without a byte order mark, and contain no NUL. ASCII is UTF-8.
//            A sequence that is cut off by the end counts as valid.
//   Unknown  all other bytes
VANCOREPLATFORM_API Encoding DetectEncoding(const char* bytes, std::size_t length) noexcept;

// Returns the byte offset of the first ill-formed UTF-8 sequence, or `length` if there is none. Linear.
VANCOREPLATFORM_API std::size_t FindInvalidUtf8(const char* bytes, std::size_t length) noexcept;

// Returns the number of bytes of the ill-formed UTF-8 sequence at the start of the bytes, which must not be empty: the
// longest start of a character, or one byte if the first byte begins no character.
VANCOREPLATFORM_API std::size_t CountInvalidUtf8(const char* bytes, std::size_t length) noexcept;
