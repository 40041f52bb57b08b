// The declarations of entities in a text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// The place of a declaration, in bytes of the text.
struct EntityDeclaration {
    std::size_t nameStart = 0;
    std::size_t nameEnd = 0;
};

// Returns the first declaration of a general or parameter entity of that name. `text` is a document in UTF-8; it need
// not be well-formed. Thread-safe. Linear.
std::optional<EntityDeclaration> FindEntityDeclaration(std::string_view text, std::string_view name) noexcept;
