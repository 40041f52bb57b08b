#include "vancorexml/main/parser/XMLComparison.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct ComparisonCase {
    const char* description;
    std::string a;
    std::string b;
};

const ComparisonCase EqualCases[] = {
    {"identical documents", "<a b='1'>x</a>", "<a b='1'>x</a>"},
    {"the order of attributes", "<a b='1' c='2'/>", "<a c='2' b='1'/>"},
    {"the form of tags", "<a></a>", "<a\n/>"},
    {"the quotes of attributes", "<a b='1'/>", "<a b=\"1\"/>"},
    {"the form of references", "<a b='&#60;'>&amp;</a>", "<a b='&lt;'>&#38;</a>"},
    {"references and characters", "<a>&#233;</a>", "<a>\u00E9</a>"},
    {"sections and text", "<a>x<![CDATA[<]]>y</a>", "<a>x&lt;y</a>"},
    {"line ends", "<a b='\r\n'>x\r\ny\rz</a>", "<a b='\n'>x\ny\nz</a>"},
    {"white space between elements", "<a><b/><c/></a>", "<a>\n  <b/> <c/>\n</a>"},
    {"white space beside comments between elements", "<a><!--c--><b/></a>", "<a> <!--c--> <b/> </a>"},
    {"white space outside of the document element", "<!--c--><a/>", "\n<!--c-->\n\n<a/>\n"},
    {"a missing declaration", "<a/>", "<?xml version='1.0'?><a/>"},
    {"the declared encoding",
        "<?xml version='1.0' encoding='latin1'?><a/>",
        "<?xml version='1.0' encoding='utf-8'?><a/>"},
    {"white space in the document type", "<!DOCTYPE  a [ <!ENTITY e 'x'> ]><a/>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>"},
    {"white space between elements beside preserved ones",
        "<a><b xml:space='preserve'> <c/></b></a>",
        "<a> <b xml:space='preserve'> <c/></b> </a>"},
    {"quotes in a text that looks like an attribute",
        "<a>see :x = 'y' > z</a>",
        "<a>see :x = &apos;y&apos; &gt; z</a>"},
    {"attributes that begin with a colon", "<a :c=\"it's > x\" :b='1'/>", "<a :b='1' :c='it&apos;s &gt; x'/>"},
};

const std::string Subset = "<!DOCTYPE a [<!ENTITY e 'x'><!ENTITY f 'x'><!ENTITY g '<b/>'>]>";

const ComparisonCase DifferentCases[] = {
    {"an element's name", "<a/>", "<b/>"},
    {"an element more", "<a><b/></a>", "<a><b/><b/></a>"},
    {"the order of elements", "<a><b/><c/></a>", "<a><c/><b/></a>"},
    {"the level of an element", "<a><b/><c/></a>", "<a><b><c/></b></a>"},
    {"an attribute's name", "<a b='1'/>", "<a c='1'/>"},
    {"an attribute's value", "<a b='1'/>", "<a b='2'/>"},
    {"an attribute more", "<a b='1'/>", "<a b='1' c=''/>"},
    {"two attributes joined", "<a b='c' d='e'/>", "<a b='c d=e'/>"},
    {"white space in a value", "<a b='&#10;'/>", "<a b='\n'/>"},
    {"a text", "<a>x</a>", "<a>y</a>"},
    {"a missing text", "<a>x</a>", "<a/>"},
    {"the place of a text", "<a>x<b/></a>", "<a><b/>x</a>"},
    {"white space at the end of a text", "<a>x</a>", "<a>x </a>"},
    {"white space in mixed content", "<a>x<b/> <b/></a>", "<a>x<b/><b/></a>"},
    {"white space below mixed content", "<a>x<b><c/></b></a>", "<a>x<b> <c/></b></a>"},
    {"white space before the text of mixed content", "<a> <b/>x</a>", "<a><b/>x</a>"},
    {"the white space of a blank element", "<a> </a>", "<a/>"},
    {"the amount of white space in a blank element", "<a> </a>", "<a>  </a>"},
    {"white space beside a comment without elements", "<a> <!--c--></a>", "<a><!--c--></a>"},
    {"white space in a section", "<a><![CDATA[ ]]><b/></a>", "<a><b/></a>"},
    {"white space that is preserved", "<a xml:space='preserve'><b/></a>", "<a xml:space='preserve'> <b/></a>"},
    {"white space below a preserved element",
        "<a xml:space='preserve'><b><c/></b></a>",
        "<a xml:space='preserve'><b> <c/></b></a>"},
    {"white space that is preserved by default",
        "<!DOCTYPE a [<!ATTLIST a xml:space (default|preserve) 'preserve'>]><a><b/></a>",
        "<!DOCTYPE a [<!ATTLIST a xml:space (default|preserve) 'preserve'>]><a> <b/></a>"},
    {"white space beside a reference to an entity", Subset + "<a>&g; </a>", Subset + "<a>&g;</a>"},
    {"a comment", "<a><!--c--></a>", "<a><!--d--></a>"},
    {"a missing comment", "<!--c--><a/>", "<a/>"},
    {"the place of a comment", "<a><!--c--><b/></a>", "<a><b/><!--c--></a>"},
    {"a comment behind the document element", "<a/><!--c-->", "<a/>"},
    {"the data of a processing instruction", "<?p x?><a/>", "<?p y?><a/>"},
    {"the target of a processing instruction", "<?p x?><a/>", "<?q x?><a/>"},
    {"a processing instruction and a comment", "<?p x?><a/>", "<!--p x--><a/>"},
    {"a missing document type", "<!DOCTYPE a><a/>", "<a/>"},
    {"the name of the document type", "<!DOCTYPE a><a/>", "<!DOCTYPE b><a/>"},
    {"a system identifier", "<!DOCTYPE a SYSTEM 'x'><a/>", "<!DOCTYPE a SYSTEM 'y'><a/>"},
    {"an empty system identifier", "<!DOCTYPE a SYSTEM ''><a/>", "<!DOCTYPE a><a/>"},
    {"an empty subset", "<!DOCTYPE a []><a/>", "<!DOCTYPE a><a/>"},
    {"the value of an entity", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>", "<!DOCTYPE a [<!ENTITY e 'y'>]><a/>"},
    {"a parameter entity", "<!DOCTYPE a [<!ENTITY % e 'x'>]><a/>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>"},
    {"the content model of an element", "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a/>", "<!DOCTYPE a [<!ELEMENT a ANY>]><a/>"},
    {"the type of an attribute",
        "<!DOCTYPE a [<!ATTLIST a b CDATA #IMPLIED>]><a/>",
        "<!DOCTYPE a [<!ATTLIST a b NMTOKEN #IMPLIED>]><a/>"},
    {"the default of an attribute",
        "<!DOCTYPE a [<!ATTLIST a b CDATA 'x'>]><a b='1'/>",
        "<!DOCTYPE a [<!ATTLIST a b CDATA 'y'>]><a b='1'/>"},
    {"an empty default of an attribute",
        "<!DOCTYPE a [<!ATTLIST a b CDATA ''>]><a b='1'/>",
        "<!DOCTYPE a [<!ATTLIST a b CDATA #IMPLIED>]><a b='1'/>"},
    {"a notation", "<!DOCTYPE a [<!NOTATION n SYSTEM 'x'>]><a/>", "<!DOCTYPE a [<!NOTATION n SYSTEM 'y'>]><a/>"},
    {"a comment of the document type", "<!DOCTYPE a [<!--c-->]><a/>", "<!DOCTYPE a [<!--d-->]><a/>"},
    {"a replaced reference in a text", Subset + "<a>&e;</a>", Subset + "<a>x</a>"},
    {"another entity in a text", Subset + "<a>&e;</a>", Subset + "<a>&f;</a>"},
    {"a replaced reference in an attribute", Subset + "<a b='&e;'/>", Subset + "<a b='x'/>"},
    {"another entity in an attribute", Subset + "<a b='&e;'/>", Subset + "<a b='&f;'/>"},
    {"a missing reference to an unknown entity",
        "<!DOCTYPE a SYSTEM 's'><a>x&u;</a>",
        "<!DOCTYPE a SYSTEM 's'><a>x</a>"},
    {"another unknown entity", "<!DOCTYPE a SYSTEM 's'><a b='&u;'/>", "<!DOCTYPE a SYSTEM 's'><a b='&v;'/>"},
    {"a fault", "<a/>", "<a>"},
    {"two faults", "<a>", "<a>"},
    {"a NUL behind the document element", "<a/>", std::string("<a/>\0", 5)},
    {"equal documents with a NUL", std::string("<a/>\0", 5), std::string("<a/>\0", 5)},
    {"an incomplete character at the end", "<a/>", "<a/>\xC3"},
};

TEST(XMLComparisonTest, FindsEqualDocumentsEqual)
{
    for (const ComparisonCase& row : EqualCases) {
        EXPECT_TRUE(XMLComparison::AreEqual(row.a, row.b)) << row.description;
        EXPECT_TRUE(XMLComparison::AreEqual(row.b, row.a)) << row.description;
        EXPECT_TRUE(XMLComparison::AreContentsEqual(row.a, row.b)) << row.description;
    }
}

TEST(XMLComparisonTest, FindsEachDifference)
{
    for (const ComparisonCase& row : DifferentCases) {
        EXPECT_FALSE(XMLComparison::AreEqual(row.a, row.b)) << row.description;
        EXPECT_FALSE(XMLComparison::AreEqual(row.b, row.a)) << row.description;
        EXPECT_FALSE(XMLComparison::AreContentsEqual(row.a, row.b)) << row.description;
    }
}

const ComparisonCase DeclarationCases[] = {
    {"the version", "<a/>", "<?xml version='1.1'?><a/>"},
    {"standalone", "<?xml version='1.0' standalone='yes'?><a/>", "<?xml version='1.0' standalone='no'?><a/>"},
    {"a missing standalone", "<?xml version='1.0' standalone='no'?><a/>", "<a/>"},
};

TEST(XMLComparisonTest, ComparesDeclarationsUnlessOnlyContentsCount)
{
    for (const ComparisonCase& row : DeclarationCases) {
        EXPECT_FALSE(XMLComparison::AreEqual(row.a, row.b)) << row.description;
        EXPECT_FALSE(XMLComparison::AreEqual(row.b, row.a)) << row.description;
        EXPECT_TRUE(XMLComparison::AreContentsEqual(row.a, row.b)) << row.description;
    }
}

std::string Repeat(const std::string& text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(XMLComparisonTest, ComparesDeepDocuments)
{
    const std::string deep = Repeat("<a>", 100000) + Repeat("</a>", 100000);
    EXPECT_TRUE(XMLComparison::AreEqual(deep, deep));
    EXPECT_FALSE(XMLComparison::AreEqual(deep, "<a>" + deep + "</a>"));
}

}  // namespace
