#include "vancorexml/main/parser/TypeDescription.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <xercesc/validators/datatype/ListDatatypeValidator.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include "vancorexml/main/parser/MessageWords.h"
#include "vancorexml/main/parser/PatternExample.h"
#include "vancorexml/main/parser/SimpleTypes.h"

namespace {

using namespace SimpleTypes;
using MessageWords::Clip;
using xercesc::SchemaSymbols;

constexpr std::size_t MostNamedValues = 10;
constexpr std::size_t MostValues = 100;
// Longer values of enumerations, and patterns, are cut in the words.
constexpr std::size_t LongestValue = 40;
constexpr std::size_t LongestPattern = 100;
// Further members of a union are not described.
constexpr std::size_t MostMembers = 10;

VString DescribeValues(const std::vector<VString>& values)
{
    const bool needQuotes = std::any_of(values.begin(), values.end(), [](const VString& value) {
        return value.IsEmpty() || value.View().find_first_of(u" ,'") != std::u16string_view::npos;
    });
    const VString quote = needQuotes ? "'" : "";
    VString words = values.size() == 1 ? "the value " : "one of ";
    for (std::size_t i = 0; i < std::min(values.size(), MostNamedValues); ++i)
        words += (i == 0 ? "" : ", ") + quote + Clip(values[i], LongestValue) + quote;
    if (values.size() > MostNamedValues)
        words += " and " + VString::number(static_cast<std::uint64_t>(values.size() - MostNamedValues)) + " more";
    return words;
}

VString Describe(Type& type);

// Returns words that follow the name of the type, such as " from 1 to 10" or ", at least 1".
VString DescribeBounds(const Bounds& bounds, Kind kind)
{
    if (bounds.IsEmpty())
        return VString();
    if (bounds.IsRange())
        return " from " + *bounds.minimum + " to " + *bounds.maximum;
    const bool isNumber = kind == Kind::Number;
    VString words;
    // A comma precedes "at least" and "at most".
    const bool needsComma = isNumber && (bounds.minimum ? bounds.includesMinimum : bounds.includesMaximum);
    if (bounds.minimum && bounds.includesMinimum)
        words = isNumber ? "at least " + *bounds.minimum : "from " + *bounds.minimum + " on";
    else if (bounds.minimum)
        words = (isNumber ? "greater than " : "after ") + *bounds.minimum;
    if (bounds.minimum && bounds.maximum)
        words += " and ";
    if (bounds.maximum && bounds.includesMaximum)
        words += (isNumber ? "at most " : "up to ") + *bounds.maximum;
    else if (bounds.maximum)
        words += (isNumber ? "less than " : "before ") + *bounds.maximum;
    return (needsComma ? ", " : " ") + words;
}

VString Count(const VString& number, const char* unit)
{
    return number + " " + unit + (number == "1" ? "" : "s");
}

// Returns words that follow the name of the type, such as " with at most 5 digits".
VString DescribeDigits(const Type& type, bool isWhole)
{
    const std::optional<VString> total = Facet(type, SchemaSymbols::fgELT_TOTALDIGITS);
    const std::optional<VString> fraction = Facet(type, SchemaSymbols::fgELT_FRACTIONDIGITS);
    const bool hasFraction = fraction && !isWhole;
    if (!total)
        return hasFraction ? " with at most " + Count(*fraction, "digit") + " after the point" : VString();
    return " with at most " + Count(*total, "digit") +
        (hasFraction ? ", at most " + *fraction + " of them after the point" : "");
}

// Returns words such as "at most 10 characters". One of the lengths must be known.
VString DescribeLengths(const Lengths& lengths, const char* unit)
{
    if (!lengths.maximum)
        return "at least " + Count(*lengths.minimum, unit);
    if (!lengths.minimum)
        return "at most " + Count(*lengths.maximum, unit);
    if (*lengths.minimum == *lengths.maximum)
        return "exactly " + Count(*lengths.minimum, unit);
    return *lengths.minimum + " to " + Count(*lengths.maximum, unit);
}

// Returns the name of the innermost type with a name, or an empty string if only a type of XML Schema has one.
VString FindTypeName(const Type& type)
{
    const Type* each = &type;
    while (each && each->getAnonymous())
        each = FindBase(*each);
    return each && !IsBuiltIn(*each) ? VString(each->getTypeLocalName()) : VString();
}

// Returns a text that the type allows, or an empty string.
VString FindExample(Type& type, const std::vector<VString>& patterns, const VString& usual)
{
    if (!usual.IsEmpty() && IsValid(type, usual))
        return usual;
    for (const VString& pattern : patterns) {
        for (std::size_t repetitions = 1; repetitions <= 3; ++repetitions) {
            const std::optional<std::u16string> example = MakePatternExample(pattern.View(), repetitions);
            if (example && !example->empty() && IsValid(type, VString(example->c_str())))
                return VString(example->c_str());
        }
    }
    return VString();
}

// Names the patterns of a type. There must be one.
VString NamePatterns(const std::vector<VString>& patterns)
{
    return (patterns.size() == 1 ? "pattern " : "patterns ") + VString::join(patterns, " and ");
}

// Appends the patterns of the type, without an example.
VString AppendPatterns(const Type& type, VString words, const char* link, const std::vector<VString>& patterns)
{
    if (patterns.empty())
        return words;
    words += link + Clip(NamePatterns(patterns), LongestPattern);
    const VString name = FindTypeName(type);
    return name.IsEmpty() ? words : words + " (type '" + name + "')";
}

// Appends an example, and the patterns of the type if there are any.
VString AppendExample(const Type& type, VString words, const VString& example, const std::vector<VString>& patterns)
{
    words += " such as " + example;
    if (patterns.empty())
        return words;
    const VString name = FindTypeName(type);
    const VString pattern = NamePatterns(patterns);
    // An example says more than a long pattern.
    const bool isLong = pattern.length() > static_cast<int>(LongestPattern);
    std::vector<VString> notes;
    if (!name.IsEmpty())
        notes.push_back("type '" + name + "'");
    if (!isLong)
        notes.push_back(pattern);
    return notes.empty() ? words : words + " (" + VString::join(notes, ", ") + ")";
}

VString DescribeAtomic(Type& type)
{
    const BuiltInType* const builtIn = FindBuiltIn(type);
    const bool isWhole = IsWhole(type);
    const VString noun = isWhole ? "a whole number" : builtIn->words;
    VString facets;
    bool needsExample = true;
    if (builtIn->kind == Kind::Text) {
        const Lengths lengths(type);
        const bool isBinary = builtIn->name == u"base64Binary" || builtIn->name == u"hexBinary";
        if (lengths.IsNotEmpty())
            facets = " that is not empty";
        else if (!lengths.IsEmpty())
            facets = " of " + DescribeLengths(lengths, isBinary ? "byte" : "character");
    } else {
        // A bound shows what a value looks like.
        const Bounds bounds(type);
        needsExample = bounds.IsEmpty();
        facets = (builtIn->kind == Kind::Number ? DescribeDigits(type, isWhole) : VString()) +
            DescribeBounds(bounds, builtIn->kind);
    }
    const std::vector<VString> patterns = FindPatterns(type);
    const bool hasExample = (needsExample && !isWhole) || !patterns.empty();
    const VString example = hasExample ? FindExample(type, patterns, builtIn->example) : VString();
    if (example.IsEmpty())
        return AppendPatterns(type, noun + facets, " that matches the ", patterns);
    return AppendExample(type, noun + facets + (facets.IsEmpty() ? "" : ","), example, patterns);
}

VString DescribeList(Type& type)
{
    Type* const item = static_cast<xercesc::ListDatatypeValidator&>(type).getItemTypeDTV();
    const Lengths lengths(type);
    VString words = "a list of values";
    if (lengths.IsNotEmpty())
        words = "one or more values";
    else if (!lengths.IsEmpty())
        words = DescribeLengths(lengths, "value");
    words += " separated by blanks, each " + Describe(*item);
    return AppendPatterns(type, words, "; the whole list matches the ", FindPatterns(type));
}

VString DescribeUnion(Type& type)
{
    std::vector<VString> words;
    for (Type* const member : FindMembers(type)) {
        const VString described = Describe(*member);
        if (std::find(words.begin(), words.end(), described) == words.end())
            words.push_back(described);
        if (words.size() > MostMembers) {
            words.back() = "a value of another type";
            break;
        }
    }
    if (words.empty())
        return "any text";
    VString all = words.size() == 1 ? words[0] : "either " + words[0];
    for (std::size_t i = 1; i < words.size(); ++i)
        all += (i + 1 == words.size() ? " or " : ", ") + words[i];
    return AppendPatterns(type, all, "; the value matches the ", FindPatterns(type));
}

// The depth of the calls is bounded: a list contains no list, and FindMembers dissolves unions.
VString Describe(Type& type)
{
    const std::vector<VString> values = CollectValues(type);
    if (!values.empty())
        return DescribeValues(values);
    if (type.getType() == Type::List)
        return DescribeList(type);
    return type.getType() == Type::Union ? DescribeUnion(type) : DescribeAtomic(type);
}

}  // namespace

TypeDescription DescribeType(xercesc::DatatypeValidator& type)
{
    TypeDescription description;
    description.words = Describe(type);
    description.values = CollectValues(type);
    if (description.values.empty() && type.getType() == Type::Boolean)
        description.values = {"true", "false"};
    if (description.values.empty() && type.getType() == Type::Union)
        description.values = FindMemberValues(type);
    if (description.values.size() > MostValues)
        description.values.resize(MostValues);
    return description;
}
