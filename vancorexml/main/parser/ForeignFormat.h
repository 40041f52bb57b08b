// Recognition of files that are not XML.
#pragma once

#include <string>
#include <string_view>

// Returns the format of a file whose first character is no "<", such as "a ZIP archive" or "JSON". Returns an empty
// text if the file may be XML with text in front of it. `text` need not be UTF-8. Linear.
std::string RecognizeForeignFormat(std::string_view text);
