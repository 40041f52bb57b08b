// Character classes of the platform.
#pragma once

namespace VCType {

// True for tab to carriage return (9 to 13) and for the blank. A no-break space is not white space. Negative
// values are not white space either; a byte from 0x80 up becomes negative if `char` is signed.
constexpr bool isSpace(int character) noexcept
{
    return character == 0x20 || (character >= 0x09 && character <= 0x0D);
}

}  // namespace VCType
