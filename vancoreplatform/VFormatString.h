// Filling numbered places of a text.
#pragma once

#include <cstdint>
#include <vector>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// A text with places "%1" to "%9" that arguments fill in order.
//
// All places are filled in one pass when the result is asked for, so an argument
// that itself contains "%4" stands in the result as it is. A place without an
// argument stays as written; a place may stand more than once.
//
//     VString text = VFormatString("%1(%2)").arg("Error").arg(12);   // "Error(12)"
class VANCOREPLATFORM_API VFormatString {
public:
    explicit VFormatString(const VString& format) : m_format(format) {}

    VFormatString& arg(const VString& value);
    VFormatString& arg(std::int32_t value);
    VFormatString& arg(std::uint32_t value);
    VFormatString& arg(std::int64_t value);
    VFormatString& arg(std::uint64_t value);

    VString ToString() const;
    operator VString() const { return ToString(); }

private:
    VString m_format;
    std::vector<VString> m_arguments;
};
