#include "vancorexml/main/parser/ValueMisfit.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/validators/schema/SchemaElementDecl.hpp>
#include <xercesc/validators/schema/SchemaGrammar.hpp>

#include "vancorexml/main/parser/TypeDescription.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

struct Row {
    std::string type;  // a name, or the content of an xs:simpleType
    const char* value;
    const char* misfit;  // empty if the words of the type say as much
};

std::string Restriction(const std::string& base, const std::string& facets)
{
    return "<xs:restriction base='" + base + "'>" + facets + "</xs:restriction>";
}

std::string Facet(const std::string& name, const std::string& value)
{
    return "<xs:" + name + " value='" + value + "'/>";
}

// Calls `use` with a type of a schema.
template <typename Use>
void WithType(const std::string& type, const Use& use)
{
    const std::string text = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                             "<xs:simpleType name='size'><xs:restriction base='xs:string'>"
                             "<xs:enumeration value='small'/><xs:enumeration value='large'/></xs:restriction>"
                             "</xs:simpleType><xs:simpleType name='bytes'><xs:list itemType='xs:unsignedByte'/>"
                             "</xs:simpleType>" +
        (type.starts_with('<') ? "<xs:element name='e'><xs:simpleType>" + type + "</xs:simpleType></xs:element>"
                               : "<xs:element name='e' type='" + type + "'/>") +
        "</xs:schema>";
    const XercesInitializer initializer;
    xercesc::XercesDOMParser parser;
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "schema");
    auto* const grammar =
        static_cast<xercesc::SchemaGrammar*>(parser.loadGrammar(source, xercesc::Grammar::SchemaGrammarType, false));
    ASSERT_EQ(parser.getErrorCount(), 0u) << text;
    xercesc::RefHash3KeysIdPoolEnumerator<xercesc::SchemaElementDecl> elements = grammar->getElemEnumerator();
    use(*elements.nextElement().getDatatypeValidator());
}

// Returns the value that the clause proposes at its end, or an empty text.
VString FindProposal(const VString& misfit)
{
    const int start = misfit.indexOf("write '");
    const int proposal = start + 7;
    const bool isAtEnd = start >= 0 && misfit.endsWith("'") && misfit.indexOf(u'\'', proposal) + 1 == misfit.length();
    return isAtEnd ? misfit.mid(proposal, misfit.length() - proposal - 1) : VString();
}

void ExpectMisfits(const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        WithType(row.type, [&](xercesc::DatatypeValidator& type) {
            EXPECT_THROW(type.validate(VString(row.value).utf16()), xercesc::XMLException) << row.type << row.value;
            EXPECT_EQ(DescribeMisfit(type, row.value).toStdString(), row.misfit) << row.type << ": " << row.value;
        });
    }
}

}  // namespace

TEST(ValueMisfitTest, DescribesLengths)
{
    const std::string shortText = Restriction("xs:token", Facet("minLength", "2") + Facet("maxLength", "4"));
    ExpectMisfits({
        {shortText, "abcde", "has 5 characters, but at most 4 are allowed"},
        {shortText, "a", "has 1 character, but at least 2 are needed"},
        {Restriction("xs:string", Facet("maxLength", "1")), "ab", "has 2 characters, but at most 1 is allowed"},
        {Restriction("xs:string", Facet("length", "3")), "ab", "has 2 characters, but exactly 3 are needed"},
        {Restriction("xs:NCName", Facet("maxLength", "2")), "abc", "has 3 characters, but at most 2 are allowed"},
    });
}

TEST(ValueMisfitTest, DescribesNumbers)
{
    const std::string quantity = Restriction("xs:int", Facet("minInclusive", "1") + Facet("maxInclusive", "999"));
    const std::string money = Restriction(
        "xs:decimal", Facet("minInclusive", "0") + Facet("fractionDigits", "2") + Facet("totalDigits", "6"));
    const std::string open = Restriction("xs:double", Facet("minExclusive", "0") + Facet("maxExclusive", "1"));
    ExpectMisfits({
        {quantity, "1000", "is greater than 999, the largest value allowed"},
        {quantity, "0", "is less than 1, the smallest value allowed"},
        {quantity, "99999999999", "is greater than 999, the largest value allowed"},
        {quantity, "2.5", "is not a whole number: digits after the point are not allowed"},
        {quantity, "2.0", "is not a whole number: write '2'"},
        {quantity, "2.000", "is not a whole number: digits after the point are not allowed"},
        {quantity, "2,5", "is not a whole number: digits after a comma are not allowed"},
        {quantity, "two", ""},
        {quantity, "120 s", "is not a whole number: remove 's'"},
        {quantity, "1200 s", ""},
        {quantity, "12k", ""},
        {quantity, "1-2", ""},
        {quantity, "1E2", "is not a whole number: an exponent such as 'E2' is not allowed"},
        {quantity, "0x1F", "is not a whole number: write it without '0x', in decimal digits"},
        {"xs:integer", "1,234,567", "is not a whole number: write '1234567'"},
        {"xs:integer", "1 234", "is not a whole number: write '1234'"},
        {"xs:integer", "1,234", "is not a whole number: write '1234'"},
        {"xs:integer", "\u22125", "is not a whole number: write '-' in place of '\u2212'"},
        {"xs:integer", "- 5", "is not a whole number: remove the blank"},
        {"xs:byte", "200", "is greater than 127, the largest value allowed"},
        {money, "12,50", "is not a number: write '.' in place of ','"},
        {money, "12,500", "is not a number: write '.' before the decimals, and nothing between thousands"},
        {money, "12,5001", ""},
        {money, "1.234,50", "is not a number: write '1234.50'"},
        {money, "1,234.50", "is not a number: write '1234.50'"},
        {money, "\u20AC 12.50", "is not a number: remove '\u20AC'"},
        {money, "12,50 EUR", "is not a number: write '12.50'"},
        {money, "5%", "is not a number: remove '%'"},
        {money, "12.4999", "has 4 digits after the point, but at most 2 are allowed"},
        {money, "12345.67", "has 7 digits, but at most 6 are allowed"},
        {Restriction("xs:decimal", Facet("fractionDigits", "0")),
            "2.5",
            "is not a whole number: digits after the point are not allowed"},
        {Restriction("xs:decimal", Facet("fractionDigits", "0") + Facet("maxInclusive", "9")),
            "10.0",
            "is greater than 9, the largest value allowed"},
        {Restriction("xs:integer", Facet("totalDigits", "2")), "0123", "has 3 digits, but at most 2 are allowed"},
        {money, "-1", "is less than 0, the smallest value allowed"},
        {open, "0", "must be greater than 0"},
        {open, "1.5", "must be less than 1"},
        {open, "1", "must be less than 1"},
        {"xs:double", "Infinity", "is not a number: write 'INF'"},
        {"xs:float", "nan", "is not a number: write 'NaN'"},
    });
}

TEST(ValueMisfitTest, DescribesDatesAndTimes)
{
    const std::string period =
        Restriction("xs:date", Facet("minInclusive", "2020-01-01") + Facet("maxExclusive", "2021-01-01"));
    ExpectMisfits({
        {"xs:date", "2024-02-30", "is not a date: February 2024 has 29 days"},
        {"xs:date", "2023-02-29", "is not a date: February 2023 has 28 days"},
        {"xs:date", "2024-04-31", "is not a date: April has 30 days"},
        {"xs:date", "2024-01-32", "is not a date: January has 31 days"},
        {"xs:date", "2024-01-00", "is not a date: there is no day 00"},
        {"xs:date", "2024-13-01", "is not a date: there is no month 13; write '2024-01-13'"},
        {"xs:date", "2024-13-32", "is not a date: there is no month 13"},
        {"xs:date", "0000-01-01", "is not a date: there is no year 0000"},
        {"xs:date", "01.03.2024", "is not a date: write the year first, such as 2024-03-01"},
        {"xs:date", "1.3.2024", "is not a date: write the year first, such as 2024-03-01"},
        {"xs:date", "31/12/2024", "is not a date: write the year first, such as 2024-12-31"},
        {"xs:date", "12/31/2024", "is not a date: write the year first, such as 2024-12-31"},
        {"xs:date", "01/03/2024", "is not a date: write the year first, such as 2024-03-01 or 2024-01-03"},
        {"xs:date", "2024/03/01", "is not a date: write '2024-03-01'"},
        {"xs:date", "20240301", "is not a date: write '2024-03-01'"},
        {"xs:date", "2024-3-1", "is not a date: write '2024-03-01'"},
        {"xs:date", "202431", ""},
        {"xs:date", "2024-03-15T00:00:00", "has a time, but only a date is allowed: write '2024-03-15'"},
        {"xs:date", "null", ""},
        {period, "2019-12-31", "is before 2020-01-01, the earliest value allowed"},
        {period, "2021-01-01", "must be before 2021-01-01"},
        {period, "01.03.2024", ""},
        {"xs:dateTime", "2024-03-05 09:30:00", "is not a date and time: write 'T' in place of the blank"},
        {"xs:dateTime", "2024-03-05 9:30", "is not a date and time: write '2024-03-05T09:30:00'"},
        {"xs:dateTime", "2024-03-05T09:30", "is not a date and time: write '2024-03-05T09:30:00'"},
        {"xs:dateTime", "2024-03-05T09:30:00+0100", "is not a date and time: write '2024-03-05T09:30:00+01:00'"},
        {"xs:dateTime", "2024-03-05 09:30:00,5 UTC", "is not a date and time: write '2024-03-05T09:30:00.5Z'"},
        {"xs:dateTime", "2024-03-05", "has no time: write for example '2024-03-05T00:00:00'"},
        {"xs:dateTime", "2024-02-30T09:30:00", "is not a date and time: February 2024 has 29 days"},
        {"xs:dateTime", "2024-03-05T25:30:00", "is not a date and time: there is no hour 25"},
        {"xs:dateTime", "soon", ""},
        {"xs:time", "9:30", "is not a time: write '09:30:00'"},
        {"xs:time", "9:30 pm", "is not a time: write '21:30:00'"},
        {"xs:time", "12:00 a.m.", "is not a time: write '00:00:00'"},
        {"xs:time", "09:60:00", "is not a time: there is no minute 60"},
        {"xs:time", "09:30:61", "is not a time: there is no second 61"},
        {Restriction("xs:time", Facet("minInclusive", "10:00:00")),
            "09:30:60",
            "is before 10:00:00, the earliest value allowed"},
        {"xs:time", "09:30:99Z", "is not a time: there is no second 99"},
        {Restriction("xs:duration", Facet("maxInclusive", "P9D")),
            "P10D",
            "is greater than P9D, the largest value allowed"},
    });
}

TEST(ValueMisfitTest, DescribesBooleanAndBinaryValues)
{
    ExpectMisfits({
        {"xs:boolean", "yes", "is not true or false: write 'true'"},
        {"xs:boolean", "True", "is not true or false: write 'true'"},
        {"xs:boolean", "OFF", "is not true or false: write 'false'"},
        {"xs:boolean", "perhaps", ""},
        {Restriction("xs:boolean", Facet("pattern", "[01]")), "true", "is not allowed here: write '1'"},
        {"xs:base64Binary", "iVBORw0KGgo", "is not base64 text: '=' is missing at the end"},
        {"xs:base64Binary", "iVBORw0KGg", "is not base64 text: '==' is missing at the end"},
        {"xs:base64Binary", "iVBORw0KG", "is not base64 text: it has 9 characters, not a multiple of 4"},
        {"xs:base64Binary", "iVBOR w0K G", "is not base64 text: it has 9 characters, not a multiple of 4"},
        {"xs:base64Binary", "iVBOR_0KGg-A", "is not base64 text: write '+' in place of '-', and '/' in place of '_'"},
        {"xs:base64Binary", "iVBO#w0K", "is not base64 text: it must not contain '#'"},
        {"xs:hexBinary", "0FB", "is not hexadecimal: it has 3 digits, not an even number"},
        {"xs:hexBinary", "0x0FB7", "is not hexadecimal: remove '0x'"},
        {"xs:hexBinary", "0G", "is not hexadecimal: it must not contain 'G'"},
        {"xs:hexBinary", "0F B7", "is not hexadecimal: it must not contain a blank"},
    });
}

TEST(ValueMisfitTest, DescribesNamesAndPatterns)
{
    ExpectMisfits({
        {"xs:ID", "2cups", "begins with '2', but must begin with a letter or '_'"},
        {"xs:NCName", "a:b", "must not contain ':'"},
        {"xs:NMTOKEN", "a b", "must not contain a blank"},
        {"xs:NMTOKEN", "a/b/c", "must not contain '/'"},
        {"xs:language", "en_US", "is not the code of a language: write 'en-US'"},
        {Restriction("xs:token", Facet("pattern", "C[0-9]+")), "c12", "has letters in the wrong case: write 'C12'"},
        {Restriction("xs:token", Facet("pattern", "[0-9]{5}")), "12 345", "must not contain blanks: write '12345'"},
        {Restriction("xs:token", Facet("pattern", "[0-9]{5}")), "D-1042", ""},
    });
}

TEST(ValueMisfitTest, DescribesLists)
{
    ExpectMisfits({
        {"bytes", "8, 9", "must be separated by blanks: write '8 9'"},
        {"bytes", "8 300", "contains '300', which is greater than 255, the largest value allowed"},
        {"bytes", "8 nine", "contains 'nine', which is not a whole number from 0 to 255"},
        {"<xs:list itemType='size'/>",
            "small lrge",
            "contains 'lrge', which is not one of small, large; did you mean 'large'?"},
        {Restriction("bytes", Facet("maxLength", "3")), "1 2 3 4", "has 4 values, but at most 3 are allowed"},
        {Restriction("bytes", Facet("minLength", "2")), "1", "has 1 value, but at least 2 are needed"},
        {Restriction("bytes", Facet("length", "1")), "1 2", "has 2 values, but exactly 1 is needed"},
        {Restriction("bytes", Facet("pattern", "1.*")), "2 1", ""},
    });
}

TEST(ValueMisfitTest, DescribesBlanksAndInvisibleCharacters)
{
    ExpectMisfits({
        {"size", "small ", "ends with white space; remove it"},
        {"size", "\nsmall", "begins with white space; remove it"},
        {"size", " small\t", "begins and ends with white space; remove it"},
        {"size", "small\u00A0", "contains the invisible character U+00A0; remove it"},
        {"size", "Small", ""},
        {"<xs:union memberTypes='xs:positiveInteger size'/>", "small ", "ends with white space; remove it"},
        {"<xs:union memberTypes='xs:positiveInteger size'/>",
            "0",
            "is neither a whole number, at least 1, nor one of small, large"},
        {"xs:integer", "5\u200B", "contains the invisible character U+200B; remove it"},
    });
}

TEST(ValueMisfitTest, SaysNothingAboutAllowedValues)
{
    WithType("xs:integer", [](xercesc::DatatypeValidator& type) {
        EXPECT_EQ(DescribeMisfit(type, "5"), "");
        EXPECT_EQ(DescribeMisfit(type, " 5\n"), "");
        EXPECT_EQ(DescribeMisfit(type, ""), "");
    });
}

TEST(ValueMisfitTest, ProposesOnlyAllowedValues)
{
    const std::string types[] = {"xs:boolean",
        "xs:integer",
        "xs:decimal",
        "xs:double",
        "xs:date",
        "xs:dateTime",
        "xs:time",
        "xs:language",
        "bytes",
        Restriction("xs:int", Facet("minInclusive", "10") + Facet("maxInclusive", "99")),
        Restriction("xs:decimal", Facet("fractionDigits", "1") + Facet("maxExclusive", "500")),
        Restriction("xs:date", Facet("minInclusive", "2010-06-01") + Facet("maxInclusive", "2024-06-01")),
        Restriction("xs:token", Facet("pattern", "[A-Z][0-9]{1,3}"))};
    const std::vector<std::string> pieces{"1",
        "0",
        "2",
        "31",
        "2024",
        "01",
        "-",
        "-",
        ".",
        ",",
        ":",
        "/",
        " ",
        "T",
        "Z",
        "e",
        "EUR",
        "\u20AC",
        "%",
        "'",
        "\u00A0",
        "+",
        "yes",
        "a",
        "_",
        "1.5",
        "12:30",
        "2024-02-",
        "10:"};
    std::mt19937 random(1);
    std::size_t proposals = 0;
    for (const std::string& name : types) {
        WithType(name, [&](xercesc::DatatypeValidator& type) {
            for (int i = 0; i < 2000; ++i) {
                std::string value;
                for (auto count = 1 + random() % 5; count > 0; --count)
                    value += pieces[random() % pieces.size()];
                const VString proposal = FindProposal(DescribeMisfit(type, VString::fromStdString(value)));
                if (proposal.IsEmpty())
                    continue;
                ++proposals;
                EXPECT_NO_THROW(type.validate(proposal.utf16())) << name << ": " << value << ": " << proposal;
            }
        });
    }
    EXPECT_GT(proposals, 50u);
}
