// Looking at a schema before it is loaded.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"

// What keeps the text of the schema `name` from being loaded, as messages; empty when
// nothing does. Those are its faults as an XML document, and what the loader would not
// survive or would pass over in silence: elements nested deeper than any schema needs them,
// and other schemas that are redefined. Linear.
std::vector<VString> FindSchemaTextErrors(const VString& text, const VString& name);
