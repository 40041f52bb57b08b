#include "vancorexml/main/parser/XMLCharacters.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace {

// Reads the characters of UTF-16. Reads an unpaired surrogate as one character.
class Utf16Reader {
public:
    explicit Utf16Reader(std::u16string_view text) : m_rest(text) {}

    std::optional<char32_t> Next()
    {
        if (m_rest.empty())
            return std::nullopt;
        const char16_t unit = m_rest.front();
        m_rest.remove_prefix(1);
        const bool isHigh = unit >= 0xD800 && unit <= 0xDBFF;
        if (!isHigh || m_rest.empty() || m_rest.front() < 0xDC00 || m_rest.front() > 0xDFFF)
            return unit;
        const char32_t character =
            0x10000 + (static_cast<char32_t>(unit - 0xD800) << 10) + static_cast<char32_t>(m_rest.front() - 0xDC00);
        m_rest.remove_prefix(1);
        return character;
    }

private:
    std::u16string_view m_rest;
};

// Returns the character at the start of a text in well-formed UTF-8 and its length in bytes.
std::pair<char32_t, std::size_t> ReadUtf8(std::string_view text) noexcept
{
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(text[i])); };
    const char32_t lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    constexpr std::array<char32_t, 5> masks{0, 0x7F, 0x1F, 0x0F, 0x07};
    if (length > text.size())
        return {lead, text.size()};
    char32_t character = lead & masks[length];
    for (std::size_t i = 1; i < length; ++i)
        character = character << 6 | (byte(i) & 0x3F);
    return {character, length};
}

void AppendReference(std::string& out, char32_t character)
{
    out += "&#";
    out += std::to_string(static_cast<std::uint32_t>(character));
    out += ';';
}

}  // namespace

std::optional<char32_t> XMLCharacters::FindForbidden(const VString& text) const
{
    Utf16Reader reader(text.View());
    while (const std::optional<char32_t> character = reader.Next()) {
        const bool isControl = *character < 0x20 && *character != '\t' && *character != '\n' && *character != '\r';
        const bool isForbiddenControl = isControl && (!isVersion11 || *character == 0);
        const bool isSurrogate = *character >= 0xD800 && *character <= 0xDFFF;
        if (isForbiddenControl || isSurrogate || *character == 0xFFFE || *character == 0xFFFF)
            return character;
    }
    return std::nullopt;
}

std::optional<char32_t> XMLCharacters::FindUnencodable(std::string_view text) const
{
    if (!canEncode)
        return std::nullopt;
    for (std::size_t at = 0; at < text.size();) {
        const auto [character, length] = ReadUtf8(text.substr(at));
        if (!canEncode(character))
            return character;
        at += length;
    }
    return std::nullopt;
}

// XML 1.1 reads some characters as line ends, and allows control characters only as references.
bool XMLCharacters::NeedsReference(char32_t character) const
{
    if (isVersion11 && (character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x2028))
        return character != '\t' && character != '\n';
    return canEncode && !canEncode(character);
}

bool XMLCharacters::NeedsReferences(const VString& text) const
{
    Utf16Reader reader(text.View());
    while (const std::optional<char32_t> character = reader.Next()) {
        if (*character == '\r' || NeedsReference(*character))
            return true;
    }
    return false;
}

std::string XMLCharacters::EscapeValue(const VString& value, char quote) const
{
    std::string escaped;
    Utf16Reader reader(value.View());
    while (const std::optional<char32_t> character = reader.Next()) {
        switch (*character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '\t':
        case '\n':
        case '\r': AppendReference(escaped, *character); break;
        default:
            if (*character == static_cast<unsigned char>(quote))
                escaped += quote == '"' ? "&quot;" : "&apos;";
            else if (NeedsReference(*character))
                AppendReference(escaped, *character);
            else
                AppendUtf8(escaped, *character);
        }
    }
    return escaped;
}

std::string XMLCharacters::EscapeText(const VString& text, std::string_view lineEnd) const
{
    std::string escaped;
    Utf16Reader reader(text.View());
    while (const std::optional<char32_t> character = reader.Next()) {
        switch (*character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '\n': escaped += lineEnd; break;
        case '\r': AppendReference(escaped, *character); break;
        default:
            if (NeedsReference(*character))
                AppendReference(escaped, *character);
            else
                AppendUtf8(escaped, *character);
        }
    }
    return escaped;
}

std::string XMLCharacters::EscapeUnencodable(std::string_view text) const
{
    if (!canEncode)
        return std::string(text);
    std::string escaped;
    while (!text.empty()) {
        const auto [character, length] = ReadUtf8(text);
        if (!canEncode(character))
            AppendReference(escaped, character);
        else
            escaped += text.substr(0, length);
        text.remove_prefix(length);
    }
    return escaped;
}

void AppendUtf8(std::string& out, char32_t character)
{
    const auto append = [&out](char32_t byte) { out += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) {
        append(character);
        return;
    }
    const int continuations = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr std::array<char32_t, 4> leads{0, 0xC0, 0xE0, 0xF0};
    append(leads[static_cast<std::size_t>(continuations)] | character >> (6 * continuations));
    for (int i = continuations - 1; i >= 0; --i)
        append(0x80 | ((character >> (6 * i)) & 0x3F));
}

VString DescribeCharacter(char32_t character)
{
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(character), 16).ptr;
    std::string text(digits.data(), end);
    for (char& digit : text) {
        if (digit >= 'a')
            digit = static_cast<char>(digit - 'a' + 'A');
    }
    while (text.size() < 4)
        text.insert(text.begin(), '0');
    return VString::fromStdString("U+" + text);
}
