#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <map>
#include <set>

#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::IsSupersetOf;
using testsupport::TemporaryFolder;

namespace {

// The complete events of a trace.
std::vector<QJsonObject> ReadTrace(const VString& file)
{
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray::fromStdString(TemporaryFolder::Read(file)), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    std::vector<QJsonObject> events;
    for (const auto& each : document.object()["traceEvents"].toArray()) {
        if (each.toObject()["ph"].toString() == "X")
            events.push_back(each.toObject());
    }
    return events;
}

std::set<std::string> NamesOf(const std::vector<QJsonObject>& events)
{
    std::set<std::string> names;
    for (const QJsonObject& event : events)
        names.insert(event["name"].toString().toStdString());
    return names;
}

// Expects that two events of a thread lie inside each other or do not overlap.
void ExpectNesting(const std::vector<QJsonObject>& events)
{
    constexpr double rounding = 0.0005;
    for (const QJsonObject& x : events) {
        const double start = x["ts"].toDouble();
        const double end = start + x["dur"].toDouble();
        EXPECT_GE(start, 0);
        EXPECT_GE(end, start);
        for (const QJsonObject& y : events) {
            if (x["tid"] != y["tid"] || y["ts"].toDouble() <= start + rounding || y["ts"].toDouble() >= end - rounding)
                continue;
            EXPECT_LE(y["ts"].toDouble() + y["dur"].toDouble(), end + rounding)
                << x["name"].toString().toStdString() << " and " << y["name"].toString().toStdString();
        }
    }
}

// Expects that each step of the tool on a document names its file, and that each schema is named.
void ExpectNames(const std::vector<QJsonObject>& events, const std::string& file)
{
    for (const QJsonObject& event : events) {
        const std::string name = event["name"].toString().toStdString();
        const QJsonObject values = event["args"].toObject();
        if (name.starts_with("vanxml.") && name != "vanxml.load-schema") {
            EXPECT_EQ(values["file"].toString().toStdString(), file) << name;
        }
        EXPECT_EQ(values["schema"].toString().isEmpty(), name != "vanxml.load-schema") << name;
    }
}

}  // namespace

TEST(TraceFileTest, ShowsTheStepsOfACheckInEachOther)
{
    const TemporaryFolder folder;
    const VString trace = folder.Path("trace.json");
    const ToolResult result =
        RunTool({"check", SAMPLES_FOLDER "/orders.kxb", "--trace", trace.toStdString(), "--jobs", "1"});
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::vector<QJsonObject> events = ReadTrace(trace);
    EXPECT_THAT(NamesOf(events),
        IsSupersetOf({"vanxml",
            "vanxml.document",
            "vanxml.read",
            "vanxml.load-schema",
            "vanxml.validate",
            "XercesXMLParser_DoXercesParse"}));
    ExpectNesting(events);
    ExpectNames(events, SAMPLES_FOLDER "/orders.kxb");
    const QJsonObject& last = events.back();
    EXPECT_EQ(last["name"].toString(), "vanxml");
    EXPECT_EQ(last["cat"].toString(), "activity");
    EXPECT_EQ(last["args"].toObject()["command"].toString(), "check");
    for (const QJsonObject& event : events) {
        EXPECT_EQ(event["tid"].toInt(), 1);
        EXPECT_EQ(event["pid"], last["pid"]);
        EXPECT_GE(event["ts"].toDouble(), last["ts"].toDouble());
    }
}

TEST(TraceFileTest, ShowsWhatIsWritten)
{
    const TemporaryFolder folder;
    const VString trace = folder.Path("trace.json");
    const VString file = folder.Write("a.xml", "<a><b/></a>");
    EXPECT_EQ(RunTool({"format", "--in-place", file.toStdString(), "--trace", trace.toStdString()}).status, 0);
    const std::vector<QJsonObject> events = ReadTrace(trace);
    EXPECT_THAT(NamesOf(events), IsSupersetOf({"vanxml", "vanxml.document", "vanxml.read", "vanxml.write"}));
    ExpectNesting(events);
    ExpectNames(events, file.toStdString());
}

TEST(TraceFileTest, EveryCommandHasTheOption)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a version='1.0'/>").toStdString();
    const VString trace = folder.Path("trace.json");
    const std::vector<std::vector<std::string>> commands{{"format", file},
        {"edit", file, "--at", "a", "--set", "b=c"},
        {"check", file},
        {"retarget", SAMPLES_FOLDER "/base-map-10-2.kxd", "--data-source", "a=b"},
        {"query", file, "//a"},
        {"tree", file},
        {"stats", file},
        {"diff", file, file},
        {"version", file},
        {"schema", "list"},
        {"schema", "show", "kxa-10.2"},
        {"help"}};
    for (std::vector<std::string> command : commands) {
        std::string name = command[0] == "schema" ? command[0] + " " + command[1] : command[0];
        command.insert(command.end(), {"--trace", trace.toStdString()});
        EXPECT_EQ(RunTool(command).status, 0) << name;
        const std::vector<QJsonObject> events = ReadTrace(trace);
        ASSERT_FALSE(events.empty()) << name;
        EXPECT_EQ(events.back()["args"].toObject()["command"].toString().toStdString(), name);
    }
}

TEST(TraceFileTest, ThreadsHaveNumbers)
{
    const TemporaryFolder folder;
    for (int i = 0; i < 60; ++i)
        folder.Write(VString(("d" + std::to_string(i) + ".kxa").c_str()), "<a>" + std::string(50000, 'x') + "</a>");
    const VString trace = folder.Path("trace.json");
    const ToolResult result = RunTool({"check",
        "--schema",
        "none",
        "--recursive",
        "--jobs",
        "3",
        folder.Path("").toStdString(),
        "--trace",
        trace.toStdString()});
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::vector<QJsonObject> events = ReadTrace(trace);
    ExpectNesting(events);
    std::map<int, int> documents;
    int count = 0;
    for (const QJsonObject& event : events) {
        if (event["name"].toString() != "vanxml.document")
            continue;
        ++documents[event["tid"].toInt()];
        ++count;
    }
    EXPECT_EQ(count, 60);
    EXPECT_LE(documents.size(), 3u);
    EXPECT_THAT(TemporaryFolder::Read(trace), HasSubstr(R"("args":{"name":"thread 2"})"));
}

TEST(TraceFileTest, IsCompleteAfterAFailure)
{
    const TemporaryFolder folder;
    const VString trace = folder.Path("trace.json");
    // The first one fails inside the command, the others with an exception that ends it.
    const std::vector<std::vector<std::string>> commands{
        {"check", "missing.xml"}, {"version", "missing.xml"}, {"query", "missing.xml", "//a["}};
    for (std::vector<std::string> command : commands) {
        command.insert(command.end(), {"--trace", trace.toStdString()});
        const ToolResult result = RunTool(command);
        EXPECT_EQ(result.status, 2);
        EXPECT_NE(result.errors, "");
        EXPECT_EQ(NamesOf(ReadTrace(trace)).count("vanxml"), 1u) << command[0];
    }
}

TEST(TraceFileTest, AFileThatCannotBeWrittenIsAnError)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a/>").toStdString();
    const ToolResult result = RunTool({"check", file, "--trace", folder.Path("none/trace.json").toStdString()});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("Cannot write "));
}

TEST(TraceFileTest, ADocumentIsNotOverwritten)
{
    const TemporaryFolder folder;
    const VString document = folder.Write("a.xml", "<a/>");
    const ToolResult result = RunTool({"check", "--trace", document.toStdString(), document.toStdString()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("exists and is not a trace"));
    EXPECT_EQ(TemporaryFolder::Read(document), "<a/>");
    // The command does not even begin.
    const VString other = folder.Write("b.xml", "<a><b/></a>");
    EXPECT_EQ(RunTool({"format", "--in-place", other.toStdString(), "--trace", document.toStdString()}).status, 2);
    EXPECT_EQ(TemporaryFolder::Read(other), "<a><b/></a>");
    EXPECT_EQ(RunTool({"check", document.toStdString(), "--trace", "-"}).status, 2);
    EXPECT_EQ(RunTool({"check", document.toStdString(), "--trace="}).status, 2);
}

TEST(TraceFileTest, TheOutputOfTheCommandIsNotOverwritten)
{
    const TemporaryFolder folder;
    const std::string document = folder.Write("a.xml", "<a><b/></a>").toStdString();
    const VString output = folder.Path("out.xml");
    const ToolResult result =
        RunTool({"format", document, "-o", output.toStdString(), "--trace", output.toStdString()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("exists and is not a trace"));
    EXPECT_THAT(TemporaryFolder::Read(output), HasSubstr("<b />"));
    EXPECT_EQ(NamesInFolderOf(output).size(), 2u);
}
