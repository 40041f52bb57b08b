// Checks a schema before it is loaded.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"

// Returns the reasons why the schema `name` with the content `text` must not be loaded: XML
// errors, elements nested so deep that Xerces could overflow the call stack, and redefinitions of other
// schemas, which Xerces would ignore silently. Linear.
std::vector<VString> FindSchemaTextErrors(const VString& text, const VString& name);
