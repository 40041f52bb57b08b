// Scanning of XML as bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// Small functions that scan raw UTF-8 text before a parse. Positions and lengths are in bytes, or in
// UTF-16 code units for VString. `npos` means "not found". The functions keep no state and no references
// to their arguments. All are linear. Thread-safe.
namespace XmlUtils {

inline constexpr std::size_t npos = std::string::npos;

// A range of bytes.
struct TagRange {
    std::size_t start = npos;
    std::size_t length = 0;
};

// Returns the first position at or after `from`, or npos.
VANCOREXML_API std::size_t Find(const std::string& text, const std::string& pattern, std::size_t from);
VANCOREXML_API std::size_t Find(const std::string& text, char character, std::size_t from);
VANCOREXML_API std::size_t Find(const VString& text, const VString& pattern, std::size_t from);
VANCOREXML_API std::size_t Find(const VString& text, char16_t character, std::size_t from);

// True if the text contains `pattern` at `pos`.
VANCOREXML_API bool ContainsSubstringAt(const std::string& text, const std::string& pattern, std::size_t pos) noexcept;
VANCOREXML_API bool ContainsSubstringAt(const VString& text, const VString& pattern, std::size_t pos) noexcept;

// True if every quote from `start` to `end`, both included, is closed within that range.
VANCOREXML_API bool AreQuotesMatchingInRange(const std::string& text, std::size_t start, std::size_t end) noexcept;

// The character classes of XML 1.0. Every byte of a non-ASCII UTF-8 character is a name
// character.
VANCOREXML_API bool IsNameChar(char byte) noexcept;
VANCOREXML_API bool IsNameChar(char16_t unit) noexcept;
VANCOREXML_API bool IsFirstNameChar(char byte) noexcept;
VANCOREXML_API bool IsFirstNameChar(char16_t unit) noexcept;
constexpr bool IsWhitespace(char16_t unit) noexcept
{
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}
constexpr bool IsWhitespace(char byte) noexcept
{
    return IsWhitespace(static_cast<char16_t>(static_cast<signed char>(byte)));
}
// True if all bytes are white space, also for an empty text.
constexpr bool IsBlank(std::string_view text) noexcept
{
    for (const char byte : text) {
        if (!IsWhitespace(byte))
            return false;
    }
    return true;
}

// Returns the position of the ">" that ends the construct whose "<" is at `start`: "?>" ends "<?",
// "-->" ends "<!--", "]]>" ends "<![", and a ">" outside of quotes ends every other construct. Returns
// npos if the construct is not closed, or if the text has fewer than three bytes from `start` on. Raises
// a LogicException if there is no "<" at `start`.
VANCOREXML_API std::size_t FindTagEnd(const std::string& text, std::size_t start);

// Returns the value of the attribute `name` in the tag, unchanged, without its quotes. Returns no value if
// the tag has no such attribute, if the value is not closed, or if the name is empty. Raises a
// LogicException if the range exceeds the text, does not begin with "<" or does not end with ">".
VANCOREXML_API std::optional<std::string> GetAttributeValueInTag(
    const std::string& text, const std::string& name, const TagRange& tagRange);

// Returns the start tag of the document element, from the first "<" that begins neither "<?" nor "<!" to
// its ">". Returns {npos, 0} if there is no complete tag.
VANCOREXML_API TagRange FindFirstElementTag(const std::string& text);

}  // namespace XmlUtils
