#include <QUrl>

#include "tests/tool/ToolRun.h"
#include "vanxml/DocumentChecker.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

const std::string schemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";
const std::string bookSchema = schemaStart +
    "><xs:element name='book'><xs:complexType><xs:attribute name='pages' type='xs:int'/></xs:complexType></xs:element></xs:schema>";

std::string Sample(const std::string& name)
{
    return SAMPLES_FOLDER "/" + name;
}

// A folder with a schema made of two files, and whatever the test adds.
class CheckSchemaTest : public testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& text) const
    {
        return m_folder.Write(VString::fromStdString(name), text).toStdString();
    }

    ToolResult Check(
        const std::string& schema, const std::vector<std::string>& files, const std::string& jobs = "2") const
    {
        std::vector<std::string> arguments{"check", "--schema", schema, "--jobs", jobs};
        arguments.insert(arguments.end(), files.begin(), files.end());
        return RunTool(arguments);
    }

private:
    TemporaryFolder m_folder;
};

}  // namespace

TEST_F(CheckSchemaTest, SchemaFileFindsErrors)
{
    const std::string schema = Write("book.xsd", bookSchema);
    const std::string good = Write("good.xml", "<book pages='3'/>");
    const std::string bad = Write("bad.xml", "<book pages='three'/>");
    EXPECT_EQ(Check(schema, {good}).status, 0);
    const ToolResult result = Check(schema, {good, bad, good});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith(bad + ": Error(1,"));
    EXPECT_EQ(result.output, "3 documents, 1 error\n");
}

TEST_F(CheckSchemaTest, WithoutSchemaNothingIsValidated)
{
    EXPECT_EQ(RunTool({"check", Write("bad.xml", "<book pages='three'/>")}).status, 0);
    EXPECT_EQ(Check("none", {Write("bad.xml", "<book pages='three'/>")}).status, 0);
}

TEST_F(CheckSchemaTest, PlaceIsThatOfTheFile)
{
    const std::string schema = Write("book.xsd",
        schemaStart +
            "><xs:element name='book'><xs:complexType><xs:sequence/><xs:anyAttribute processContents='skip'/></xs:complexType></xs:element></xs:schema>");
    const std::string plain = Check(schema, {Write("plain.xml", "<book  a='1'><b/></book>")}).errors;
    const std::string shifted = Check(schema, {Write("shift.xml", "\n\n<book :a='1'><b/></book>")}).errors;
    ASSERT_THAT(plain, HasSubstr("plain.xml: Error(1,"));
    const std::string column = plain.substr(plain.find("(1,") + 3, plain.find("):") - plain.find("(1,") - 3);
    EXPECT_THAT(shifted, HasSubstr("Error(3," + column + "):"));
}

TEST_F(CheckSchemaTest, SchemaIncludesAndImportsOthersBesideIt)
{
    Write("base.xsd",
        schemaStart +
            "><xs:simpleType name='count'><xs:restriction base='xs:int'><xs:maxInclusive value='9'/></xs:restriction></xs:simpleType></xs:schema>");
    Write(
        "other names.xsd", schemaStart + " targetNamespace='urn:o'><xs:attribute name='o' type='xs:int'/></xs:schema>");
    const std::string schema = Write("main.xsd",
        schemaStart +
            " xmlns:o='urn:o'><xs:include schemaLocation='base.xsd'/><xs:import namespace='urn:o' schemaLocation='other%20names.xsd'/>"
            "<xs:element name='a'><xs:complexType><xs:attribute name='n' type='count'/><xs:attribute ref='o:o'/></xs:complexType></xs:element></xs:schema>");
    const ToolResult good = Check(schema, {Write("good.xml", "<a n='9' xmlns:o='urn:o' o:o='1'/>")});
    EXPECT_EQ(good.errors, "");
    EXPECT_EQ(good.status, 0);
    const ToolResult bad = Check(schema, {Write("bad.xml", "<a n='10' xmlns:o='urn:o' o:o='x'/>")});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.output, "1 document, 2 errors\n");
}

TEST_F(CheckSchemaTest, ImportThatIsNotFoundIsNamed)
{
    const std::string schema =
        Write("main.xsd", schemaStart + "><xs:include schemaLocation='gone.xsd'/><xs:element name='a'/></xs:schema>");
    const ToolResult result = Check(schema, {Write("a.xml", "<a/>")});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors,
        schema + ": Cannot find the schema \"gone.xsd\", which \"" + schema + "\" imports or includes\n");
    EXPECT_EQ(result.output, "0 documents, 0 errors, 1 not checked\n");
}

#if defined(__linux__)
TEST_F(CheckSchemaTest, SchemaThatMayNotBeReadIsNotCalledMissing)
{
    if (RunToolAsOrdinaryUser({"--version"}).status != 0)
        GTEST_SKIP() << "an ordinary user cannot run the tool";
    const std::string include = "><xs:include schemaLocation='locked/base.xsd'/></xs:schema>";
    const std::string schema = Write("main.xsd", schemaStart + include);
    const QString folder = QFileInfo(QString::fromStdString(schema)).path();
    ASSERT_TRUE(QDir().mkdir(folder + "/locked"));
    const std::string base = Write("locked/base.xsd", bookSchema);
    const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const QFile::Permissions open = owner | QFile::ReadOther | QFile::ExeOther;
    ASSERT_TRUE(QFile::setPermissions(folder, open));
    ASSERT_TRUE(QFile::setPermissions(folder + "/locked", QFile::Permissions()));
    const ToolResult included = RunToolAsOrdinaryUser({"check", "--schema", schema, schema});
    const ToolResult named = RunToolAsOrdinaryUser({"check", "--schema", base, schema});
    ASSERT_TRUE(QFile::setPermissions(folder + "/locked", open));
    EXPECT_EQ(included.status, 2);
    EXPECT_EQ(included.errors, schema + ": Cannot read \"" + base + "\": Permission denied\n");
    EXPECT_EQ(named.status, 2);
    EXPECT_EQ(named.errors, base + ": Cannot read \"" + base + "\": Permission denied\n");
}
#endif

TEST_F(CheckSchemaTest, ImportByNamespaceAloneIsNotMissing)
{
    const std::string schema = Write("main.xsd",
        schemaStart +
            "><xs:import namespace='http://www.w3.org/XML/1998/namespace'/><xs:element name='a'><xs:complexType><xs:attribute ref='xml:lang'/></xs:complexType></xs:element></xs:schema>");
    EXPECT_EQ(Check(schema, {Write("a.xml", "<a xml:lang='de'/>")}).errors, "");
}

TEST_F(CheckSchemaTest, TheNamespaceXmlIsKnownWithoutAnyDownload)
{
    const std::string schema = Write("main.xsd",
        schemaStart +
            "><xs:import namespace='http://www.w3.org/XML/1998/namespace' schemaLocation='http://www.w3.org/2001/xml.xsd'/><xs:element name='a'><xs:complexType><xs:attribute ref='xml:lang'/></xs:complexType></xs:element></xs:schema>");
    EXPECT_EQ(Check(schema, {Write("a.xml", "<a xml:lang='de'/>")}).errors, "");
}

TEST_F(CheckSchemaTest, MalformedSchemaShowsItsOwnErrorsOnce)
{
    const std::string schema = Write("bad.xsd", schemaStart + "><xs:element name='a' type='missing'/></xs:schema>");
    const ToolResult result = Check(schema, {Write("a.xml", "<a/>"), Write("b.xml", "<a/>")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(schema + ": Error(1,"));
    EXPECT_THAT(result.errors, HasSubstr("missing"));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1);
    EXPECT_EQ(result.output, "0 documents, 0 errors, 2 not checked\n");
}

TEST_F(CheckSchemaTest, SchemaThatIsNoXmlShowsItsOwnErrors)
{
    const std::string schema = Write("bad.xsd", "<xs:schema");
    const ToolResult result = Check(schema, {Write("a.xml", "<a/>")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(schema + ": Fatal Error("));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1);
}

TEST_F(CheckSchemaTest, SchemaIsFoundByFileUrl)
{
    const std::string base = Write("base.xsd", bookSchema);
    const std::string schema = Write("main.xsd",
        schemaStart + "><xs:include schemaLocation='" +
            QUrl::fromLocalFile(QString::fromStdString(base)).toEncoded().toStdString() + "'/></xs:schema>");
    EXPECT_EQ(Check(schema, {Write("good.xml", "<book pages='3'/>")}).errors, "");
}

TEST_F(CheckSchemaTest, HostileSchemaIsRefused)
{
    const std::string bomb =
        "<!ENTITY a ''><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'><!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'><!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'><!ENTITY f '&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;'>";
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<xs:sequence>";
    for (int i = 0; i < 100000; ++i)
        deep += "</xs:sequence>";
    const std::pair<std::string, std::string> hostile[] = {
        {"<!DOCTYPE s [" + bomb + "]>" + schemaStart + ">&f;</xs:schema>", "entity expansions"},
        {"<!DOCTYPE s [<!ENTITY e SYSTEM 'secret.txt'>]>" + schemaStart + ">&e;</xs:schema>", "not allowed.(1,"},
        {"<!DOCTYPE s SYSTEM 'secret.dtd'>" + schemaStart + "/>", "not allowed. 'secret.dtd'"},
        {schemaStart + "><xs:complexType name='t'>" + deep + "</xs:complexType></xs:schema>",
            "nests elements in more than 256 levels"},
        {schemaStart + "><xs:redefine schemaLocation='book.xsd'/></xs:schema>",
            "redefines another, which is not supported"},
    };
    const std::string file = Write("a.xml", "<a/>");
    for (const auto& [text, message] : hostile) {
        const std::string schema = Write("hostile.xsd", text);
        const std::string including =
            Write("including.xsd", schemaStart + "><xs:include schemaLocation='hostile.xsd'/></xs:schema>");
        for (const std::string& main : {schema, including}) {
            const ToolResult result = Check(main, {file});
            EXPECT_EQ(result.status, 2) << message;
            EXPECT_THAT(result.errors, StartsWith(main + ": "));
            EXPECT_THAT(result.errors, HasSubstr(message));
            EXPECT_LT(result.errors.size(), 2000u);
        }
    }
}

TEST_F(CheckSchemaTest, AutoTakesTheTypeFromTheExtensionAndTheVersionFromTheDocument)
{
    const ToolResult result = Check("auto",
        {Sample("sales.kxa"),
            Sample("orders-10-2.kxb"),
            Sample("sales-server-10-5.kxc"),
            Sample("base-map-10-3.kxd"),
            Sample("captions.kxe"),
            Sample("catalogue.kxf")});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "6 documents, 0 errors\n");
}

TEST_F(CheckSchemaTest, AutoTakesTheTypeFromTheFirstElementWhereTheExtensionSaysNothing)
{
    const std::string good = TemporaryFolder::Read(VString::fromStdString(Sample("captions.kxe")));
    EXPECT_EQ(Check("auto", {Write("captions.xml", good)}).errors, "");
    const ToolResult result = Check("auto", {Write("captions.xml", "<captions version='18.1'><nonsense/></captions>")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("nonsense"));
}

TEST_F(CheckSchemaTest, AutoSaysWhichVersionsThereAre)
{
    const ToolResult none = Check("auto", {Write("a.kxa", "<analysis/>")});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.errors, HasSubstr("declares no version; there are schemas for 10.2, 10.3, 10.4, 10.5, 18.1\n"));
    const ToolResult unknown = Check("auto", {Write("a.kxe", "<captions version='9.0'/>")});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_THAT(unknown.errors, HasSubstr("version 9.0; there are schemas for 18.1\n"));
}

TEST_F(CheckSchemaTest, AutoSaysThatATypeIsUnknown)
{
    const ToolResult result = Check("auto", {Write("a.xml", "<book version='1'/>")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("\"book\""));
}

TEST_F(CheckSchemaTest, AutoReportsWellFormednessErrorsBeforeVersionProblems)
{
    for (const char* text : {"", "<analysis><b></analysis>"}) {
        const ToolResult result = Check("auto", {Write("a.kxa", text)});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr("Fatal Error("));
        EXPECT_THAT(result.errors, Not(HasSubstr("declares no version")));
    }
}

TEST_F(CheckSchemaTest, ResourceIsNamed)
{
    EXPECT_EQ(Check("VQRC_FILEFORMAT_KXE_XSD", {Sample("captions.kxe")}).errors, "");
    const ToolResult result = Check("VQRC_FILEFORMAT_KXF_XSD", {Sample("captions.kxe")});
    EXPECT_EQ(result.status, 1);
}

TEST_F(CheckSchemaTest, SchemaIsReadOnceForAllDocuments)
{
    const std::string schema = Write("book.xsd", bookSchema);
    const VString bad = VString::fromStdString(Write("bad.xml", "<book pages='three'/>"));
    DocumentChecker checker(SchemaReference{SchemaReference::Kind::File, VString::fromStdString(schema)});
    EXPECT_EQ(checker.Check(bad).errors, 1u);
    Write("book.xsd", "no schema any more");
    EXPECT_EQ(checker.Check(bad).errors, 1u);
}

TEST_F(CheckSchemaTest, ThreadsGiveTheSameAsOne)
{
    const std::string schema = Write("book.xsd", bookSchema);
    std::vector<std::string> files;
    for (int i = 0; i < 60; ++i) {
        files.push_back(
            Write("d" + std::to_string(i) + ".xml", i % 3 == 0 ? "<book pages='x'/>" : "<book pages='1'/>"));
    }
    const ToolResult one = Check(schema, files, "1");
    const ToolResult many = Check(schema, files, "8");
    EXPECT_EQ(one.output, "60 documents, 20 errors\n");
    EXPECT_EQ(many.output, one.output);
    EXPECT_EQ(many.errors, one.errors);
}
