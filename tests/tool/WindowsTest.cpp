// The behaviour of the tool that only Windows has: names in UTF-16, consoles, devices, and events that end the tool.
#include <algorithm>
#include <cstring>
#include <functional>
#include <thread>

#include <QElapsedTimer>

#include <windows.h>

#include "tests/tool/ToolRun.h"
#include "vancoreplatform/WindowsFiles.h"
#include "vanxml/OperatingSystem.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

// Starts programs with settings that only Windows has.
ToolResult RunNative(const QString& program,
    const QStringList& arguments,
    const QString& nativeArguments,
    const std::function<void(QProcess::CreateProcessArguments*)>& modify)
{
    QProcess process;
    process.setNativeArguments(nativeArguments);
    process.setCreateProcessArgumentsModifier(modify);
    process.start(program, arguments);
    process.closeWriteChannel();
    ToolResult result;
    if (!process.waitForFinished(120000))
        return result;
    result.status = process.exitCode();
    result.output = process.readAllStandardOutput().toStdString();
    result.errors = process.readAllStandardError().toStdString();
    return result;
}

// The consoles of Wine accept the mode for escape sequences, but show them as text.
bool IsWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr;
}

// Runs the tool in a console. Sends Ctrl+C after the time unless that is negative. Returns the report of the program
// console_runner.
std::string RunInConsole(const std::vector<std::string>& arguments, int milliseconds = -1)
{
    QStringList all{QString::number(milliseconds), QStringLiteral(VANXML_PATH)};
    for (const std::string& argument : arguments)
        all << QString::fromStdString(argument);
    const auto hideWindow = [](QProcess::CreateProcessArguments* process) { process->flags |= CREATE_NO_WINDOW; };
    return QString::fromStdString(RunNative(QStringLiteral(CONSOLE_RUNNER_PATH), all, QString(), hideWindow).output)
        .remove(u'\r')
        .toStdString();
}

// Opens an existing file. Other processes can open it only as `sharing` says.
FileHandle OpenFile(const VString& file, DWORD sharing)
{
    return FileHandle(
        CreateFileW(ToNativeName(file).c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr));
}

// A named pipe for one connection. A thread of the test serves it.
class NamedPipe {
public:
    // Writes `text` to the process that connects. Reads from it if `text` is empty.
    explicit NamedPipe(const std::string& text)
        : m_isReader(text.empty()),
          m_bytes(text),
          m_pipe(CreateNamedPipeW(ToNativeName(name).c_str(),
              m_isReader ? PIPE_ACCESS_INBOUND : PIPE_ACCESS_OUTBOUND,
              PIPE_TYPE_BYTE,
              1,
              0x10000,
              0x10000,
              0,
              nullptr)),
          m_thread([this] { Serve(); })
    {}
    ~NamedPipe() { Join(); }
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;

    // Waits until the other process has closed the pipe. Returns the bytes that it wrote.
    std::string Join()
    {
        if (m_thread.joinable()) {
            // Ends the wait for a connection if there was none.
            const DWORD access = m_isReader ? GENERIC_WRITE : GENERIC_READ;
            const HANDLE end = CreateFileW(ToNativeName(name).c_str(), access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
            if (end != INVALID_HANDLE_VALUE)
                CloseHandle(end);
            m_thread.join();
        }
        return m_bytes;
    }

    const VString name = VString("\\\\.\\pipe\\vanxml-test-") + std::to_string(GetCurrentProcessId()).c_str();

private:
    void Serve()
    {
        ConnectNamedPipe(m_pipe.Get(), nullptr);  // fails if the process is connected already
        DWORD count = 0;
        if (m_isReader) {
            char buffer[1000];
            while (ReadFile(m_pipe.Get(), buffer, sizeof buffer, &count, nullptr))
                m_bytes.append(buffer, count);
        } else {
            WriteFile(m_pipe.Get(), m_bytes.data(), static_cast<DWORD>(m_bytes.size()), &count, nullptr);
            FlushFileBuffers(m_pipe.Get());  // waits for the reader
        }
        m_pipe.Reset();
    }

    const bool m_isReader;
    std::string m_bytes;
    FileHandle m_pipe;
    std::thread m_thread;
};

// Returns a document of 3 MB.
std::string LargeDocument()
{
    std::string text = "<a>";
    for (int i = 0; i < 60000; ++i)
        text += "<b name='some value of an attribute'>text " + std::to_string(i) + "</b>";
    return text + "</a>";
}

// Two large documents, which the tool replaces until something ends it.
class InterruptedTool {
public:
    InterruptedTool()
    {
        WriteFiles();
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(RunTool(arguments).status, 0);
        duration = static_cast<int>(timer.elapsed());
        m_formatted = TemporaryFolder::Read(m_folder.Path("a.xml"));
    }

    void WriteFiles() const
    {
        for (const char* name : {"a.xml", "b.xml"})
            m_folder.Write(name, m_original);
    }

    std::vector<std::string> Names() const { return NamesInFolderOf(m_folder.Path("a.xml")); }

    void ExpectWholeFiles() const
    {
        for (const char* name : {"a.xml", "b.xml"}) {
            const std::string bytes = TemporaryFolder::Read(m_folder.Path(name));
            EXPECT_TRUE(bytes == m_original || bytes == m_formatted) << name << " has " << bytes.size() << " bytes";
        }
    }

    // Removes the temporary files. Expects that each is empty or has the whole new content: the system does not remove
    // the temporary file of a process that is killed just after it created the file or while it renames the file.
    void RemoveTemporaryFiles() const
    {
        for (const std::string& name : Names()) {
            if (!name.starts_with(".vanxml-"))
                continue;
            const VString path = m_folder.Path(VString::fromStdString(name));
            const std::string bytes = TemporaryFolder::Read(path);
            EXPECT_TRUE(bytes.empty() || bytes == m_formatted) << name << " has " << bytes.size() << " bytes";
            EXPECT_TRUE(QFile::remove(path.ToQString()));
        }
    }

    int duration = 0;  // of the whole run, in milliseconds

private:
    TemporaryFolder m_folder;
    const std::string m_original = LargeDocument();
    std::string m_formatted;

public:
    const std::vector<std::string> arguments{"format",
        "--in-place",
        "--jobs",
        "2",
        m_folder.Path("a.xml").toStdString(),
        m_folder.Path("b.xml").toStdString()};
};

}  // namespace

TEST(WindowsTest, ArgumentsOutputAndNamesAreUnicodeWhateverTheCodePage)
{
    const TemporaryFolder folder;
    const VString name = VString::fromStdString("Ελλάδα-漢字-😀.xml");
    const std::string file = folder.Write(name, "<ελ>漢字😀</ελ>").toStdString();
    EXPECT_EQ(RunTool({"query", "--text", file, "ελ"}).output, "漢字😀\n");
    EXPECT_EQ(RunTool({"format", "--check", file}).output, file + "\n");
    EXPECT_EQ(RunTool({"format", "--in-place", file}).status, 0);
    EXPECT_THAT(NamesInFolderOf(folder.Path(name)), ElementsAre(name.toStdString()));
    const std::string missing = folder.Path(VString::fromStdString("όχι-漢.xml")).toStdString();
    EXPECT_THAT(RunTool({"check", missing}).errors, HasSubstr("Cannot read \"" + missing + "\": "));
}

TEST(WindowsTest, LoneSurrogatesAreRejected)
{
    const std::pair<QString, std::string> names[] = {
        {QStringLiteral("a") + QChar(0xD83D) + QStringLiteral(".xml"), "a\\xed\\xa0\\xbd.xml"},
        {QStringLiteral("a") + QChar(0xDE00) + QStringLiteral(".xml"), "a\\xed\\xb8\\x80.xml"},
    };
    for (const auto& [name, shown] : names) {
        const ToolResult result = RunNative(QStringLiteral(VANXML_PATH), {"check", name}, QString(), nullptr);
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, StartsWith("vanxml: the argument '" + shown + "' is not UTF-8\nRun "));
    }
}

TEST(WindowsTest, QuotesAndBackslashesOfACommandLineAreReadLikeTheRuntimeReadsThem)
{
    const std::pair<const char*, const char*> commands[] = {
        {"schema show \"a b\"", "a b"},
        {"schema show \"\"", ""},
        {"schema show a\\\\b\\", "a\\\\b\\"},
        {"schema show \"a\\\\\"", "a\\"},
        {"schema show a\\\"b", "a\"b"},
        {"schema show \"a\\\\\\\"b c\"", "a\\\"b c"},
        {"schema   show\t*.kxa", "*.kxa"},
    };
    for (const auto& [command, name] : commands) {
        const ToolResult result = RunNative(QStringLiteral(VANXML_PATH), {}, command, nullptr);
        EXPECT_THAT(result.errors, HasSubstr("there is no schema '" + std::string(name) + "'")) << command;
    }
}

TEST(WindowsTest, PatternsHaveBothSeparatorsAndNoCase)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkdir(folder.Path("docs").ToQString()));
    for (const char* name : {"docs/A.KXA", "docs/b.kxa", "docs/hidden.kxa"})
        folder.Write(name, "<a><b/></a>");
    ASSERT_TRUE(SetFileAttributesW(
        reinterpret_cast<const wchar_t*>(folder.Path("docs/hidden.kxa").ToQString().utf16()), FILE_ATTRIBUTE_HIDDEN));
    const std::string path = folder.Path("").toStdString();
    const auto select = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"format", "--check"});
        return RunProgram(VANXML_PATH, arguments, "", "", path).output;
    };
    EXPECT_EQ(select({"DOCS\\*.kxa"}), "DOCS\\A.KXA\nDOCS\\b.kxa\n");
    EXPECT_EQ(select({"docs/?.KXA"}), "docs/A.KXA\ndocs/b.kxa\n");
    EXPECT_EQ(select({"do[c]s\\[ab].kxa"}), "docs\\A.KXA\ndocs\\b.kxa\n");
    EXPECT_EQ(select({"docs\\a.kxa", "DOCS/A.kxa", "docs\\*"}), "docs\\a.kxa\ndocs\\b.kxa\n");
    EXPECT_EQ(select({"--recursive", "docs"}), "docs\\A.KXA\ndocs\\b.kxa\n");
    EXPECT_EQ(select({"docs\\hidden.kxa"}), "docs\\hidden.kxa\n");
    const std::string native = Native(folder.Path("docs").toStdString());
    EXPECT_EQ(select({native + "\\b*.kxa"}), native + "\\b.kxa\n");
    EXPECT_EQ(select({"\\\\?\\" + native + "\\b*.kxa"}), "\\\\?\\" + native + "\\b.kxa\n");
    EXPECT_EQ(select({native.substr(0, 2) + Native(folder.Path("docs").toStdString()).substr(2) + "/b.kx?"}),
        native + "\\b.kxa\n");
    EXPECT_THAT(RunProgram(VANXML_PATH, {"check", "docs", "--recursive", "--include", "docs\\*"}, "", "", path).errors,
        HasSubstr("is not a pattern for the name of a file"));
}

TEST(WindowsTest, PatternsMayBeRelativeToADriveAndIgnoreTheCaseOfAllLetters)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkdir(folder.Path("docs").ToQString()));
    folder.Write("docs/ελ.kxa", "<a><b/></a>");
    const std::string path = Native(folder.Path("").toStdString()) + "\\";
    const std::string drive = path.substr(0, 2);
    const std::string rooted = path.substr(2);
    for (const std::string& start : {drive, rooted, path}) {
        const std::string pattern = start + "docs\\*Λ.kxa";
        const ToolResult result =
            RunProgram(VANXML_PATH, {"format", "--check", pattern}, "", "", folder.Path("").toStdString());
        EXPECT_EQ(result.output, start + "docs\\ελ.kxa\n") << result.errors;
    }
}

TEST(WindowsTest, NamesWithLoneSurrogatesAreNotUtf8)
{
    EXPECT_EQ(OperatingSystem::ToUtf8(L"ελ\xD83D\xDE00"), "ελ😀");
    EXPECT_EQ(OperatingSystem::ToUtf8(L"a\xD83D.kxa"), "a\xed\xa0\xbd.kxa");
    EXPECT_EQ(OperatingSystem::ToUtf8(L"\xDE00\xD83D"), "\xed\xb8\x80\xed\xa0\xbd");
}

TEST(WindowsTest, FileWithALoneSurrogateInItsNameIsAnErrorAndTheOthersAreSelected)
{
    const TemporaryFolder folder;
    folder.Write("a.kxa", "<a><b/></a>");
    const std::wstring name = ToNativeName(folder.Path("")) + L"\\b\xD83D.kxa";
    const HANDLE created = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    if (created == INVALID_HANDLE_VALUE)
        GTEST_SKIP() << "the names of this file system have no lone surrogates";
    CloseHandle(created);
    const std::string path = folder.Path("").toStdString() + "/";
    for (const std::string& argument : {path, path + "*.kxa"}) {
        const ToolResult result = RunTool({"format", "--check", "--recursive", argument});
        EXPECT_EQ(result.output, path + "a.kxa\n");
        EXPECT_EQ(result.errors, "vanxml: the name of the file '" + path + "b\\xed\\xa0\\xbd.kxa' is not UTF-8\n");
        EXPECT_EQ(result.status, 2);
    }
    EXPECT_TRUE(DeleteFileW(name.c_str()));
}

TEST(WindowsTest, FilesThatAnotherProcessUsesAreErrorsAndStay)
{
    const TemporaryFolder folder;
    const std::string old = "<a><b/></a>";
    const VString used = folder.Write("used.xml", old);
    const std::string name = used.toStdString();
    const std::string other = folder.Write("other.xml", old).toStdString();
    {
        const FileHandle reader = OpenFile(used, FILE_SHARE_READ | FILE_SHARE_WRITE);
        const ToolResult result = RunTool({"format", "--in-place", name, other});
        EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": another process uses the file\n");
        EXPECT_EQ(result.status, 2);
    }
    EXPECT_EQ(TemporaryFolder::Read(used), old);
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("other.xml")), Header() + "<a>\n  <b />\n</a>\n");
    EXPECT_THAT(NamesInFolderOf(used), ElementsAre("other.xml", "used.xml"));

    const FileHandle owner = OpenFile(used, 0);
    const std::string reason = "Cannot read \"" + name + "\": another process uses the file\n";
    const ToolResult documents = RunTool({"check", name, other});
    EXPECT_EQ(documents.errors, "vanxml: " + reason);
    EXPECT_EQ(documents.output, "1 document, 0 errors, 1 not checked\n");
    EXPECT_EQ(documents.status, 2);
    EXPECT_THAT(RunTool({"check", "--schema", name, other}).errors, HasSubstr(reason));
}

TEST(WindowsTest, LineEndsOfDocumentsStay)
{
    const TemporaryFolder folder;
    const std::string lines[] = {"<a>\n<b/>\n</a>\n", "<a>\r\n<b/>\r\n</a>\r\n"};
    for (const std::string& text : lines) {
        const std::string end = text.find('\r') == std::string::npos ? "\n" : "\r\n";
        const std::string formatted = "<a>" + end + "  <b />" + end + "</a>" + end;
        EXPECT_EQ(RunTool({"format", "--no-header", "-"}, text).output, formatted);
        const std::string file = folder.Write("a.xml", text).toStdString();
        EXPECT_EQ(RunTool({"format", "--no-header", file, "-o", folder.Path("b.xml").toStdString()}).status, 0);
        EXPECT_EQ(TemporaryFolder::Read(folder.Path("b.xml")), formatted);
        const std::string edited = RunTool({"edit", file, "--at", "a/b", "--set", "c=1"}).output;
        EXPECT_EQ(std::count(edited.begin(), edited.end(), '\r'), std::count(text.begin(), text.end(), '\r'));
        const std::string diff = RunTool({"format", "--no-header", "--diff", file}).output;
        EXPECT_THAT(diff, HasSubstr("-<b/>" + end + "+  <b />" + end));
        EXPECT_THAT(diff, HasSubstr("@@ -1,3 +1,3 @@\n"));
    }
}

TEST(WindowsTest, DevicesAreWrittenAndNotReplaced)
{
    const TemporaryFolder folder;
    for (const char* device : {"NUL", "nul", "\\\\.\\NUL"}) {
        const ToolResult result =
            RunProgram(VANXML_PATH, {"format", "-", "-o", device}, "<a/>", "", folder.Path("").toStdString());
        EXPECT_EQ(result.errors, "") << device;
        EXPECT_EQ(result.status, 0);
    }
    EXPECT_THAT(NamesInFolderOf(folder.Path("a")), ElementsAre());
    const VString target = VString("\\\\.\\") + QDir::toNativeSeparators(folder.Path("b.xml").ToQString());
    EXPECT_EQ(RunTool({"format", "--no-header", "-", "-o", target.toStdString()}, "<a/>").errors, "");
    EXPECT_EQ(RunTool({"format", "--no-header", "--in-place", target.toStdString()}).errors, "");
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("b.xml")), "<a />\n");
    const std::string file = folder.Write("a.xml", "<ελ>漢字</ελ>").toStdString();
    for (const char* device : {"CON", "CONOUT$", "\\\\.\\CON"})
        EXPECT_THAT(RunInConsole({"format", "--no-header", file, "-o", device}), HasSubstr("<ελ>漢字</ελ>\n"));
}

TEST(WindowsTest, NamedPipesAreReadAndWrittenAndNotReplaced)
{
    {
        const NamedPipe pipe("<a><b/></a>");
        const ToolResult result = RunTool({"format", "--no-header", pipe.name.toStdString()});
        EXPECT_EQ(result.output, "<a>\n  <b />\n</a>\n") << result.errors;
    }
    {
        const NamedPipe pipe("<a><b/></a>");
        EXPECT_THAT(
            RunTool({"format", "--in-place", pipe.name.toStdString()}).errors, HasSubstr("it is not a regular file"));
    }
    NamedPipe pipe("");
    EXPECT_EQ(RunTool({"format", "--no-header", "-", "-o", pipe.name.toStdString()}, "<a/>").errors, "");
    EXPECT_EQ(pipe.Join(), "<a />\n");
}

TEST(WindowsTest, NamesOfDevicesArePathsInQuery)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<con><aux>1</aux></con>").toStdString();
    EXPECT_EQ(RunTool({"query", file, "con"}).output, "1:6\t/con\n");
    EXPECT_EQ(RunTool({"query", "--text", file, "con/aux"}).output, "1\n");
    EXPECT_THAT(RunTool({"query", file, "\\\\.\\NUL"}).errors, HasSubstr("is a file"));
}

TEST(WindowsTest, ConsoleShowsUnicodeAndColoursAndKeepsItsMode)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<ελ>漢字</ελ>").toStdString();
    const std::string text = RunInConsole({"query", "--text", file, "ελ"});
    EXPECT_THAT(text, AllOf(StartsWith("exit code 0\n"), HasSubstr("colours no\n漢字\n")));

    folder.Write("a.xml", "<ελ>");
    qputenv("NO_COLOR", "1");
    EXPECT_THAT(RunInConsole({"check", file}), AllOf(HasSubstr("\ncolours no\n"), testing::Not(HasSubstr("\x1B"))));
    qunsetenv("NO_COLOR");
    for (const char* colors : {"auto", "always", "never"}) {
        const std::string report = RunInConsole({"check", file, "--color", colors});
        EXPECT_THAT(report, StartsWith("exit code 1\n"));
        EXPECT_THAT(report, ContainsExpression("\nmode ([0-9a-f]+) \\1\n"));
        const bool hasColours = std::strcmp(colors, "never") != 0;
        const bool showsSequences = hasColours && IsWine();
        EXPECT_EQ(report.find("\ncolours yes\n") != std::string::npos, hasColours && !showsSequences) << report;
        EXPECT_EQ(report.find("\x1B[1;31m") != std::string::npos, showsSequences) << report;
        EXPECT_THAT(report, AllOf(HasSubstr("error:"), HasSubstr("<ελ>")));
    }
}

TEST(WindowsTest, ClosedStandardStreamIsAnError)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a><b/></a>");
    const auto close = [](HANDLE STARTUPINFOW::*stream) {
        return [stream](
                   QProcess::CreateProcessArguments* process) { process->startupInfo->*stream = INVALID_HANDLE_VALUE; };
    };
    const QString program = QStringLiteral(VANXML_PATH);
    const ToolResult output =
        RunNative(program, {"format", file.ToQString()}, QString(), close(&STARTUPINFOW::hStdOutput));
    EXPECT_EQ(output.errors, "vanxml: Cannot write standard output: Bad file descriptor\n");
    EXPECT_EQ(output.status, 2);
    const ToolResult input = RunNative(program, {"format", "-"}, QString(), close(&STARTUPINFOW::hStdInput));
    EXPECT_EQ(input.errors, "vanxml: Cannot read standard input: Bad file descriptor\n");
    EXPECT_EQ(input.status, 2);
    const ToolResult errors =
        RunNative(program, {"format", "--in-place", file.ToQString()}, QString(), close(&STARTUPINFOW::hStdError));
    EXPECT_EQ(errors.status, 0);
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
}

TEST(WindowsTest, ClosedPipeIsAnError)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a>" + std::string(4 << 20, 'x') + "</a>");
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_TRUE(CreatePipe(&reader, &writer, &inherited, 0));
    CloseHandle(reader);
    const ToolResult result = RunNative(QStringLiteral(VANXML_PATH),
        {"format", file.ToQString()},
        QString(),
        [&](QProcess::CreateProcessArguments* process) { process->startupInfo->hStdOutput = writer; });
    CloseHandle(writer);
    EXPECT_EQ(result.errors, "vanxml: Cannot write standard output: Broken pipe\n");
    EXPECT_EQ(result.status, 2);
}

// With the default size of the stack, 5,000 characters end the tool.
TEST(WindowsTest, StackIsLargeEnoughForLongValuesWithAPattern)
{
    const TemporaryFolder folder;
    const std::string schema = folder
                                   .Write("a.xsd",
                                       "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
                                       "<xs:simpleType><xs:restriction base='xs:string'><xs:pattern value='(a|bc)*'/>"
                                       "</xs:restriction></xs:simpleType></xs:element></xs:schema>")
                                   .toStdString();
    std::vector<std::string> arguments{"check", "--jobs", "2", "--schema", schema};
    for (const char* name : {"a.xml", "b.xml"})
        arguments.push_back(folder.Write(name, "<a>" + std::string(10000, 'a') + "</a>").toStdString());
    EXPECT_EQ(RunTool(arguments).output, "2 documents, 0 errors\n");
}

TEST(WindowsTest, ControlCAtAnyMomentLeavesWholeFilesAlone)
{
    const InterruptedTool tool;
    int ended = 0;
    for (int repetition = 0; repetition < 12; ++repetition) {
        tool.WriteFiles();
        const std::string report = RunInConsole(tool.arguments, tool.duration * repetition / 10);
        ended += report.starts_with("exit code c000013a\n") ? 1 : 0;
        EXPECT_THAT(report, testing::AnyOf(StartsWith("exit code c000013a\n"), StartsWith("exit code 0\n")));
        tool.ExpectWholeFiles();
        EXPECT_THAT(tool.Names(), ElementsAre("a.xml", "b.xml"));
    }
    EXPECT_GT(ended, 0);
}

// The system deletes the temporary file of a killed process, with the two exceptions above.
TEST(WindowsTest, KillAtAnyMomentLeavesWholeFiles)
{
    const InterruptedTool tool;
    QStringList arguments;
    for (const std::string& argument : tool.arguments)
        arguments << QString::fromStdString(argument);
    int ended = 0;
    for (int repetition = 0; repetition < 20; ++repetition) {
        tool.WriteFiles();
        QProcess process;
        // Without this flag, Wine starts a console for the program. The console outlives a killed program and holds its
        // output open.
        process.setCreateProcessArgumentsModifier(
            [](QProcess::CreateProcessArguments* created) { created->flags |= DETACHED_PROCESS; });
        process.start(QStringLiteral(VANXML_PATH), arguments);
        ASSERT_TRUE(process.waitForStarted());
        process.waitForFinished(tool.duration * repetition / 18);
        process.kill();
        process.waitForFinished();
        ASSERT_EQ(process.state(), QProcess::NotRunning);
        ended += process.exitCode() != 0 ? 1 : 0;
        tool.ExpectWholeFiles();
        tool.RemoveTemporaryFiles();
        EXPECT_THAT(tool.Names(), ElementsAre("a.xml", "b.xml"));
    }
    EXPECT_GT(ended, 0);
}

TEST(WindowsTest, JunctionsAreSkippedInFolders)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkdir(folder.Path("docs").ToQString()));
    folder.Write("docs/a.kxa", "<a><b/></a>");
    const QString docs = QDir::toNativeSeparators(folder.Path("docs").ToQString());
    const QString command = "/c mklink /J \"" + docs + "\\loop\" \"" + docs + "\"";
    if (RunNative(QStringLiteral("cmd"), {}, command, nullptr).status != 0 || !QFileInfo::exists(docs + "\\loop"))
        GTEST_SKIP() << "this system or file system has no junctions";
    EXPECT_EQ(
        RunTool({"format", "--check", "--recursive", docs.toStdString()}).output, docs.toStdString() + "\\a.kxa\n");
}
