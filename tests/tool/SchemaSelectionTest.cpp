#include "vanxml/SchemaSelection.h"

#include "tests/common/EndlessSource.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vanxml/ToolError.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

constexpr const char* instance = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

SchemaSelection Select(const VString& name, const std::string& text)
{
    const auto source = StringInputSource::FromUtf8(std::string(text), name, false);
    return SelectSchema(*source, {1, 1});
}

// A folder with the empty files "a.xsd" and "b c.xsd".
class HintsTest : public testing::Test {
protected:
    HintsTest()
    {
        m_folder.Write("a.xsd", "");
        m_folder.Write("b c.xsd", "");
    }

    SchemaSelection Select(const std::string& text) const
    {
        const auto source = StringInputSource::FromUtf8(std::string(text), m_folder.Path("document.xml"), false);
        return SelectHintedSchemas(*source, {1, 1});
    }

    VString Path(const char* name) const { return m_folder.Path(name); }

private:
    TemporaryFolder m_folder;
};

}  // namespace

TEST(SchemaSelectionTest, ReadsNoFurtherThanTheFirstTag)
{
    testsupport::EndlessSource source("<?xml version='1.0'?><captions version='18.1'>");
    EXPECT_EQ(SelectSchema(source, {1, 1}).schema.name, VString("VQRC_FILEFORMAT_KXE_XSD"));
    EXPECT_EQ(source.blocks, 1);
    EXPECT_TRUE(source.IsAtStart());
}

TEST(SchemaSelectionTest, ExtensionSelectsTheType)
{
    EXPECT_EQ(Select("a.KXB", "<x version='10.2'/>").schema.name, VString("VQRC_FILEFORMAT_KXB_XSD_10_2"));
}

TEST(SchemaSelectionTest, FirstElementWithAVersionSelectsTheType)
{
    const SchemaSelection selection = Select("a.xml", "<fields version='18.1'/>");
    EXPECT_EQ(selection.schema.name, VString("VQRC_FILEFORMAT_KXF_XSD"));
}

TEST(SchemaSelectionTest, OtherVocabulariesHaveNoSchemaAndNoProblem)
{
    for (const char* text : {"<fields/>",
             "<fields version='2.0' xmlns='urn:other'/>",
             "<f:fields version='2.0' xmlns:f='urn:other'/>",
             "<book version='1'/>",
             "",
             "text"}) {
        const SchemaSelection selection = Select("a.xml", text);
        EXPECT_EQ(selection.schema.kind, SchemaReference::Kind::None) << text;
        EXPECT_TRUE(selection.problems.empty()) << text;
    }
}

TEST(SchemaSelectionTest, UnknownVersionIsAProblemAtTheValue)
{
    const SchemaSelection selection = Select("a.kxe", "\n<captions version='9.0'/>");
    ASSERT_EQ(selection.problems.size(), 1u);
    const ParseDiagnostic& problem = selection.problems[0];
    EXPECT_EQ(problem.code, DiagnosticCode::MissingSchema);
    EXPECT_EQ(problem.message, VString("there is no schema for version '9.0'; there is a schema for 18.1"));
    EXPECT_EQ(problem.sourceId, VString("a.kxe"));
    EXPECT_EQ(problem.start, (SourcePosition{2, 20}));
    EXPECT_EQ(problem.end, (SourcePosition{2, 23}));
    EXPECT_EQ(problem.path, VString("/captions"));
    EXPECT_EQ(problem.element, 1u);
    EXPECT_EQ(problem.attribute, VString("version"));
    EXPECT_EQ(problem.value, VString("9.0"));
    EXPECT_THAT(problem.allowed, ElementsAre(VString("18.1")));
}

TEST(SchemaSelectionTest, WrongFirstElementIsReportedInsteadOfItsVersion)
{
    for (const char* text : {"<a/>", "<a version='1'/>"}) {
        const SchemaSelection selection = Select("K.KXA", text);
        EXPECT_EQ(selection.schema.kind, SchemaReference::Kind::None);
        ASSERT_EQ(selection.problems.size(), 1u);
        EXPECT_EQ(selection.problems[0].code, DiagnosticCode::UnexpectedElement);
        EXPECT_EQ(selection.problems[0].message, VString("the document element of a .kxa file is 'analysis', not 'a'"));
    }
}

TEST(SchemaSelectionTest, MissingVersionIsAProblemAtTheTag)
{
    const SchemaSelection selection = Select("a.kxa", "<analysis>");
    ASSERT_EQ(selection.problems.size(), 1u);
    const ParseDiagnostic& problem = selection.problems[0];
    EXPECT_EQ(problem.message,
        VString("the document element has no attribute 'version'; there are schemas for 10.2, 10.3, 10.4, 10.5, 18.1"));
    EXPECT_EQ(problem.start, (SourcePosition{1, 1}));
    EXPECT_EQ(problem.end, (SourcePosition{1, 11}));
}

TEST_F(HintsTest, FilesAreFoundBesideTheDocument)
{
    const SchemaSelection selection = Select(std::string("<x") + instance +
        " xsi:noNamespaceSchemaLocation='a.xsd' xsi:schemaLocation='urn:1\n b%20c.xsd'/>");
    EXPECT_TRUE(selection.problems.empty());
    EXPECT_EQ(selection.schema.kind, SchemaReference::Kind::File);
    EXPECT_EQ(selection.schema.name, Path("a.xsd"));
    EXPECT_THAT(selection.schema.moreFiles, ElementsAre(Path("b c.xsd")));
}

TEST_F(HintsTest, MisspeltAttributesAreWarnings)
{
    const std::pair<const char*, const char*> attributes[] = {
        {"xsi:schemalocation", "xsi:schemaLocation"},
        {"xsi:NoNamespaceSchemaLocation", "xsi:noNamespaceSchemaLocation"},
        {"noNamespaceSchemaLocation", "xsi:noNamespaceSchemaLocation"},
    };
    for (const auto& [wrong, right] : attributes) {
        const SchemaSelection selection = Select(std::string("<x") + instance + " " + wrong + "='a.xsd'/>");
        EXPECT_EQ(selection.schema.kind, SchemaReference::Kind::None);
        ASSERT_EQ(selection.problems.size(), 1u) << wrong;
        const ParseDiagnostic& problem = selection.problems[0];
        EXPECT_EQ(problem.severity, ParseDiagnostic::Severity::Warning);
        EXPECT_EQ(problem.message.toStdString(),
            std::string("the attribute '") + wrong + "' names no schema; did you mean '" + right + "'?");
        EXPECT_EQ(problem.start.column, std::string("<x ").size() + std::string(instance).size() + 1);
        EXPECT_EQ(problem.end.column, problem.start.column + std::string(wrong).size());
    }
    const char* const otherPrefix = "<x xmlns:i='http://www.w3.org/2001/XMLSchema-instance' schemaLocation='a'/>";
    EXPECT_EQ(Select(otherPrefix).problems.at(0).suggestion, VString("i:schemaLocation"));
    EXPECT_TRUE(Select(std::string("<x") + instance + " other:schemalocation='a.xsd' location='b'/>").problems.empty());
}

TEST_F(HintsTest, MisspeltFileGetsASuggestion)
{
    const SchemaSelection selection =
        Select(std::string("<x") + instance + " xsi:noNamespaceSchemaLocation='./aa.xsd'/>");
    ASSERT_EQ(selection.problems.size(), 1u);
    EXPECT_EQ(selection.problems[0].message,
        VString("there is no schema file './aa.xsd' beside the document; did you mean './a.xsd'?"));
}

TEST_F(HintsTest, FirstFileOfANamespaceCounts)
{
    const SchemaSelection selection =
        Select(std::string("<x") + instance + " xsi:schemaLocation='urn:1 a.xsd urn:1 gone.xsd'/>");
    EXPECT_TRUE(selection.problems.empty());
    EXPECT_EQ(selection.schema.name, Path("a.xsd"));
    EXPECT_TRUE(selection.schema.moreFiles.empty());
}

TEST_F(HintsTest, AnyPrefixOfTheNamespaceIsKnown)
{
    const std::string other = "<x xmlns:i='http://www.w3.org/2001/XMLSchema-instance' ";
    EXPECT_EQ(Select(other + "i:noNamespaceSchemaLocation='a.xsd'/>").schema.name, Path("a.xsd"));
    EXPECT_EQ(Select(other + "xsi:noNamespaceSchemaLocation='a.xsd'/>").schema.kind, SchemaReference::Kind::None);
}

TEST_F(HintsTest, AddressesOfANetworkAreNotFetched)
{
    const SchemaSelection selection =
        Select(std::string("<x") + instance + "\nxsi:schemaLocation='urn:1 https://example.invalid/a.xsd'/>");
    EXPECT_EQ(selection.schema.kind, SchemaReference::Kind::None);
    ASSERT_EQ(selection.problems.size(), 1u);
    EXPECT_EQ(selection.problems[0].code, DiagnosticCode::MissingSchema);
    EXPECT_THAT(selection.problems[0].message.toStdString(), HasSubstr("not fetched from the network"));
    EXPECT_EQ(selection.problems[0].value, VString("https://example.invalid/a.xsd"));
    EXPECT_EQ(selection.problems[0].start, (SourcePosition{2, 27}));
}

TEST_F(HintsTest, MissingFileIsAProblem)
{
    const SchemaSelection selection =
        Select(std::string("<x") + instance + " xsi:noNamespaceSchemaLocation='gone.xsd'/>");
    ASSERT_EQ(selection.problems.size(), 1u);
    EXPECT_EQ(selection.problems[0].message, VString("there is no schema file 'gone.xsd' beside the document"));
}

TEST_F(HintsTest, NamespaceWithoutAFileIsAProblem)
{
    const SchemaSelection selection =
        Select(std::string("<x") + instance + " xsi:schemaLocation='urn:1 a.xsd urn:2'/>");
    EXPECT_EQ(selection.schema.name, Path("a.xsd"));
    ASSERT_EQ(selection.problems.size(), 1u);
    EXPECT_EQ(selection.problems[0].value, VString("urn:2"));
}

TEST(SchemaNameTest, ListHasEachSchemaOnceAndNoDocumentType)
{
    std::set<VString> names;
    for (const SchemaName& schema : ListSchemas()) {
        EXPECT_TRUE(names.insert(schema.name).second) << schema.name;
        EXPECT_EQ(FindSchemaResource(schema.name), schema.resource);
        EXPECT_EQ(FindSchemaResource(schema.resource), schema.resource);
        EXPECT_FALSE(schema.resource.endsWith("DTD"));
    }
    EXPECT_EQ(FindSchemaResource("kxa-10.2"), VString("VQRC_FILEFORMAT_KXA_XSD_10_2"));
    EXPECT_EQ(FindSchemaResource("kxa-18.1"), VString("VQRC_FILEFORMAT_KXA_XSD"));
    EXPECT_EQ(FindSchemaResource("oauth-config"), VString("VQRC_FILEFORMAT_OAUTH_CONFIG_XSD"));
    EXPECT_EQ(FindSchemaResource("VQRC_FILEFORMAT_XHTML_DTD"), VString());
}

TEST(SchemaNameTest, UnknownNameGetsASuggestionOrTheNamesOfItsType)
{
    EXPECT_EQ(
        DescribeUnknownSchema("oauth-confg", false), "there is no schema 'oauth-confg'; did you mean 'oauth-config'?");
    EXPECT_EQ(DescribeUnknownSchema("kxe", false), "there is no schema 'kxe'; there is kxe-18.1");
    EXPECT_EQ(DescribeUnknownSchema("something", false),
        "there is no schema 'something'; 'vanxml schema list' prints the names");
    EXPECT_EQ(DescribeUnknownSchema("book.xsd", true),
        "there is no schema 'book.xsd'; it is neither a file nor a name that 'vanxml schema list' prints");
    EXPECT_EQ(DescribeUnknownSchema("hint", true), "there is no schema 'hint'; did you mean 'hints'?");
    EXPECT_THROW(SchemaOption("hint"), ToolError);
}
