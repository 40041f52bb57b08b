// Parsing attribute texts.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// The counterparts of XMLFormatter's Format…Attribute functions. Lenient on purpose: none
// reports an error or throws.
namespace XMLValueParsers {

// True exactly for "true".
VANCOREXML_API bool ParseBool(const VString& text);
// `defaultValue` for the empty text; else as above.
VANCOREXML_API bool ParseBool(const VString& text, bool defaultValue);
// 0 for a text that is no number.
VANCOREXML_API double ParseFloat(const VString& text);
// 0 for a text that is no whole decimal number of 32 bits.
VANCOREXML_API std::int32_t ParseInt(const VString& text);

}  // namespace XMLValueParsers
