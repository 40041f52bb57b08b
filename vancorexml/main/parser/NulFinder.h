// Finding the NULs that Xerces does not report.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <xercesc/sax/InputSource.hpp>

// Xerces treats a NUL as the end of its input. If the NUL is in front of the end of the root element,
// Xerces reports that the input ended too early. The exception is a NUL in the XML declaration:
// Xerces treats it as the end of a name instead of the end of the input, and reports nothing. Xerces also
// reports nothing if the NUL is behind the root element of a document or schema.
//
// These functions check the XML declarations of documents, and whole schemas.
// DocumentReader::endDocument finds a NUL behind the root element of a document.
namespace NulFinder {

// Lines and columns count from 1, columns in UTF-16 code units. In encodings other than UTF-8 and UTF-16,
// columns count code units of that encoding.
struct Position {
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

// Returns the position of the first NUL in `text`, which is the content of `source`. Linear.
std::optional<Position> Find(const xercesc::InputSource& source, std::string_view text);
// Like Find, but searches only the XML declaration or processing instruction at the start of `text`.
// Linear in its length.
std::optional<Position> FindInDeclaration(const xercesc::InputSource& source, std::string_view text);

}  // namespace NulFinder
