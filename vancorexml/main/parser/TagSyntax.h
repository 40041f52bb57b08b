// Tags in a document that may not be well-formed.
#pragma once

#include <cstddef>

#include "vancorexml/main/parser/ReferenceSyntax.h"
#include "vancorexml/main/parser/SyntaxText.h"

struct ScannedTag {
    TextRange name;
    bool isEmpty = false;  // true for a start tag that ends with "/>"
};

// Scans the tag whose "<" is at `at` and sets `tag`, also for a tag with a fault if it has a name. A name must follow
// "<" or "</". Linear in the tag; if the tag has a fault, linear in the text.
std::size_t ScanStartTag(SyntaxText& text, const DeclaredEntities& entities, std::size_t at, ScannedTag& tag);
std::size_t ScanEndTag(SyntaxText& text, std::size_t at, ScannedTag& tag);

// Records the fault of a "<" that begins no markup, as in "a < b" or "< name>".
std::size_t FailLessThan(SyntaxText& text, std::size_t at);
