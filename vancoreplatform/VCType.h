// Character classes of the platform.
#pragma once

namespace VCType {

// Tab to carriage return (9 to 13) and the blank. Nothing else is white space: a
// no-break space is text, and so is every value below zero, as a widened byte
// from 0x80 up is.
constexpr bool isSpace(int character) noexcept
{
    return character == 0x20 || (character >= 0x09 && character <= 0x0D);
}

}  // namespace VCType
