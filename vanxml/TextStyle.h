// The colours of messages and outlines.
#pragma once

#include <string>
#include <string_view>

#include "vanxml/OperatingSystem.h"

namespace CLI {
class App;
}

// Whether a text has colours.
//
// Threads: any number of readers.
class TextStyle {
public:
    enum class Part { Place, Error, Warning, Gutter, Removed, Added };

    explicit TextStyle(bool hasColors) : m_hasColors(hasColors) {}
    // Return the style for a standard stream. The colours are "auto", "always" or "never". "auto" is true for a
    // terminal, unless the environment variable NO_COLOR is set and not empty.
    static TextStyle ForStandardOutput(std::string_view colors);
    static TextStyle ForStandardError(std::string_view colors = "auto");

    // Returns the text, between escape sequences if there are colours.
    std::string Paint(Part part, std::string_view text) const;

private:
    static TextStyle ForStream(OperatingSystem::Stream stream, std::string_view colors);

    bool m_hasColors;
};

// Adds the option --color, which sets `colors`.
void AddColorOption(CLI::App& command, std::string& colors);
