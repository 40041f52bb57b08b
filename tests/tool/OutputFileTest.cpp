// Replaces files while system calls fail and signals arrive. The tool runs with a preloaded library (FailingCalls.cpp).
#include <cerrno>
#include <csignal>
#include <cstring>
#include <tuple>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "tests/tool/ToolRun.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testsupport::TemporaryFolder;

namespace {

struct Failure {
    const char* call;
    int error;
    const char* reason;
};

std::ostream& operator<<(std::ostream& out, const Failure& failure)
{
    return out << failure.call << " fails with " << failure.reason;
}

// Owns a folder with one document, which the tests replace.
class OutputFileTest : public testing::TestWithParam<Failure> {
protected:
    // Returns the arguments of the program `env` that run the tool with the preloaded library.
    static std::vector<std::string> EnvArguments(
        std::vector<std::string> environment, const std::vector<std::string>& arguments)
    {
        // AddressSanitizer must be the first library, unless this option allows another order. It handles the signals
        // of crashes unless the other options forbid it.
        environment.push_back(
            "ASAN_OPTIONS=verify_asan_link_order=0:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0");
        environment.insert(environment.end(), {"LD_PRELOAD=" FAILING_CALLS_PATH, VANXML_PATH});
        environment.insert(environment.end(), arguments.begin(), arguments.end());
        return environment;
    }

    static ToolResult RunWithEnvironment(
        const std::vector<std::string>& environment, const std::vector<std::string>& arguments)
    {
        return RunProgram("env", EnvArguments(environment, arguments));
    }

    // Runs the shell commands `before`, then the tool. The output ends with the exit status as the shell shows it: 128
    // and the number of the signal that ended the tool.
    static ToolResult RunInShell(const std::string& before,
        const std::vector<std::string>& environment,
        const std::vector<std::string>& arguments)
    {
        const std::vector<std::string> all = EnvArguments(environment, arguments);
        std::vector<std::string> shell{"-c", before + "env \"$@\"; echo $?", "sh"};
        shell.insert(shell.end(), all.begin(), all.end());
        return RunProgram("sh", shell);
    }

    void ExpectOldFileAlone() const
    {
        EXPECT_EQ(TemporaryFolder::Read(file), oldBytes);
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }

    static std::vector<std::string> FailingEnvironment(const Failure& failure)
    {
        return {std::string("FAILING_CALL=") + failure.call, "FAILING_ERROR=" + std::to_string(failure.error)};
    }

    TemporaryFolder folder;
    const std::string oldBytes = "<a><b/></a>";
    const VString file = folder.Write("a.xml", oldBytes);
    const std::string name = file.toStdString();
};

}  // namespace

TEST_P(OutputFileTest, FailureKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    const std::vector<std::string> commands[] = {{"format", "--in-place", name}, {"format", name, "-o", name}};
    for (const std::vector<std::string>& arguments : commands) {
        const ToolResult result = RunWithEnvironment(FailingEnvironment(GetParam()), arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": " + GetParam().reason + "\n");
        ExpectOldFileAlone();
    }
}

TEST_P(OutputFileTest, FailureCreatesNoFile)
{
    const std::string newName = folder.Path("new.xml").toStdString();
    const ToolResult result = RunWithEnvironment(FailingEnvironment(GetParam()), {"format", name, "-o", newName});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr(GetParam().reason));
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
}

const Failure Failures[] = {
    {"create", ENOSPC, "No space left on device"},
    {"create", EEXIST, "File exists"},
    {"write", ENOSPC, "No space left on device"},
    {"write", EIO, "Input/output error"},
    {"flush", ENOSPC, "No space left on device"},
    {"flush", EDQUOT, "Disk quota exceeded"},
    {"flush", EIO, "Input/output error"},
    {"close", ENOSPC, "No space left on device"},
    {"rename", EACCES, "Permission denied"},
};

INSTANTIATE_TEST_SUITE_P(Failures, OutputFileTest, testing::ValuesIn(Failures), [](const auto& test) {
    return test.param.call + std::to_string(test.index);
});

TEST_F(OutputFileTest, RetriesWhenATemporaryNameIsTaken)
{
    std::vector<std::string> environment = FailingEnvironment({"create", EEXIST, ""});
    environment.push_back("FAILING_TIMES=3");
    const ToolResult result = RunWithEnvironment(environment, {"format", "--in-place", name});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
}

TEST_F(OutputFileTest, FlushesTheFileBeforeTheRenameAndTheFolderAfterIt)
{
    const TemporaryFolder other;
    const VString calls = other.Path("calls");
    EXPECT_EQ(RunWithEnvironment({"CALLS_FILE=" + calls.toStdString()}, {"format", "--in-place", name}).status, 0);
    EXPECT_EQ(TemporaryFolder::Read(calls), "create\nwrite\nchmod\nflush\nclose\nrename\nflush folder\n");
}

// Otherwise an error message could be written into the document.
TEST_F(OutputFileTest, DocumentNeverBecomesAClosedStandardStream)
{
    const TemporaryFolder other;
    const VString calls = other.Path("calls");
    std::vector<std::string> arguments{"-c", "env \"$@\" 0<&- 1>&- 2>&-; echo $?", "sh"};
    for (const std::string& each : EnvArguments({"CALLS_FILE=" + calls.toStdString()}, {"format", "--in-place", name}))
        arguments.push_back(each);
    EXPECT_EQ(RunProgram("sh", arguments).output, "0\n");
    EXPECT_THAT(TemporaryFolder::Read(calls), AllOf(HasSubstr("rename"), Not(HasSubstr("standard stream"))));
}

TEST_F(OutputFileTest, ClosedStandardStreamIsAnError)
{
    const std::tuple<const char*, const char*> expected[] = {
        {"\"$0\" format \"$1\" >&-", "vanxml: Cannot write standard output: Bad file descriptor\n"},
        {"\"$0\" format - <&-", "vanxml: Cannot read standard input: Bad file descriptor\n"}};
    for (const auto& [command, errors] : expected) {
        const ToolResult result = RunProgram("sh", {"-c", command, VANXML_PATH, name});
        EXPECT_EQ(result.errors, errors);
        EXPECT_EQ(result.status, 2);
    }
}

TEST_F(OutputFileTest, InterruptedCallsAreRepeated)
{
    for (const char* call : {"create", "write", "flush", "close"}) {
        folder.Write("a.xml", oldBytes);
        std::vector<std::string> environment = FailingEnvironment({call, EINTR, ""});
        environment.push_back("FAILING_TIMES=1");
        const ToolResult result = RunWithEnvironment(environment, {"format", "--in-place", name});
        EXPECT_EQ(result.errors, "") << call;
        EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }
}

TEST_F(OutputFileTest, FailureToSetThePermissionsKeepsTheOldFile)
{
    const ToolResult result =
        RunWithEnvironment(FailingEnvironment({"chmod", EIO, ""}), {"format", "--in-place", name});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": Input/output error\n");
    EXPECT_EQ(result.status, 2);
    ExpectOldFileAlone();
}

TEST_F(OutputFileTest, FileSystemWithoutPermissionsIsNoFailure)
{
    // The temporary file keeps its own permissions, which are fewer.
    ASSERT_EQ(chmod(name.c_str(), 0644), 0);
    const ToolResult result =
        RunWithEnvironment(FailingEnvironment({"chmod", EPERM, ""}), {"format", "--in-place", name});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    struct stat status;
    ASSERT_EQ(stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(OutputFileTest, FileThatWouldHaveMorePermissionsIsAFailure)
{
    ASSERT_EQ(chmod(name.c_str(), 0020 | 0400), 0);
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may write this file";
    const ToolResult result =
        RunWithEnvironment(FailingEnvironment({"chmod", EPERM, ""}), {"format", "--in-place", name});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": Operation not permitted\n");
    ExpectOldFileAlone();
}

TEST_F(OutputFileTest, FailureToSetTheOwnerKeepsTheOldFile)
{
    if (chown(name.c_str(), 65534, 65533) != 0)
        GTEST_SKIP() << "only root can change the owner";
    const ToolResult result =
        RunWithEnvironment(FailingEnvironment({"chown", EIO, ""}), {"format", "--in-place", name});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": Input/output error\n");
    ExpectOldFileAlone();
    EXPECT_EQ(RunWithEnvironment(FailingEnvironment({"chown", EPERM, ""}), {"format", "--in-place", name}).status, 0);
}

TEST_F(OutputFileTest, FailureToSetAnAttributeKeepsTheOldFile)
{
    if (setxattr(name.c_str(), "user.author", "me", 2, 0) != 0)
        GTEST_SKIP() << "no extended attributes here: " << std::strerror(errno);
    const ToolResult result =
        RunWithEnvironment(FailingEnvironment({"attribute", ENOSPC, ""}), {"format", "--in-place", name});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": No space left on device\n");
    ExpectOldFileAlone();
}

struct SignalAtCall {
    const char* call;
    int signal;
};

std::ostream& operator<<(std::ostream& out, const SignalAtCall& at)
{
    return out << "signal " << at.signal << " at " << at.call;
}

TEST_F(OutputFileTest, SignalKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGXCPU, SIGXFSZ}) {
        for (const char* call : {"create", "write", "chmod", "flush", "close", "rename"}) {
            const SignalAtCall at{call, signal};
            const std::vector<std::string> environment{
                std::string("FAILING_CALL=") + call, "RAISED_SIGNAL=" + std::to_string(signal)};
            const ToolResult result = RunInShell("ulimit -c 0; ", environment, {"format", "--in-place", name});
            EXPECT_EQ(result.output, std::to_string(128 + signal) + "\n") << at << result.errors;
            ExpectOldFileAlone();
        }
    }
}

TEST_F(OutputFileTest, EverySignalThatEndsTheToolLeavesNoTemporaryFile)
{
    std::vector<int> signals{SIGALRM, SIGBUS, SIGFPE, SIGILL, SIGIO, SIGPROF, SIGPWR, SIGSEGV, SIGSYS, SIGTRAP};
    signals.insert(signals.end(), {SIGABRT, SIGSTKFLT, SIGUSR1, SIGUSR2, SIGVTALRM, SIGRTMIN, SIGRTMAX});
    for (const int signal : signals) {
        const std::vector<std::string> environment{"FAILING_CALL=write", "RAISED_SIGNAL=" + std::to_string(signal)};
        const ToolResult result = RunInShell("ulimit -c 0; ", environment, {"format", "--in-place", name});
        EXPECT_EQ(result.output, std::to_string(128 + signal) + "\n") << result.errors;
        ExpectOldFileAlone();
    }
}

TEST_F(OutputFileTest, SignalThatTheParentIgnoresStaysIgnored)
{
    const ToolResult result = RunInShell("trap '' HUP; ",
        {"FAILING_CALL=write", "RAISED_SIGNAL=" + std::to_string(SIGHUP)},
        {"format", "--in-place", name});
    EXPECT_EQ(result.output, "0\n");
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
}

// Returns a document of 3 MB.
std::string LargeDocument()
{
    std::string text = "<a>";
    for (int i = 0; i < 60000; ++i)
        text += "<b name='some value of an attribute'>text " + std::to_string(i) + "</b>";
    return text + "</a>";
}

TEST_F(OutputFileTest, LimitOfTheFileSizeKeepsTheOldFile)
{
    const std::string large = LargeDocument();
    folder.Write("a.xml", large);
    const std::string killed = std::to_string(128 + SIGXFSZ) + "\n";
    const std::string message = "vanxml: Cannot write \"" + name + "\": File too large\n";
    const std::tuple<std::string, std::string, std::string> expected[] = {
        {"", killed, ""}, {"trap '' XFSZ; ", "2\n", message}};
    for (const auto& [before, status, errors] : expected) {
        const ToolResult result =
            RunInShell("ulimit -c 0; ulimit -f 100; " + before, {}, {"format", "--in-place", name});
        EXPECT_EQ(result.output, status);
        EXPECT_THAT(result.errors, HasSubstr(errors));
        EXPECT_EQ(TemporaryFolder::Read(file), large);
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }
}

TEST_F(OutputFileTest, TerminationAtAnyMomentLeavesAWholeFileAlone)
{
    const std::string large = LargeDocument();
    folder.Write("a.xml", large);
    ASSERT_EQ(RunTool({"format", name, "-o", folder.Path("b.xml").toStdString()}).status, 0);
    const std::string formatted = TemporaryFolder::Read(folder.Path("b.xml"));
    ASSERT_TRUE(QFile::remove(folder.Path("b.xml").ToQString()));
    int ended = 0;
    for (int repetition = 0; repetition < 20; ++repetition) {
        folder.Write("a.xml", large);
        QProcess process;
        process.start(VANXML_PATH, {"format", "--in-place", QString::fromStdString(name)});
        ASSERT_TRUE(process.waitForStarted());
        process.waitForFinished(15 * repetition);
        process.terminate();
        process.waitForFinished();
        ASSERT_EQ(process.state(), QProcess::NotRunning);
        ended += process.exitStatus() == QProcess::CrashExit ? 1 : 0;
        const std::string bytes = TemporaryFolder::Read(file);
        EXPECT_TRUE(bytes == large || bytes == formatted);
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }
    EXPECT_GT(ended, 0);
}

// A file system of 64 KB in memory, which exists while the object lives.
class SmallDisk {
public:
    explicit SmallDisk(const VString& folder) : m_folder(folder.toStdString())
    {
        QDir().mkdir(folder.ToQString());
        isMounted = mount("tmpfs", m_folder.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk()
    {
        if (isMounted)
            umount2(m_folder.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted = false;

private:
    std::string m_folder;
};

TEST_F(OutputFileTest, FullDiskKeepsTheOldFile)
{
    const VString target = folder.Path("disk/a.xml");
    const SmallDisk disk(folder.Path("disk"));
    if (!disk.isMounted)
        GTEST_SKIP() << "may not mount a file system: " << std::strerror(errno);
    folder.Write("disk/a.xml", oldBytes);
    const std::string large = folder.Write("large.xml", LargeDocument()).toStdString();
    const ToolResult result = RunTool({"format", large, "-o", target.toStdString()});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + target.toStdString() + "\": No space left on device\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(TemporaryFolder::Read(target), oldBytes);
    EXPECT_THAT(NamesInFolderOf(target), ElementsAre("a.xml"));

    const ToolResult redirected =
        RunProgram(VANXML_PATH, {"format", large}, "", folder.Path("disk/b.xml").toStdString());
    EXPECT_EQ(redirected.errors, "vanxml: Cannot write standard output: No space left on device\n");
    EXPECT_EQ(redirected.status, 2);
}

TEST_F(OutputFileTest, FullStandardOutputIsReportedByAllCommands)
{
    const std::string large = folder.Write("large.xml", LargeDocument()).toStdString();
    const std::vector<std::string> commands[] = {{"format", name},
        {"format", large},
        {"format", name, "-o", "/dev/stdout"},
        {"query", name, "//b"},
        {"query", large, "//b"},
        {"check", name},
        {"version", SAMPLES_FOLDER "/sales.kxa"},
        {"schema", "list"},
        {"schema", "show", "VQRC_FILEFORMAT_KXA_XSD"},
        {"--help"},
        {"--version"}};
    for (const std::vector<std::string>& arguments : commands) {
        const ToolResult result = RunProgram(VANXML_PATH, arguments, "", "/dev/full");
        EXPECT_THAT(result.errors, HasSubstr("vanxml: Cannot write standard output: No space left on device\n"));
        EXPECT_EQ(result.status, 2) << arguments[0];
    }
    const ToolResult result = RunTool({"format", name, "-o", "/dev/full"});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"/dev/full\": No space left on device\n");
    EXPECT_EQ(result.status, 2);
}
