#include "vancorexml/main/parser/XMLReferences.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using XMLReferences::Place;

struct DecodeCase {
    const char* description;
    std::string raw;
    std::string text;
    std::string attribute;
};

const DecodeCase DecodeCases[] = {
    {"nothing", "", "", ""},
    {"plain text", "abc \u00E9", "abc \u00E9", "abc \u00E9"},
    {"predefined references", "&lt;&gt;&amp;&apos;&quot;", "<>&'\"", "<>&'\""},
    {"decimal reference", "&#65;&#0065;", "AA", "AA"},
    {"hexadecimal reference", "&#x41;&#x00e9;&#xE9;", "A\u00E9\u00E9", "A\u00E9\u00E9"},
    {"references of each UTF-8 length",
        "&#x7F;&#x80;&#x7FF;&#x800;&#xFFFD;&#x10000;&#x10FFFF;",
        "\u007F\u0080\u07FF\u0800\uFFFD\U00010000\U0010FFFF",
        "\u007F\u0080\u07FF\u0800\uFFFD\U00010000\U0010FFFF"},
    {"entity", "a&e;b&lt;", "a&e;b<", "a&e;b<"},
    {"entity whose name begins like a predefined one", "&lte;&ampl;", "&lte;&ampl;", "&lte;&ampl;"},
    {"decoded only once", "&amp;lt;&#38;lt;&#38;#60;", "&lt;&lt;&#60;", "&lt;&lt;&#60;"},
    {"line feed", "a\nb", "a\nb", "a b"},
    {"carriage return and line feed", "a\r\nb", "a\nb", "a b"},
    {"lone carriage return", "a\rb\r\rc", "a\nb\n\nc", "a b  c"},
    {"tab", "\ta\t", "\ta\t", " a "},
    {"references to white space", "&#9;&#10;&#13;&#32;", "\t\n\r ", "\t\n\r "},
    {"reference to a carriage return before a line feed", "&#13;\n", "\r\n", "\r "},
};

TEST(XMLReferencesTest, DecodesAsAParserDoes)
{
    for (const DecodeCase& row : DecodeCases) {
        SCOPED_TRACE(row.description);
        EXPECT_EQ(XMLReferences::Decode(row.raw), row.text);
        EXPECT_EQ(XMLReferences::Decode(row.raw, Place::Attribute), row.attribute);
    }
}

TEST(XMLReferencesTest, FindsTheFirstReferenceToAnEntity)
{
    EXPECT_EQ(XMLReferences::FindEntity("&e;"), 0u);
    EXPECT_EQ(XMLReferences::FindEntity("ab&lt;&#10;&x.y;&z;"), 11u);
    EXPECT_EQ(XMLReferences::FindEntity("&LT;"), 0u);
    EXPECT_EQ(XMLReferences::FindEntity("&lt;&gt;&amp;&apos;&quot;&#1;&#x1;"), std::string_view::npos);
    EXPECT_EQ(XMLReferences::FindEntity(""), std::string_view::npos);
}

TEST(XMLReferencesTest, TreatsReferencesToWhiteSpaceAsBlank)
{
    EXPECT_TRUE(XMLReferences::IsBlank(""));
    EXPECT_TRUE(XMLReferences::IsBlank(" \t\r\n"));
    EXPECT_TRUE(XMLReferences::IsBlank("&#32;&#x9;&#10;&#xD;"));
    EXPECT_FALSE(XMLReferences::IsBlank(" x "));
    EXPECT_FALSE(XMLReferences::IsBlank("&#160;"));
    EXPECT_FALSE(XMLReferences::IsBlank("\u0085"));
    EXPECT_FALSE(XMLReferences::IsBlank("&e;"));
}

TEST(XMLReferencesTest, FindsReferencesBeyondAscii)
{
    EXPECT_FALSE(XMLReferences::HasNonAscii("\u00E9&#127;&#x7F;&lt;&e;"));
    EXPECT_TRUE(XMLReferences::HasNonAscii("&#128;"));
    EXPECT_TRUE(XMLReferences::HasNonAscii("x&lt;&#x1F600;"));
}

TEST(XMLReferencesTest, ReadsOpenReferencesWithinTheText)
{
    for (const char* text : {"&", "a&", "&l", "&lt", "&#", "&#x", "&;", "&#;", "&#x;", "&#99999999999;"}) {
        SCOPED_TRACE(text);
        XMLReferences::FindEntity(text);
        XMLReferences::HasNonAscii(text);
        EXPECT_LE(XMLReferences::Decode(text).size(), std::string_view(text).size() + 4);
    }
}

}  // namespace
