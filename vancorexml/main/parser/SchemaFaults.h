// The faults of schemas.
#pragma once

#include <vector>

#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// Improves the diagnostics that Xerces recorded while it loaded a schema. A schema that is not well-formed gets one
// diagnostic, with the words of SyntaxFaultFinder. Other faults get the place of the name in their tag, and a
// suggestion for a misspelt name of XML Schema. `source` is the schema; diagnostics of other schemas stay as they are.
//
// Thread-safe. Linear in the schema and in the diagnostics.
std::vector<ParseDiagnostic> ExplainSchemaFaults(
    std::vector<ParseDiagnostic> recorded, const XercesInputSource& source, const VString& id);
