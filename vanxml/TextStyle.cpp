#include "vanxml/TextStyle.h"

#include <CLI/CLI.hpp>

#include <cstdlib>

#include "vanxml/OperatingSystem.h"
#include "vanxml/OptionChecks.h"

namespace {

bool IsColorRefused()
{
    const char* const value = std::getenv("NO_COLOR");
    return value && *value != '\0';
}

std::string_view Sequence(TextStyle::Part part)
{
    switch (part) {
    case TextStyle::Part::Place: return "\x1B[1m";
    case TextStyle::Part::Error: return "\x1B[1;31m";
    case TextStyle::Part::Warning: return "\x1B[1;35m";
    case TextStyle::Part::Gutter: return "\x1B[34m";
    case TextStyle::Part::Removed: return "\x1B[31m";
    case TextStyle::Part::Added: return "\x1B[32m";
    }
    return std::string_view();
}

}  // namespace

TextStyle TextStyle::ForStream(OperatingSystem::Stream stream, std::string_view colors)
{
    if (colors == "never" || (colors == "auto" && IsColorRefused()))
        return TextStyle(false);
    // A console of Windows understands colours only after this call.
    const bool isTerminal = OperatingSystem::IsTerminal(stream);
    return TextStyle(isTerminal || colors == "always");
}

TextStyle TextStyle::ForStandardOutput(std::string_view colors)
{
    return ForStream(OperatingSystem::Stream::Output, colors);
}

TextStyle TextStyle::ForStandardError(std::string_view colors)
{
    return ForStream(OperatingSystem::Stream::Error, colors);
}

std::string TextStyle::Paint(Part part, std::string_view text) const
{
    if (!m_hasColors)
        return std::string(text);
    return std::string(Sequence(part)).append(text).append("\x1B[0m");
}

void AddColorOption(CLI::App& command, std::string& colors)
{
    command
        .add_option("--color",
            colors,
            "Colour the messages: auto (on a terminal, unless the environment variable NO_COLOR is set), always or "
            "never")
        ->check(IsOneOf({"auto", "always", "never"}))
        ->capture_default_str()
        ->type_name("auto|always|never");
}
