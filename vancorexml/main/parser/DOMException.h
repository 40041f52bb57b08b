// The exception for a missing child, attribute or version.
#pragma once

#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VantoraException.h"

// Thrown when a child, an attribute or a version that the caller requires is missing. The
// message is only the requested name, or says that a version is missing. what() returns a
// sentence, such as `The element has no child "title".` The key of the error identifies the lookup that
// failed. It consists of a name, an underscore and the code of the error, for example
// DOMException_RequiredChildMissing_0x26487BC2. The comment of each lookup gives its name, here
// DOMException_RequiredChildMissing.
//
// Its own virtual operations are the destructor, Clone and Throw, in this order. In the virtual table,
// what() is between the destructor and Clone, because VantoraException is a std::exception.
class VANCOREXML_API DOMException : public VantoraException {
public:
    DOMException(const VString& message, const VError::ErrorInfo& info);
    DOMException(const DOMException& other);
    DOMException& operator=(const DOMException& other);
    ~DOMException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
