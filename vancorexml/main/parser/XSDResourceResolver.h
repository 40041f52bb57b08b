// The check that the resource of a schema exists.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace XSDResourceResolver {

// Raises a LogicException when there is no resource of that name: the current schemas are
// part of the product.
VANCOREXML_API void CheckResolves(const VString& resourceName);

}  // namespace XSDResourceResolver
