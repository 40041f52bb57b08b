// Values that are long, for patterns that Xerces matches recursively or in quadratic time.

#include <memory>
#include <string>

#include "tests/common/TestSupport.h"
#if !defined(_WIN32)
#  include "tests/common/ThreadStack.h"
#endif
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

// In bytes. Threads on Windows have it by default.
[[maybe_unused]] constexpr std::size_t SmallStack = 1024 * 1024;

std::string Repeat(const std::string& piece, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

// Returns a schema with the root element <r>, which has the content or attribute, and a type "t" with the pattern.
std::string SchemaOf(const std::string& pattern, const std::string& root)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:simpleType name='t'><xs:restriction "
           "base='xs:string'><xs:pattern value='" +
        pattern + "'/></xs:restriction></xs:simpleType>" + root + "</xs:schema>";
}

std::unique_ptr<DOM> Validate(const std::string& schema, const std::string& document)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(schema, "s.xsd", false));
    return parser.ParseXmlString(document, "id");
}

std::unique_ptr<DOM> ValidateText(const std::string& pattern, const std::string& value)
{
    return Validate(SchemaOf(pattern, "<xs:element name='r' type='t'/>"), "<r>" + value + "</r>");
}

// A long value that matches a pattern.
struct LongValue {
    std::string Get() const { return start + Repeat(piece, 1000000 / piece.size()) + end; }

    std::string pattern;
    std::string start;
    std::string piece;  // comes many times
    std::string end;
};

const LongValue LongValues[] = {
    {"(a|b|cd)*x", "", "abcd", "x"},
    {"(a?b)*x", "", "ab", "x"},
    {"((a|b)+,?)*x", "", "ab,", "x"},
    {"([a-z]|[0-9]|ab)*x", "", "a1", "x"},
    {"(a*|b)*x", "", "ab", "x"},
    {"0*18\\.0*1(\\.0+)*(-.*)?", "18.1", ".0", "-x"},
    {"(ab)*", "", "ab", ""},
};

TEST(LongValuesTest, AMillionCharactersMatch)
{
    for (const LongValue& row : LongValues) {
        SCOPED_TRACE(row.pattern);
        const testsupport::CpuTimeLimit limit(20);
        const std::unique_ptr<DOM> document = ValidateText(row.pattern, row.Get());
        EXPECT_FALSE(document->HasErrors()) << document->GetErrors().front().left(200);
    }
}

TEST(LongValuesTest, AMillionCharactersThatDoNotMatchAreAnError)
{
    for (const LongValue& row : LongValues) {
        SCOPED_TRACE(row.pattern);
        const testsupport::CpuTimeLimit limit(20);
        const std::unique_ptr<DOM> document = ValidateText(row.pattern, row.Get() + "\n");
        ASSERT_EQ(document->GetErrors().size(), 1u);
        // Xerces cuts the message behind a part of the value.
        EXPECT_TRUE(document->GetErrors().front().startsWith("Error(2,"));
    }
}

#if !defined(_WIN32)

TEST(LongValuesTest, AMillionCharactersNeedLittleStack)
{
    testsupport::RunWithStack(SmallStack, [] {
        for (const LongValue& row : LongValues) {
            SCOPED_TRACE(row.pattern);
            EXPECT_FALSE(ValidateText(row.pattern, row.Get())->HasErrors());
            EXPECT_TRUE(ValidateText(row.pattern, row.Get() + "\n")->HasErrors());
        }
    });
}

// Its automaton would have millions of states, so Xerces matches it with its own program, recursively.
const std::string LargePattern = "(a|b|cd)*a(a|b){20}x";

// A place of a schema that has a value of type "t".
struct Place {
    const char* name;
    std::string declarations;
    std::string start;  // of a document, up to the value
    std::string end;
};

const Place Places[] = {
    {"element", "<xs:element name='r' type='t'/>", "<r>", "</r>"},
    {"attribute",
        "<xs:element name='r'><xs:complexType><xs:attribute name='k' type='t'/></xs:complexType></xs:element>",
        "<r k='",
        "'/>"},
    {"item", "<xs:element name='r'><xs:simpleType><xs:list itemType='t'/></xs:simpleType></xs:element>", "<r>", "</r>"},
    {"member",
        "<xs:element name='r'><xs:simpleType><xs:union memberTypes='xs:int t'/></xs:simpleType></xs:element>",
        "<r>",
        "</r>"},
    {"derived",
        "<xs:element name='r'><xs:simpleType><xs:restriction base='t'><xs:minLength value='1'/></xs:restriction>"
        "</xs:simpleType></xs:element>",
        "<r>",
        "</r>"},
    {"key",
        "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='e' type='t'/></xs:sequence>"
        "</xs:complexType><xs:key name='k'><xs:selector xpath='e'/><xs:field xpath='.'/></xs:key></xs:element>",
        "<r><e>",
        "</e></r>"},
};

TEST(LongValuesTest, AValueThatNeedsTooMuchStackIsRefused)
{
    const std::string value = Repeat("abcd", 5000) + "a" + Repeat("b", 20) + "x";
    testsupport::RunWithStack(SmallStack, [&] {
        for (const Place& place : Places) {
            SCOPED_TRACE(place.name);
            const std::unique_ptr<DOM> document =
                Validate(SchemaOf(LargePattern, place.declarations), place.start + value + place.end);
            ASSERT_EQ(document->GetErrors().size(), 1u);
            EXPECT_TRUE(document->GetErrors().front().startsWith("Fatal Error(1,")) << document->GetErrors().front();
            EXPECT_TRUE(document->GetErrors().front().endsWith(
                "the document needs more call stack than the thread has; a value may be too long for the pattern of "
                "its type (id: id)"))
                << document->GetErrors().front();
        }
    });
}

TEST(LongValuesTest, AShorterValueOfALargePatternIsAllowed)
{
    const std::string value = Repeat("abcd", 100) + "a" + Repeat("b", 20) + "x";
    testsupport::RunWithStack(SmallStack, [&] {
        for (const Place& place : Places) {
            SCOPED_TRACE(place.name);
            const std::unique_ptr<DOM> document =
                Validate(SchemaOf(LargePattern, place.declarations), place.start + value + place.end);
            EXPECT_FALSE(document->HasErrors()) << document->GetErrors().front();
        }
    });
}

void ExpectNoStackForSchema(const std::string& schema)
{
    testsupport::RunWithStack(SmallStack, [&] {
        const std::unique_ptr<DOM> document = Validate(schema, "<r/>");
        ASSERT_FALSE(document->GetErrors().empty());
        EXPECT_TRUE(
            document->GetErrors().front().endsWith("the schema needs more call stack than the thread has (id: s.xsd)"))
            << document->GetErrors().front();
    });
}

TEST(LongValuesTest, ADefaultThatNeedsTooMuchStackIsAnErrorOfTheSchema)
{
    const std::string root = "<xs:element name='r'><xs:complexType><xs:attribute name='k' type='t' default='" +
        Repeat("abcd", 5000) + "x'/></xs:complexType></xs:element>";
    ExpectNoStackForSchema(SchemaOf("(a|b|cd)*x", root));
}

TEST(LongValuesTest, ADeepSchemaIsAnErrorOfTheSchema)
{
    const std::string open = "<xs:element name='r'><xs:complexType><xs:sequence>";
    const std::string close = "</xs:sequence></xs:complexType></xs:element>";
    const std::string root = Repeat(open, 5000) + Repeat(close, 5000);
    ExpectNoStackForSchema(SchemaOf("a", root));
}

TEST(LongValuesTest, AThousandLevelsOfParenthesesAreAllowed)
{
    testsupport::RunWithStack(SmallStack, [] {
        const std::unique_ptr<DOM> document = ValidateText(Repeat("(", 1000) + "a" + Repeat(")", 1000), "a");
        EXPECT_FALSE(document->HasErrors()) << document->GetErrors().front();
    });
}

TEST(LongValuesTest, MoreLevelsOfParenthesesAreAnErrorOfTheSchema)
{
    testsupport::RunWithStack(SmallStack, [] {
        for (const std::size_t levels : {1001U, 100000U}) {
            const std::unique_ptr<DOM> document = ValidateText(Repeat("(", levels) + "a" + Repeat(")", levels), "a");
            ASSERT_FALSE(document->GetErrors().empty());
            EXPECT_TRUE(document->GetErrors().front().endsWith(
                "a pattern may have at most 1000 opening parentheses in a row (id: s.xsd)"))
                << document->GetErrors().front();
        }
    });
}

TEST(LongValuesTest, ParenthesesBetweenCharactersNeedNotFitTheStack)
{
    testsupport::RunWithStack(SmallStack, [] {
        const std::unique_ptr<DOM> document = ValidateText(Repeat("a(", 50000) + "a" + Repeat(")", 50000), "a");
        ASSERT_FALSE(document->GetErrors().empty());
        EXPECT_TRUE(
            document->GetErrors().front().endsWith("the schema needs more call stack than the thread has (id: s.xsd)"))
            << document->GetErrors().front();
    });
}

#endif

}  // namespace
