// Finding the NULs that Xerces does not report.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <xercesc/sax/InputSource.hpp>

// Xerces takes a NUL for the end of its input and mostly reports a premature end. It reports
// nothing for a NUL in the XML declaration, where it ends a name, nor for one behind the topmost
// element of a schema.
namespace NulFinder {

// Both count from 1, columns in UTF-16 code units. In encodings other than UTF-8 and UTF-16
// a column is a code unit of that encoding.
struct Place {
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

// The first NUL in `text`, which `source` reads. Linear.
std::optional<Place> Find(const xercesc::InputSource& source, std::string_view text);
// The first NUL in the declaration or processing instruction at the start of `text`. Linear in
// its length.
std::optional<Place> FindInDeclaration(const xercesc::InputSource& source, std::string_view text);

}  // namespace NulFinder
