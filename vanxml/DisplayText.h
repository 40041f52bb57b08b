// The columns that text takes on a terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Returns the number of columns of a printable character: 2 for the wide characters of East Asia and most emoji, 0 for
// combining marks and invisible format characters, and 1 for all others. Logarithmic in the size of a table.
int CountColumns(char32_t character) noexcept;

// A character as a terminal shows it.
struct DisplayCell {
    std::string text;          // UTF-8; blanks for a tab, an escape for a character that controls a terminal
    int width = 1;             // in columns of the terminal; 0 for a combining mark
    std::uint64_t column = 1;  // of the character in its line, in UTF-16 code units
    unsigned units = 1;        // the number of UTF-16 code units of the character
};

// Splits a part of a line into cells. The first character of `text`, which is UTF-8, has the column `firstColumn` of
// its line. Tabs end at every fourth column of the part. Escapes control characters and bytes that are not UTF-8 as
// EscapeControlCharacters does. Linear.
std::vector<DisplayCell> SplitIntoCells(std::string_view text, std::uint64_t firstColumn);
