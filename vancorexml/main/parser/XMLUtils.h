// Scanning of XML as bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// Small functions over raw UTF-8 text, for questions that must be answered before a parse.
// Positions and lengths are in bytes (in UTF-16 code units for VString); `npos`, all bits set,
// means "not found". No function keeps state or refers to its arguments afterwards; all are
// linear.
namespace XmlUtils {

inline constexpr std::size_t npos = std::string::npos;

// A run of bytes: where it starts and how long it is.
struct TagRange {
    std::size_t start = npos;
    std::size_t length = 0;
};

VANCOREXML_API std::size_t Find(const std::string& text, const std::string& pattern, std::size_t from);
VANCOREXML_API std::size_t Find(const std::string& text, char character, std::size_t from);
VANCOREXML_API std::size_t Find(const VString& text, const VString& pattern, std::size_t from);
VANCOREXML_API std::size_t Find(const VString& text, char16_t character, std::size_t from);

// Whether `pattern` stands at `pos`; false when it would run past the end.
VANCOREXML_API bool ContainsSubstringAt(const std::string& text, const std::string& pattern, std::size_t pos) noexcept;
VANCOREXML_API bool ContainsSubstringAt(const VString& text, const VString& pattern, std::size_t pos) noexcept;

// Whether every quote between `start` and `end`, both included, is closed within that range.
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

// The position of the ">" that ends the construct whose "<" is at `start`: "?>" ends "<?",
// "-->" ends "<!--", "]]>" ends "<![", and a ">" outside of quotes ends everything else.
// npos when the construct is not closed, or when fewer than three bytes are left. Raises a
// LogicException when there is no "<" at `start`.
VANCOREXML_API std::size_t FindTagEnd(const std::string& text, std::size_t start);

// The value of the attribute `name` in the tag, as it stands between its quotes; none when
// the tag has no such attribute or the name is empty. Raises a LogicException when the range
// does not lie in the text or does not run from a "<" to a ">".
VANCOREXML_API std::optional<std::string> GetAttributeValueInTag(
    const std::string& text, const std::string& name, const TagRange& tagRange);

// The start tag of the document element: the first "<" that begins neither "<?" nor "<!", to
// its ">". {npos, 0} when there is none or it is not complete.
VANCOREXML_API TagRange FindFirstElementTag(const std::string& text);

}  // namespace XmlUtils
