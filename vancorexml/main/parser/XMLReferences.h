// References in text and attribute values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Reads the references in a piece of a well-formed document, in UTF-8. References to characters are those by number
// (&#65;) and the five that XML predefines (&lt; &gt; &amp; &apos; &quot;). All others are references to entities.
//
// Thread-safe. All functions are linear.
namespace XMLReferences {

enum class Place { Text, Attribute };

// Returns the offset of the first reference to an entity, or npos.
std::size_t FindEntity(std::string_view text) noexcept;
inline bool HasEntity(std::string_view text) noexcept
{
    return FindEntity(text) != std::string_view::npos;
}

// True if all characters of the text are white space. A reference such as &#32; counts as its character.
bool IsBlank(std::string_view text) noexcept;

// True if a reference names a character beyond ASCII.
bool HasNonAscii(std::string_view text) noexcept;

// Returns the characters that a parser reports for the text. Replaces references to characters; references to entities
// stay. Normalizes line ends and, in an attribute, white space, as XML 1.0 prescribes.
std::string Decode(std::string_view text, Place place = Place::Text);

}  // namespace XMLReferences
