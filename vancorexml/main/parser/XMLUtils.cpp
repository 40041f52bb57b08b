#include "vancorexml/main/parser/XMLUtils.h"

#include <array>
#include <cstdint>
#include <string_view>

#include <xercesc/util/XMLChar.hpp>

#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\XMLUtils";
constexpr AssertionSite NoTagAtStart{File, 208, "xml[start] == c_openBrace", 0x92C7E05B};  // own code
// Own code. Unreachable: every terminator that is searched for ends with ">".
constexpr AssertionSite EndIsNoClose{File, 247, "xml[found] == c_closeBrace", 0x3B60D8E7};
constexpr AssertionSite TagOutsideText{File, 358, "idx < xml.size() && end < xml.size()", 0xA3E88D2C};
constexpr AssertionSite RangeIsNoTag{File, 359, "xml[idx] == c_openBrace && xml[end] == c_closeBrace", 0xC2D03F8A};

}  // namespace Assertions

enum ByteClass : std::uint8_t { NameByte = 1, FirstNameByte = 2 };

// The classes of all bytes. A byte is sign-extended to a code unit, so the bytes 0x80 to 0xFD become U+FF80 to
// U+FFFD, which are name characters.
const std::array<std::uint8_t, 256>& ByteClasses()
{
    static const std::array<std::uint8_t, 256> classes = [] {
        std::array<std::uint8_t, 256> table{};
        for (int byte = 0; byte < 256; ++byte) {
            const auto unit = static_cast<char16_t>(static_cast<signed char>(byte));
            table[static_cast<std::size_t>(byte)] = static_cast<std::uint8_t>(
                (XmlUtils::IsNameChar(unit) ? NameByte : 0) | (XmlUtils::IsFirstNameChar(unit) ? FirstNameByte : 0));
        }
        return table;
    }();
    return classes;
}

bool HasClass(char byte, ByteClass wanted) noexcept
{
    return (ByteClasses()[static_cast<unsigned char>(byte)] & wanted) != 0;
}

// Tracks whether a scan over bytes from left to right is inside a quoted value.
class QuoteState {
public:
    void Advance(char byte) noexcept
    {
        if (byte != '\'' && byte != '"')
            return;
        if (m_quote == 0)
            m_quote = byte;
        else if (m_quote == byte)
            m_quote = 0;
    }
    bool IsInside() const noexcept { return m_quote != 0; }

private:
    char m_quote = 0;
};

// Returns the position of the next unquoted ">", or npos. Ignores quotes before `position`.
std::size_t FindUnquotedClose(const std::string& text, std::size_t position) noexcept
{
    QuoteState quotes;
    for (; position < text.size(); ++position) {
        if (text[position] == '>' && !quotes.IsInside())
            return position;
        quotes.Advance(text[position]);
    }
    return XmlUtils::npos;
}

std::size_t SkipWhitespace(const std::string& text, std::size_t position) noexcept
{
    while (position < text.size() && XmlUtils::IsWhitespace(text[position]))
        ++position;
    return position;
}

// Returns the value of the attribute whose name ends before `position`, or nothing if the tag contains no
// complete value there. Sets `isAttribute` to true if "=" and a quote follow the name.
std::optional<std::string> ReadAttributeValue(
    const std::string& text, std::size_t position, std::size_t tagEnd, bool& isAttribute)
{
    isAttribute = false;
    position = SkipWhitespace(text, position);
    if (position > tagEnd || text[position] != '=')
        return std::nullopt;
    position = SkipWhitespace(text, position + 1);
    if (position > tagEnd || (text[position] != '\'' && text[position] != '"'))
        return std::nullopt;
    isAttribute = true;
    const std::size_t close = text.find(text[position], position + 1);
    if (close == std::string::npos || close > tagEnd)
        return std::nullopt;
    return text.substr(position + 1, close - position - 1);
}

}  // namespace

std::size_t XmlUtils::Find(const std::string& text, const std::string& pattern, std::size_t from)
{
    return text.find(pattern, from);
}

std::size_t XmlUtils::Find(const std::string& text, char character, std::size_t from)
{
    return text.find(character, from);
}

std::size_t XmlUtils::Find(const VString& text, const VString& pattern, std::size_t from)
{
    return text.View().find(pattern.View(), from);
}

std::size_t XmlUtils::Find(const VString& text, char16_t character, std::size_t from)
{
    return text.View().find(character, from);
}

bool XmlUtils::ContainsSubstringAt(const std::string& text, const std::string& pattern, std::size_t pos) noexcept
{
    return pos <= text.size() && std::string_view(text).substr(pos, pattern.size()) == pattern;
}

bool XmlUtils::ContainsSubstringAt(const VString& text, const VString& pattern, std::size_t pos) noexcept
{
    return pos <= text.View().size() && text.View().substr(pos, pattern.View().size()) == pattern.View();
}

bool XmlUtils::AreQuotesMatchingInRange(const std::string& text, std::size_t start, std::size_t end) noexcept
{
    QuoteState quotes;
    for (std::size_t i = start; i < text.size() && i <= end; ++i)
        quotes.Advance(text[i]);
    return !quotes.IsInside();
}

bool XmlUtils::IsNameChar(char byte) noexcept
{
    return HasClass(byte, NameByte);
}

bool XmlUtils::IsNameChar(char16_t unit) noexcept
{
    return xercesc::XMLChar1_0::isNameChar(static_cast<XMLCh>(unit));
}

bool XmlUtils::IsFirstNameChar(char byte) noexcept
{
    return HasClass(byte, FirstNameByte);
}

bool XmlUtils::IsFirstNameChar(char16_t unit) noexcept
{
    return xercesc::XMLChar1_0::isFirstNameChar(static_cast<XMLCh>(unit));
}

std::size_t XmlUtils::FindTagEnd(const std::string& text, std::size_t start)
{
    if (start >= text.size() || text[start] != '<')
        ThrowLogicException(Assertions::NoTagAtStart);
    if (text.size() - start <= 2)
        return npos;

    const auto endOf = [&text, start](const char* terminator, std::size_t length) {
        const std::size_t found = text.find(terminator, start + 1, length);
        return found == npos ? npos : found + length - 1;
    };
    std::size_t found = npos;
    if (text[start + 1] == '?')
        found = endOf("?>", 2);
    else if (ContainsSubstringAt(text, "<!--", start))
        found = endOf("-->", 3);
    else if (ContainsSubstringAt(text, "<![", start))
        found = endOf("]]>", 3);
    else
        found = FindUnquotedClose(text, start + 1);
    if (found != npos && text[found] != '>')
        ThrowLogicException(Assertions::EndIsNoClose);
    return found;
}

std::optional<std::string> XmlUtils::GetAttributeValueInTag(
    const std::string& text, const std::string& name, const TagRange& tagRange)
{
    const std::size_t first = tagRange.start;
    const std::size_t last = tagRange.start + tagRange.length - 1;
    if (first >= text.size() || last >= text.size())
        ThrowLogicException(Assertions::TagOutsideText);
    if (text[first] != '<' || text[last] != '>')
        ThrowLogicException(Assertions::RangeIsNoTag);
    if (name.empty() || last < first)
        return std::nullopt;

    // Searches only the tag, so a missing name does not cost a search through the rest of the text.
    const std::string_view tag = std::string_view(text).substr(0, last + 1);
    QuoteState quotes;
    std::size_t passed = first;  // `quotes` has seen the bytes before this position
    for (std::size_t at = tag.find(name, first); at != npos; at = tag.find(name, at + name.size())) {
        for (; passed <= at; ++passed)
            quotes.Advance(text[passed]);
        if (quotes.IsInside() || at == first || !IsWhitespace(text[at - 1]))
            continue;
        bool isAttribute = false;
        std::optional<std::string> value = ReadAttributeValue(text, at + name.size(), last, isAttribute);
        if (isAttribute)
            return value;
    }
    return std::nullopt;
}
