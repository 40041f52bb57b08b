// Texts with numbered placeholders.
#pragma once

#include <cstdint>
#include <vector>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// A text with placeholders "%1" to "%9". The first argument replaces "%1", the second "%2", and so on.
//
// All placeholders are replaced in one pass when the result is requested, so a "%4" inside an argument is not
// replaced. A placeholder without an argument stays as written. A placeholder may occur more than once.
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
