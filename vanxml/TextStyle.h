// The colours of messages.
#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

// Whether messages have colours.
//
// Threads: any number of readers.
class TextStyle {
public:
    enum class Part { Place, Error, Warning, Gutter };

    explicit TextStyle(bool hasColors) : m_hasColors(hasColors) {}
    // Returns the style for standard error. The colours are "auto", "always" or "never". "auto" is true for a terminal,
    // unless the environment variable NO_COLOR is set and not empty.
    static TextStyle ForStandardError(std::string_view colors = "auto");

    // Returns the text, between escape sequences if there are colours.
    std::string Paint(Part part, std::string_view text) const;

private:
    bool m_hasColors;
};

// Adds the option --color, which sets `colors`.
void AddColorOption(CLI::App& command, std::string& colors);
