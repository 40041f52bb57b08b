#include "vancorexml/main/parser/XMLReferences.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "vancorexml/main/parser/ByteSet.h"
#include "vancorexml/main/parser/XMLCharacters.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace {

// A reference at the start of a text.
struct Reference {
    std::size_t length;                 // from "&" to ";"
    std::optional<char32_t> character;  // no value for a reference to an entity
};

std::optional<char32_t> CharacterOf(std::string_view name) noexcept
{
    if (name.starts_with('#')) {
        const bool isHexadecimal = name.starts_with("#x");
        const std::string_view digits = name.substr(isHexadecimal ? 2 : 1);
        std::uint32_t number = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), number, isHexadecimal ? 16 : 10);
        return static_cast<char32_t>(number);
    }
    static constexpr std::array<std::pair<std::string_view, char32_t>, 5> Predefined{
        {{"lt", U'<'}, {"gt", U'>'}, {"amp", U'&'}, {"apos", U'\''}, {"quot", U'"'}}};
    const auto found =
        std::find_if(Predefined.begin(), Predefined.end(), [name](const auto& entry) { return entry.first == name; });
    return found == Predefined.end() ? std::nullopt : std::optional(found->second);
}

// `text` begins with "&". A reference that is not closed ends with the text.
Reference ReadReference(std::string_view text) noexcept
{
    const std::size_t end = std::min(text.find(';'), text.size() - 1);
    return {end + 1, CharacterOf(text.substr(1, end - 1))};
}

// Calls `visit` with each reference and its offset until `visit` returns true. Returns the offset of that reference, or
// npos.
template <typename Visit>
std::size_t FindReference(std::string_view text, const Visit& visit)
{
    for (std::size_t at = text.find('&'); at != std::string_view::npos;) {
        const Reference reference = ReadReference(text.substr(at));
        if (visit(reference))
            return at;
        at = text.find('&', at + reference.length);
    }
    return std::string_view::npos;
}

}  // namespace

namespace XMLReferences {

std::size_t FindEntity(std::string_view text) noexcept
{
    return FindReference(text, [](const Reference& reference) { return !reference.character; });
}

// For most texts the result is known at the first character.
bool IsBlank(std::string_view text) noexcept
{
    while (!text.empty()) {
        std::size_t length = 1;
        if (text.front() == '&') {
            const Reference reference = ReadReference(text);
            length = reference.length;
            const char32_t character = reference.character.value_or(U'&');
            if (character > U' ' || !XmlUtils::IsWhitespace(static_cast<char16_t>(character)))
                return false;
        } else if (!XmlUtils::IsWhitespace(text.front())) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

bool HasNonAscii(std::string_view text) noexcept
{
    const auto isNonAscii = [](const Reference& reference) {
        return reference.character && *reference.character > 0x7F;
    };
    return FindReference(text, isNonAscii) != std::string_view::npos;
}

std::string Decode(std::string_view text, Place place)
{
    static constexpr ByteSet Special("&\r\n\t");
    std::string decoded;
    decoded.reserve(text.size());
    while (!text.empty()) {
        std::size_t length = 1;
        const char byte = text.front();
        if (byte == '&') {
            const Reference reference = ReadReference(text);
            length = reference.length;
            if (reference.character)
                AppendUtf8(decoded, *reference.character);
            else
                decoded += text.substr(0, length);
        } else if (byte == '\r' || byte == '\n' || byte == '\t') {
            // A carriage return and a line feed are one line end.
            length = text.starts_with("\r\n") ? 2 : 1;
            if (place == Place::Attribute)
                decoded += ' ';
            else
                decoded += byte == '\t' ? '\t' : '\n';
        } else {
            length = std::min(Special.FindFirst(text), text.size());
            decoded += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return decoded;
}

}  // namespace XMLReferences
