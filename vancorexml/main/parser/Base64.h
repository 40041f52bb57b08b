// Bytes as text.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// Appends the Base64 of `length` bytes to `lines`. With `splitLines` each line has 72 characters
// and the last one may be shorter; otherwise there is one line. No bytes give no line. Threads: any.
//
// Raises a LogicException when one line would need more than 0x3FFFFFFF groups, and throws
// std::length_error when it would be too long for a VString; nothing is read or appended then.
VANCOREXML_API void Base64Encode(
    const unsigned char* data, unsigned int length, std::vector<VString>& lines, bool splitLines);

// Replaces `bytes` by the decoded text. Never fails: characters outside the
// alphabet are skipped, only the low 8 bits of a unit count, and a last group that is cut
// short without padding gives three bytes.
VANCOREXML_API void Base64Decode(const VString& text, std::vector<unsigned char>& bytes);

// True for whole groups of four with padding in the last one only, so also for the empty
// text. White space is not allowed. Linear.
VANCOREXML_API bool IsBase64(const VString& text);
