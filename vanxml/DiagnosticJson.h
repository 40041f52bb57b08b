// Diagnostics as JSON.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"

// Returns a JSON object on one line, without a line feed, with all fields of the diagnostic that are not empty. Lines
// and columns count from 1, columns in UTF-16 code units.
//
//     {"code":"bad-value","column":3,"file":"a.xml","line":2,"message":"…","severity":"error","type":"diagnostic"}
std::string DiagnosticToJson(const ParseDiagnostic& diagnostic);

// Returns the object for a document that could not be checked, with the type "failure" and a message. `file` may be
// empty.
std::string FailureToJson(const VString& file, const std::string& message);
