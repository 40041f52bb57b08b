// Parsers that load schemas which an earlier parser has compiled. What a parse returns must not depend on the cache.
#include "vancorexml/main/parser/SchemaCache.h"

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

using Schemas = std::vector<std::pair<std::string, std::string>>;  // ids and texts

std::string SchemaOf(const std::string& declarations)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + declarations + "</xs:schema>";
}

std::string SchemaOfType(const std::string& type)
{
    return SchemaOf("<xs:element name='a' type='xs:" + type + "'/>");
}

// Declares <shop> with elements, types and constraints that the messages about errors describe.
const std::string ShopSchema = SchemaOf(
    "<xs:simpleType name='code'><xs:restriction base='xs:string'><xs:pattern value='[A-Z]\\d+'/></xs:restriction>"
    "</xs:simpleType>"
    "<xs:simpleType name='size'><xs:union memberTypes='xs:int'><xs:simpleType><xs:restriction base='xs:string'>"
    "<xs:enumeration value='small'/><xs:enumeration value='large'/></xs:restriction></xs:simpleType></xs:union>"
    "</xs:simpleType>"
    "<xs:element name='any' type='xs:anyType'/>"
    "<xs:element name='shop'><xs:complexType><xs:sequence><xs:element name='item' maxOccurs='9'><xs:complexType>"
    "<xs:choice minOccurs='0'><xs:element name='size' type='size'/><xs:element name='price' type='xs:decimal'/>"
    "</xs:choice><xs:attribute name='code' type='code' use='required'/><xs:attribute name='unit' default='piece'/>"
    "<xs:attribute name='id' type='xs:ID'/><xs:attribute name='next' type='xs:IDREF'/></xs:complexType></xs:element>"
    "</xs:sequence></xs:complexType>"
    "<xs:key name='codes'><xs:selector xpath='item'/><xs:field xpath='@code'/></xs:key></xs:element>");

const std::string ShopDocuments[] = {
    "<shop><item code='A1'/></shop>",
    "<shop>\n<item code='A1'><size>7</size></item>\n<item code='B2'><size>large</size></item></shop>",
    "<shop>\n<item code='A1'><size>middle</size></item></shop>",
    "<shop><item code='a1'/></shop>",
    "<shop>\n<item/></shop>",
    "<shop><item code='A1'/>\n<item code='A1'/></shop>",
    "<shop><item code='A1' id='x' next='y'/></shop>",
    "<shop><item code='A1'><prize>1</prize></item></shop>",
    "<shop><item code='A1' colour='red'><price>1</price><size>1</size></item></shop>",
    "<shop/>",
    "<shops/>",
    "<p:shop xmlns:p='u'><item code='A1'/></p:shop>",
    "<shop><item code='A1'></shop>",
    "<shop><item code='A1'>&none;</item></shop>",
    "<!DOCTYPE shop [<!ENTITY e 'A1'><!ATTLIST item unit CDATA 'box'>]><shop><item code='&e;'/></shop>",
    "<!DOCTYPE shop [<!ENTITY e SYSTEM 'file'>]><shop><item code='A1'/></shop>",
    "<?xml version='1.1'?><shop><item code='A1'/></shop>",
    "<shop :view='x'><item code='A1'/></shop>",
    "<shop><item code='A1'/>\xff</shop>",
    "<any><foo>z</foo></any>",
    "<any xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
    "<foo xsi:type='xs:int'>z</foo></any>",
    "",
};

std::unique_ptr<InputSource> MakeSource(const std::string& text, const std::string& id)
{
    return StringInputSource::FromUtf8(std::string(text), VString::fromStdString(id), false);
}

// What a parse returns. The text contains the tree and the errors.
struct Result {
    std::string text;
    std::vector<ParseDiagnostic> diagnostics;

    bool HasErrors() const { return !diagnostics.empty(); }
    friend bool operator==(const Result&, const Result&) = default;
    friend void PrintTo(const Result& result, std::ostream* out) { *out << result.text; }
};

Result Parse(DOMParser& parser, const std::string& text)
{
    const auto document = parser.ParseXmlString(text, "document");
    Result result{
        XMLDomFormatter::RenderAsXMLString(document->GetRoot(), nullptr, false).toStdString(), parser.GetDiagnostics()};
    for (const VString& error : document->GetErrors())
        result.text += error.toStdString() + "\n";
    return result;
}

void Add(DOMParser& parser, const Schemas& schemas)
{
    for (const auto& [id, text] : schemas)
        parser.AddXSDInputSource(MakeSource(text, id));
}

// Parses with a new parser.
Result Parse(const Schemas& schemas, const std::string& text)
{
    DOMParser parser;
    Add(parser, schemas);
    return Parse(parser, text);
}

class SchemaCacheTest : public testing::Test {
protected:
    SchemaCacheTest() { SchemaCache::Clear(); }
    ~SchemaCacheTest() override { SchemaCache::Clear(); }
};

TEST_F(SchemaCacheTest, EveryDocumentParsesTheSameAfterEveryOther)
{
    const Schemas schemas{{"shop.xsd", ShopSchema}};
    std::vector<Result> expected;
    for (const std::string& text : ShopDocuments) {
        SchemaCache::Clear();
        expected.push_back(Parse(schemas, text));
    }
    EXPECT_NE(expected[0], expected[2]);
    for (const std::string& first : ShopDocuments) {
        for (std::size_t i = 0; i < std::size(ShopDocuments); ++i) {
            SchemaCache::Clear();
            Parse(schemas, first);
            Parse(schemas, first);
            EXPECT_EQ(Parse(schemas, ShopDocuments[i]), expected[i]) << ShopDocuments[i] << "\nafter " << first;
        }
    }
}

TEST_F(SchemaCacheTest, AParserParsesAllDocumentsLikeNewOnes)
{
    const Schemas schemas{{"shop.xsd", ShopSchema}};
    DOMParser parser;
    Add(parser, schemas);
    for (int round = 0; round < 2; ++round) {
        for (const std::string& text : ShopDocuments) {
            const Result result = Parse(parser, text);
            SchemaCache::Clear();
            EXPECT_EQ(result, Parse(schemas, text)) << text;
        }
    }
}

TEST_F(SchemaCacheTest, ANewParserUsesTheSchemasOfAnEarlierOne)
{
    const Schemas schemas{{"a.xsd", SchemaOfType("int")}};
    EXPECT_EQ(SchemaCache::Count(), 0u);
    for (int i = 0; i < 3; ++i) {
        Parse(schemas, "<a>1</a>");
        EXPECT_EQ(SchemaCache::Count(), 1u);
    }
    StandaloneDOMParser light;
    light.AddXSDInputSource(MakeSource(schemas[0].second, schemas[0].first));
    EXPECT_EQ(light.ParseXmlString("<a>1</a>", "id").second.size(), 0u);
    EXPECT_EQ(light.ParseXmlString("<a>x</a>", "id").second.size(), 1u);
    EXPECT_EQ(SchemaCache::Count(), 1u);
}

TEST_F(SchemaCacheTest, AnotherTextWithTheSameIdIsAnotherSchema)
{
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(Parse({{"a.xsd", SchemaOfType("string")}}, "<a>x</a>").HasErrors());
        EXPECT_TRUE(Parse({{"a.xsd", SchemaOfType("int")}}, "<a>x</a>").HasErrors());
        EXPECT_EQ(SchemaCache::Count(), 2u);
    }
}

TEST_F(SchemaCacheTest, TheSameTextWithAnotherIdIsAnotherSchema)
{
    for (int round = 0; round < 2; ++round) {
        for (const char* const id : {"a.xsd", "b.xsd"})
            EXPECT_FALSE(Parse({{id, SchemaOfType("int")}}, "<a>1</a>").HasErrors());
        EXPECT_EQ(SchemaCache::Count(), 2u);
    }
}

TEST_F(SchemaCacheTest, TheOrderAndTheNumberOfSchemasMatter)
{
    const std::pair<std::string, std::string> a{"a.xsd", SchemaOfType("int")};
    const std::pair<std::string, std::string> b{"b.xsd", SchemaOf("<xs:element name='b' type='xs:int'/>")};
    const std::vector<Schemas> all{{a}, {a, b}, {b, a}, {b}};
    for (int round = 0; round < 2; ++round) {
        for (const Schemas& schemas : all) {
            const bool knowsB = schemas.front() == b || schemas.back() == b;
            EXPECT_EQ(Parse(schemas, "<b>1</b>").HasErrors(), !knowsB);
        }
        EXPECT_EQ(SchemaCache::Count(), all.size());
    }
}

// The bytes are the same, but only one of the sources reads the encoding from them.
TEST_F(SchemaCacheTest, TheSameBytesInAnotherEncodingAreAnotherSchema)
{
    const std::string text = "<?xml version='1.0' encoding='iso-8859-1'?>" +
        SchemaOf("<xs:element name='a'><xs:simpleType><xs:restriction base='xs:string'>"
                 "<xs:enumeration value='\xC3\xA4'/></xs:restriction></xs:simpleType></xs:element>");
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(Parse({{"a.xsd", text}}, "<a>\xC3\xA4</a>").HasErrors());
        DOMParser parser;
        parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(text, "a.xsd", false));
        EXPECT_TRUE(Parse(parser, "<a>\xC3\xA4</a>").HasErrors());
        EXPECT_EQ(SchemaCache::Count(), 2u);
    }
}

TEST_F(SchemaCacheTest, SchemasWithMessagesAreCompiledEachTime)
{
    const Schemas rows{
        {"no type", SchemaOf("<xs:element name='a' type='none'/>")},
        {"not well-formed", "<xs:schema"},
        {"ambiguous",
            SchemaOf("<xs:element name='a'><xs:complexType><xs:sequence><xs:element name='b' minOccurs='0'/>"
                     "<xs:element name='b'/></xs:sequence></xs:complexType></xs:element>")},
        {"include", SchemaOf("<xs:include schemaLocation='none.xsd'/><xs:element name='a' type='none'/>")},
        {"external entity", "<!DOCTYPE x [<!ENTITY e SYSTEM 'file'>]>" + SchemaOf("&e;")},
    };
    for (const auto& row : rows) {
        const Result first = Parse({row}, "<a/>");
        EXPECT_TRUE(first.HasErrors()) << row.first;
        EXPECT_EQ(SchemaCache::Count(), 0u) << row.first;
        EXPECT_EQ(Parse({row}, "<a/>"), first) << row.first;
    }
}

// A schema of a caller may change between two parses.
class ChangingSource final : public StringInputSource {
public:
    explicit ChangingSource(int& number) : StringInputSource(VString(), "a.xsd", false), m_number(number) {}

    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        const std::string text = SchemaOfType(m_number % 2 == 0 ? "int" : "string");
        return XercesInputSource(std::make_shared<std::string>(text), 0, Id(), mode, TextEncoding::Utf8);
    }

private:
    int& m_number;
};

TEST_F(SchemaCacheTest, AChangedSourceIsAnotherSchema)
{
    int number = 0;
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<ChangingSource>(number));
    for (; number < 6; ++number)
        EXPECT_EQ(Parse(parser, "<a>x</a>").HasErrors(), number % 2 == 0) << number;
}

TEST_F(SchemaCacheTest, ASchemaAddedLaterValidatesToo)
{
    DOMParser parser;
    Add(parser, {{"a.xsd", SchemaOfType("int")}});
    Parse(parser, "<a>1</a>");
    EXPECT_TRUE(Parse(parser, "<b>1</b>").HasErrors());
    Add(parser, {{"b.xsd", SchemaOf("<xs:element name='b' type='xs:int'/>")}});
    EXPECT_FALSE(Parse(parser, "<b>1</b>").HasErrors());
}

std::vector<SchemaCache::Wanted> TextOf(const std::string& id)
{
    std::vector<SchemaCache::Wanted> wanted;
    wanted.push_back({VString::fromStdString(id),
        XercesInputSource(std::make_shared<std::string>("text"),
            0,
            VString::fromStdString(id),
            ColonProcessingNone,
            TextEncoding::Utf8)});
    return wanted;
}

// Puts schemas into the cache that need `size` bytes.
void Put(const std::string& id, std::size_t size)
{
    auto schemas = std::make_unique<CompiledSchemas>();
    schemas->texts.emplace_back(VString::fromStdString(id), TextOf(id).front().source);
    schemas->memory.allocate(size);
    SchemaCache::Put(std::move(schemas));
}

TEST_F(SchemaCacheTest, ForgetsTheSchemasThatWereNotUsedForTheLongestTime)
{
    Put("first", 1);
    for (std::size_t i = 0; i < SchemaCache::MostSchemas - 1; ++i)
        Put(std::to_string(i), 1);
    SchemaCache::Put(SchemaCache::Take(TextOf("first")));
    Put("last", 1);
    EXPECT_EQ(SchemaCache::Count(), SchemaCache::MostSchemas);
    EXPECT_TRUE(SchemaCache::Take(TextOf("first")));
    EXPECT_FALSE(SchemaCache::Take(TextOf("first")));
    EXPECT_TRUE(SchemaCache::Take(TextOf("last")));
    EXPECT_TRUE(SchemaCache::Take(TextOf("1")));
    EXPECT_FALSE(SchemaCache::Take(TextOf("0")));
}

TEST_F(SchemaCacheTest, HoldsLimitedMemory)
{
    Put("small", 1000);
    Put("too large", SchemaCache::MostBytes);
    EXPECT_EQ(SchemaCache::Count(), 1u);
    Put("a", SchemaCache::MostBytes / 2);
    EXPECT_EQ(SchemaCache::Count(), 2u);
    Put("b", SchemaCache::MostBytes / 2);
    EXPECT_TRUE(SchemaCache::Take(TextOf("b")));
    EXPECT_FALSE(SchemaCache::Take(TextOf("a")));
    EXPECT_FALSE(SchemaCache::Take(TextOf("small")));
}

}  // namespace
