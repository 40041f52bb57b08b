#include "vancorexml/main/parser/SimpleTypes.h"

#include <algorithm>
#include <iterator>
#include <set>

#include <xercesc/util/KVStringPair.hpp>
#include <xercesc/util/RefHashTableOf.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/validators/datatype/UnionDatatypeValidator.hpp>

using xercesc::SchemaSymbols;
using View = std::u16string_view;

namespace SimpleTypes {

namespace {

// Larger enumerations are not validated.
constexpr std::size_t MostValidated = 1000;
constexpr BuiltInType builtInTypes[] = {
    {u"anySimpleType", "any text", ""},
    {u"anyURI", "an address", "http://www.example.org/"},
    {u"base64Binary", "base64 text", "SGVsbG8="},
    {u"boolean", "true or false", ""},
    {u"date", "a date", "2024-01-31", Kind::Time},
    {u"dateTime", "a date and time", "2024-01-31T12:30:00", Kind::Time},
    {u"decimal", "a number", "3.14", Kind::Number},
    {u"double", "a number", "3.14", Kind::Number},
    {u"duration", "a duration", "P1DT2H30M", Kind::Time},
    {u"ENTITY", "the name of an unparsed entity", ""},
    {u"float", "a number", "3.14", Kind::Number},
    {u"gDay", "a day of the month", "---31", Kind::Time},
    {u"gMonth", "a month", "--01", Kind::Time},
    {u"gMonthDay", "a month and day", "--01-31", Kind::Time},
    {u"gYear", "a year", "2024", Kind::Time},
    {u"gYearMonth", "a year and month", "2024-01", Kind::Time},
    {u"hexBinary", "pairs of hexadecimal digits", "0FB7"},
    {u"ID", "an identifier", "item1"},
    {u"IDREF", "the identifier of an element", "item1"},
    {u"integer", "a whole number", "", Kind::Number},
    {u"language", "the code of a language", "en-US"},
    {u"Name", "a name", "item1"},
    {u"NCName", "a name without a colon", "item1"},
    {u"NMTOKEN", "a word of letters, digits and '-._:'", "item-1"},
    {u"NOTATION", "the name of a notation", ""},
    {u"QName", "a name", "x:item1"},
    {u"string", "a text", ""},
    {u"time", "a time", "12:30:00", Kind::Time},
};

View ViewOf(const XMLCh* text)
{
    return text ? View(text) : View();
}

VString StringOf(View text)
{
    return VString(text.data(), text.size());
}

// Returns null for a type that is not in the table.
const BuiltInType* FindInTable(View name)
{
    const BuiltInType* const found = std::find_if(
        std::begin(builtInTypes), std::end(builtInTypes), [&](const auto& each) { return each.name == name; });
    return found == std::end(builtInTypes) ? nullptr : found;
}

}  // namespace

bool IsBuiltIn(const Type& type)
{
    return ViewOf(type.getTypeUri()) == SchemaSymbols::fgURI_SCHEMAFORSCHEMA;
}

const Type* FindBase(const Type& type)
{
    const Type* const base = type.getBaseValidator();
    const bool isConstructed = type.getType() == Type::List || type.getType() == Type::Union;
    return base && isConstructed && base->getType() != type.getType() ? nullptr : base;
}

const BuiltInType* FindBuiltIn(const Type& type)
{
    const BuiltInType* found = nullptr;
    for (const Type* each = &type; each && !found; each = FindBase(*each))
        found = IsBuiltIn(*each) ? FindInTable(ViewOf(each->getTypeLocalName())) : nullptr;
    return found ? found : FindInTable(u"anySimpleType");
}

bool IsWhole(const Type& type)
{
    const BuiltInType* const builtIn = FindBuiltIn(type);
    return builtIn->name == u"integer" ||
        (builtIn->name == u"decimal" && Facet(type, SchemaSymbols::fgELT_FRACTIONDIGITS).value_or("1") == "0");
}

std::optional<VString> OwnFacet(const Type& type, const XMLCh* name)
{
    xercesc::RefHashTableOf<xercesc::KVStringPair>* const facets = type.getFacets();
    const xercesc::KVStringPair* const facet = facets ? facets->get(name) : nullptr;
    return facet ? std::optional(StringOf(ViewOf(facet->getValue()))) : std::nullopt;
}

std::optional<VString> Facet(const Type& type, const XMLCh* name)
{
    for (const Type* each = &type; each; each = FindBase(*each)) {
        if (std::optional<VString> value = OwnFacet(*each, name))
            return value;
    }
    return std::nullopt;
}

bool IsValid(Type& type, const VString& value)
{
    try {
        type.validate(value.utf16());
    } catch (const xercesc::XMLException&) {
        return false;
    }
    return true;
}

bool HasFacets(const Type& type)
{
    for (const Type* each = &type; each && !IsBuiltIn(*each); each = FindBase(*each)) {
        if (each->getFacets() && !each->getFacets()->isEmpty())
            return true;
    }
    return false;
}

std::vector<VString> FindValues(Type& type)
{
    const Type* each = &type;
    while (each && (!each->getEnumString() || each->getEnumString()->size() == 0))
        each = FindBase(*each);
    std::vector<VString> values;
    for (XMLSize_t i = 0; each && i < each->getEnumString()->size(); ++i)
        values.push_back(StringOf(ViewOf(each->getEnumString()->elementAt(i))));
    // A facet may forbid some of the values. Validating a value is linear in their number.
    if (HasFacets(type) && values.size() <= MostValidated)
        std::erase_if(values, [&](const VString& value) { return !IsValid(type, value); });
    return values;
}

Bounds::Bounds(const Type& type)
{
    for (const Type* each = &type; each; each = FindBase(*each)) {
        Read(*each, SchemaSymbols::fgELT_MININCLUSIVE, SchemaSymbols::fgELT_MINEXCLUSIVE, minimum, includesMinimum);
        Read(*each, SchemaSymbols::fgELT_MAXINCLUSIVE, SchemaSymbols::fgELT_MAXEXCLUSIVE, maximum, includesMaximum);
    }
}

void Bounds::Read(
    const Type& type, const XMLCh* inclusive, const XMLCh* exclusive, std::optional<VString>& bound, bool& isIncluded)
{
    if (bound)
        return;
    bound = OwnFacet(type, inclusive);
    isIncluded = bound.has_value();
    if (!bound)
        bound = OwnFacet(type, exclusive);
}

Lengths::Lengths(const Type& type)
    : minimum(Facet(type, SchemaSymbols::fgELT_MINLENGTH)),
      maximum(Facet(type, SchemaSymbols::fgELT_MAXLENGTH))
{
    if (const std::optional<VString> length = Facet(type, SchemaSymbols::fgELT_LENGTH))
        minimum = maximum = length;
    if (minimum && *minimum == "0")
        minimum.reset();
}

std::vector<VString> FindPatterns(const Type& type)
{
    std::vector<VString> patterns;
    for (const Type* each = &type; each && !IsBuiltIn(*each); each = FindBase(*each)) {
        if (const std::optional<VString> pattern = OwnFacet(*each, SchemaSymbols::fgELT_PATTERN))
            patterns.push_back(*pattern);
    }
    return patterns;
}

std::vector<Type*> FindMembers(Type& type)
{
    std::vector<Type*> members;
    std::set<const Type*> known;
    std::vector<Type*> pending{&type};
    while (!pending.empty()) {
        Type* const next = pending.back();
        pending.pop_back();
        if (!known.insert(next).second)
            continue;
        const bool isUnion = next->getType() == Type::Union;
        const bool isPlain = isUnion && FindValues(*next).empty() && !HasFacets(*next);
        if (next != &type && !isPlain) {
            members.push_back(next);
            continue;
        }
        xercesc::RefVectorOf<Type>* const inner =
            static_cast<xercesc::UnionDatatypeValidator*>(next)->getMemberTypeValidators();
        for (XMLSize_t i = inner ? inner->size() : 0; i > 0; --i)
            pending.push_back(inner->elementAt(i - 1));
    }
    return members;
}

std::vector<VString> FindMemberValues(Type& type)
{
    std::vector<VString> values;
    std::set<VString> known;
    for (Type* const member : FindMembers(type)) {
        const std::vector<VString> more = FindValues(*member);
        std::copy_if(more.begin(), more.end(), std::back_inserter(values), [&](const VString& value) {
            return known.insert(value).second && (!HasFacets(type) || IsValid(type, value));
        });
    }
    return values;
}

std::vector<VString> CollectValues(Type& type)
{
    std::vector<VString> values = FindValues(type);
    if (!values.empty())
        return values;
    if (type.getType() == Type::Boolean && !FindPatterns(type).empty()) {
        values = {"true", "false", "0", "1"};
        std::erase_if(values, [&](const VString& value) { return !IsValid(type, value); });
    }
    if (type.getType() != Type::Union)
        return values;
    const std::vector<Type*> members = FindMembers(type);
    const bool areEnumerations =
        std::none_of(members.begin(), members.end(), [](Type* member) { return FindValues(*member).empty(); });
    return areEnumerations ? FindMemberValues(type) : std::vector<VString>();
}

}  // namespace SimpleTypes
