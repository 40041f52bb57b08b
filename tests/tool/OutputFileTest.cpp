// Replacing files while calls to the system fail. The tool runs with FailingCalls preloaded.
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

// A folder with the document that is to be replaced.
class OutputFileTest : public testing::TestWithParam<Failure> {
protected:
    ToolResult RunWith(std::vector<std::string> environment, const std::vector<std::string>& arguments) const
    {
        // The sanitizer accepts a library that is loaded before it only when told to.
        environment.push_back("ASAN_OPTIONS=verify_asan_link_order=0");
        environment.insert(environment.end(), {"LD_PRELOAD=" FAILING_CALLS_PATH, VANXML_PATH});
        environment.insert(environment.end(), arguments.begin(), arguments.end());
        return RunProgram("env", environment);
    }

    static std::vector<std::string> Failing(const Failure& failure)
    {
        return {std::string("FAILING_CALL=") + failure.call, "FAILING_ERROR=" + std::to_string(failure.error)};
    }

    TemporaryFolder folder;
    const std::string oldBytes = "<a><b/></a>";
    const VString file = folder.Write("a.xml", oldBytes);
    const std::string name = file.toStdString();
};

}  // namespace

TEST_P(OutputFileTest, FailureLeavesTheOldFileAndNothingElse)
{
    const std::vector<std::string> uses[] = {{"format", "--in-place", name}, {"format", name, "-o", name}};
    for (const std::vector<std::string>& arguments : uses) {
        const ToolResult result = RunWith(Failing(GetParam()), arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + name + "\": " + GetParam().reason + "\n");
        EXPECT_EQ(TemporaryFolder::Read(file), oldBytes);
        EXPECT_THAT(NamesBeside(file), ElementsAre("a.xml"));
    }
}

TEST_P(OutputFileTest, FailureMakesNoNewFile)
{
    const std::string newName = folder.Path("new.xml").toStdString();
    const ToolResult result = RunWith(Failing(GetParam()), {"format", name, "-o", newName});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr(GetParam().reason));
    EXPECT_THAT(NamesBeside(file), ElementsAre("a.xml"));
}

INSTANTIATE_TEST_SUITE_P(Failures,
    OutputFileTest,
    testing::Values(Failure{"create", ENOSPC, "No space left on device"},
        Failure{"create", EEXIST, "File exists"},
        Failure{"write", ENOSPC, "No space left on device"},
        Failure{"write", EIO, "Input/output error"},
        Failure{"flush", ENOSPC, "No space left on device"},
        Failure{"flush", EDQUOT, "Disk quota exceeded"},
        Failure{"flush", EIO, "Input/output error"},
        Failure{"close", ENOSPC, "No space left on device"},
        Failure{"rename", EACCES, "Permission denied"}),
    [](const auto& test) { return test.param.call + std::to_string(test.index); });

TEST_F(OutputFileTest, NameThatIsTakenIsNotUsed)
{
    std::vector<std::string> environment = Failing({"create", EEXIST, ""});
    environment.push_back("FAILING_TIMES=3");
    const ToolResult result = RunWith(environment, {"format", "--in-place", name});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
    EXPECT_THAT(NamesBeside(file), ElementsAre("a.xml"));
}

TEST_F(OutputFileTest, FileIsFlushedBeforeAndItsFolderAfterTheReplacement)
{
    const TemporaryFolder other;
    const VString calls = other.Path("calls");
    EXPECT_EQ(RunWith({"CALLS_FILE=" + calls.toStdString()}, {"format", "--in-place", name}).status, 0);
    EXPECT_EQ(TemporaryFolder::Read(calls), "create\nwrite\nflush\nclose\nrename\nflush folder\n");
}
