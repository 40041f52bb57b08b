#include "vancorexml/main/parser/EntityDeclaration.h"

std::optional<EntityDeclaration> FindEntityDeclaration(std::string_view text, std::string_view name) noexcept
{
    constexpr std::string_view Start = "<!ENTITY";
    constexpr std::string_view WhiteSpace = " \t\r\n";
    for (std::size_t at = text.find(Start); at != std::string_view::npos; at = text.find(Start, at + 1)) {
        // A parameter entity has a "%" in front of its name.
        const std::size_t start = text.find_first_not_of(" \t\r\n%", at + Start.size());
        const std::size_t end = text.find_first_of(WhiteSpace, start);
        if (end != std::string_view::npos && text.substr(start, end - start) == name)
            return EntityDeclaration{start, end};
    }
    return std::nullopt;
}
