#include "vancorexml/main/parser/XSDResourceResolver.h"

#include "vancoredata/VResource.h"
#include "vancoreplatform/VFormatString.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

// Unreachable through XSDResources: the current schemas are resources of the library.
constexpr AssertionSite NoResource{
    "vancorexml\\main\\parser\\XSDResourceResolver", 67, "Resource '%1' did not resolve.", 0xABCA807E};

}  // namespace Assertions

}  // namespace

void XSDResourceResolver::CheckResolves(const VString& resourceName)
{
    if (!VResource(resourceName).isValid()) {
        const AssertionSite& site = Assertions::NoResource;
        ThrowLogicException(
            site.file, site.line, VFormatString(site.text).arg(resourceName), MakeLogicError(site.code));
    }
}
