// The exception that a callback throws to end a parse.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VantoraException.h"

// A callback throws it to end the parse. The parser records the message twice: as an error and as a
// fatal error.
class VANCOREXML_API XMLParseException : public VantoraException {
public:
    explicit XMLParseException(const VString& message);
    XMLParseException(const XMLParseException& other);
    XMLParseException& operator=(const XMLParseException& other);
    ~XMLParseException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
