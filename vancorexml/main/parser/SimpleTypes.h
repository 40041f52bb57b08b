// The facets of the simple types of schemas.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <xercesc/validators/datatype/DatatypeValidator.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include "vancoreplatform/VString.h"

// Functions that read a type of Xerces. Validating values needs a type that is not const.
//
// Threads: one at a time for each grammar. All functions are linear in the facets of the type, its base types and its
// members.
namespace SimpleTypes {

using Type = xercesc::DatatypeValidator;

// How values are bounded.
enum class Kind { Text, Number, Time };

// A type that XML Schema defines.
struct BuiltInType {
    std::u16string_view name;
    const char* words;
    const char* example;  // empty if the words need none
    Kind kind = Kind::Text;
};

// Returns the nearest base type of this type that BuiltInType describes.
const BuiltInType* FindBuiltIn(const Type& type);

// True for a number that has no digits after the point.
bool IsWhole(const Type& type);

// True for a type that XML Schema defines.
bool IsBuiltIn(const Type& type);

// Returns the type that this type restricts, or null. For Xerces, the base of a list can also be the type of its items.
const Type* FindBase(const Type& type);

// Returns the value of a facet that the type itself defines, not a base type.
std::optional<VString> OwnFacet(const Type& type, const XMLCh* name);
// Returns the value that the type defines or inherits.
std::optional<VString> Facet(const Type& type, const XMLCh* name);

bool IsValid(Type& type, const VString& value);

// True if the type restricts its base type by more than an enumeration.
bool HasFacets(const Type& type);

// Returns the values of the innermost enumeration that the type defines or inherits.
std::vector<VString> FindValues(Type& type);

// Returns the values of the enumerations among the members of a union.
std::vector<VString> FindMemberValues(Type& type);

// Returns the values of an enumeration, of a union of enumerations, or of a Boolean type with a pattern; otherwise an
// empty list.
std::vector<VString> CollectValues(Type& type);

// Returns the patterns of the type and its base types. The types of XML Schema do not count: their words describe them.
std::vector<VString> FindPatterns(const Type& type);

// Returns the members of a union. Replaces each member that is a union without facets by its own members.
std::vector<Type*> FindMembers(Type& type);

// The bounds of a number or a time.
struct Bounds {
    explicit Bounds(const Type& type);

    bool IsEmpty() const { return !minimum && !maximum; }
    bool IsRange() const { return minimum && maximum && includesMinimum && includesMaximum; }

    std::optional<VString> minimum;
    std::optional<VString> maximum;
    bool includesMinimum = true;
    bool includesMaximum = true;

private:
    static void Read(const Type& type,
        const XMLCh* inclusive,
        const XMLCh* exclusive,
        std::optional<VString>& bound,
        bool& isIncluded);
};

// The lengths of a text in characters, of binary data in bytes, or of a list in items.
struct Lengths {
    explicit Lengths(const Type& type);

    bool IsEmpty() const { return !minimum && !maximum; }
    bool IsNotEmpty() const { return minimum && *minimum == "1" && !maximum; }

    std::optional<VString> minimum;
    std::optional<VString> maximum;
};

}  // namespace SimpleTypes
