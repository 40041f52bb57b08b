#include <QUrl>

#include "tests/tool/ToolRun.h"
#include "vanxml/DocumentChecker.h"

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

const std::string schemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";

std::string Schema(const std::string& declarations)
{
    return schemaStart + ">" + declarations + "</xs:schema>";
}

// Returns the declaration of an element whose complex type has this content.
std::string Element(const std::string& name, const std::string& content)
{
    return "<xs:element name='" + name + "'><xs:complexType>" + content + "</xs:complexType></xs:element>";
}

const std::string bookSchema = Schema(Element("book", "<xs:attribute name='pages' type='xs:int'/>"));

std::string Repeat(const std::string& piece, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += piece;
    return text;
}

// Returns declarations of the entities "a" to "f". Each of them except "a" expands the one before it ten times.
std::string BombDeclarations()
{
    std::string text = "<!ENTITY a ''>";
    for (char name = 'b'; name <= 'f'; ++name) {
        const char previous = static_cast<char>(name - 1);
        text += std::string("<!ENTITY ") + name + " '" + Repeat(std::string("&") + previous + ";", 10) + "'>";
    }
    return text;
}

std::ptrdiff_t CountMessages(const ToolResult& result)
{
    const std::string lines = FirstLines(result.errors);
    return std::count(lines.begin(), lines.end(), '\n');
}

std::string Sample(const std::string& name)
{
    return SAMPLES_FOLDER "/" + name;
}

// Owns a folder for the schemas and documents of a test.
class CheckSchemaTest : public testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& text) const
    {
        return m_folder.Write(VString::fromStdString(name), text).toStdString();
    }

    static ToolResult Check(
        const std::string& schema, const std::vector<std::string>& files, const std::string& jobs = "2")
    {
        std::vector<std::string> arguments{"check", "--schema", schema, "--jobs", jobs};
        arguments.insert(arguments.end(), files.begin(), files.end());
        return RunTool(arguments);
    }

private:
    TemporaryFolder m_folder;
};

}  // namespace

TEST_F(CheckSchemaTest, ValidatesAgainstASchemaFile)
{
    const std::string schema = Write("book.xsd", bookSchema);
    const std::string good = Write("good.xml", "<book pages='3'/>");
    const std::string bad = Write("bad.xml", "<book pages='three'/>");
    EXPECT_EQ(Check(schema, {good}).status, 0);
    const std::string last = Write("last.xml", "<book pages='4'/>");
    const ToolResult result = Check(schema, {good, bad, last});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith(bad + ":1:"));
    EXPECT_EQ(result.output, "3 documents, 1 error\n");
}

TEST_F(CheckSchemaTest, DoesNotValidateWithoutASchema)
{
    EXPECT_EQ(RunTool({"check", Write("bad.xml", "<book pages='three'/>")}).status, 0);
    EXPECT_EQ(Check("none", {Write("bad.xml", "<book pages='three'/>")}).status, 0);
}

TEST_F(CheckSchemaTest, PositionsReferToTheFile)
{
    const std::string anyAttributes = "<xs:sequence/><xs:anyAttribute processContents='skip'/>";
    const std::string schema = Write("book.xsd", Schema(Element("book", anyAttributes)));
    const std::string plain = Check(schema, {Write("plain.xml", "<book  a='1'><b/></book>")}).errors;
    const std::string shifted = Check(schema, {Write("shift.xml", "\n\n<book :a='1'><b/></book>")}).errors;
    const std::string place = "plain.xml:1:";
    ASSERT_THAT(plain, HasSubstr(place));
    const std::size_t column = plain.find(place) + place.size();
    EXPECT_THAT(shifted, HasSubstr("shift.xml:3:" + plain.substr(column, plain.find(": ", column) - column) + ": "));
}

TEST_F(CheckSchemaTest, SchemaMayIncludeAndImportNeighbouringFiles)
{
    const std::string upToNine = "<xs:restriction base='xs:int'><xs:maxInclusive value='9'/></xs:restriction>";
    Write("base.xsd", Schema("<xs:simpleType name='count'>" + upToNine + "</xs:simpleType>"));
    const std::string otherStart = schemaStart + " targetNamespace='urn:o'>";
    Write("other names.xsd", otherStart + "<xs:attribute name='o' type='xs:int'/></xs:schema>");
    const std::string include = "<xs:include schemaLocation='base.xsd'/>";
    const std::string import = "<xs:import namespace='urn:o' schemaLocation='other%20names.xsd'/>";
    const std::string element = Element("a", "<xs:attribute name='n' type='count'/><xs:attribute ref='o:o'/>");
    const std::string schema =
        Write("main.xsd", schemaStart + " xmlns:o='urn:o'>" + include + import + element + "</xs:schema>");
    const ToolResult good = Check(schema, {Write("good.xml", "<a n='9' xmlns:o='urn:o' o:o='1'/>")});
    EXPECT_EQ(good.errors, "");
    EXPECT_EQ(good.status, 0);
    const ToolResult bad = Check(schema, {Write("bad.xml", "<a n='10' xmlns:o='urn:o' o:o='x'/>")});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.output, "1 document, 2 errors\n");
}

TEST_F(CheckSchemaTest, MissingIncludedSchemaIsNamed)
{
    const std::string schema =
        Write("main.xsd", Schema("<xs:include schemaLocation='gone.xsd'/><xs:element name='a'/>"));
    const ToolResult result = Check(schema, {Write("a.xml", "<a/>")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(schema + ":1:84: error: "));
    EXPECT_THAT(FirstLines(result.errors), HasSubstr("'gone.xsd'"));
    EXPECT_THAT(result.errors, HasSubstr("^~~~~~~~\n"));
    EXPECT_EQ(result.output, "0 documents, 0 errors, 1 not checked\n");
}

#if defined(__linux__)
TEST_F(CheckSchemaTest, UnreadableSchemaIsReportedAsPermissionDenied)
{
    if (RunToolAsOrdinaryUser({"--version"}).status != 0)
        GTEST_SKIP() << "an ordinary user cannot run the tool";
    const std::string schema = Write("main.xsd", Schema("<xs:include schemaLocation='locked/base.xsd'/>"));
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
    EXPECT_THAT(included.errors, HasSubstr("\"" + base + "\": Permission denied\n"));
    EXPECT_EQ(named.status, 2);
    EXPECT_THAT(named.errors, HasSubstr("\"" + base + "\": Permission denied\n"));
}
#endif

TEST_F(CheckSchemaTest, ImportWithoutALocationIsNotAnError)
{
    const std::string import = "<xs:import namespace='http://www.w3.org/XML/1998/namespace'/>";
    const std::string schema = Write("main.xsd", Schema(import + Element("a", "<xs:attribute ref='xml:lang'/>")));
    EXPECT_EQ(Check(schema, {Write("a.xml", "<a xml:lang='de'/>")}).errors, "");
}

TEST_F(CheckSchemaTest, XmlNamespaceIsImportedWithoutADownload)
{
    const std::string import = "<xs:import namespace='http://www.w3.org/XML/1998/namespace' "
                               "schemaLocation='http://www.w3.org/2001/xml.xsd'/>";
    const std::string schema = Write("main.xsd", Schema(import + Element("a", "<xs:attribute ref='xml:lang'/>")));
    EXPECT_EQ(Check(schema, {Write("a.xml", "<a xml:lang='de'/>")}).errors, "");
}

TEST_F(CheckSchemaTest, InvalidSchemaPrintsItsErrorsOnce)
{
    const std::string schema = Write("bad.xsd", Schema("<xs:element name='a' type='missing'/>"));
    const ToolResult result = Check(schema, {Write("a.xml", "<a/>"), Write("b.xml", "<a/>")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(schema + ":1:"));
    EXPECT_THAT(result.errors, HasSubstr("missing"));
    EXPECT_EQ(CountMessages(result), 1);
    EXPECT_EQ(result.output, "0 documents, 0 errors, 2 not checked\n");
}

TEST_F(CheckSchemaTest, MalformedSchemaPrintsItsErrorOnce)
{
    const std::string schema = Write("bad.xsd", "<xs:schema");
    const ToolResult result = Check(schema, {Write("a.xml", "<a/>")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(schema + ":1:"));
    EXPECT_EQ(CountMessages(result), 1);
}

TEST_F(CheckSchemaTest, SchemaLocationMayBeAFileUrl)
{
    const std::string base = Write("base.xsd", bookSchema);
    const std::string url = QUrl::fromLocalFile(QString::fromStdString(base)).toEncoded().toStdString();
    const std::string schema = Write("main.xsd", Schema("<xs:include schemaLocation='" + url + "'/>"));
    EXPECT_EQ(Check(schema, {Write("good.xml", "<book pages='3'/>")}).errors, "");
}

TEST_F(CheckSchemaTest, HostileSchemaIsRejected)
{
    const std::string deep = Repeat("<xs:sequence>", 100000) + Repeat("</xs:sequence>", 100000);
    const std::string deepType = "<xs:complexType name='t'>" + deep + "</xs:complexType>";
    const std::pair<std::string, std::string> hostile[] = {
        {"<!DOCTYPE s [" + BombDeclarations() + "]>" + Schema("&f;"), "limit of 50000 expansions"},
        {"<!DOCTYPE s [<!ENTITY e SYSTEM 'secret.txt'>]>" + Schema("&e;"), ":1:"},
        {"<!DOCTYPE s SYSTEM 'secret.dtd'>" + schemaStart + "/>", "'secret.dtd'"},
        {Schema(deepType), "nests elements in more than 256 levels"},
        {Schema("<xs:redefine schemaLocation='book.xsd'/>"), "redefines another, which is not supported"},
    };
    const std::string file = Write("a.xml", "<a/>");
    for (const auto& [text, message] : hostile) {
        const std::string schema = Write("hostile.xsd", text);
        const std::string including = Write("including.xsd", Schema("<xs:include schemaLocation='hostile.xsd'/>"));
        for (const std::string& main : {schema, including}) {
            const ToolResult result = Check(main, {file});
            EXPECT_EQ(result.status, 2) << message;
            EXPECT_THAT(result.errors, AnyOf(StartsWith(schema + ":"), StartsWith(including + ":")));
            EXPECT_THAT(result.errors, HasSubstr(message));
            EXPECT_LT(result.errors.size(), 2000u);
        }
    }
}

TEST_F(CheckSchemaTest, AutoReadsTheTypeFromTheExtensionAndTheVersionFromTheDocument)
{
    std::vector<std::string> files;
    for (const char* name :
        {"sales.kxa", "orders-10-2.kxb", "sales-server-10-5.kxc", "base-map-10-3.kxd", "captions.kxe", "catalogue.kxf"})
        files.push_back(Sample(name));
    const ToolResult result = Check("auto", files);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "6 documents, 0 errors\n");
}

TEST_F(CheckSchemaTest, AutoReadsTheTypeFromTheFirstElementIfTheExtensionIsUnknown)
{
    const std::string good = TemporaryFolder::Read(VString::fromStdString(Sample("captions.kxe")));
    EXPECT_EQ(Check("auto", {Write("captions.xml", good)}).errors, "");
    const ToolResult result = Check("auto", {Write("captions.xml", "<captions version='18.1'><nonsense/></captions>")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("nonsense"));
}

TEST_F(CheckSchemaTest, AutoListsTheSupportedVersions)
{
    const std::string none = Write("a.kxa", "\n<analysis/>");
    EXPECT_EQ(FirstLines(Check("auto", {none}).errors),
        none +
            ":2:1: error: the document element has no attribute 'version'; there are schemas for 10.2, 10.3, 10.4, "
            "10.5, 18.1\n");
    const std::string unknown = Write("a.kxe", "<captions version='9.0'/>");
    const ToolResult result = Check("auto", {unknown});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(FirstLines(result.errors),
        unknown + ":1:20: error: there is no schema for version '9.0'; there is a schema for 18.1\n");
}

TEST_F(CheckSchemaTest, AutoChecksOnlyTheSyntaxOfAnUnknownType)
{
    const ToolResult result = Check("auto", {Write("a.xml", "<fields/>")});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
}

TEST_F(CheckSchemaTest, AutoIsTheDefault)
{
    const std::string file = Write("captions.kxe", "<captions version='18.1'><nonsense/></captions>");
    EXPECT_EQ(RunTool({"check", file}).status, 1);
    EXPECT_EQ(Check("none", {file}).status, 0);
}

TEST_F(CheckSchemaTest, HintsNameTheSchemaFiles)
{
    Write("book.xsd", bookSchema);
    const std::string start = "<book xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                              "xsi:noNamespaceSchemaLocation='book.xsd' ";
    EXPECT_EQ(Check("hints", {Write("good.xml", start + "pages='3'/>")}).errors, "");
    EXPECT_EQ(Check("hints", {Write("bad.xml", start + "pages='three'/>")}).status, 1);
    EXPECT_EQ(Check("hints", {Write("no-hints.xml", "<book pages='three'/>")}).status, 0);
    const ToolResult missing = Check("hints",
        {Write("sub.xml",
            "\n<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'\n"
            " xsi:noNamespaceSchemaLocation='gone.xsd'/>")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(
        missing.errors, HasSubstr("sub.xml:3:33: error: there is no schema file 'gone.xsd' beside the document\n"));
}

TEST_F(CheckSchemaTest, AutoReportsWellFormednessErrorsBeforeVersionProblems)
{
    for (const char* text : {"", "<analysis><b></analysis>"}) {
        const ToolResult result = Check("auto", {Write("a.kxa", text)});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr(": error: "));
        EXPECT_THAT(result.errors, Not(HasSubstr("has no attribute 'version'")));
    }
}

TEST_F(CheckSchemaTest, ValidatesAgainstABuiltInSchema)
{
    EXPECT_EQ(Check("VQRC_FILEFORMAT_KXE_XSD", {Sample("captions.kxe")}).errors, "");
    const ToolResult result = Check("VQRC_FILEFORMAT_KXF_XSD", {Sample("captions.kxe")});
    EXPECT_EQ(result.status, 1);
}

TEST_F(CheckSchemaTest, SchemaIsReadOnceForAllDocuments)
{
    const std::string schema = Write("book.xsd", bookSchema);
    const VString bad = VString::fromStdString(Write("bad.xml", "<book pages='three'/>"));
    const std::unique_ptr<CheckReport> report = CheckReport::Create("text", TextStyle(false));
    DocumentChecker checker(SchemaOption(schema), *report);
    EXPECT_EQ(checker.Check(bad).errors, 1u);
    Write("book.xsd", "no schema any more");
    EXPECT_EQ(checker.Check(bad).errors, 1u);
}

TEST_F(CheckSchemaTest, ManyThreadsPrintTheSameAsOneThread)
{
    const std::string schema = Write("book.xsd", bookSchema);
    std::vector<std::string> files;
    for (int i = 0; i < 60; ++i) {
        const char* const text = i % 3 == 0 ? "<book pages='x'/>" : "<book pages='1'/>";
        files.push_back(Write("d" + std::to_string(i) + ".xml", text));
    }
    const ToolResult one = Check(schema, files, "1");
    const ToolResult many = Check(schema, files, "8");
    EXPECT_EQ(one.output, "60 documents, 20 errors\n");
    EXPECT_EQ(many.output, one.output);
    EXPECT_EQ(many.errors, one.errors);
}
