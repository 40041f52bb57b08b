// Looking at a schema before it is loaded.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"

// The errors that prevent loading the text of the schema `name`, as messages; empty when there are
// none. They are its errors as an XML document, elements nested so deep that the loader could
// overflow the call stack, and redefinitions of other schemas, which the loader would ignore
// silently. Linear.
std::vector<VString> FindSchemaTextErrors(const VString& text, const VString& name);
