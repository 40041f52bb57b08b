// The tool runs with ThrowingLibrary preloaded, which makes the library throw.
#include "vanxml/ExceptionText.h"

#include "tests/tool/ToolRun.h"

namespace {

struct Thrown {
    const char* name;
    const char* ofVersion;  // message of the command that does not name the document
    const char* ofCheck;    // message about the document "-"
};

std::ostream& operator<<(std::ostream& out, const Thrown& thrown)
{
    return out << thrown.name;
}

ToolResult RunThrowing(const Thrown& thrown, const std::vector<std::string>& arguments)
{
    // The sanitizer accepts a library that is loaded before it only when told to.
    std::vector<std::string> all{"ASAN_OPTIONS=verify_asan_link_order=0", std::string("THROWN=") + thrown.name};
    all.insert(all.end(), {"LD_PRELOAD=" THROWING_LIBRARY_PATH, VANXML_PATH});
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunProgram("env", all, "<analysis/>");
}

}  // namespace

class ExceptionTextTest : public testing::TestWithParam<Thrown> {};

TEST_P(ExceptionTextTest, NamesTheCauseAndEndsWithStatus2)
{
    const ToolResult version = RunThrowing(GetParam(), {"version", "-"});
    EXPECT_EQ(version.status, 2);
    EXPECT_EQ(version.output, "");
    EXPECT_EQ(version.errors, std::string("vanxml: ") + GetParam().ofVersion + "\n");
    const ToolResult check = RunThrowing(GetParam(), {"check", "--schema", "auto", "-"});
    EXPECT_EQ(check.status, 2);
    EXPECT_EQ(check.output, "0 documents, 0 errors, 1 not checked\n");
    EXPECT_EQ(check.errors, std::string("vanxml: ") + GetParam().ofCheck + "\n");
}

#define ASSERTION "internal error LogicException_LogicAssert_0x1234ABCD in module\\file, line 42: a == b"
#define NO_MEMORY " is too large for the memory there is"

INSTANTIATE_TEST_SUITE_P(Exceptions,
    ExceptionTextTest,
    testing::Values(Thrown{"logic", ASSERTION, "\"-\" cannot be processed: " ASSERTION},
        Thrown{"memory", "The text" NO_MEMORY, "\"-\"" NO_MEMORY},
        Thrown{"parser-memory", "The text" NO_MEMORY, "\"-\"" NO_MEMORY},
        Thrown{"length", "The text is too large", "\"-\" is too large"},
        Thrown{"product", "a product's message", "\"-\" cannot be processed: a product's message"},
        Thrown{"parser", "NULL pointer", "\"-\" cannot be processed: NULL pointer"},
        Thrown{"unknown", "unknown exception", "\"-\" cannot be processed: unknown exception"}),
    [](const auto& test) { return QString(test.param.name).remove('-').toStdString(); });

TEST(ExceptionTextOfSchemaTest, AssertionWhileASchemaIsLoadedIsNoErrorOfTheSchema)
{
    const testsupport::TemporaryFolder folder;
    const std::string schema = folder.Write("a.xsd", "").toStdString();
    const ToolResult result = RunThrowing({"logic", "", ""}, {"check", "--schema", schema, "-"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "vanxml: \"-\" cannot be processed: " ASSERTION "\n");
}
