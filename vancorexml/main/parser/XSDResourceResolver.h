// The check that the resource of a schema exists.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

namespace XSDResourceResolver {

// Raises a LogicException if there is no resource of that name. The current schemas are part of the
// product, so a missing one is a fault of the build.
VANCOREXML_API void CheckResolves(const VString& resourceName);

}  // namespace XSDResourceResolver
