// Diagnostics as text for people and for programs that read lines.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vanxml/SourceLines.h"
#include "vanxml/TextStyle.h"

class SourceDocument;

// Returns what the message does not say: the related place and the allowed names, at most ten. May be empty.
VString DescribeNote(const ParseDiagnostic& diagnostic);

// Returns the lines for a person, each with a line feed. Escapes control characters.
//
//     orders.xml:10:5: error: element 'ordr' is not allowed here; did you mean 'order'?
//        9 |   <order id="1"/>
//       10 |   <ordr id="2">
//          |    ^~~~
//          = in /orders, which began on line 2; allowed: order
//
// The first line begins with the source of the diagnostic, or with `name` if that is empty. The source lines are left
// out without an excerpt, and cut around the place if they are long. The last line is left out if it would be empty.
std::string FormatDiagnostic(const VString& name,
    const ParseDiagnostic& diagnostic,
    const std::optional<SourceExcerpt>& excerpt,
    const TextStyle& style);

// Returns the same on a single line, in the form of a compiler: "FILE:LINE:COLUMN: error: MESSAGE [CODE] (NOTE)".
std::string FormatDiagnosticLine(const VString& name, const ParseDiagnostic& diagnostic);

// Returns the lines of all diagnostics, with colours if standard error is a terminal. `text` is the document `name` in
// UTF-8, in which the diagnostics have their positions.
std::string FormatDiagnostics(
    const VString& name, const std::vector<ParseDiagnostic>& diagnostics, std::string_view text);
// The same for a document. Resets its source to the start and reads it.
std::string FormatDiagnostics(const std::vector<ParseDiagnostic>& diagnostics, SourceDocument& document);
