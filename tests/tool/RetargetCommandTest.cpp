#include "tests/tool/ToolRun.h"

#include <QString>
#include <QTextCodec>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

const std::string dataSource = "<data-source version='18.1' name='orders' caption='Orders'>\n"
                               "  <connection class='text-file' filename='C:\\in\\a.csv'/>\n"
                               "  <column name='Sales' caption='Umsatz' data-type='real' role='measure'/>\n"
                               "  <column name='a=b' caption='x=y' data-type='real' role='measure'>\n"
                               "    <calculation formula='[Sales] * 2 + [orders].[Sales]'/>\n"
                               "  </column>\n"
                               "</data-source>\n";

std::string Replaced(std::string text, const std::string& before, const std::string& after)
{
    for (std::size_t at = text.find(before); at != std::string::npos; at = text.find(before, at + after.size()))
        text.replace(at, before.size(), after);
    return text;
}

// Runs "vanxml retarget -" with the options.
ToolResult Retarget(const std::vector<std::string>& options, const std::string& input = dataSource)
{
    std::vector<std::string> arguments{"retarget", "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunTool(arguments, input);
}

// Retargets the files in place.
ToolResult RetargetInPlace(const std::vector<std::string>& files, const std::vector<std::string>& options)
{
    std::vector<std::string> arguments{"retarget", "--in-place"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunTool(arguments);
}

// Returns the contents of the files.
std::vector<std::string> ReadFiles(const std::vector<std::string>& files)
{
    std::vector<std::string> contents;
    for (const std::string& file : files)
        contents.push_back(TemporaryFolder::Read(VString::fromStdString(file)));
    return contents;
}

struct SampleRename {
    const char* name;
    std::string pattern;  // for the names of the samples
    std::string option;
    std::string oldName;
    std::string newName;
    std::string report;  // a part of a line
};

void PrintTo(const SampleRename& row, std::ostream* out)
{
    *out << row.name;
}

class RetargetSamplesTest : public testing::TestWithParam<SampleRename> {};

TEST_P(RetargetSamplesTest, RenamesAndRestoresEveryVersionByteForByte)
{
    const SampleRename& row = GetParam();
    const QDir samples(SAMPLES_FOLDER);
    const TemporaryFolder folder;
    std::vector<std::string> files;
    for (const QString& name : samples.entryList({QString::fromStdString(row.pattern)}, QDir::Files)) {
        const std::string original = TemporaryFolder::Read(VString(samples.filePath(name)));
        files.push_back(folder.Write(VString(name), original).toStdString());
    }
    ASSERT_FALSE(files.empty());
    const std::vector<std::string> originals = ReadFiles(files);
    const std::vector<std::string> forward{row.option, row.oldName + "=" + row.newName};

    const ToolResult first = RetargetInPlace(files, forward);
    EXPECT_EQ(first.status, 0) << first.errors;
    EXPECT_THAT(first.errors, Not(HasSubstr("warning")));
    const std::vector<std::string> renamed = ReadFiles(files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        EXPECT_NE(renamed[i], originals[i]) << files[i];
        EXPECT_THAT(first.errors, ContainsExpression(files[i] + ":[0-9]+:[0-9]+: "));
    }
    EXPECT_THAT(first.errors, HasSubstr(row.report));
    std::vector<std::string> check{"check", "--schema", "auto"};
    check.insert(check.end(), files.begin(), files.end());
    EXPECT_EQ(RunTool(check).status, 0);

    const ToolResult second = RetargetInPlace(files, forward);
    EXPECT_EQ(second.status, 0);
    EXPECT_THAT(second.errors, AllOf(StartsWith("vanxml: warning: "), HasSubstr("matched nothing\n")));
    EXPECT_EQ(ReadFiles(files), renamed);

    EXPECT_EQ(RetargetInPlace(files, {row.option, row.newName + "=" + row.oldName}).status, 0);
    EXPECT_EQ(ReadFiles(files), originals);
}

const SampleRename SampleRenames[] = {
    {"DataSourceOfAnAnalysis", "*.kxa", "--data-source", "orders", "sales", ": data source 'orders' -> 'sales'\n"},
    {"FieldOfAnAnalysis",
        "*.kxa",
        "--field",
        "[orders].[Order Date]",
        "[orders].[a <'>]] b]",
        ": field '[orders].[Order Date]' -> '[orders].[a <'>]] b]'\n"},
    {"FieldInAFormulaOfAnAnalysis",
        "*.kxa",
        "--field",
        "[plan].[Profit]",
        "[plan].[Gewinn]",
        ": field '[plan].[Profit]' -> '[plan].[Gewinn]'\n"},
    {"CaptionOfAnAnalysis", "*.kxa", "--caption", "Menge", "Zahl & \"Maß\"", ": caption 'Menge' -> 'Zahl & \"Maß\"'\n"},
    {"PathOfAnAnalysis",
        "*.kxa",
        "--path",
        "C:\\Daten\\Vertrieb\\Aufträge 2024.csv",
        "/srv/a.csv",
        ": path 'C:\\Daten\\Vertrieb\\Aufträge 2024.csv' -> '/srv/a.csv'\n"},
    {"MapSourceOfAnAnalysis10_3", "sales-10-3.kxa", "--map-source", "Grundkarte", "Karte", ": map source 'Grundkarte'"},
    {"MapSourceOfAnAnalysis18_1", "sales.kxa", "--map-source", "Grundkarte", "Karte", ": map source 'Grundkarte'"},
    {"DataSource", "*.kxb", "--data-source", "orders", "sales", ": data source 'orders' -> 'sales'\n"},
    {"FieldOfADataSource", "*.kxb", "--field", "[orders].[Sales]", "[orders].[Net]", ": field '[orders].[Sales]' -> "},
    {"PathOfADataSource", "*.kxb", "--path", "/srv/daten/é/plan.csv", "plan.csv", ": path '/srv/daten/é/plan.csv'"},
    {"DataConnection", "*.kxc", "--data-connection", "sales-server", "s", ": data connection 'sales-server' -> 's'\n"},
    {"CaptionOfADataConnection",
        "*.kxc",
        "--caption",
        "Serveur des ventes",
        "Server",
        ": caption 'Serveur des ventes'"},
    {"DriverOfADataConnection10_2To10_4",
        "sales-server-10-[234].kxc",
        "--path",
        "C:\\Programme\\Treiber\\größe.dll",
        "/opt/größe.so",
        ": path 'C:\\Programme\\Treiber\\größe.dll' -> '/opt/größe.so'\n"},
    {"PathInAnOptionOfADataConnection10_5",
        "sales-server-10-5.kxc",
        "--path",
        "C:\\Zertifikate\\Prüfstelle.pem",
        "/etc/roots.pem",
        ": path 'C:\\Zertifikate\\Prüfstelle.pem' -> '/etc/roots.pem'\n"},
    {"MapSource", "*.kxd", "--map-source", "Grundkarte", "Karte", ": map source 'Grundkarte' -> 'Karte'\n"},
    {"CaptionOfAMapSource", "*.kxd", "--caption", "道路", "Roads", ": caption '道路' -> 'Roads'\n"},
    {"PathOfAMapSource10_3",
        "base-map-10-3.kxd",
        "--path",
        "C:\\Temp\\Karten Ä",
        "/tmp",
        ": path 'C:\\Temp\\Karten Ä'"},
    {"PathOfAMapSource18_1", "base-map.kxd", "--path", "C:\\Temp\\Karten Ä", "/tmp", ": path 'C:\\Temp\\Karten Ä'"},
    {"FieldOfACaptionList", "*.kxe", "--field", "[Sales]", "[Net]", ": field '[Sales]' -> '[Net]'\n"},
    {"CaptionOfACaptionList", "*.kxe", "--caption", "Ventes", "Chiffre", ": caption 'Ventes' -> 'Chiffre'\n"},
    {"PathOfACaptionList",
        "*.kxe",
        "--path",
        "C:\\Daten\\Übersetzungen\\captions.xlsx",
        "c.xlsx",
        ": path 'C:\\Daten\\Übersetzungen\\captions.xlsx' -> 'c.xlsx'\n"},
    {"FieldOfACatalogue", "*.kxf", "--field", "[Sales]", "[Net]", ": field '[Sales]' -> '[Net]'\n"},
    {"CaptionOfACatalogue", "*.kxf", "--caption", "Menge", "Zahl", ": caption 'Menge' -> 'Zahl'\n"},
    {"PathOfACatalogue", "*.kxf", "--path", "\\\\ablage\\datenbüro\\Katalog 2024.docx", "k.docx", ": path '\\\\ablage"},
};

INSTANTIATE_TEST_SUITE_P(Samples, RetargetSamplesTest, testing::ValuesIn(SampleRenames), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(RetargetCommandTest, WritesTheDocumentAndReportsEachName)
{
    const ToolResult result = Retarget({"--data-source", "orders=sales", "--field", "[sales].[Sales]=[sales].[Net]"});
    EXPECT_EQ(result.status, 0);
    const std::string withDataSource = Replaced(Replaced(dataSource, "'orders'", "'sales'"), "[orders]", "[sales]");
    EXPECT_EQ(result.output, Replaced(Replaced(withDataSource, "[Sales]", "[Net]"), "'Sales'", "'Net'"));
    EXPECT_EQ(result.errors,
        "-:1:35: data source 'orders' -> 'sales'\n"
        "-:3:17: field '[orders].[Sales]' -> '[sales].[Net]'\n"
        "-:5:27: field '[orders].[Sales]' -> '[sales].[Net]'\n"
        "-:5:41: field '[orders].[Sales]' -> '[sales].[Net]'\n");
}

TEST(RetargetCommandTest, RenamesWithoutAMatchAreWarnings)
{
    const ToolResult result = Retarget({"--caption", "Orders=x", "--caption", "none=y", "--path", "/none=/z"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
        "-:1:52: caption 'Orders' -> 'x'\n"
        "vanxml: warning: caption 'none' -> 'y' matched nothing\n"
        "vanxml: warning: path '/none' -> '/z' matched nothing\n");
}

TEST(RetargetCommandTest, RenameToTheSameNameIsAWarning)
{
    EXPECT_EQ(Retarget({"--caption", "Orders=Orders"}).errors,
        "vanxml: warning: caption 'Orders' -> 'Orders' changes nothing, because the names are equal\n");
}

TEST(RetargetCommandTest, UnknownProtectedDataSourceIsAWarning)
{
    const ToolResult unknown = Retarget({"--caption", "Orders=x", "--protect", "nosuch"});
    EXPECT_EQ(unknown.status, 0);
    EXPECT_THAT(unknown.errors, HasSubstr("\nvanxml: warning: --protect: no document has a data source 'nosuch'\n"));
    const ToolResult known = Retarget({"--data-source", "orders=sales", "--protect", "orders"});
    EXPECT_EQ(known.status, 0);
    EXPECT_THAT(known.errors, Not(HasSubstr("--protect")));
}

TEST(RetargetCommandTest, FieldRenameUnderTheOldDataSourceMatchesNothing)
{
    const ToolResult result = Retarget({"--data-source", "orders=sales", "--field", "[orders].[Sales]=[orders].[Net]"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("warning: field '[orders].[Sales]' -> '[orders].[Net]' matched nothing"));
}

TEST(RetargetCommandTest, PathsMatchWithAnySeparators)
{
    const ToolResult result = Retarget({"--path", "C:/in//a.csv=b.csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "-:2:43: path 'C:\\in\\a.csv' -> 'b.csv'\n");
}

TEST(RetargetCommandTest, SwapsNamesInOneRun)
{
    const ToolResult result =
        Retarget({"--field", "[orders].[Sales]=[orders].[a=b]", "--field", "[orders].[a=b]=[orders].[Sales]"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output,
        AllOf(HasSubstr("<column name='a=b' caption='Umsatz'"), HasSubstr("<column name='Sales' caption='x=y'")));
    EXPECT_THAT(result.output, HasSubstr("[a=b] * 2 + [orders].[a=b]"));
}

TEST(RetargetCommandTest, FirstEqualsSignSeparatesTheNames)
{
    EXPECT_THAT(Retarget({"--caption", "Umsatz=a=b"}).output, HasSubstr("caption='a=b'"));
    EXPECT_THAT(Retarget({"--caption", "x=y=z"}).errors, HasSubstr("caption 'x' -> 'y=z' matched nothing"));
}

TEST(RetargetCommandTest, FieldsOfTheProtectedDataSourceStay)
{
    const ToolResult result =
        Retarget({"--protect", "orders", "--field", "[orders].[Sales]=[orders].[Net]", "--caption", "Umsatz=Net"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, Replaced(dataSource, "Umsatz", "Net"));
    EXPECT_THAT(result.errors, HasSubstr("field '[orders].[Sales]' -> '[orders].[Net]' matched nothing"));
}

TEST(RetargetCommandTest, ClashesAreErrors)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.kxb", dataSource);
    const ToolResult fields = RetargetInPlace({file.toStdString()}, {"--field", "[orders].[Sales]=[orders].[a=b]"});
    EXPECT_EQ(fields.status, 2);
    EXPECT_EQ(fields.errors,
        file.toStdString() +
            ":4:17: error: fields '[orders].[Sales]' and '[orders].[a=b]' would both become '[orders].[a=b]'\n");
    const ToolResult captions =
        RetargetInPlace({file.toStdString()}, {"--caption", "x=y=z", "--caption", "Umsatz=x=y"});
    EXPECT_EQ(captions.status, 2);
    EXPECT_EQ(
        captions.errors, file.toStdString() + ":4:31: error: captions 'Umsatz' and 'x=y' would both become 'x=y'\n");
    EXPECT_EQ(TemporaryFolder::Read(file), dataSource);
}

TEST(RetargetCommandTest, RefusesNamesThatTheSchemaRefuses)
{
    const ToolResult tooLong = Retarget({"--data-source", "orders=" + std::string(256, 'x')});
    EXPECT_EQ(tooLong.status, 2);
    EXPECT_EQ(tooLong.output, "");
    EXPECT_THAT(tooLong.errors, HasSubstr("-: error: the new names would make the document invalid:\n-:1:"));
    const std::string files = Replaced(dataSource, "</data-source>", "<file path='a'/><file path='b'/></data-source>");
    EXPECT_EQ(Retarget({"--path", "a=b"}, files).status, 2);
    EXPECT_EQ(Retarget({"--path", "a=c"}, files).status, 0);
}

TEST(RetargetCommandTest, DocumentWithoutASchemaIsAnError)
{
    const ToolResult unknown = Retarget({"--caption", "a=b"}, "<notes version='18.1'/>");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.errors, StartsWith("-: error: the document has no type that has schemas"));
    const ToolResult version = Retarget({"--caption", "a=b"}, Replaced(dataSource, "18.1", "9.0"));
    EXPECT_EQ(version.status, 2);
    EXPECT_THAT(version.errors, HasSubstr(": error: there is no schema for version '9.0'"));
}

TEST(RetargetCommandTest, EachDocumentHasTheSchemaOfItsVersion)
{
    const auto document = [](const std::string& version, const std::string& driver) {
        return "<data-connection version='" + version + "' name='c'><connection class='text-file'/>\n<driver>" +
            driver + "</driver></data-connection>";
    };
    const TemporaryFolder folder;
    const std::string older = folder.Write("a.kxc", document("10.4", "/a.so")).toStdString();
    const std::string newer = folder.Write("b.kxc", document("10.5", "/a.so")).toStdString();
    const ToolResult result = RetargetInPlace({older, newer}, {"--path", "/a.so=/b.so"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, AllOf(StartsWith(older + ":2:9: path '/a.so' -> '/b.so'\n"), HasSubstr(newer + ":2:")));
    EXPECT_THAT(ReadFiles({older, newer}), testing::ElementsAre(document("10.4", "/b.so"), document("10.5", "/a.so")));
}

TEST(RetargetCommandTest, InvalidDocumentsAreErrors)
{
    const ToolResult invalid = Retarget({"--caption", "Orders=b"}, Replaced(dataSource, "data-type='real' ", ""));
    EXPECT_EQ(invalid.status, 1);
    EXPECT_EQ(invalid.output, "");
    EXPECT_THAT(invalid.errors, AllOf(StartsWith("-:3:"), Not(HasSubstr("warning"))));
    EXPECT_EQ(Retarget({"--caption", "Orders=b"}, "<data-source version='18.1'>").status, 1);
}

TEST(RetargetCommandTest, CheckAndDiffWriteNothing)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.kxb", dataSource);
    const std::vector<std::string> arguments{"retarget", file.toStdString(), "--caption", "Orders=b"};
    std::vector<std::string> check = arguments;
    check.push_back("--check");
    const ToolResult checked = RunTool(check);
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.output, file.toStdString() + "\n");
    std::vector<std::string> diff = arguments;
    diff.push_back("--diff");
    const ToolResult diffed = RunTool(diff);
    EXPECT_EQ(diffed.status, 0);
    EXPECT_THAT(diffed.output,
        HasSubstr("\n-<data-source version='18.1' name='orders' caption='Orders'>\n"
                  "+<data-source version='18.1' name='orders' caption='b'>\n"));
    EXPECT_EQ(TemporaryFolder::Read(file), dataSource);
}

TEST(RetargetCommandTest, SeveralDocumentsShareTheRenames)
{
    const TemporaryFolder folder;
    const std::string first = folder.Write("a.kxb", dataSource).toStdString();
    const std::string second = folder.Write("b.kxb", Replaced(dataSource, "Orders", "Plan")).toStdString();
    const ToolResult result =
        RunTool({"retarget", "--in-place", first, second, "--caption", "Plan=P", "--caption", "Orders=O"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, first + ":1:52: caption 'Orders' -> 'O'\n" + second + ":1:52: caption 'Plan' -> 'P'\n");
}

TEST(RetargetCommandTest, SeveralThreadsCheckTheFilesOfAFolder)
{
    const TemporaryFolder folder;
    std::string root = folder.Path("").toStdString();
    root.erase(root.find_last_not_of('/') + 1);
    std::vector<std::string> files;
    for (int i = 10; i < 30; ++i)
        files.push_back(folder.Write("f" + VString::number(i) + ".kxb", dataSource).toStdString());
    folder.Write("other.xml", dataSource);
    const std::vector<std::string> originals = ReadFiles(files);
    const ToolResult result =
        RunTool({"retarget", "--recursive", "--jobs", "3", "--check", root, "--caption", "Orders=O"});
    EXPECT_EQ(result.status, 1);
    std::string names;
    std::string reports;
    for (const std::string& file : files) {
        names += file + "\n";
        reports += file + ":1:52: caption 'Orders' -> 'O'\n";
    }
    EXPECT_EQ(result.output, names);
    EXPECT_EQ(result.errors, reports);
    EXPECT_EQ(ReadFiles(files), originals);
    EXPECT_EQ(RunTool({"retarget", "--check", root, "--caption", "Orders=O"}).status, 2);
}

TEST(RetargetCommandTest, ReportsThePlacesInUtf16BehindABlankLine)
{
    const std::string emoji = "\xF0\x9F\x98\x80";
    const std::string formula = emoji + " &#128512;\n\n [Sales] +\r\n[orders].[&#x53;ales] // [Sales]&#10;[Sales]";
    const std::string document =
        "\n" + Replaced(Replaced(dataSource, "[Sales] * 2 + [orders].[Sales]", formula), "Orders", emoji);
    const QString text = QString::fromStdString(document);
    QTextCodec::ConverterState state;  // with a byte order mark
    const QByteArray bytes = QTextCodec::codecForName("utf-16")->fromUnicode(text.constData(), text.size(), &state);
    const ToolResult result =
        Retarget({"--field", "[orders].[Sales]=[orders].[Net]", "--caption", emoji + "=x"}, bytes.toStdString());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
        "-:2:52: caption '" + emoji +
            "' -> 'x'\n"
            "-:4:17: field '[orders].[Sales]' -> '[orders].[Net]'\n"
            "-:8:2: field '[orders].[Sales]' -> '[orders].[Net]'\n"
            "-:9:1: field '[orders].[Sales]' -> '[orders].[Net]'\n"
            "-:9:38: field '[orders].[Sales]' -> '[orders].[Net]'\n");
}

TEST(RetargetCommandTest, WarnsOnlyIfAllDocumentsCouldBeRead)
{
    const TemporaryFolder folder;
    const std::string good = folder.Write("a.kxb", dataSource).toStdString();
    const std::string bad = folder.Write("b.kxb", "<data-source version='18.1'>").toStdString();
    const ToolResult result =
        RunTool({"retarget", "--in-place", bad, good, "--caption", "none=P", "--caption", "Orders=O"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("caption 'Orders' -> 'O'"), Not(HasSubstr("warning"))));
}

// The encodings of a document. Each can write "é", but only some can write "€".
class RetargetEncodingTest : public testing::TestWithParam<const char*> {};

TEST_P(RetargetEncodingTest, OnlyTheBytesOfTheNameChange)
{
    const std::string name = GetParam();
    const auto document = [&](const char* caption) {
        const QString text = QString::fromStdString(
            "<?xml version='1.0' encoding='" + name + "'?>\r\n<!--é-->" + Replaced(dataSource, "Orders", caption));
        QTextCodec::ConverterState state(name == "utf-8" ? QTextCodec::IgnoreHeader : QTextCodec::DefaultConversion);
        return QTextCodec::codecForName(name.c_str())->fromUnicode(text.constData(), text.size(), &state).toStdString();
    };
    const ToolResult result = Retarget({"--caption", "é=€é"}, document("é"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "-:2:60: caption 'é' -> '€é'\n");
    EXPECT_EQ(result.output, document(name == "iso-8859-1" ? "&#8364;é" : "€é"));
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, RetargetEncodingTest, testing::Values("utf-8", "utf-16", "utf-32", "iso-8859-1", "windows-1252"));

struct Mistake {
    const char* name;
    std::vector<std::string> options;
    std::string message;
};

void PrintTo(const Mistake& row, std::ostream* out)
{
    *out << row.name;
}

class RetargetMistakeTest : public testing::TestWithParam<Mistake> {};

TEST_P(RetargetMistakeTest, EndsWithAMessage)
{
    const ToolResult result = Retarget(GetParam().options);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "vanxml: " + GetParam().message + "\nRun 'vanxml help retarget' for more information.\n");
}

const Mistake RetargetMistakes[] = {
    {"NoRename", {}, "retarget needs a rename, for example --data-source OLD=NEW"},
    {"NoEqualsSign", {"--data-source", "orders"}, "--data-source: 'orders' is not of the form OLD=NEW"},
    {"NoEqualsSignOutsideBrackets",
        {"--field", "[a=b]"},
        "--field: '[a=b]' is not of the form [SOURCE].[OLD]=[SOURCE].[NEW]"},
    {"EmptyOldName", {"--caption", "=x"}, "--caption: a name is empty"},
    {"EmptyNewName", {"--caption", "x="}, "--caption: a name is empty"},
    {"FieldWithoutBrackets",
        {"--field", "orders.Sales=[orders].[Net]"},
        "--field: 'orders.Sales' is not a field name of the form [SOURCE].[FIELD] or [FIELD]"},
    {"OnlyTheOldFieldHasADataSource",
        {"--field", "[orders].[Sales]=[Net]"},
        "--field: either both names of a field have a data source, or none of them"},
    {"OnlyTheNewFieldHasADataSource",
        {"--field", "[Sales]=[orders].[Net]"},
        "--field: either both names of a field have a data source, or none of them"},
    {"TwoNewNames",
        {"--map-source", "a=b", "--map-source", "a=c"},
        "--map-source: the map source 'a' has two new names"},
    {"TwoNewPaths", {"--path", "a/b=c", "--path", "a\\b=d"}, "--path: the path 'a\\b' has two new names"},
};

INSTANTIATE_TEST_SUITE_P(Mistakes, RetargetMistakeTest, testing::ValuesIn(RetargetMistakes), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(RetargetTableTest, ReadsRenamesOfAllKinds)
{
    const TemporaryFolder folder;
    const VString table = folder.Write("t.csv",
        "\xEF\xBB\xBFkind,old,new\r\n"
        "data-source,orders,sales\r\n"
        "caption,x=y,\"a, \"\"b\"\"\"\r\n"
        "field,[sales].[a=b],[sales].[c]\r\n"
        "path,C:\\in\\a.csv,/srv/a.csv\r\n"
        "data-connection,none,n\r\n"
        "map-source,none,n\r\n");
    const ToolResult result = Retarget({"--from", table.toStdString(), "--caption", "Orders=O"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
        "-:1:35: data source 'orders' -> 'sales'\n"
        "-:1:52: caption 'Orders' -> 'O'\n"
        "-:2:43: path 'C:\\in\\a.csv' -> '/srv/a.csv'\n"
        "-:4:17: field '[orders].[a=b]' -> '[sales].[c]'\n"
        "-:4:31: caption 'x=y' -> 'a, \"b\"'\n"
        "-:5:41: field '[orders].[Sales]' -> '[sales].[Sales]'\n"
        "vanxml: warning: data connection 'none' -> 'n' matched nothing\n"
        "vanxml: warning: map source 'none' -> 'n' matched nothing\n");
}

struct TableMistake {
    const char* name;
    std::string table;
    std::string message;  // behind the name of the file
};

void PrintTo(const TableMistake& row, std::ostream* out)
{
    *out << row.table;
}

class RetargetTableMistakeTest : public testing::TestWithParam<TableMistake> {};

TEST_P(RetargetTableMistakeTest, NamesTheLine)
{
    const TemporaryFolder folder;
    const std::string table = folder.Write("t.csv", GetParam().table).toStdString();
    const ToolResult result = Retarget({"--from", table});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "vanxml: " + table + GetParam().message + "\n");
}

const TableMistake TableMistakes[] = {
    {"TooFewFields", "kind,old,new\ncaption,a\n", ":2: a record has the three fields kind, old and new"},
    {"TooManyFields", "caption,a,b,c\n", ":1: a record has the three fields kind, old and new"},
    {"UnknownKind",
        "\n\ncolour,a,b\n",
        ":3: 'colour' is not a kind of name; the kinds are data-source, data-connection, map-source, "
        "caption, field, path"},
    {"MisspeltKind", "captoin,a,b\n", ":1: 'captoin' is not a kind of name; did you mean 'caption'?"},
    {"HeaderBehindTheFirstRecord",
        "caption,a,b\nkind,old,new\n",
        ":2: 'kind' is not a kind of name; the kinds are data-source, data-connection, map-source, "
        "caption, field, path"},
    {"EmptyName", "caption,a,\n", ":1: a name is empty"},
    {"WrongFieldName", "field,a,[b]\n", ":1: 'a' is not a field name of the form [SOURCE].[FIELD] or [FIELD]"},
    {"TwoNewNames", "caption,a,b\ncaption,a,b\ncaption,a,c\n", ":3: the caption 'a' has two new names"},
    {"QuoteWithoutEnd", "caption,\"a,b\n", ":1: a quoted field has no end"},
};

INSTANTIATE_TEST_SUITE_P(Mistakes, RetargetTableMistakeTest, testing::ValuesIn(TableMistakes), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(RetargetTableTest, MissingTableIsAnError)
{
    const ToolResult result = Retarget({"--from", "/no/such/table.csv"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("/no/such/table.csv"));
}

}  // namespace
