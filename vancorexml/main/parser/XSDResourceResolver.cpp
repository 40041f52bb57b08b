#include "vancorexml/main/parser/XSDResourceResolver.h"

#include "vancoredata/VResource.h"
#include "vansys/LogicException.h"

void XSDResourceResolver::CheckResolves(const VString& resourceName)
{
    if (!VResource(resourceName).isValid()) {
        ThrowLogicException("vancorexml\\main\\parser\\XSDResourceResolver",
            67,
            VString("Resource '") + resourceName + "' did not resolve.",
            MakeLogicError(0xABCA807E));
    }
}
