// Version numbers.
#pragma once

#include <vector>

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// A version such as "18.1": numeric parts, missing ones 0, so 18.1 equals 18.1.0. A value.
class VANCOREDATA_API VersionNumber {
public:
    // 0.0.0, printed "0.0.0".
    VersionNumber();
    // Reads parts between `separator`s, up to `suffixSeparator`, behind which stands what
    // does not count ("18.1-beta"). A part that is no number counts as 0.
    // `options` must be 0: no option is defined. Raises a LogicException (code 0xB7419C2E,
    // text "options == 0") otherwise.
    VersionNumber(const VString& text, char16_t separator, char16_t suffixSeparator, int options);

    // As given.
    const VString& GetAsString() const noexcept { return m_text; }
    // The first two parts with `separator` between: "18.1".
    VString GetMajorAndMinorAsString(char16_t separator) const;

    friend VANCOREDATA_API bool operator==(const VersionNumber& a, const VersionNumber& b) noexcept;
    friend VANCOREDATA_API bool operator<(const VersionNumber& a, const VersionNumber& b) noexcept;
    friend bool operator!=(const VersionNumber& a, const VersionNumber& b) noexcept { return !(a == b); }

private:
    VString m_text;
    std::vector<int> m_parts;
};
