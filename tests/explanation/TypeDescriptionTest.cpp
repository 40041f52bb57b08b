#include "vancorexml/main/parser/TypeDescription.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/schema/SchemaElementDecl.hpp>
#include <xercesc/validators/schema/SchemaGrammar.hpp>

#include "vancorexml/main/parser/PatternExample.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

// Types that the rows refer to.
const std::string namedTypes =
    "<xs:simpleType name='sku'><xs:restriction base='xs:string'>"
    "<xs:pattern value='[A-Z]{2}[0-9]{4}'/></xs:restriction></xs:simpleType>"
    "<xs:simpleType name='odd'><xs:restriction base='xs:string'>"
    "<xs:pattern value='[a-z-[aeiou]]+'/></xs:restriction></xs:simpleType>"
    "<xs:simpleType name='status'><xs:restriction base='xs:string'><xs:enumeration value='open'/>"
    "<xs:enumeration value='closed'/><xs:enumeration value='in work'/></xs:restriction></xs:simpleType>"
    "<xs:simpleType name='size'><xs:restriction base='xs:token'><xs:enumeration value='small'/>"
    "<xs:enumeration value='large'/></xs:restriction></xs:simpleType>"
    "<xs:simpleType name='percent'><xs:restriction base='xs:integer'><xs:minInclusive value='0'/>"
    "<xs:maxInclusive value='100'/></xs:restriction></xs:simpleType>"
    "<xs:simpleType name='percents'><xs:list itemType='percent'/></xs:simpleType>"
    "<xs:simpleType name='u1'><xs:union memberTypes='percent size'/></xs:simpleType>"
    "<xs:simpleType name='u2'><xs:union memberTypes='u1 xs:date'/></xs:simpleType>"
    "<xs:simpleType name='u3'><xs:union memberTypes='u2 xs:time'/></xs:simpleType>"
    "<xs:simpleType name='u4'><xs:union memberTypes='u3 xs:gYear'/></xs:simpleType>"
    "<xs:simpleType name='u5'><xs:union memberTypes='u4 xs:gDay'/></xs:simpleType>";

// Returns the description of a type: a name, or the content of an xs:simpleType. `types` are further named types.
TypeDescription DescribeText(const std::string& type, const std::string& types = "")
{
    const bool isName = !type.starts_with('<');
    const std::string text = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + namedTypes + types +
        (isName ? "<xs:element name='e' type='" + type + "'/>"
                : "<xs:element name='e'><xs:simpleType>" + type + "</xs:simpleType></xs:element>") +
        "</xs:schema>";
    const XercesInitializer initializer;
    xercesc::XercesDOMParser parser;
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "schema");
    auto* const grammar =
        static_cast<xercesc::SchemaGrammar*>(parser.loadGrammar(source, xercesc::Grammar::SchemaGrammarType, false));
    EXPECT_EQ(parser.getErrorCount(), 0u) << text;
    xercesc::RefHash3KeysIdPoolEnumerator<xercesc::SchemaElementDecl> elements = grammar->getElemEnumerator();
    return DescribeType(*elements.nextElement().getDatatypeValidator());
}

std::string DescribeAsText(const std::string& type)
{
    const TypeDescription description = DescribeText(type);
    return (description.words + (description.values.empty() ? "" : " | ") + VString::join(description.values, ","))
        .toStdString();
}

std::string Restriction(const std::string& base, const std::string& facets)
{
    return "<xs:restriction base='" + base + "'>" + facets + "</xs:restriction>";
}

struct Row {
    std::string type;
    const char* description;  // the words, and the values behind "|"
};

void ExpectDescriptions(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(DescribeAsText(row.type), row.description) << row.type;
}

}  // namespace

TEST(TypeDescriptionTest, DescribesTheTypesOfXmlSchema)
{
    ExpectDescriptions({
        {"xs:anySimpleType", "any text"},
        {"xs:string", "a text"},
        {"xs:normalizedString", "a text"},
        {"xs:token", "a text"},
        {"xs:language", "the code of a language such as en-US"},
        {"xs:Name", "a name such as item1"},
        {"xs:NCName", "a name without a colon such as item1"},
        {"xs:NMTOKEN", "a word of letters, digits and '-._:' such as item-1"},
        {"xs:NMTOKENS",
            "one or more values separated by blanks, each a word of letters, "
            "digits and '-._:' such as item-1"},
        {"xs:ID", "an identifier such as item1"},
        {"xs:IDREF", "the identifier of an element such as item1"},
        {"xs:IDREFS",
            "one or more values separated by blanks, each the identifier of "
            "an element such as item1"},
        {"xs:ENTITY", "the name of an unparsed entity"},
        {"xs:ENTITIES",
            "one or more values separated by blanks, each the name of an unparsed "
            "entity"},
        {"xs:QName", "a name such as x:item1"},
        {"xs:anyURI", "an address such as http://www.example.org/"},
        {"xs:boolean", "true or false | true,false"},
        {"xs:decimal", "a number such as 3.14"},
        {"xs:integer", "a whole number"},
        {"xs:positiveInteger", "a whole number, at least 1"},
        {"xs:nonNegativeInteger", "a whole number, at least 0"},
        {"xs:negativeInteger", "a whole number, at most -1"},
        {"xs:nonPositiveInteger", "a whole number, at most 0"},
        {"xs:long", "a whole number from -9223372036854775808 to 9223372036854775807"},
        {"xs:int", "a whole number from -2147483648 to 2147483647"},
        {"xs:short", "a whole number from -32768 to 32767"},
        {"xs:byte", "a whole number from -128 to 127"},
        {"xs:unsignedLong", "a whole number from 0 to 18446744073709551615"},
        {"xs:unsignedInt", "a whole number from 0 to 4294967295"},
        {"xs:unsignedShort", "a whole number from 0 to 65535"},
        {"xs:unsignedByte", "a whole number from 0 to 255"},
        {"xs:float", "a number such as 3.14"},
        {"xs:double", "a number such as 3.14"},
        {"xs:date", "a date such as 2024-01-31"},
        {"xs:dateTime", "a date and time such as 2024-01-31T12:30:00"},
        {"xs:time", "a time such as 12:30:00"},
        {"xs:duration", "a duration such as P1DT2H30M"},
        {"xs:gYear", "a year such as 2024"},
        {"xs:gYearMonth", "a year and month such as 2024-01"},
        {"xs:gMonth", "a month such as --01"},
        {"xs:gMonthDay", "a month and day such as --01-31"},
        {"xs:gDay", "a day of the month such as ---31"},
        {"xs:hexBinary", "pairs of hexadecimal digits such as 0FB7"},
        {"xs:base64Binary", "base64 text such as SGVsbG8="},
    });
}

TEST(TypeDescriptionTest, DescribesBounds)
{
    ExpectDescriptions({
        {Restriction("xs:integer", "<xs:minInclusive value='1'/><xs:maxInclusive value='10'/>"),
            "a whole number from 1 to 10"},
        {Restriction("xs:int", "<xs:minInclusive value='1'/>"), "a whole number from 1 to 2147483647"},
        {Restriction("percent", "<xs:minExclusive value='50'/>"), "a whole number greater than 50 and at most 100"},
        {Restriction("xs:decimal", "<xs:minExclusive value='0'/>"), "a number greater than 0"},
        {Restriction("xs:decimal", "<xs:minInclusive value='0'/><xs:maxExclusive value='1'/>"),
            "a number, at least 0 and less than 1"},
        {Restriction("xs:decimal", "<xs:maxInclusive value='99.5'/>"), "a number, at most 99.5"},
        {Restriction("xs:double", "<xs:maxExclusive value='1E6'/>"), "a number less than 1E6"},
        {Restriction("xs:date", "<xs:minInclusive value='2020-01-01'/><xs:maxInclusive value='2020-12-31'/>"),
            "a date from 2020-01-01 to 2020-12-31"},
        {Restriction("xs:date", "<xs:minInclusive value='2020-01-01'/>"), "a date from 2020-01-01 on"},
        {Restriction("xs:dateTime", "<xs:minExclusive value='2020-01-01T00:00:00'/>"),
            "a date and time after 2020-01-01T00:00:00"},
        {Restriction("xs:time", "<xs:maxExclusive value='12:00:00'/>"), "a time before 12:00:00"},
        {Restriction("xs:gYear", "<xs:maxInclusive value='1999'/>"), "a year up to 1999"},
        {Restriction("xs:duration", "<xs:minExclusive value='P1D'/><xs:maxInclusive value='P9D'/>"),
            "a duration after P1D and up to P9D"},
    });
}

TEST(TypeDescriptionTest, DescribesDigits)
{
    ExpectDescriptions({
        {Restriction("xs:decimal", "<xs:totalDigits value='5'/>"), "a number with at most 5 digits, such as 3.14"},
        {Restriction("xs:decimal", "<xs:fractionDigits value='1'/>"), "a number with at most 1 digit after the point"},
        {Restriction("xs:decimal", "<xs:fractionDigits value='0'/>"), "a whole number"},
        {Restriction("xs:decimal",
             "<xs:totalDigits value='5'/><xs:fractionDigits value='2'/><xs:minInclusive "
             "value='0'/>"),
            "a number with at most 5 digits, at most 2 of them after the point, "
            "at least 0"},
        {Restriction("xs:integer", "<xs:totalDigits value='1'/>"), "a whole number with at most 1 digit"},
    });
}

TEST(TypeDescriptionTest, DescribesLengths)
{
    ExpectDescriptions({
        {Restriction("xs:string", "<xs:maxLength value='10'/>"), "a text of at most 10 characters"},
        {Restriction("xs:string", "<xs:maxLength value='1'/>"), "a text of at most 1 character"},
        {Restriction("xs:string", "<xs:minLength value='1'/>"), "a text that is not empty"},
        {Restriction("xs:string", "<xs:minLength value='0'/>"), "a text"},
        {Restriction("xs:string", "<xs:minLength value='2'/>"), "a text of at least 2 characters"},
        {Restriction("xs:string", "<xs:minLength value='2'/><xs:maxLength value='5'/>"), "a text of 2 to 5 characters"},
        {Restriction("xs:string", "<xs:minLength value='3'/><xs:maxLength value='3'/>"),
            "a text of exactly 3 characters"},
        {Restriction("xs:token", "<xs:length value='4'/>"), "a text of exactly 4 characters"},
        {Restriction("xs:hexBinary", "<xs:length value='1'/>"), "pairs of hexadecimal digits of exactly 1 byte"},
        {Restriction("xs:base64Binary", "<xs:maxLength value='8'/>"),
            "base64 text of at most 8 bytes, such as SGVsbG8="},
        {Restriction("xs:anyURI", "<xs:maxLength value='10'/>"), "an address of at most 10 characters"},
        {Restriction("xs:anyURI", "<xs:maxLength value='100'/>"),
            "an address of at most 100 characters, such as http://www.example.org/"},
        {Restriction("xs:NMTOKENS", "<xs:maxLength value='2'/>"),
            "1 to 2 values separated by blanks, each a word of letters, digits "
            "and '-._:' such as item-1"},
    });
}

TEST(TypeDescriptionTest, DescribesEnumerations)
{
    ExpectDescriptions({
        {"status", "one of 'open', 'closed', 'in work' | open,closed,in work"},
        {"size", "one of small, large | small,large"},
        {Restriction("status", "<xs:enumeration value='open'/>"), "the value open | open"},
        {Restriction("status", "<xs:maxLength value='6'/>"), "one of open, closed | open,closed"},
        {Restriction("status", "<xs:pattern value='.*e.*'/>"), "one of open, closed | open,closed"},
        {Restriction("xs:string", "<xs:enumeration value=''/><xs:enumeration value='a'/>"), "one of '', 'a' | ,a"},
        {Restriction("xs:string", "<xs:enumeration value='a,b'/><xs:enumeration value='c'/>"),
            "one of 'a,b', 'c' | a,b,c"},
        {Restriction("xs:integer", "<xs:enumeration value='1'/><xs:enumeration value='2'/>"), "one of 1, 2 | 1,2"},
        {Restriction("percent", "<xs:enumeration value='50'/>"), "the value 50 | 50"},
        {Restriction("xs:date", "<xs:enumeration value='2024-01-31'/><xs:enumeration value='2024-02-29'/>"),
            "one of 2024-01-31, 2024-02-29 | 2024-01-31,2024-02-29"},
        {Restriction("xs:string",
             "<xs:enumeration value='a1'/><xs:enumeration value='a2'/><xs:enumeration "
             "value='a3'/><xs:enumeration value='a4'/><xs:enumeration value='a5'/>"
             "<xs:enumeration value='a6'/><xs:enumeration value='a7'/><xs:enumeration "
             "value='a8'/><xs:enumeration value='a9'/><xs:enumeration value='a10'/>"
             "<xs:enumeration value='a11'/><xs:enumeration value='a12'/>"),
            "one of a1, a2, a3, a4, a5, a6, a7, a8, a9, a10 and 2 more | a1,a2,a3,a4,a5,a6,a7,a8,a9,a10,"
            "a11,a12"},
        {Restriction("xs:string", "<xs:enumeration value='a-value-that-is-longer-than-forty-characters'/>"),
            "the value a-value-that-is-longer-than-forty-charac… | a-value-that-is-longer-than-forty-c"
            "haracters"},
        {Restriction("xs:string", "<xs:enumeration value='a-value-of-39-units-in-front-of-a-smile\U0001F600'/>"),
            "the value a-value-of-39-units-in-front-of-a-smile… | a-value-of-39-units-in-front-of-a-smile\U0001F600"},
        {Restriction("xs:boolean", "<xs:pattern value='true|false'/>"), "one of true, false | true,false"},
        {Restriction("xs:boolean", "<xs:pattern value='[01]'/>"), "one of 0, 1 | 0,1"},
    });
}

TEST(TypeDescriptionTest, DescribesLists)
{
    ExpectDescriptions({
        {"percents",
            "a list of values separated by blanks, each a whole number from "
            "0 to 100"},
        {"<xs:list itemType='xs:date'/>", "a list of values separated by blanks, each a date such as 2024-01-31"},
        {"<xs:list itemType='size'/>", "a list of values separated by blanks, each one of small, large"},
        {"<xs:list itemType='xs:boolean'/>", "a list of values separated by blanks, each true or false"},
        {"<xs:list itemType='u1'/>",
            "a list of values separated by blanks, each either a whole number "
            "from 0 to 100 or one of small, large"},
        {"<xs:list><xs:simpleType><xs:restriction base='xs:string'><xs:maxLength "
         "value='3'/><xs:pattern value='[a-z]+'/></xs:restriction></xs:simpleType>"
         "</xs:list>",
            "a list of values separated by blanks, each a text of at most "
            "3 characters, such as a (pattern [a-z]+)"},
        {Restriction("percents", "<xs:length value='3'/>"),
            "exactly 3 values separated by blanks, each a whole number from "
            "0 to 100"},
        {Restriction("percents", "<xs:minLength value='1'/>"),
            "one or more values separated by blanks, each a whole number from "
            "0 to 100"},
        {Restriction("percents", "<xs:minLength value='2'/>"),
            "at least 2 values separated by blanks, each a whole number from "
            "0 to 100"},
        {Restriction("percents", "<xs:maxLength value='1'/>"),
            "at most 1 value separated by blanks, each a whole number from "
            "0 to 100"},
        {Restriction("percents", "<xs:minLength value='2'/><xs:maxLength value='4'/>"),
            "2 to 4 values separated by blanks, each a whole number from 0 "
            "to 100"},
        {Restriction("percents", "<xs:pattern value='1 .*'/>"),
            "a list of values separated by blanks, each a whole number from "
            "0 to 100; the whole list matches the pattern 1 .* (type 'percents')"},
        {Restriction("percents", "<xs:enumeration value='1 2'/><xs:enumeration value='3'/>"),
            "one of '1 2', '3' | 1 2,3"},
    });
}

TEST(TypeDescriptionTest, DescribesUnions)
{
    ExpectDescriptions({
        {"u1", "either a whole number from 0 to 100 or one of small, large | small,large"},
        {"<xs:union memberTypes='xs:date xs:dateTime xs:gYear'/>",
            "either a date such as 2024-01-31, a date and time such as 2024-01-31T12:30:00 "
            "or a year such as 2024"},
        {"<xs:union memberTypes='xs:string xs:token'/>", "a text"},
        {"<xs:union memberTypes='status size'/>",
            "one of 'open', 'closed', 'in work', 'small', 'large' | open,closed,in "
            "work,small,large"},
        {"<xs:union memberTypes='size size'/>", "one of small, large | small,large"},
        {"<xs:union memberTypes='xs:integer'><xs:simpleType><xs:restriction "
         "base='xs:string'><xs:enumeration value='auto'/></xs:restriction>"
         "</xs:simpleType></xs:union>",
            "either a whole number or the value auto | auto"},
        {"<xs:union memberTypes='percents size'/>",
            "either a list of values separated by blanks, each a whole number "
            "from 0 to 100 or one of small, large | small,large"},
        {Restriction("u1", "<xs:enumeration value='7'/><xs:enumeration value='large'/>"), "one of 7, large | 7,large"},
        {Restriction("u1", "<xs:pattern value='[0-9]'/>"),
            "either a whole number from 0 to 100 or one of small, large; the "
            "value matches the pattern [0-9] (type 'u1')"},
        {"u5",
            "either a whole number from 0 to 100, one of small, large, a date "
            "such as 2024-01-31, a time such as 12:30:00, a year such as 2024 "
            "or a day of the month such as ---31 | small,large"},
        {"<xs:union memberTypes='xs:date xs:time xs:gYear xs:gMonth xs:gDay "
         "xs:gYearMonth xs:gMonthDay xs:duration xs:boolean xs:integer "
         "xs:QName xs:anyURI'/>",
            "either a date such as 2024-01-31, a time such as 12:30:00, a "
            "year such as 2024, a month such as --01, a day of the month such "
            "as ---31, a year and month such as 2024-01, a month and day such "
            "as --01-31, a duration such as P1DT2H30M, true or false, a whole "
            "number or a value of another type"},
        {Restriction("u5", "<xs:pattern value='[0-9:]+'/>"),
            "either a whole number from 0 to 100, one of small, large, a date "
            "such as 2024-01-31, a time such as 12:30:00, a year such as 2024 "
            "or a day of the month such as ---31; the value matches the pattern "
            "[0-9:]+ (type 'u5')"},
    });
}

TEST(TypeDescriptionTest, DescribesPatterns)
{
    ExpectDescriptions({
        {"sku", "a text such as AA0000 (type 'sku', pattern [A-Z]{2}[0-9]{4})"},
        {"odd", "a text that matches the pattern [a-z-[aeiou]]+ (type 'odd')"},
        {Restriction("xs:string", "<xs:pattern value='[A-Z]{2}[0-9]{4}'/>"),
            "a text such as AA0000 (pattern [A-Z]{2}[0-9]{4})"},
        {Restriction("xs:string", "<xs:pattern value='\\d{3}-\\d{4}'/>"),
            "a text such as 000-0000 (pattern \\d{3}-\\d{4})"},
        {Restriction("xs:string", "<xs:pattern value='#[0-9a-fA-F]{6}'/>"),
            "a text such as #000000 (pattern #[0-9a-fA-F]{6})"},
        {Restriction("xs:string", "<xs:pattern value='\\w+@\\w+\\.\\w+'/>"),
            "a text such as a@a.a (pattern \\w+@\\w+\\.\\w+)"},
        {Restriction("xs:string", "<xs:pattern value='a|b'/>"), "a text such as a (pattern a|b)"},
        {Restriction("xs:string", "<xs:pattern value='a'/><xs:pattern value='b'/>"), "a text such as a (pattern a|b)"},
        {Restriction("xs:string", "<xs:pattern value='(ab|cd){2}(x?|y*)'/>"),
            "a text such as abab (pattern (ab|cd){2}(x?|y*))"},
        {Restriction("xs:string", "<xs:pattern value='[^0-9a]\\p{Lu}\\p{Nd}'/>"),
            "a text such as AA0 (pattern [^0-9a]\\p{Lu}\\p{Nd})"},
        {Restriction("xs:string", "<xs:pattern value='\\i\\c*'/>"), "a text such as a (pattern \\i\\c*)"},
        {Restriction("xs:string", "<xs:pattern value='[0-9]*'/>"), "a text such as 0 (pattern [0-9]*)"},
        {Restriction("xs:string", "<xs:pattern value='\\P{L}+'/>"), "a text that matches the pattern \\P{L}+"},
        {Restriction("xs:string", "<xs:pattern value='[A-Z]+'/><xs:minLength value='3'/>"),
            "a text of at least 3 characters, such as AAA (pattern [A-Z]+)"},
        {Restriction("xs:string", "<xs:pattern value='[A-Z]{1,5}'/><xs:length value='2'/>"),
            "a text of exactly 2 characters, such as AA (pattern [A-Z]{1,5})"},
        {Restriction("xs:string", "<xs:pattern value='[A-Z]+'/><xs:minLength value='1'/>"),
            "a text that is not empty, such as A (pattern [A-Z]+)"},
        {Restriction("xs:string", "<xs:pattern value='[A-Z]+'/><xs:minLength value='9'/>"),
            "a text of at least 9 characters that matches the pattern [A-Z]+"},
        {Restriction("xs:string", "<xs:pattern value='[a-z]{500}'/>"), "a text that matches the pattern [a-z]{500}"},
        {Restriction("xs:string",
             "<xs:pattern value='012345678901234567890123456789012345678901234567890123456789012345678901"
             "2345678901234567890123456789x'/>"),
            "a text that matches the pattern 01234567890123456789012345678901234567890123456789012345678"
            "901234567890123456789012345678901…"},
        {Restriction("xs:string",
             "<xs:pattern value='a(b|c|d|e|f|g|h|i|j|k|l|m|n|o|p|q|r|s|t|u|v|w|x|y|z|aa|bb|cc|dd|ee|ff|gg"
             "|hh|ii|jj|kk|ll|mm|nn|oo|pp)'/>"),
            "a text such as ab"},
        {Restriction("sku", "<xs:pattern value='A.*'/>"),
            "a text such as AA0000 (type 'sku', patterns A.* and [A-Z]{2}[0-9]{4})"},
        {Restriction("sku", "<xs:maxLength value='20'/>"),
            "a text of at most 20 characters, such as AA0000 (type 'sku', "
            "pattern [A-Z]{2}[0-9]{4})"},
        {Restriction("xs:integer", "<xs:pattern value='[1-9][0-9]'/>"),
            "a whole number such as 10 (pattern [1-9][0-9])"},
        {Restriction("xs:decimal", "<xs:pattern value='\\d\\.\\d\\d'/>"),
            "a number such as 3.14 (pattern \\d\\.\\d\\d)"},
        {Restriction("xs:date", "<xs:pattern value='2024-.*'/>"), "a date such as 2024-01-31 (pattern 2024-.*)"},
        {Restriction("xs:date", "<xs:pattern value='.*Z'/>"), "a date that matches the pattern .*Z"},
        {Restriction("xs:anyURI", "<xs:pattern value='https?://.*'/>"),
            "an address such as http://www.example.org/ (pattern https?://.*)"},
        {Restriction("xs:NCName", "<xs:pattern value='[a-z]+'/>"), "a name without a colon such as a (pattern [a-z]+)"},
    });
}

TEST(TypeDescriptionTest, ListsAtMostAHundredValues)
{
    std::string values;
    for (int i = 0; i < 3000; ++i)
        values += "<xs:enumeration value='v" + std::to_string(i) + "'/>";
    const TypeDescription description = DescribeText(Restriction("xs:string", values));
    EXPECT_EQ(description.words, "one of v0, v1, v2, v3, v4, v5, v6, v7, v8, v9 and 2990 more");
    EXPECT_EQ(description.values.size(), 100u);
    EXPECT_EQ(description.values.back(), "v99");
}

// Each union contains the one before twice, so the number of paths doubles with each.
TEST(TypeDescriptionTest, DescribesEachMemberOfNestedUnionsOnce)
{
    std::string types = "<xs:simpleType name='v0'><xs:union memberTypes='percent size'/></xs:simpleType>";
    for (int i = 1; i <= 60; ++i) {
        const std::string before = "v" + std::to_string(i - 1);
        types += "<xs:simpleType name='v" + std::to_string(i) + "'><xs:union memberTypes='" + before + " " + before +
            "'/></xs:simpleType>";
    }
    EXPECT_EQ(DescribeText("v60", types).words, "either a whole number from 0 to 100 or one of small, large");
}

TEST(TypeDescriptionTest, MakesNoExampleForPatternsThatItDoesNotUnderstand)
{
    for (const char16_t* const pattern : {u"(",
             u")",
             u"(a",
             u"a)",
             u"[",
             u"[]",
             u"[a",
             u"[a-",
             u"[^",
             u"*",
             u"+a",
             u"?",
             u"{2}",
             u"a{",
             u"a{2",
             u"a{,2}",
             u"a{x}",
             u"}",
             u"]",
             u"\\",
             u"\\p",
             u"\\p{",
             u"\\p{L",
             u"\\p{Sc}",
             u"\\1",
             u"\\b",
             u"[a-z-[b]]",
             u"[[a]]",
             u"[^aA0-]",
             u"a{61}",
             u"(a{8}){8}",
             u"a{99999999999999999999}"})
        EXPECT_FALSE(MakePatternExample(pattern, 1)) << VString(pattern);
}

TEST(TypeDescriptionTest, MakesExamplesOfNestedGroups)
{
    const auto nest = [](std::size_t depth) {
        return std::u16string(depth, u'(') + u"a" + std::u16string(depth, u')');
    };
    EXPECT_EQ(MakePatternExample(nest(20), 1), u"a");
    EXPECT_EQ(MakePatternExample(nest(21), 1), std::nullopt);
    EXPECT_EQ(MakePatternExample(nest(1000000), 1), std::nullopt);
}
