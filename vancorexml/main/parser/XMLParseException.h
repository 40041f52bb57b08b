// Ending a parse from within.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VantoraException.h"

// Thrown by a callback of a parse to abandon it: the message becomes an error of the parse,
// and once more its fatal error.
class VANCOREXML_API XMLParseException : public VantoraException {
public:
    explicit XMLParseException(const VString& message);
    XMLParseException(const XMLParseException& other);
    XMLParseException& operator=(const XMLParseException& other);
    ~XMLParseException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
