#include "vancorexml/main/parser/DOMException.h"

DOMException::DOMException(const VString& message, const VError::ErrorInfo& info) : VantoraException(message, info) {}

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
