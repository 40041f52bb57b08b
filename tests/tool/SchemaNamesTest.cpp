// Schema files whose names look like Qt resources (":x.xsd") or like built-in schemas.
#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

const std::string SchemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";
const std::string CountSchema = SchemaStart + "><xs:element name='count' type='xs:int'/></xs:schema>";

// Runs the tool inside a temporary folder, so that tests can pass relative file names.
class SchemaNamesTest : public testing::Test {
protected:
    SchemaNamesTest()
    {
        Write("good.xml", "<count>1</count>");
        Write("bad.xml", "<count>one</count>");
    }

    void Write(const std::string& name, const std::string& text) const
    {
        m_folder.Write("./" + VString::fromStdString(name), text);
    }

    ToolResult Check(const std::string& schema) const
    {
        const std::vector<std::string> arguments{"check", "--schema", schema, "good.xml", "bad.xml"};
        return RunProgram(VANXML_PATH, arguments, "", "", m_folder.Path(".").toStdString());
    }

    // Expects that the tool finds the schema and that the schema rejects only bad.xml.
    void ExpectSchemaIsUsed(const std::string& schema) const
    {
        const ToolResult result = Check(schema);
        EXPECT_THAT(result.errors, testing::StartsWith("bad.xml:1:")) << schema;
        EXPECT_EQ(result.output, "2 documents, 1 error\n") << schema;
    }

private:
    TemporaryFolder m_folder;
};

}  // namespace

// On Windows, a colon in a name begins the name of a stream of the file.
#if !defined(_WIN32)
TEST_F(SchemaNamesTest, FileNameMayBeginWithAColon)
{
    Write(":x.xsd", CountSchema);
    for (const char* name : {":x.xsd", "./:x.xsd"})
        ExpectSchemaIsUsed(name);
}

TEST_F(SchemaNamesTest, IncludedFileNameMayBeginWithAColon)
{
    Write(":x.xsd", CountSchema);
    for (const char* location : {":x.xsd", "./:x.xsd", "%3Ax.xsd"}) {
        for (const char* name : {"main.xsd", ":main.xsd"}) {
            Write(name, SchemaStart + "><xs:include schemaLocation='" + location + "'/></xs:schema>");
            ExpectSchemaIsUsed(name);
        }
    }
}

TEST_F(SchemaNamesTest, ImportedFileNameMayBeginWithAColon)
{
    const std::string type = "<xs:simpleType name='count'><xs:restriction base='xs:int'/></xs:simpleType>";
    Write(":types.xsd", SchemaStart + " targetNamespace='urn:t'>" + type + "</xs:schema>");
    for (const char* location : {":types.xsd", "./:types.xsd"}) {
        const std::string import = std::string("<xs:import namespace='urn:t' schemaLocation='") + location + "'/>";
        const std::string element = "<xs:element name='count' type='t:count'/>";
        Write("main.xsd", SchemaStart + " xmlns:t='urn:t'>" + import + element + "</xs:schema>");
        ExpectSchemaIsUsed("main.xsd");
    }
}
#endif

TEST_F(SchemaNamesTest, BuiltInSchemaNameAfterAFolderMeansAFile)
{
    Write("VQRC_FILEFORMAT_KXA_XSD", CountSchema);
    ExpectSchemaIsUsed("./VQRC_FILEFORMAT_KXA_XSD");
    ExpectSchemaIsUsed(".//VQRC_FILEFORMAT_KXA_XSD");
}

TEST_F(SchemaNamesTest, BuiltInSchemaNameAloneDoesNotMeanAFile)
{
    Write("VQRC_FILEFORMAT_KXA_XSD", CountSchema);
    EXPECT_EQ(Check("VQRC_FILEFORMAT_KXA_XSD").output, "2 documents, 2 errors\n");
}

TEST_F(SchemaNamesTest, BuiltInSchemaNameWithATrailingSeparatorIsUnknown)
{
    const ToolResult result = Check("VQRC_FILEFORMAT_KXA_XSD/");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("there is no schema 'VQRC_FILEFORMAT_KXA_XSD/'"));
}
