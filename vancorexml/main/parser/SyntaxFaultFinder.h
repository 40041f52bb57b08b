// The first place at which a text is not well-formed.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DiagnosticCode.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"

class SourceMap;

// A violation of the rules of well-formed XML, in words for the author of the document.
struct SyntaxFault {
    DiagnosticCode code = DiagnosticCode::Other;
    VString message;  // see ParseDiagnostic::message
    // The faulty part of the text in bytes, from its first byte to behind its last.
    std::size_t start = 0;
    std::size_t end = 0;
    VString attribute;   // the name of the attribute; empty if the fault is not in one
    VString value;       // the text that is wrong, such as the value of the attribute; may be empty
    VString suggestion;  // the text that the document probably means in place of `value`; may be empty
    // The offset of the other place that belongs to the fault; npos if there is none.
    std::size_t relatedStart = std::string_view::npos;
    VString relatedMessage;  // see ParseDiagnostic::Related
};

// Returns the first fault in a document that Xerces has refused, or nothing if this function cannot find one. Checks
// the document without the internal subset of its document type: there it only skips the declarations and collects
// the names of entities. Does not check the texts of entities and namespaces.
//
// `text` is UTF-8 without a byte order mark. Bytes that are not UTF-8 are not faults for this function. White space
// before the XML declaration is allowed, because the parser skips it.
//
// Thread-safe. Linear in the text. The call stack does not grow with the depth of the document.
std::optional<SyntaxFault> FindSyntaxFault(std::string_view text);

// Puts the words and the places of a fault in `text` into a diagnostic, whose code stays. `map` maps places in the text
// to places in the document; null if they are the same. Linear in the text.
void DescribeSyntaxFault(const SyntaxFault& fault, std::string_view text, SourceMap* map, ParseDiagnostic& diagnostic);
