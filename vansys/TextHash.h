// The hash function of tables whose keys come from documents.
#pragma once

#include <cstddef>
#include <string_view>

#include "vansys/Export.h"

// Hashes bytes with a random key, which is drawn once per process. The result differs from run to run. Thread-safe.
// Linear.
VANSYS_API std::size_t HashBytes(const void* bytes, std::size_t length) noexcept;

// A hash function for the standard's unordered containers. The std::hash of a text has no key, so a document can
// contain thousands of names with the same hash, and each lookup would then compare thousands of names.
struct TextHash {
    std::size_t operator()(std::string_view text) const noexcept { return HashBytes(text.data(), text.size()); }
    std::size_t operator()(std::u16string_view text) const noexcept
    {
        return HashBytes(text.data(), text.size() * sizeof(char16_t));
    }
};
