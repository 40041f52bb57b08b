// Texts that match a pattern of a schema.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Returns a short text that probably matches the pattern, or nothing for a pattern that this function does not
// understand. The caller must validate the text. Parts that may be repeated appear `repetitions` times if the pattern
// allows this. Optional parts are left out.
//
// Thread-safe. Linear in the pattern and the text. Returns nothing for a text of more than 60 characters.
std::optional<std::u16string> MakePatternExample(std::u16string_view pattern, std::size_t repetitions);
