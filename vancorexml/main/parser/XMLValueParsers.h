// Conversion of attribute texts to values.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// The counterparts of XMLFormatter's Format...Attribute functions. They report no errors: an invalid text
// becomes false or 0. Thread-safe.
namespace XMLValueParsers {

// True only for "true".
VANCOREXML_API bool ParseBool(const VString& text);
// Returns `defaultValue` for an empty text; otherwise true only for "true".
VANCOREXML_API bool ParseBool(const VString& text, bool defaultValue);
// Returns 0 if the text is not a number.
VANCOREXML_API double ParseFloat(const VString& text);
// Returns 0 if the text is not a decimal integer of 32 bits.
VANCOREXML_API std::int32_t ParseInt(const VString& text);

}  // namespace XMLValueParsers
