// Replaces files while system calls fail. The tool runs with a preloaded library (FailingCalls.cpp).
#include <cerrno>

#include "tests/tool/ToolRun.h"

using testing::ElementsAre;
using testing::HasSubstr;
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
    ToolResult RunWithEnvironment(std::vector<std::string> environment, const std::vector<std::string>& arguments) const
    {
        // AddressSanitizer must be the first library, unless this option allows another order.
        environment.push_back("ASAN_OPTIONS=verify_asan_link_order=0");
        environment.insert(environment.end(), {"LD_PRELOAD=" FAILING_CALLS_PATH, VANXML_PATH});
        environment.insert(environment.end(), arguments.begin(), arguments.end());
        return RunProgram("env", environment);
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
        EXPECT_EQ(TemporaryFolder::Read(file), oldBytes);
        EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
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
    EXPECT_EQ(TemporaryFolder::Read(calls), "create\nwrite\nflush\nclose\nrename\nflush folder\n");
}
