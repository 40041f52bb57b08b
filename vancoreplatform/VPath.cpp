#include "vancoreplatform/VPath.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::u16string_view Separators = u"/\\";

constexpr bool IsSeparator(char16_t unit) noexcept
{
    return unit == u'/' || unit == u'\\';
}

constexpr bool IsDriveLetter(char16_t unit) noexcept
{
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
}

std::size_t SkipSeparators(std::u16string_view text, std::size_t position) noexcept
{
    return std::min(text.find_first_not_of(Separators, position), text.size());
}

std::size_t SkipElement(std::u16string_view text, std::size_t position) noexcept
{
    return std::min(text.find_first_of(Separators, position), text.size());
}

// Returns the end of "\\server\share", or of "\\server" alone.
std::size_t UncRootEnd(std::u16string_view text) noexcept
{
    const std::size_t serverEnd = SkipElement(text, 2);
    const std::size_t share = SkipSeparators(text, serverEnd);
    return share == text.size() ? serverEnd : SkipElement(text, share);
}

// Returns the number of code units of the root; 0 if the path has none.
std::size_t RootEnd(std::u16string_view text) noexcept
{
    if (text.size() >= 2 && IsDriveLetter(text[0]) && text[1] == u':')
        return text.size() > 2 && IsSeparator(text[2]) ? 3 : 2;
    if (text.empty() || !IsSeparator(text[0]))
        return 0;
    const bool unc = text.size() > 2 && IsSeparator(text[1]) && !IsSeparator(text[2]);
    return unc ? UncRootEnd(text) : 1;
}

// The root, with "/" for every separator, and the elements.
struct Parts {
    std::u16string root;
    std::vector<std::u16string_view> elements;
};

Parts Split(std::u16string_view text)
{
    Parts parts;
    const std::size_t rootEnd = RootEnd(text);
    for (std::size_t i = 0; i < rootEnd; ++i) {
        // The "//" at the start distinguishes a UNC root from a plain one. Later runs of separators count as one.
        const bool repeated = i > 1 && IsSeparator(text[i]) && IsSeparator(text[i - 1]);
        if (!repeated)
            parts.root.push_back(IsSeparator(text[i]) ? u'/' : text[i]);
    }
    for (std::size_t begin = SkipSeparators(text, rootEnd); begin < text.size();) {
        const std::size_t end = SkipElement(text, begin);
        parts.elements.push_back(text.substr(begin, end - begin));
        begin = SkipSeparators(text, end);
    }
    return parts;
}

// Returns `text` without the separators at its end, except those of its root.
std::u16string_view DropTrailingSeparators(std::u16string_view text, std::size_t rootEnd) noexcept
{
    std::size_t end = text.size();
    while (end > rootEnd && IsSeparator(text[end - 1]))
        --end;
    return text.substr(0, end);
}

// Returns the separator that `left` uses, or else the one that `right` uses, so that a joined path has one style.
char16_t ChooseSeparator(std::u16string_view left, std::u16string_view right) noexcept
{
    const std::size_t inLeft = left.find_last_of(Separators);
    if (inLeft != std::u16string_view::npos)
        return left[inLeft];
    const std::size_t inRight = right.find_first_of(Separators);
    return inRight != std::u16string_view::npos ? right[inRight] : u'/';
}

VString ToVString(std::u16string_view text)
{
    return VString(text.data(), text.size());
}

}  // namespace

VString VPath::GenericString() const
{
    return m_text.replace(u"\\", u"/");
}

bool VPath::IsAbsolute() const
{
    return RootEnd(m_text.View()) > 0;
}

void VPath::RemoveFilename()
{
    const std::u16string_view text = m_text.View();
    const std::size_t rootEnd = RootEnd(text);
    const std::u16string_view trimmed = DropTrailingSeparators(text, rootEnd);
    std::size_t end = trimmed.size();
    while (end > rootEnd && !IsSeparator(trimmed[end - 1]))
        --end;
    m_text = ToVString(DropTrailingSeparators(trimmed.substr(0, end), rootEnd));
}

VPath operator/(const VPath& left, const VPath& right)
{
    if (left.IsEmpty() || right.IsAbsolute())
        return right;
    if (right.IsEmpty())
        return left;
    const std::u16string_view leftText = left.m_text.View();
    VString text = ToVString(DropTrailingSeparators(leftText, RootEnd(leftText)));
    if (!IsSeparator(text[text.length() - 1]))
        text += ChooseSeparator(leftText, right.m_text.View());
    return VPath(text + right.m_text);
}

bool operator==(const VPath& a, const VPath& b)
{
    if (a.m_text == b.m_text)
        return true;
    const Parts left = Split(a.m_text.View());
    const Parts right = Split(b.m_text.View());
    return left.root == right.root && left.elements == right.elements;
}

bool operator<(const VPath& a, const VPath& b)
{
    const Parts left = Split(a.m_text.View());
    const Parts right = Split(b.m_text.View());
    return left.root != right.root ? left.root < right.root : left.elements < right.elements;
}
