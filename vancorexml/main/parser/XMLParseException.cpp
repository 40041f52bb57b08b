#include "vancorexml/main/parser/XMLParseException.h"

XMLParseException::XMLParseException(const VString& message) : VantoraException(message, VError::ErrorInfo::NoError) {}

XMLParseException::XMLParseException(const XMLParseException& other) = default;

XMLParseException& XMLParseException::operator=(const XMLParseException& other) = default;

XMLParseException::~XMLParseException() = default;

VantoraException* XMLParseException::Clone() const
{
    return new XMLParseException(*this);
}

void XMLParseException::Throw() const
{
    throw XMLParseException(*this);
}
