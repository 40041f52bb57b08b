// The exception with which a callback ends a parse.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VantoraException.h"

// Thrown by a callback of a parse to abandon it. The message is recorded twice: as an error of the
// parse and as its fatal error.
class VANCOREXML_API XMLParseException : public VantoraException {
public:
    explicit XMLParseException(const VString& message);
    XMLParseException(const XMLParseException& other);
    XMLParseException& operator=(const XMLParseException& other);
    ~XMLParseException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
