// Writing of characters into a document.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"

// The characters that a document can have.
struct XMLCharacters {
    // Returns false for a character that the encoding of the document lacks. Empty if the encoding has all characters.
    std::function<bool(char32_t)> canEncode;
    bool isVersion11 = false;

    // Returns the first character of the text that XML does not allow. An unpaired surrogate is such a character.
    std::optional<char32_t> FindForbidden(const VString& text) const;
    // Returns the first character of a text in UTF-8 that the encoding lacks.
    std::optional<char32_t> FindUnencodable(std::string_view text) const;

    // True if a character must be written as a reference, because the encoding lacks it or a parser would change it.
    bool NeedsReferences(const VString& text) const;

    // Returns the text in UTF-8, escaped for an attribute with these quotes.
    std::string EscapeValue(const VString& value, char quote) const;
    // Returns the text in UTF-8, escaped for the content of an element. Line feeds become `lineEnd`.
    std::string EscapeText(const VString& text, std::string_view lineEnd) const;
    // Returns a piece of a document, in UTF-8, with references in place of the characters that the encoding lacks. All
    // other bytes stay.
    std::string EscapeUnencodable(std::string_view text) const;

private:
    bool NeedsReference(char32_t character) const;
};

// Appends the character in UTF-8. `character` must be a Unicode scalar value.
void AppendUtf8(std::string& out, char32_t character);

// Returns the number of the character in the form "U+20AC".
VString DescribeCharacter(char32_t character);
