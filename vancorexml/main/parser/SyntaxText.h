// The text of a document that may not be well-formed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vancorexml/main/parser/ByteSet.h"
#include "vancorexml/main/parser/SyntaxFaultFinder.h"

// A part of a text in bytes, from its first byte to behind its last.
struct TextRange {
    std::size_t start = 0;
    std::size_t end = 0;
};

// A UTF-8 text, and the first fault that was found in it. Offsets may exceed the text: behind its end there is nothing.
//
// Functions that scan a part of the text return the offset behind it, or `Stop`. They stop for two reasons: they found
// a fault, or the rest of the text cannot be judged.
//
// Ownership: refers to the text, which must outlive it.
//
// Threads: one at a time.
class SyntaxText {
public:
    static constexpr std::size_t Stop = std::string_view::npos;

    explicit SyntaxText(std::string_view text) noexcept : m_text(text) {}

    std::size_t Size() const noexcept { return m_text.size(); }
    std::string_view Get(TextRange range) const noexcept { return m_text.substr(range.start, range.end - range.start); }
    // Returns the text from `at` on.
    std::string_view From(std::size_t at) const noexcept
    {
        return at < Size() ? m_text.substr(at) : std::string_view();
    }
    // Returns the byte at `at`, or NUL behind the end.
    char At(std::size_t at) const noexcept { return at < Size() ? m_text[at] : '\0'; }
    bool Has(std::string_view part, std::size_t at) const noexcept { return From(at).starts_with(part); }
    // Returns the offset of the first `part` at or after `from`, or npos.
    std::size_t Find(std::string_view part, std::size_t from) const noexcept { return m_text.find(part, from); }

    // Returns the offset of the first byte of the set at or after `from`, or `end`, or the size of the text.
    std::size_t FindAny(const ByteSet& set, std::size_t from, std::size_t end = Stop) const noexcept
    {
        end = std::min(end, Size());
        return std::min(set.FindFirst(m_text.substr(0, end), from), end);
    }

    // Returns the length of the white space character at `at`, or 0 if there is none. In XML 1.1, U+0085 and U+2028 are
    // white space too.
    std::size_t BlankLength(std::size_t at) const noexcept;
    std::size_t SkipBlanks(std::size_t at) const noexcept;
    // Returns the end of the range without the white space at its end.
    std::size_t TrimEnd(TextRange range) const noexcept;

    bool IsNameStart(std::size_t at) const noexcept;
    // Returns the offset behind the name characters at `at`. The first of them need not be one that begins a name.
    std::size_t SkipName(std::size_t at) const noexcept;
    // Returns the range of the character at `at`, which must be inside the text.
    TextRange CharacterAt(std::size_t at) const noexcept;

    // Returns the text of the range on one line, for a message. Cuts a long text.
    std::string Excerpt(TextRange range) const;
    // Returns the same in single quotes.
    std::string Quote(TextRange range) const { return "'" + Excerpt(range) + "'"; }
    // Names the character at `at`: as it is if it is visible, and otherwise by its number.
    std::string DescribeCharacterAt(std::size_t at) const;

    // Finds the first character in the range that XML does not allow. Returns the end of the range, or Stop.
    std::size_t CheckCharacters(TextRange range);

    // Records the fault. The caller may complete the reference that this function returns.
    SyntaxFault& Fail(DiagnosticCode code, TextRange range, const std::string& message);
    std::optional<SyntaxFault>& Fault() noexcept { return m_fault; }

    void SetVersion11() noexcept { m_isVersion11 = true; }
    // True if XML allows the character, either as it is or as a reference.
    bool Allows(char32_t character, bool isReference) const noexcept;

private:
    std::string_view m_text;
    bool m_isVersion11 = false;
    std::optional<SyntaxFault> m_fault;
};

// Returns the text in single quotes.
std::string Quoted(std::string_view text);

constexpr bool IsQuote(char byte) noexcept
{
    return byte == '"' || byte == '\'';
}

// Compares ASCII letters without their case. `lowerCase` must be in lower case.
bool EqualsIgnoringCase(std::string_view text, std::string_view lowerCase) noexcept;
