#include "vancorexml/main/parser/DOMException.h"

#include <cstdint>

namespace {

// A sentence for what(). `code` identifies the lookup that failed and `name` is the requested name.
VString Describe(const VString& name, std::uint32_t code)
{
    const VString quoted = VString(u"\"") + name + VString(u"\".");
    switch (code) {
    case 0x26487BC2: return VString(u"The element has no child ") + quoted;
    case 0x21039DFE: return VString(u"No child of the element has the required value of the attribute ") + quoted;
    case 0x3473F8A4: return VString(u"The element has no attribute ") + quoted;
    default: return name;
    }
}

}  // namespace

DOMException::DOMException(const VString& message, const VError::ErrorInfo& info)
    : VantoraException(message, info, Describe(message, info.GetCode()))
{}

DOMException::DOMException(const DOMException& other) = default;

DOMException& DOMException::operator=(const DOMException& other) = default;

DOMException::~DOMException() = default;

VantoraException* DOMException::Clone() const
{
    return new DOMException(*this);
}

void DOMException::Throw() const
{
    throw DOMException(*this);
}
