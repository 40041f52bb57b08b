// The forms in which "vanxml check" reports its messages.
#include "vanxml/CheckReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStandardPaths>

#include "tests/tool/ToolRun.h"
#include "vanxml/DiagnosticJson.h"
#include "vanxml/SarifReport.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

// Runs "vanxml check" in a folder with documents.
class CheckReportTest : public testing::Test {
protected:
    CheckReportTest()
    {
        m_folder.Write("good.xml", "<a/>");
        m_folder.Write("bad.xml", "<a>\n  <b></c>\n</a>");
        m_folder.Write("worse.xml", "<a>");
    }

    ToolResult Check(std::vector<std::string> arguments, const std::string& program = VANXML_PATH) const
    {
        arguments.insert(arguments.begin(), "check");
        return RunProgram(program, arguments, std::string(), std::string(), m_folder.Path("").toStdString());
    }

    testsupport::TemporaryFolder m_folder;
};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

QJsonObject ParseJson(const std::string& text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << ": " << text;
    return document.object();
}

std::string Get(const QJsonObject& object, const char* name)
{
    return object.value(QLatin1String(name)).toVariant().toString().toStdString();
}

// Returns the run of a SARIF log.
QJsonObject RunOf(const ToolResult& result)
{
    return ParseJson(result.output)["runs"].toArray().at(0).toObject();
}

QJsonObject InvocationOf(const QJsonObject& run)
{
    return run["invocations"].toArray().at(0).toObject();
}

// A diagnostic with all fields.
ParseDiagnostic MakeFullDiagnostic()
{
    ParseDiagnostic diagnostic;
    diagnostic.severity = ParseDiagnostic::Severity::Error;
    diagnostic.code = DiagnosticCode::UndeclaredAttribute;
    diagnostic.message = "attribute 'lnag' is not allowed";
    diagnostic.sourceId = "my files/ä.xml";
    diagnostic.start = {2, 4};
    diagnostic.end = {2, 8};
    diagnostic.path = "/a/b[2]";
    diagnostic.element = 3;
    diagnostic.attribute = "lnag";
    diagnostic.value = "\"de\"\n\u0001";
    diagnostic.allowed = {"lang", "id"};
    diagnostic.expected = "a name";
    diagnostic.suggestion = "lang";
    diagnostic.related = ParseDiagnostic::Related{"element 'b' was opened", {1, 7}};
    return diagnostic;
}

}  // namespace

TEST_F(CheckReportTest, GccLinesMatchThePatternOfAnEditor)
{
    const ToolResult result = Check({"--format", "gcc", "good.xml", "bad.xml", "worse.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "3 documents, 2 errors\n");
    // The pattern "%f:%l:%c: %t%*[^:]:%m" of Vim's default 'errorformat', as a regular expression.
    const QRegularExpression pattern(
        QStringLiteral("^([^:]+):([0-9]+):([0-9]+): ([ew])[^:]*: (.+) \\[([a-z-]+)\\].*$"));
    std::vector<std::string> files;
    for (const std::string& line : Lines(result.errors)) {
        const QRegularExpressionMatch match = pattern.match(QString::fromStdString(line));
        ASSERT_TRUE(match.hasMatch()) << line;
        files.push_back((match.captured(1) + u' ' + match.captured(2) + u' ' + match.captured(4)).toStdString());
    }
    EXPECT_THAT(files, testing::ElementsAre("bad.xml 2 e", "worse.xml 1 e"));
}

TEST_F(CheckReportTest, JsonIsOneObjectOnEachLine)
{
    const ToolResult result = Check({"--format", "json", "good.xml", "bad.xml", "missing.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "2 documents, 1 error, 1 not checked\n");
    const std::vector<std::string> lines = Lines(result.output);
    ASSERT_EQ(lines.size(), 2u);
    const QJsonObject error = ParseJson(lines[0]);
    EXPECT_EQ(Get(error, "type"), "diagnostic");
    EXPECT_EQ(Get(error, "file"), "bad.xml");
    EXPECT_EQ(Get(error, "line"), "2");
    EXPECT_NE(Get(error, "message"), "");
    const QJsonObject failure = ParseJson(lines[1]);
    EXPECT_EQ(Get(failure, "type"), "failure");
    EXPECT_EQ(Get(failure, "file"), "missing.xml");
    EXPECT_THAT(Get(failure, "message"), HasSubstr("Cannot read"));
}

TEST_F(CheckReportTest, JsonOfGoodDocumentsIsEmpty)
{
    EXPECT_EQ(Check({"--format", "json", "good.xml"}).output, "");
}

TEST(DiagnosticJsonTest, HasAllFields)
{
    const QJsonObject object = ParseJson(DiagnosticToJson(MakeFullDiagnostic()));
    EXPECT_EQ(object, ParseJson(R"json({"type": "diagnostic", "file": "my files/ä.xml", "severity": "error",
            "code": "undeclared-attribute", "message": "attribute 'lnag' is not allowed",
            "line": 2, "column": 4, "endLine": 2, "endColumn": 8, "path": "/a/b[2]", "element": 3,
            "attribute": "lnag", "value": "\"de\"\n\u0001", "allowed": ["lang", "id"], "expected": "a name",
            "suggestion": "lang", "related": {"message": "element 'b' was opened", "line": 1, "column": 7}})json"));
}

TEST(DiagnosticJsonTest, OmitsEmptyFields)
{
    ParseDiagnostic diagnostic;
    diagnostic.severity = ParseDiagnostic::Severity::FatalError;
    diagnostic.message = "m";
    EXPECT_EQ(DiagnosticToJson(diagnostic),
        R"json({"code":"other","message":"m","severity":"fatal","type":"diagnostic"})json");
    EXPECT_EQ(FailureToJson(VString(), "m"), R"json({"message":"m","type":"failure"})json");
}

TEST_F(CheckReportTest, SarifHasResultsRulesAndFailures)
{
    const ToolResult result = Check({"--format", "sarif", "good.xml", "bad.xml", "worse.xml", "missing.xml"});
    EXPECT_EQ(result.status, 2);
    const QJsonObject log = ParseJson(result.output);
    EXPECT_EQ(Get(log, "version"), "2.1.0");
    const QJsonObject run = log["runs"].toArray().at(0).toObject();
    EXPECT_EQ(Get(run, "columnKind"), "utf16CodeUnits");
    const QJsonArray results = run["results"].toArray();
    ASSERT_EQ(results.size(), 2);
    const QJsonObject place =
        results[0].toObject()["locations"].toArray().at(0).toObject()["physicalLocation"].toObject();
    EXPECT_EQ(Get(place["artifactLocation"].toObject(), "uri"), "bad.xml");
    EXPECT_EQ(Get(place["region"].toObject(), "startLine"), "2");
    const QJsonObject invocation = run["invocations"].toArray().at(0).toObject();
    EXPECT_EQ(invocation["executionSuccessful"].toBool(true), false);
    EXPECT_EQ(invocation["toolExecutionNotifications"].toArray().size(), 1);
    std::set<std::string> rules;
    for (const QJsonValue& rule : run["tool"].toObject()["driver"].toObject()["rules"].toArray())
        rules.insert(Get(rule.toObject(), "id"));
    for (const QJsonValue& each : results)
        EXPECT_EQ(rules.count(Get(each.toObject(), "ruleId")), 1u);
}

TEST_F(CheckReportTest, SarifOfGoodDocumentsHasNoResults)
{
    const QJsonObject run = RunOf(Check({"--format", "sarif", "good.xml"}));
    EXPECT_TRUE(run["results"].isArray());
    EXPECT_TRUE(run["results"].toArray().isEmpty());
    EXPECT_TRUE(InvocationOf(run)["executionSuccessful"].toBool());
}

TEST_F(CheckReportTest, BrokenSchemaIsAFailureOfEachDocument)
{
    m_folder.Write("broken.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:nonsense/></xs:schema>");
    const ToolResult json = Check({"--schema", "broken.xsd", "--format", "json", "bad.xml", "good.xml"});
    EXPECT_EQ(json.status, 2);
    const std::vector<std::string> lines = Lines(json.output);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(Get(ParseJson(lines[0]), "code"), "bad-schema");
    EXPECT_EQ(ParseJson(lines[1]), ParseJson(R"json({"type": "failure", "file": "bad.xml",
            "message": "not checked, because the schema 'broken.xsd' cannot be used"})json"));
    EXPECT_EQ(Get(ParseJson(lines[2]), "file"), "good.xml");
    const QJsonObject run = RunOf(Check({"--schema", "broken.xsd", "--format", "sarif", "bad.xml", "good.xml"}));
    EXPECT_EQ(run["results"].toArray().size(), 1);
    EXPECT_FALSE(InvocationOf(run)["executionSuccessful"].toBool(true));
    EXPECT_EQ(InvocationOf(run)["toolExecutionNotifications"].toArray().size(), 2);
    const ToolResult text = Check({"--schema", "broken.xsd", "--format", "gcc", "bad.xml", "good.xml"});
    EXPECT_EQ(Lines(text.errors).size(), 1u);
    EXPECT_EQ(text.output, "0 documents, 0 errors, 2 not checked\n");
}

TEST_F(CheckReportTest, SarifTellsHowManyMessagesAreLeftOut)
{
    const QJsonObject run =
        RunOf(Check({"--max-errors", "1", "--format", "sarif", "bad.xml", "worse.xml", "missing.xml"}));
    EXPECT_FALSE(InvocationOf(run)["executionSuccessful"].toBool(true));
    const QJsonArray notifications = InvocationOf(run)["toolExecutionNotifications"].toArray();
    ASSERT_EQ(notifications.size(), 1);
    EXPECT_EQ(notifications[0].toObject(),
        ParseJson(R"json({"level": "note", "message": {"text": "2 more messages are not shown"}})json"));
}

TEST(SarifReportTest, ResultHasAllLocations)
{
    const QJsonObject object = ParseJson(SarifReport().FormatDiagnostic(MakeFullDiagnostic(), std::nullopt));
    EXPECT_EQ(object, ParseJson(R"json({"ruleId": "undeclared-attribute", "level": "error",
            "message": {"text": "attribute 'lnag' is not allowed (element 'b' was opened on line 1)"
}
, "locations" : [ {
    "physicalLocation" : {
        "artifactLocation" : {"uri" : "my%20files/%C3%A4.xml"},
        "region" : {"startLine" : 2, "startColumn" : 4, "endLine" : 2, "endColumn" : 8}
    },
    "logicalLocations" : [ {"fullyQualifiedName" : "/a/b[2]/@lnag", "kind" : "attribute"} ]
} ],
                "relatedLocations"
    : [ {
        "physicalLocation" :
            {"artifactLocation" : {"uri" : "my%20files/%C3%A4.xml"}, "region" : {"startLine" : 1, "startColumn" : 7}},
        "message" : {"text" : "element 'b' was opened here"}
    } ]
})json"));
}

TEST(SarifReportTest, NamesBecomeUriReferences)
{
    EXPECT_EQ(ToUriReference("a/b.xml"), "a/b.xml");
    EXPECT_EQ(ToUriReference("../ü #?%.xml"), "../%C3%BC%20%23%3F%25.xml");
#if defined(_WIN32)
    EXPECT_EQ(ToUriReference("a\\b.xml"), "a/b.xml");
    EXPECT_EQ(ToUriReference("C:\\a b#.xml"), "file:///C:/a%20b%23.xml");
    EXPECT_EQ(ToUriReference("\\\\?\\C:\\a.xml"), "file:///C:/a.xml");
    EXPECT_EQ(ToUriReference("\\\\server\\share\\a b.xml"), "file://server/share/a%20b.xml");
    EXPECT_EQ(ToUriReference("\\\\?\\UNC\\server\\share\\a.xml"), "file://server/share/a.xml");
    // This name is relative to the current folder of the drive.
    EXPECT_THAT(
        ToUriReference("c:d.xml"), testing::AllOf(testing::StartsWith("file:///C:/"), testing::EndsWith("/d.xml")));
#else
    EXPECT_EQ(ToUriReference("c:d.xml"), "c%3Ad.xml");
    EXPECT_EQ(ToUriReference("/tmp/a b#.xml"), "file:///tmp/a%20b%23.xml");
#endif
}

namespace {

// Validates a JSON file with the Python package jsonschema. The system's Python is preferred, because the system's
// packages belong to it.
ToolResult Validate(const std::string& file, const std::string& schema)
{
#if defined(_WIN32)
    const char* const program = "python";
#else
    const char* const program = QFileInfo::exists(QStringLiteral("/usr/bin/python3")) ? "/usr/bin/python3" : "python3";
#endif
    const char* const script = "import json, sys\n"
                               "try: import jsonschema\n"
                               "except ImportError: sys.exit(77)\n"
                               "load = lambda name: json.load(open(name, encoding='utf-8'))\n"
                               "jsonschema.validate(load(sys.argv[1]), load(sys.argv[2]))\n";
    return RunProgram(program, {"-c", script, file, schema});
}

}  // namespace

TEST_F(CheckReportTest, SarifIsValid)
{
    m_folder.Write("all.kxe", "<captions version='18.1'><nonsense/></captions>");
    const std::string log = m_folder.Path("log.sarif").toStdString();
    const std::string logText =
        Check({"--format", "sarif", "--max-errors", "3", "good.xml", "bad.xml", "missing.xml", "all.kxe", "worse.xml"})
            .output;
    std::string withAllFields = logText;
    const std::string start = "\"results\":[\n";
    ASSERT_NE(withAllFields.find(start), std::string::npos);
    withAllFields.insert(withAllFields.find(start) + start.size(),
        SarifReport().FormatDiagnostic(MakeFullDiagnostic(), std::nullopt) + ",");
    for (const std::string& text : {logText, withAllFields, Check({"--format", "sarif", "good.xml"}).output}) {
        m_folder.Write("log.sarif", text);
        const ToolResult result = Validate(log, SARIF_SCHEMA);
        if (result.status == 77 || result.status == -1)
            GTEST_SKIP() << "no Python (with Wine: for Windows) with the package jsonschema is in PATH";
        EXPECT_EQ(result.status, 0) << result.output << result.errors;
    }
    m_folder.Write("log.sarif", logText.substr(0, logText.rfind("\"version\"")) + "\"Version\":\"1\"}}}]}");
    EXPECT_EQ(Validate(log, SARIF_SCHEMA).status, 1);
}

TEST_F(CheckReportTest, UnknownFormatsAreMistakes)
{
    EXPECT_EQ(Check({"--format", "xml", "good.xml"}).status, 2);
    EXPECT_EQ(Check({"--color", "sometimes", "good.xml"}).status, 2);
    EXPECT_EQ(Check({"--max-errors", "-1", "good.xml"}).status, 2);
    EXPECT_EQ(Check({"--max-errors", "1", "--quiet", "good.xml"}).status, 2);
}

TEST_F(CheckReportTest, QuietPrintsNothing)
{
    for (const char* format : {"text", "gcc", "json", "sarif", "html"}) {
        const ToolResult result = Check({"--quiet", "--format", format, "bad.xml", "missing.xml"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output + result.errors, "") << format;
    }
    EXPECT_EQ(Check({"--quiet", "bad.xml"}).status, 1);
    EXPECT_EQ(Check({"--quiet", "good.xml"}).status, 0);
}

TEST_F(CheckReportTest, MaxErrorsLimitsTheMessages)
{
    const auto check = [&](const std::string& most, const std::string& format) {
        return Check({"--max-errors", most, "--format", format, "bad.xml", "worse.xml", "missing.xml"});
    };
    const ToolResult one = check("1", "gcc");
    EXPECT_EQ(one.status, 2);
    EXPECT_THAT(one.errors, StartsWith("bad.xml:"));
    EXPECT_THAT(one.errors, EndsWith("\nvanxml: 2 more messages are not shown\n"));
    EXPECT_EQ(one.output, "2 documents, 2 errors, 1 not checked\n");
    EXPECT_THAT(check("2", "text").errors, EndsWith("vanxml: 1 more message is not shown\n"));
    EXPECT_THAT(check("3", "text").errors, testing::Not(HasSubstr("shown")));
    EXPECT_EQ(check("0", "gcc").errors, "vanxml: 3 more messages are not shown\n");
    const ToolResult json = check("1", "json");
    EXPECT_EQ(Lines(json.output).size(), 1u);
    EXPECT_THAT(json.errors, StartsWith("vanxml: 2 more messages are not shown\n"));
}

TEST_F(CheckReportTest, ColoursNeedATerminalOrTheOption)
{
    EXPECT_THAT(Check({"bad.xml"}).errors, testing::Not(HasSubstr("\x1B")));
    EXPECT_THAT(Check({"--color", "always", "bad.xml"}).errors, StartsWith("\x1B[1mbad.xml:2:"));
}

#if defined(__linux__)
// The program "script" runs a command on a terminal.
class CheckOnATerminalTest : public CheckReportTest {
protected:
    void SetUp() override
    {
        if (QStandardPaths::findExecutable("script").isEmpty())
            GTEST_SKIP() << "the program script is missing";
    }

    // Returns what "vanxml check" writes to the terminal.
    std::string CheckOnTerminal(const std::string& environment, const std::string& arguments) const
    {
        const std::string command = environment + " '" + VANXML_PATH + "' check " + arguments;
        return RunProgram("script",
            {"--quiet", "--return", "--command", command, "/dev/null"},
            std::string(),
            std::string(),
            m_folder.Path("").toStdString())
            .output;
    }
};

TEST_F(CheckOnATerminalTest, AutoColoursATerminalUnlessNoColorIsSet)
{
    const std::string colors = "\x1B[1mbad.xml:2:";
    EXPECT_THAT(CheckOnTerminal("TERM=xterm NO_COLOR=", "bad.xml"), HasSubstr(colors));
    EXPECT_THAT(CheckOnTerminal("TERM=xterm NO_COLOR=1", "bad.xml"), StartsWith("bad.xml:2:"));
    EXPECT_THAT(CheckOnTerminal("TERM=xterm NO_COLOR=1", "--color always bad.xml"), HasSubstr(colors));
    EXPECT_THAT(CheckOnTerminal("TERM=xterm NO_COLOR=", "--color never bad.xml"), StartsWith("bad.xml:2:"));
    EXPECT_THAT(CheckOnTerminal("TERM=dumb NO_COLOR=", "bad.xml"), StartsWith("bad.xml:2:"));
}

TEST_F(CheckOnATerminalTest, ProgressIsShownAndDeleted)
{
    std::string text = "<a>";
    for (int i = 0; i < 4'000'000; ++i)
        text += "<b/>";
    m_folder.Write("large.xml", text + "</a>");
    const std::string output = CheckOnTerminal("TERM=xterm", "--jobs 1 large.xml good.xml bad.xml");
    EXPECT_THAT(output, HasSubstr("\r\x1B[K1/3 documents"));
    EXPECT_THAT(output, HasSubstr(" documents\r\x1B[K\x1B[1mbad.xml:2:"));
    EXPECT_THAT(output, ContainsExpression("3 documents, 1 error; [0-9]+\\.[0-9] s, [0-9]+ MB/s"));
    EXPECT_THAT(CheckOnTerminal("TERM=xterm", "--quiet large.xml good.xml bad.xml"), "");
}
#endif
