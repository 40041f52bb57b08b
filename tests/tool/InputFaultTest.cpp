// Reads documents, schemas and lists while reads fail, come short or are interrupted, and while files change.
#include <cerrno>
#include <tuple>

#include "tests/tool/FaultyRun.h"

using testing::AnyOf;
using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

// Every read returns at most this many bytes, so each file takes several reads.
constexpr char SmallReads[] = "MOST_BYTES=150";

// A command that reads files. FILE stands for the document.
struct ReadingCommand {
    const char* name;
    std::vector<std::string> arguments;
};

std::ostream& operator<<(std::ostream& out, const ReadingCommand& command)
{
    return out << command.name;
}

// Owns a folder with a document, a schema that includes another one, a list of files and a table of renames.
class InputFaultTest : public testing::TestWithParam<ReadingCommand> {
protected:
    InputFaultTest()
    {
        folder.Write("schema.xsd",
            "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:include schemaLocation='more.xsd'/>"
            "<xs:element name='a' type='A'/></xs:schema>");
        folder.Write("more.xsd",
            "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:complexType name='A'><xs:sequence>"
            "<xs:element name='b' type='xs:string' maxOccurs='unbounded'/></xs:sequence>"
            "<xs:attribute name='version'/></xs:complexType></xs:schema>");
        folder.Write("list", document.toStdString() + "\n");
        folder.Write("table.csv", "kind,old,new\nfield,[no such field],[new]\n" + std::string(150, '\n'));
    }

    static std::string MakeDocument()
    {
        std::string text = "<a version='18.1'>\n";
        for (int i = 0; i < 15; ++i)
            text += "<b>text " + std::to_string(i) + "</b>\n";
        return text + "</a>\n";
    }

    std::vector<std::string> Arguments() const
    {
        std::vector<std::string> arguments = GetParam().arguments;
        for (std::string& argument : arguments) {
            if (argument.starts_with("FOLDER/"))
                argument = folder.Path(VString::fromStdString(argument.substr(7))).toStdString();
        }
        return arguments;
    }

    ToolResult Run(std::vector<std::string> environment = {}) const
    {
        folder.Write("a.xml", bytes);
        folder.Write("a.kxb", dataSource);
        environment.push_back(SmallReads);
        return RunWithEnvironment(environment, Arguments());
    }

    // Returns the number of calls of this kind in a run without faults.
    int CountCalls(const std::string& call) const
    {
        const TemporaryFolder other;
        const VString calls = other.Path("calls");
        Run({"CALLS_FILE=" + calls.toStdString()});
        const QList<QByteArray> lines = QByteArray::fromStdString(TemporaryFolder::Read(calls)).split('\n');
        return static_cast<int>(lines.count(QByteArray::fromStdString(call)));
    }

    static std::vector<std::string> FaultEnvironment(const char* call, int after, int error)
    {
        return {std::string("FAILING_CALL=") + call,
            "FAILING_AFTER=" + std::to_string(after),
            "FAILING_ERROR=" + std::to_string(error),
            "FAILING_TIMES=1"};
    }

    void ExpectSameResult(const ToolResult& result, const ToolResult& sound) const
    {
        EXPECT_EQ(result.status, sound.status);
        EXPECT_EQ(result.output, sound.output);
        EXPECT_EQ(result.errors, sound.errors);
    }

    const std::string bytes = MakeDocument();
    const std::string dataSource = "<data-source version='18.1' name='orders' caption='Orders'>\n" +
        std::string(300, ' ') +
        "<connection class='text-file' filename='C:\\in\\a.csv'/>\n"
        "<column name='Sales' caption='Umsatz' data-type='real' role='measure'/>\n</data-source>\n";
    TemporaryFolder folder;
    const VString document = folder.Write("a.xml", bytes);
};

TEST_P(InputFaultTest, FailingReadEndsWithTheReasonAndChangesNoFile)
{
    for (const auto& [call, error, reason] :
        {std::tuple("read", EIO, "Input/output error"), std::tuple("open", EMFILE, "Too many open files")}) {
        const int count = CountCalls(call);
        EXPECT_GT(count, 0) << call;
        for (int after = 0; after < count; ++after) {
            SCOPED_TRACE(std::string(call) + " " + std::to_string(after));
            const ToolResult result = Run(FaultEnvironment(call, after, error));
            EXPECT_EQ(result.status, 2);
            EXPECT_THAT(result.errors, HasSubstr(reason));
            EXPECT_EQ(TemporaryFolder::Read(document), bytes);
        }
    }
}

TEST_P(InputFaultTest, InterruptedAndShortReadsChangeNothing)
{
    const ToolResult sound = Run();
    const int count = CountCalls("read");
    for (int after = 0; after < count; after += 3) {
        SCOPED_TRACE(after);
        ExpectSameResult(Run(FaultEnvironment("read", after, EINTR)), sound);
    }
    ExpectSameResult(Run({"MOST_BYTES=1"}), sound);
}

// Another program can change a document while it is read. The result is that of the old or of the new content, or that
// of a mixture, but a document that is cut off is never taken for a whole one.
TEST_P(InputFaultTest, FileThatShrinksOrGrowsBetweenReadsIsReadToItsNewEnd)
{
    const std::string name = Arguments().back();
    const std::string before = name.ends_with(".kxb") ? dataSource : bytes;
    const ToolResult sound = Run();
    const std::string whole = TemporaryFolder::Read(VString::fromStdString(name));
    const int count = CountCalls("read");
    for (const std::size_t size : {std::size_t{0}, before.size() / 2, before.size() + 300}) {
        std::string changed = before;
        changed.resize(size);
        for (int after = 0; after < count; ++after) {
            SCOPED_TRACE(std::to_string(size) + " bytes at read " + std::to_string(after));
            std::vector<std::string> environment = FaultEnvironment("read", after, 0);
            environment.push_back("CHANGED_FILE=" + name);
            environment.push_back("CHANGED_SIZE=" + std::to_string(size));
            const ToolResult result = Run(environment);
            const std::string left = TemporaryFolder::Read(VString::fromStdString(name));
            if (result.status == sound.status && result.output == sound.output) {
                EXPECT_TRUE(left == whole || left == changed);
                continue;
            }
            EXPECT_THAT(result.status, AnyOf(1, 2)) << result.errors;
            EXPECT_TRUE(left == changed);
        }
    }
}

const ReadingCommand ReadingCommands[] = {
    {"Check", {"check", "FOLDER/a.xml"}},
    {"CheckWithoutSchema", {"check", "--schema", "none", "FOLDER/a.xml"}},
    {"CheckWithSchemaFiles", {"check", "--schema", "FOLDER/schema.xsd", "FOLDER/a.xml"}},
    {"CheckList", {"check", "--files-from", "FOLDER/list", "FOLDER/a.xml"}},
    {"Format", {"format", "FOLDER/a.xml"}},
    {"FormatInPlace", {"format", "--in-place", "FOLDER/a.xml"}},
    {"Edit", {"edit", "--at", "//b", "--text", "new", "FOLDER/a.xml"}},
    {"Query", {"query", "--at", "//b", "FOLDER/a.xml"}},
    {"QueryFirst", {"query", "--first", "--at", "//c", "FOLDER/a.xml"}},
    {"Version", {"version", "FOLDER/a.xml"}},
    {"Tree", {"tree", "FOLDER/a.xml"}},
    {"Stats", {"stats", "FOLDER/a.xml"}},
    {"Diff", {"diff", "FOLDER/schema.xsd", "FOLDER/a.xml"}},
    {"Retarget", {"retarget", "--from", "FOLDER/table.csv", "--data-source", "orders=new", "FOLDER/a.kxb"}},
};

INSTANTIATE_TEST_SUITE_P(Commands, InputFaultTest, testing::ValuesIn(ReadingCommands), [](const auto& test) {
    return std::string(test.param.name);
});

TEST(StandardInputFaultTest, FailingReadIsReportedByAllCommands)
{
    const std::string input = "<a>" + std::string(100000, ' ') + "</a>";
    const std::vector<std::string> commands[] = {{"check", "-"},
        {"format", "-"},
        {"edit", "-", "--at", "/a", "--set", "b=1"},
        {"query", "-", "//b"},
        {"query", "--first", "-", "//b"},
        {"version", "-"},
        {"tree", "-"},
        {"stats", "-"},
        {"diff", "-", SAMPLES_FOLDER "/orders.kxb"},
        {"diff", SAMPLES_FOLDER "/orders.kxb", "-"},
        {"check", "--files-from", "-"}};
    for (const std::vector<std::string>& arguments : commands) {
        for (const int after : {0, 1, 3}) {
            const std::vector<std::string> environment{"FAILING_CALL=input",
                "FAILING_ERROR=" + std::to_string(EIO),
                "FAILING_AFTER=" + std::to_string(after),
                "FAILING_TIMES=1",
                "MOST_BYTES=3000"};
            const ToolResult result = RunWithEnvironment(environment, arguments, input);
            EXPECT_EQ(result.status, 2) << arguments[0] << after;
            EXPECT_THAT(result.errors, HasSubstr("Cannot read standard input: Input/output error"))
                << arguments[0] << after;
        }
    }
}

TEST(StandardInputFaultTest, FolderAsStandardInputIsAnError)
{
    const ToolResult result = RunProgram("sh", {"-c", "\"$0\" format - < /", VANXML_PATH});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "vanxml: Cannot read standard input: Is a directory\n");
}

}  // namespace
