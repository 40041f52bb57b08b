#include "vancorexml/main/parser/SyntaxText.h"

#include "vancorexml/main/parser/XMLCharacters.h"
#include "vancorexml/main/parser/XMLUtils.h"

using XmlUtils::IsWhitespace;

namespace {

// Longer texts are cut in messages.
constexpr std::size_t LongestExcerpt = 40;

// The first bytes of characters that XML may not allow: control characters, U+FFFE and U+FFFF. In XML 1.1 the
// characters from U+0080 to U+009F are control characters too.
constexpr ByteSet Suspicious(
    std::string_view("\0\x01\x02\x03\x04\x05\x06\x07\x08\x0B\x0C\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1A"
                     "\x1B\x1C\x1D\x1E\x1F\x7F\xC2\xEF",
        32));

bool IsContinuation(char byte) noexcept
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Returns the number of the character. Returns U+FFFD for bytes that are not UTF-8.
char32_t Decode(std::string_view character) noexcept
{
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(character[i])); };
    switch (character.size()) {
    case 1: return byte(0) < 0x80 ? byte(0) : U'\uFFFD';
    case 2: return (byte(0) & 0x1F) << 6 | (byte(1) & 0x3F);
    case 3: return (byte(0) & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
    case 4: return (byte(0) & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
    default: return U'\uFFFD';
    }
}

// True for characters beyond ASCII that no version of XML allows in names: white space, quotes, dashes and other
// punctuation. All others count as characters of names here, which is more than XML allows.
bool IsPunctuation(char32_t character) noexcept
{
    const bool isLatin1 = character >= 0x80 && character <= 0xBF && character != 0xAA && character != 0xB5 &&
        character != 0xB7 && character != 0xBA;
    const bool isGeneral = character >= 0x2000 && character <= 0x206F && character != 0x200C && character != 0x200D &&
        character != 0x203F && character != 0x2040;
    return isLatin1 || isGeneral || character == 0xD7 || character == 0xF7 || character == 0x3000 ||
        character == 0xFEFF || character == 0xFFFE || character == 0xFFFF;
}

bool IsInvisible(char32_t character) noexcept
{
    return character <= U' ' || (character >= 0x7F && character <= 0xA0) || character == 0xAD ||
        (character >= 0x2000 && character <= 0x200F) || (character >= 0x2028 && character <= 0x202F) ||
        (character >= 0x205F && character <= 0x206F) || character == 0x3000 || character == 0xFEFF ||
        character >= 0xFFFD;
}

}  // namespace

std::size_t SyntaxText::BlankLength(std::size_t at) const noexcept
{
    if (at < Size() && IsWhitespace(m_text[at]))
        return 1;
    if (m_isVersion11 && Has("\xC2\x85", at))
        return 2;
    return m_isVersion11 && Has("\xE2\x80\xA8", at) ? 3 : 0;
}

std::size_t SyntaxText::SkipBlanks(std::size_t at) const noexcept
{
    while (const std::size_t length = BlankLength(at))
        at += length;
    return at;
}

std::size_t SyntaxText::TrimEnd(TextRange range) const noexcept
{
    while (range.end > range.start && IsWhitespace(m_text[range.end - 1]))
        --range.end;
    return range.end;
}

bool SyntaxText::IsNameStart(std::size_t at) const noexcept
{
    const char byte = At(at);
    if (static_cast<unsigned char>(byte) < 0x80)
        return XmlUtils::IsFirstNameChar(byte);
    return !IsPunctuation(Decode(Get(CharacterAt(at))));
}

std::size_t SyntaxText::SkipName(std::size_t at) const noexcept
{
    while (at < Size()) {
        const TextRange character = CharacterAt(at);
        const char byte = m_text[at];
        const bool isAscii = static_cast<unsigned char>(byte) < 0x80;
        if (isAscii ? !XmlUtils::IsNameChar(byte) : IsPunctuation(Decode(Get(character))))
            break;
        at = character.end;
    }
    return at;
}

TextRange SyntaxText::CharacterAt(std::size_t at) const noexcept
{
    const auto lead = static_cast<unsigned char>(m_text[at]);
    const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::size_t end = at + 1;
    while (end < Size() && end < at + length && IsContinuation(m_text[end]))
        ++end;
    return {at, end};
}

std::string SyntaxText::Excerpt(TextRange range) const
{
    std::string excerpt;
    std::size_t count = 0;
    for (std::size_t at = range.start; at < range.end && count < LongestExcerpt; ++count) {
        const TextRange character = CharacterAt(at);
        const bool isControl = static_cast<unsigned char>(m_text[at]) < 0x20;
        excerpt += isControl ? std::string_view(" ") : Get(character);
        at = character.end;
        if (count + 1 == LongestExcerpt && at < range.end)
            excerpt += "\u2026";
    }
    return excerpt;
}

std::string SyntaxText::DescribeCharacterAt(std::size_t at) const
{
    const TextRange range = CharacterAt(at);
    const char32_t character = Decode(Get(range));
    return IsInvisible(character) ? DescribeCharacter(character).toStdString() : Quote(range);
}

std::size_t SyntaxText::CheckCharacters(TextRange range)
{
    const std::string_view part = m_text.substr(0, range.end);
    for (std::size_t at = Suspicious.FindFirst(part, range.start); at != std::string_view::npos;
         at = Suspicious.FindFirst(part, at + 1)) {
        const TextRange character = CharacterAt(at);
        const char32_t number = Decode(Get(character));
        if (Allows(number, false))
            continue;
        const std::string name = DescribeCharacter(number).toStdString();
        std::string message = "the character " + name;
        message += " is not allowed in XML; ";
        if (Allows(number, true)) {
            message += "write it as a reference such as '&#";
            message += std::to_string(static_cast<unsigned>(number));
            message += ";'";
        } else {
            message += "remove it";
        }
        SyntaxFault& fault = Fail(DiagnosticCode::InvalidCharacter, character, message);
        fault.value = VString::fromStdString(name);
        return Stop;
    }
    return range.end;
}

SyntaxFault& SyntaxText::Fail(DiagnosticCode code, TextRange range, const std::string& message)
{
    m_fault.emplace();
    m_fault->code = code;
    m_fault->message = VString::fromStdString(message);
    m_fault->start = range.start;
    m_fault->end = range.end;
    return *m_fault;
}

bool SyntaxText::Allows(char32_t character, bool isReference) const noexcept
{
    if (character == U'\t' || character == U'\n' || character == U'\r')
        return true;
    if (character < 0x20)
        return m_isVersion11 && isReference && character != 0;
    if (character >= 0x7F && character <= 0x9F && character != 0x85)
        return !m_isVersion11 || isReference;
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return !isSurrogate && character != 0xFFFE && character != 0xFFFF && character <= 0x10FFFF;
}

std::string Quoted(std::string_view text)
{
    return "'" + std::string(text) + "'";
}

bool EqualsIgnoringCase(std::string_view text, std::string_view lowerCase) noexcept
{
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}
