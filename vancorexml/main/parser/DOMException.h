// The failure of a lookup that was required.
#pragma once

#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VantoraException.h"

// Thrown when a child, an attribute or a version that the caller requires is missing. The
// message is the bare name that was asked for, or says that a version is missing; what() says in
// a sentence what is missing. The error's key says which lookup failed: the name that the lookup
// documents, with its code behind it, as in DOMException_RequiredChildMissing_0x26487BC2.
//
// Its own virtual operations are the destructor, Clone and Throw, in this order. In the virtual
// table what() stands behind the destructor, because VantoraException is a std::exception.
class VANCOREXML_API DOMException : public VantoraException {
public:
    DOMException(const VString& message, const VError::ErrorInfo& info);
    DOMException(const DOMException& other);
    DOMException& operator=(const DOMException& other);
    ~DOMException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
