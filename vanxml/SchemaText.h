// Checks a schema before it is loaded.
#pragma once

#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"

// Returns the reasons why the schema `name` with the content `text` must not be loaded, with the code BadSchema: XML
// errors, elements nested so deep that Xerces could overflow the call stack, and redefinitions of other
// schemas, which Xerces would ignore silently. Linear.
std::vector<ParseDiagnostic> FindSchemaTextErrors(const VString& text, const VString& name);

// Sets the place of `diagnostic` to the first attribute schemaLocation with this value, if the schema's text in UTF-8
// has one. Linear.
void PlaceAtSchemaLocation(ParseDiagnostic& diagnostic, std::string_view schemaText, std::string_view location);
