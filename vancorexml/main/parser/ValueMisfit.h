// The reason why a simple type does not allow a value, in words.
#pragma once

#include <xercesc/validators/datatype/DatatypeValidator.hpp>

#include "vancoreplatform/VString.h"

// Returns a clause that follows "the value 'X' of attribute 'a' ", such as "has 50 characters, but at most 40 are
// allowed" or "is not a date: February 2024 has 29 days". Returns an empty text if the type allows the value, or if
// the words of DescribeType say as much. The type allows each value that the clause proposes with "write".
//
// The type is not const because validating values needs a type that is not.
//
// Threads: one at a time for each grammar. Linear in the value, the facets of the type and the values of an
// enumeration.
VString DescribeMisfit(xercesc::DatatypeValidator& type, const VString& value);
