#include "vancoredata/VersionNumber.h"

#include <limits>

#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr AssertionSite UnknownOptions{"vancoredata\\VersionNumber", 36, "options == 0", 0xB7419C2E};  // own code

}  // namespace Assertions

// Returns 0 if the part is not a number or does not fit into an int.
int ReadPart(const VString& part)
{
    std::int64_t value = 0;
    for (const char16_t unit : part) {
        if (unit < u'0' || unit > u'9')
            return 0;
        value = value * 10 + (unit - u'0');
        if (value > std::numeric_limits<int>::max())
            return 0;
    }
    return static_cast<int>(value);
}

int PartAt(const std::vector<int>& parts, std::size_t position) noexcept
{
    return position < parts.size() ? parts[position] : 0;
}

}  // namespace

VersionNumber::VersionNumber() : m_text(u"0.0.0") {}

VersionNumber::VersionNumber(const VString& text, char16_t separator, char16_t suffixSeparator, int options)
    : m_text(text)
{
    if (options != 0)
        ThrowLogicException(Assertions::UnknownOptions);
    const int suffix = text.indexOf(suffixSeparator);
    for (const VString& part : text.mid(0, suffix).split(separator))
        m_parts.push_back(ReadPart(part));
    // Remove zeros at the end, so that equal versions have equal parts.
    while (!m_parts.empty() && m_parts.back() == 0)
        m_parts.pop_back();
}

VString VersionNumber::GetMajorAndMinorAsString(char16_t separator) const
{
    VString text = VString::number(PartAt(m_parts, 0));
    text += separator;
    return text + VString::number(PartAt(m_parts, 1));
}

bool operator==(const VersionNumber& a, const VersionNumber& b) noexcept
{
    return a.m_parts == b.m_parts;
}

bool operator<(const VersionNumber& a, const VersionNumber& b) noexcept
{
    return a.m_parts < b.m_parts;
}
