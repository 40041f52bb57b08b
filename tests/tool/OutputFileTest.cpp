// Replaces files while system calls fail and signals arrive. The tool runs with a preloaded library (FailingCalls.cpp).
#include <cerrno>
#include <csignal>
#include <cstring>
#include <tuple>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "tests/common/UnnamedFiles.h"
#include "tests/tool/FaultyRun.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testsupport::HasUnnamedFiles;
using testsupport::TemporaryFolder;

namespace {

// Owns a folder with one document, which the tests replace.
class OutputFileTest : public testing::TestWithParam<Failure> {
protected:
    void ExpectOldFileAlone() const
    {
        EXPECT_EQ(TemporaryFolder::Read(file), oldBytes);
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
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

std::vector<Failure> ListFailures()
{
    std::vector<Failure> failures{{"close", ENOSPC, "No space left on device", true}};
    if (HasUnnamedFiles(TemporaryFolder())) {
        failures.push_back({"link", ENOSPC, "No space left on device"});
        failures.push_back({"link", EEXIST, "File exists"});
        failures.push_back({"link", EDQUOT, "Disk quota exceeded"});
    }
    for (const bool isOnlyNamed : {false, true}) {
        failures.push_back({"create", ENOSPC, "No space left on device", isOnlyNamed});
        failures.push_back({"create", EEXIST, "File exists", isOnlyNamed});
        failures.push_back({"write", ENOSPC, "No space left on device", isOnlyNamed});
        failures.push_back({"write", EIO, "Input/output error", isOnlyNamed});
        failures.push_back({"flush", ENOSPC, "No space left on device", isOnlyNamed});
        failures.push_back({"flush", EDQUOT, "Disk quota exceeded", isOnlyNamed});
        failures.push_back({"flush", EIO, "Input/output error", isOnlyNamed});
        failures.push_back({"rename", EACCES, "Permission denied", isOnlyNamed});
    }
    return failures;
}

INSTANTIATE_TEST_SUITE_P(Failures, OutputFileTest, testing::ValuesIn(ListFailures()), [](const auto& test) {
    return test.param.call + std::to_string(test.index);
});

TEST_F(OutputFileTest, RetriesWhenATemporaryNameIsTaken)
{
    for (const Failure& failure : {Failure{"create", EEXIST, "", true}, Failure{"link", EEXIST, ""}}) {
        folder.Write("a.xml", oldBytes);
        std::vector<std::string> environment = FailingEnvironment(failure);
        environment.push_back("FAILING_TIMES=3");
        const ToolResult result = RunWithEnvironment(environment, {"format", "--in-place", name});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }
}

TEST_F(OutputFileTest, FlushesTheFileBeforeTheRenameAndTheFolderAfterIt)
{
    const TemporaryFolder other;
    for (const bool isOnlyNamed : {false, true}) {
        folder.Write("a.xml", oldBytes);
        const VString calls = other.Path(isOnlyNamed ? "named" : "unnamed");
        std::vector<std::string> environment{"CALLS_FILE=" + calls.toStdString()};
        if (isOnlyNamed)
            environment.push_back("ONLY_NAMED=1");
        EXPECT_EQ(RunWithEnvironment(environment, {"format", "--in-place", name}).status, 0);
        QString written = QString::fromStdString(TemporaryFolder::Read(calls));
        written.remove(QRegularExpression("(open|read)\n"));  // the calls that read the document
        const bool hasName = isOnlyNamed || !HasUnnamedFiles(folder);
        const std::string rename = hasName ? "close\nrename\nflush folder\n" : "link\nrename\nflush folder\nclose\n";
        EXPECT_EQ(written.toStdString(), "create\nwrite\nchmod\nflush\n" + rename);
    }
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
    for (const Failure& failure : {Failure{"create", EINTR, "", true},
             Failure{"create", EINTR, ""},
             Failure{"write", EINTR, ""},
             Failure{"flush", EINTR, ""},
             Failure{"close", EINTR, "", true}}) {
        folder.Write("a.xml", oldBytes);
        std::vector<std::string> environment = FailingEnvironment(failure);
        environment.push_back("FAILING_TIMES=1");
        const ToolResult result = RunWithEnvironment(environment, {"format", "--in-place", name});
        EXPECT_EQ(result.errors, "") << failure;
        EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }
}

TEST_F(OutputFileTest, FileThatAnotherProgramChangesMeanwhileIsNotReplaced)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, oldBytes.size() + 5}) {
        folder.Write("a.xml", oldBytes);
        std::string changed = oldBytes;
        changed.resize(size);
        std::vector<std::string> environment = FailingEnvironment({"create", 0, ""});
        environment.push_back("CHANGED_FILE=" + name);
        environment.push_back("CHANGED_SIZE=" + std::to_string(size));
        const ToolResult result = RunWithEnvironment(environment, {"format", "--in-place", name});
        EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": another program has changed it meanwhile\n");
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(TemporaryFolder::Read(file), changed);
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    }
}

TEST_F(OutputFileTest, FileThatAnotherProgramRemovesMeanwhileIsNotCreatedAgain)
{
    std::vector<std::string> environment = FailingEnvironment({"create", 0, ""});
    environment.push_back("CHANGED_FILE=" + name);
    environment.push_back("CHANGED_SIZE=-1");
    const ToolResult result = RunWithEnvironment(environment, {"format", "--in-place", name});
    EXPECT_EQ(result.errors, "vanxml: Cannot read \"" + name + "\": No such file or directory\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre());
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

// Returns the environment in which the process gets the signal before the call.
std::vector<std::string> SignalEnvironment(const Failure& at, int signal)
{
    std::vector<std::string> environment = FailingEnvironment(at);
    environment.push_back("RAISED_SIGNAL=" + std::to_string(signal));
    return environment;
}

TEST_F(OutputFileTest, SignalKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    std::vector<Failure> places{{"link", 0, "signal", false}, {"close", 0, "signal", true}};
    for (const char* call : {"create", "write", "chmod", "flush", "rename"}) {
        places.push_back({call, 0, "signal", false});
        places.push_back({call, 0, "signal", true});
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGXCPU, SIGXFSZ}) {
        // nohup, and a shell that starts a job in the background, let the tests and the tool ignore some signals.
        std::signal(signal, SIG_DFL);
        for (const Failure& at : places) {
            const ToolResult result =
                RunInShell("ulimit -c 0; ", SignalEnvironment(at, signal), {"format", "--in-place", name});
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
        const ToolResult result = RunInShell(
            "ulimit -c 0; ", SignalEnvironment({"write", 0, "", true}, signal), {"format", "--in-place", name});
        EXPECT_EQ(result.output, std::to_string(128 + signal) + "\n") << result.errors;
        ExpectOldFileAlone();
    }
}

TEST_F(OutputFileTest, SignalThatTheParentIgnoresStaysIgnored)
{
    const ToolResult result =
        RunInShell("trap '' HUP; ", SignalEnvironment({"write", 0, ""}, SIGHUP), {"format", "--in-place", name});
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
    bool MakeReadOnly() const
    {
        return mount("tmpfs", m_folder.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
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

TEST_F(OutputFileTest, ReadOnlyDiskKeepsTheOldFile)
{
    const VString target = folder.Path("disk/a.xml");
    const SmallDisk disk(folder.Path("disk"));
    if (!disk.isMounted)
        GTEST_SKIP() << "may not mount a file system: " << std::strerror(errno);
    folder.Write("disk/a.xml", oldBytes);
    ASSERT_TRUE(disk.MakeReadOnly()) << std::strerror(errno);
    const ToolResult result = RunTool({"format", "--in-place", target.toStdString()});
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + target.toStdString() + "\": Read-only file system\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(TemporaryFolder::Read(target), oldBytes);
    EXPECT_THAT(NamesInFolderOf(target), ElementsAre("a.xml"));
}

TEST_F(OutputFileTest, ReadOnlyFolderKeepsTheOldFile)
{
    ASSERT_EQ(chmod(name.c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.Path(".").toStdString().c_str(), 0555), 0);
    const std::string newName = folder.Path("new.xml").toStdString();
    const std::pair<std::vector<std::string>, std::string> commands[] = {
        {{"format", "--in-place", name}, name}, {{"format", name, "-o", newName}, newName}};
    for (const auto& [arguments, target] : commands) {
        const ToolResult result = RunToolAsOrdinaryUser(arguments);
        EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + target + "\": Permission denied\n");
        EXPECT_EQ(result.status, 2);
        ExpectOldFileAlone();
    }
    EXPECT_EQ(chmod(folder.Path(".").toStdString().c_str(), 0755), 0);
}

TEST_F(OutputFileTest, FullStandardOutputIsReportedByAllCommands)
{
    const std::string large = folder.Write("large.xml", LargeDocument()).toStdString();
    const std::string faulty = folder.Write("faulty.xml", "<a>").toStdString();
    const std::vector<std::string> commands[] = {{"format", name},
        {"format", large},
        {"format", name, "-o", "/dev/stdout"},
        {"query", name, "//b"},
        {"query", large, "//b"},
        {"check", name},
        {"check", "--format", "json", faulty},
        {"check", "--format", "sarif", faulty},
        {"check", "--format", "html", faulty},
        {"format", name, "--check"},
        {"format", name, "--diff"},
        {"edit", name, "--at", "//b", "--set", "c=1"},
        {"retarget", SAMPLES_FOLDER "/sales.kxa", "--data-source", "no-such-name=new"},
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

TEST_F(OutputFileTest, FullStandardErrorIsReportedByTheStatus)
{
    const ToolResult result =
        RunProgram("sh", {"-c", "\"$0\" format \"$1\" -o /dev/stderr 2>/dev/full", VANXML_PATH, name});
    EXPECT_EQ(result.status, 2);
}

// A replacement would discard the lines that other programs have written to the file, and the lines they write later.
TEST_F(OutputFileTest, StandardStreamThatIsAFileIsWrittenAndNotReplaced)
{
    const std::string log = folder.Write("log", "").toStdString();
    const std::string document = Header() + "<a>\n  <b />\n</a>\n";
    for (const char* redirected : {"-o /dev/stdout >>\"$2\"",
             "-o /dev/stderr 2>>\"$2\"",
             "-o \"$2\" >>\"$2\"",
             "-o \"$2\" 2>>\"$2\"",
             "-o /dev/fd/2 2>>\"$2\"",
             "-o /dev/stderr >>\"$2\" 2>&1"}) {
        folder.Write("log", "old\n");
        const std::string command = "\"$0\" format \"$1\" " + std::string(redirected);
        const ToolResult result = RunProgram("sh", {"-c", command, VANXML_PATH, name, log});
        EXPECT_EQ(result.status, 0) << redirected << result.errors;
        EXPECT_EQ(TemporaryFolder::Read(folder.Path("log")), "old\n" + document) << redirected;
    }
}

TEST_F(OutputFileTest, DeviceIsWrittenAlsoIfAStandardStreamIsClosed)
{
    for (const char* closed : {">&-", "2>&-"}) {
        const std::string command = "\"$0\" format \"$1\" -o /dev/null " + std::string(closed);
        const ToolResult result = RunProgram("sh", {"-c", command, VANXML_PATH, name});
        EXPECT_EQ(result.status, 0) << closed << result.errors;
    }
}
