// The check that the resource of a schema exists.
#pragma once

#include "vancoreplatform/VString.h"

namespace XSDResourceResolver {

// Raises a LogicException if there is no resource of that name. The current schemas are part of the
// product, so a missing one is a fault of the build.
void CheckResolves(const VString& resourceName);

}  // namespace XSDResourceResolver
