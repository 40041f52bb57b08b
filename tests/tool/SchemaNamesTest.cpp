// Schemas whose names look like something else: like an embedded resource of Qt, or like a schema of the library.
#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

const std::string SchemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";
const std::string CountSchema = SchemaStart + "><xs:element name='count' type='xs:int'/></xs:schema>";

// Checks documents in a folder of its own, where a relative name begins with its first character.
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

    // The schema is found and finds the one error.
    void ExpectChecked(const std::string& schema) const
    {
        const ToolResult result = Check(schema);
        EXPECT_THAT(result.errors, testing::StartsWith("bad.xml: Error(1,")) << schema;
        EXPECT_EQ(result.output, "2 documents, 1 error\n") << schema;
    }

private:
    TemporaryFolder m_folder;
};

}  // namespace

TEST_F(SchemaNamesTest, SchemaWithALeadingColonIsNamed)
{
    Write(":x.xsd", CountSchema);
    for (const char* name : {":x.xsd", "./:x.xsd"})
        ExpectChecked(name);
}

TEST_F(SchemaNamesTest, SchemaWithALeadingColonIsIncluded)
{
    Write(":x.xsd", CountSchema);
    for (const char* location : {":x.xsd", "./:x.xsd", "%3Ax.xsd"}) {
        for (const char* name : {"main.xsd", ":main.xsd"}) {
            Write(name, SchemaStart + "><xs:include schemaLocation='" + location + "'/></xs:schema>");
            ExpectChecked(name);
        }
    }
}

TEST_F(SchemaNamesTest, SchemaWithALeadingColonIsImported)
{
    const std::string type = "<xs:simpleType name='count'><xs:restriction base='xs:int'/></xs:simpleType>";
    Write(":types.xsd", SchemaStart + " targetNamespace='urn:t'>" + type + "</xs:schema>");
    for (const char* location : {":types.xsd", "./:types.xsd"}) {
        const std::string import = std::string("<xs:import namespace='urn:t' schemaLocation='") + location + "'/>";
        const std::string element = "<xs:element name='count' type='t:count'/>";
        Write("main.xsd", SchemaStart + " xmlns:t='urn:t'>" + import + element + "</xs:schema>");
        ExpectChecked("main.xsd");
    }
}

TEST_F(SchemaNamesTest, NameOfALibrarySchemaBehindAFolderIsAFile)
{
    Write("VQRC_FILEFORMAT_KXA_XSD", CountSchema);
    ExpectChecked("./VQRC_FILEFORMAT_KXA_XSD");
    ExpectChecked(".//VQRC_FILEFORMAT_KXA_XSD");
}

TEST_F(SchemaNamesTest, BareNameOfALibrarySchemaIsNotAFile)
{
    Write("VQRC_FILEFORMAT_KXA_XSD", CountSchema);
    EXPECT_EQ(Check("VQRC_FILEFORMAT_KXA_XSD").output, "2 documents, 2 errors\n");
}

TEST_F(SchemaNamesTest, NameOfALibrarySchemaWithASeparatorBehindItIsUnknown)
{
    const ToolResult result = Check("VQRC_FILEFORMAT_KXA_XSD/");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("There is no schema \"VQRC_FILEFORMAT_KXA_XSD/\""));
}
