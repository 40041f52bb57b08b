// Character tests that the product's writers share.
#pragma once

namespace CorePlatformUtils {

// True if the code unit alone is a character that XML 1.0 allows: tab, line feed, carriage return, U+0020 to
// U+D7FF and U+E000 to U+FFFD. False for one half of a surrogate pair.
constexpr bool IsValidCharacter(char16_t unit) noexcept
{
    return unit == 0x09 || unit == 0x0A || unit == 0x0D || (unit >= 0x20 && unit <= 0xD7FF) ||
        (unit >= 0xE000 && unit <= 0xFFFD);
}

}  // namespace CorePlatformUtils
