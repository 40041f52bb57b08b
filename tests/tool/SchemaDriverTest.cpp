#include "vanxml/SchemaDriver.h"

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

const std::string schemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";

class SchemaDriverTest : public testing::Test {
protected:
    VString Write(const char* name, const std::string& text) const { return m_folder.Write(name, text); }

    static std::vector<ParseDiagnostic> ErrorsOf(const VString& file, std::vector<VString> moreFiles = {})
    {
        return SchemaDriver({SchemaReference::Kind::File, file, std::move(moreFiles)}).SchemaErrors();
    }

private:
    TemporaryFolder m_folder;
};

}  // namespace

TEST_F(SchemaDriverTest, BrokenSchemaIsOneError)
{
    const VString file = Write("a.xsd",
        schemaStart +
            ">\n<xs:element name='a' type='b'/><xs:element name='c' type='d'/>"
            "<xs:element name='e' type='f'/></xs:schema>");
    const std::vector<ParseDiagnostic> errors = ErrorsOf(file);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].code, DiagnosticCode::BadSchema);
    EXPECT_EQ(errors[0].severity, ParseDiagnostic::Severity::Error);
    EXPECT_EQ(errors[0].sourceId, file);
    EXPECT_EQ(errors[0].start.line, 2u);
    EXPECT_THAT(errors[0].message.toStdString(), testing::EndsWith("(and 2 more)"));
}

TEST_F(SchemaDriverTest, EachMissingSchemaIsAnErrorWhereItIsNamed)
{
    const VString file = Write("a.xsd",
        schemaStart +
            ">\n<xs:include schemaLocation='b.xsd'/><xs:include schemaLocation='c.xsd'/>"
            "<xs:element name='a' type='fromC'/></xs:schema>");
    const std::vector<ParseDiagnostic> errors = ErrorsOf(file);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].code, DiagnosticCode::MissingSchema);
    EXPECT_EQ(errors[0].message, VString("cannot find the schema 'b.xsd', which this schema imports or includes"));
    EXPECT_EQ(errors[0].sourceId, file);
    EXPECT_EQ(errors[0].start, (SourcePosition{2, 29}));
    EXPECT_EQ(errors[0].end, (SourcePosition{2, 34}));
    EXPECT_EQ(errors[1].value, VString("c.xsd"));
    EXPECT_EQ(errors[1].start, (SourcePosition{2, 65}));
}

TEST_F(SchemaDriverTest, ErrorOfAnIncludedSchemaNamesThatSchema)
{
    const VString included = Write("b.xsd", "<xs:schema");
    const VString file = Write("a.xsd", schemaStart + "><xs:include schemaLocation='b.xsd'/></xs:schema>");
    const std::vector<ParseDiagnostic> errors = ErrorsOf(file);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].code, DiagnosticCode::BadSchema);
    EXPECT_EQ(errors[0].sourceId, included);
}

TEST_F(SchemaDriverTest, LineEndInTheDeclarationOfAnIncludedSchemaCounts)
{
    const VString included = Write("b.xsd",
        "<?xml\nversion='1.0'?>\n<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n"
        "<xs:element name='a' type='none'/></xs:schema>");
    const VString file = Write("a.xsd", schemaStart + "><xs:include schemaLocation='b.xsd'/></xs:schema>");
    const std::vector<ParseDiagnostic> errors = ErrorsOf(file);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].sourceId, included);
    EXPECT_EQ(errors[0].start.line, 4u);
}

TEST_F(SchemaDriverTest, FileThatIsNoSchemaIsNamedAsSuch)
{
    const std::vector<ParseDiagnostic> errors = ErrorsOf(Write("a.xml", "<html/>"));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].message, VString("this file is not an XML Schema: its first element is 'html'"));
}

TEST_F(SchemaDriverTest, SeveralFilesAreLoadedInAnyOrder)
{
    const VString a = Write("a.xsd",
        schemaStart +
            " targetNamespace='urn:a' xmlns:b='urn:b'><xs:import namespace='urn:b' schemaLocation='b.xsd'/>"
            "<xs:element name='a'><xs:complexType><xs:sequence><xs:element ref='b:b'/></xs:sequence>"
            "</xs:complexType></xs:element></xs:schema>");
    const VString b =
        Write("b.xsd", schemaStart + " targetNamespace='urn:b'><xs:element name='b' type='xs:int'/></xs:schema>");
    for (const auto& [first, second] : {std::pair(a, b), std::pair(b, a)}) {
        SchemaDriver driver({SchemaReference::Kind::File, first, {second}});
        EXPECT_TRUE(driver.SchemaErrors().empty());
        StringInputSource good("<a xmlns='urn:a'><b xmlns='urn:b'>1</b></a>", "good", false);
        EXPECT_TRUE(driver.Check(good).empty());
        StringInputSource bad("<a xmlns='urn:a'><b xmlns='urn:b'>x</b></a>", "bad", false);
        EXPECT_FALSE(driver.Check(bad).empty());
    }
}
