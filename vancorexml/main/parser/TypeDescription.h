// The simple types of schemas in words.
#pragma once

#include <vector>

#include <xercesc/validators/datatype/DatatypeValidator.hpp>

#include "vancoreplatform/VString.h"

// The values that a simple type allows.
struct TypeDescription {
    // A phrase that "expected" can precede, such as "a date such as 2024-01-31", "a whole number, at least 1" or
    // "one of open, closed". Names at most 10 values of an enumeration.
    VString words;
    // Of an enumeration, of the enumerations in a union, or of a Boolean type; otherwise empty. The other members of a
    // union may allow more. At most 100.
    std::vector<VString> values;
};

// Describes a simple type of a schema for an author of documents who does not know XML Schema. A pattern never stands
// alone: the words say at least that the value is a text that must match it.
//
// The type is not const because validating the examples in the words needs a type that is not.
//
// Threads: one at a time for each grammar. Linear in the facets of the type, its base types and its members.
TypeDescription DescribeType(xercesc::DatatypeValidator& type);
