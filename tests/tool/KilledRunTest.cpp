// Ends the tool in ways that no process can handle: with SIGKILL, and by an overflow of its stack.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/common/UnnamedFiles.h"
#include "tests/tool/FaultyRun.h"
#include "vancorexml/main/parser/AddressSanitizer.h"

using testing::ElementsAre;
using testing::StartsWith;
using testsupport::HasUnnamedFiles;
using testsupport::TemporaryFolder;

namespace {

// With the address sanitizer, the everyday test may stop after five seconds: a run then takes ten times as long. The
// environment variable VANXML_KILLS sets another number of kills, without a limit of the time.
constexpr std::chrono::seconds MostTime(HasAddressSanitizer ? 5 : 300);
constexpr int UsualKills = 200;

class KilledRunTest : public testing::Test {
protected:
    // Returns the names in the folder besides the document.
    std::vector<std::string> Remains() const
    {
        std::vector<std::string> names = folder.Names();
        names.erase(std::remove(names.begin(), names.end(), "a.xml"), names.end());
        return names;
    }
    // Expects that a run over the folder, which selects files of all names, replaces the document and ignores all other
    // files.
    void ExpectNextRunSucceeds(const std::string& expected) const
    {
        const std::vector<std::string> before = Remains();
        const ToolResult result =
            RunTool({"format", "--in-place", "--recursive", "--include", "*", folder.Path(".").toStdString()});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output + result.errors, "");
        EXPECT_TRUE(TemporaryFolder::Read(file) == expected);
        EXPECT_EQ(Remains(), before);
    }

    TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a><b/></a>");
    const std::string name = file.toStdString();
};

TEST_F(KilledRunTest, ToolThatIsKilledAtAnyCallKeepsTheOldFileAndNextRunSucceeds)
{
    std::vector<Failure> places{{"link", 0, "kill", false}, {"close", 0, "kill", true}};
    for (const char* call : {"create", "write", "chmod", "flush", "rename"}) {
        places.push_back({call, 0, "kill", false});
        places.push_back({call, 0, "kill", true});
    }
    for (const Failure& at : places) {
        SCOPED_TRACE(testing::PrintToString(at));
        const std::string oldBytes = "<a><b/></a>";
        folder.Write("a.xml", oldBytes);
        std::vector<std::string> environment = FailingEnvironment(at);
        environment.push_back("RAISED_SIGNAL=" + std::to_string(SIGKILL));
        const ToolResult result = RunInShell("", environment, {"format", "--in-place", name});
        EXPECT_EQ(result.output, std::to_string(128 + SIGKILL) + "\n");
        EXPECT_EQ(TemporaryFolder::Read(file), oldBytes);
        const std::vector<std::string> remains = Remains();
        const std::string call = at.call;
        const bool hasName = at.isOnlyNamed ? call != "create" : call == "rename";
        EXPECT_EQ(remains.size(), hasName || !HasUnnamedFiles(folder) ? 1u : 0u);
        ExpectNextRunSucceeds(Header() + "<a>\n  <b />\n</a>\n");
        for (const std::string& each : remains) {
            EXPECT_THAT(each, StartsWith(".vanxml-"));
            QFile::remove(folder.Path(VString::fromStdString(each)).ToQString());
        }
    }
}

// The handler of the signal needs the stack too.
TEST_F(KilledRunTest, ToolThatExhaustsItsStackKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    if (!HasUnnamedFiles(folder))
        GTEST_SKIP() << "the file system has no files without a name";
    for (const char* call : {"create", "write", "chmod", "flush", "link"}) {
        SCOPED_TRACE(call);
        std::vector<std::string> environment = FailingEnvironment({call, 0, ""});
        environment.push_back("OVERFLOW=1");
        const ToolResult result = RunInShell("ulimit -c 0; ", environment, {"format", "--in-place", name});
        EXPECT_EQ(result.output, std::to_string(128 + SIGSEGV) + "\n");
        EXPECT_EQ(TemporaryFolder::Read(file), "<a><b/></a>");
        EXPECT_THAT(Remains(), ElementsAre());
    }
}

// Runs the tool and kills it after `wait`, unless it has ended before. Returns true if it was killed.
bool KillAfter(std::chrono::microseconds wait, const std::string& name)
{
    const char* const arguments[] = {VANXML_PATH, "format", "--in-place", name.c_str(), nullptr};
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, VANXML_PATH, nullptr, nullptr, const_cast<char* const*>(arguments), environ), 0);
    usleep(static_cast<useconds_t>(wait.count()));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

TEST_F(KilledRunTest, ToolThatIsKilledAtAnyMomentLeavesTheOldOrTheNewFile)
{
    std::string before = "<a>";
    for (int i = 0; i < 500; ++i)
        before += "<b name='some value of an attribute'>text " + std::to_string(i) + "</b>";
    before += "</a>";
    folder.Write("a.xml", before);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(RunTool({"format", "--in-place", name}).status, 0);
    const std::chrono::duration<double, std::micro> duration = std::chrono::steady_clock::now() - start;
    const std::string after = TemporaryFolder::Read(file);
    ASSERT_NE(after, before);

    const char* const wanted = std::getenv("VANXML_KILLS");
    const int kills = wanted ? std::atoi(wanted) : UsualKills;
    std::mt19937 random(15);
    std::uniform_int_distribution<int> wait(0, static_cast<int>(duration.count()));
    int killed = 0;
    int runs = 0;
    const auto hasTime = [&] { return wanted || std::chrono::steady_clock::now() - start < MostTime; };
    for (; killed < kills && hasTime(); ++runs) {
        folder.Write("a.xml", before);
        killed += KillAfter(std::chrono::microseconds(wait(random)), name) ? 1 : 0;
        const std::string bytes = TemporaryFolder::Read(file);
        EXPECT_TRUE(bytes == before || bytes == after) << runs;
    }
    if (HasAddressSanitizer && !wanted) {
        EXPECT_GT(killed, 0);
    } else {
        EXPECT_EQ(killed, kills);
    }
    std::printf("%d of %d runs were killed, %zu files remain\n", killed, runs, Remains().size());
    // A file has a name for a moment only.
    const std::size_t most =
        HasUnnamedFiles(folder) ? 2 + static_cast<std::size_t>(runs) / 40 : static_cast<std::size_t>(runs);
    EXPECT_LE(Remains().size(), most);
    ExpectNextRunSucceeds(after);
}

}  // namespace
