// Base64 encoding and decoding.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// Encodes `length` bytes and appends the lines of the result to `lines`. If `splitLines`, each line
// has 72 characters, the last one possibly fewer; otherwise there is one line. Without bytes there is
// no line. Any thread may call the operations of this header.
//
// Without `splitLines`, raises a LogicException if the line would need more than 0x3FFFFFFF groups of
// four characters, and throws std::length_error if it would be too long for a VString. In both cases it
// reads and appends nothing.
VANCOREXML_API void Base64Encode(
    const unsigned char* data, unsigned int length, std::vector<VString>& lines, bool splitLines);

// Decodes the text and replaces `bytes` by the result. Never fails: skips characters outside the
// alphabet, uses only the low 8 bits of each UTF-16 code unit, and decodes a truncated last group
// without padding as three bytes.
VANCOREXML_API void Base64Decode(const VString& text, std::vector<unsigned char>& bytes);

// True if the text consists of groups of four characters with padding in the last group only. The
// empty text is valid. White space is not. Linear.
VANCOREXML_API bool IsBase64(const VString& text);
