// The XML declaration and the document type of a document that may not be well-formed.
#pragma once

#include <cstddef>
#include <string>

#include "vancorexml/main/parser/ReferenceSyntax.h"
#include "vancorexml/main/parser/SyntaxText.h"

// Scans the XML declaration at `at`, which is at "<?xml". Records in `text` that the document is XML 1.1.
std::size_t ScanDeclaration(SyntaxText& text, std::size_t at);

// Scans the document type declaration at `at`, which is at "<!DOCTYPE", and collects its entities. In the
// internal subset, checks only comments, processing instructions and the keywords of declarations. Stops without a
// fault if it does not understand a declaration.
std::size_t ScanDocumentType(SyntaxText& text, std::size_t at, DeclaredEntities& entities);

// Records that the section, such as a comment or a CDATA section, has no end. `opening` is the mark at its start and
// `end` is the one at its end, such as "-->". If a part of `end` stands before a tag, the fault is there.
std::size_t FailUnclosedSection(
    SyntaxText& text, TextRange opening, const std::string& subject, const std::string& end);

// Scans the comment or the processing instruction at `at`, which is at "<!--" or "<?".
std::size_t ScanComment(SyntaxText& text, std::size_t at);
std::size_t ScanProcessingInstruction(SyntaxText& text, std::size_t at);
