// Version numbers.
#pragma once

#include <vector>

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// A version such as "18.1". Missing parts are 0, so 18.1 equals 18.1.0. A value.
class VANCOREDATA_API VersionNumber {
public:
    // Makes the version "0.0.0".
    VersionNumber();
    // Reads the parts between separators, up to the first `suffixSeparator`. The suffix is ignored, such as "-beta"
    // in "18.1-beta". A part that is not a number, or too large for an int, is read as 0.
    // `options` must be 0, because no option is defined. Otherwise the constructor raises a LogicException (code
    // 0xB7419C2E, text "options == 0").
    VersionNumber(const VString& text, char16_t separator, char16_t suffixSeparator, int options);

    // The text as given.
    const VString& GetAsString() const noexcept { return m_text; }
    // Returns the first two parts with `separator` between them, such as "18.1".
    VString GetMajorAndMinorAsString(char16_t separator) const;

    friend VANCOREDATA_API bool operator==(const VersionNumber& a, const VersionNumber& b) noexcept;
    friend VANCOREDATA_API bool operator<(const VersionNumber& a, const VersionNumber& b) noexcept;
    friend bool operator!=(const VersionNumber& a, const VersionNumber& b) noexcept { return !(a == b); }

private:
    VString m_text;
    std::vector<int> m_parts;
};
