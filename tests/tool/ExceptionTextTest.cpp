// Runs the tool with a preloaded library (ThrowingLibrary.cpp) that makes three functions throw.
#include "vanxml/ExceptionText.h"

#include "tests/tool/ToolRun.h"

namespace {

struct ExceptionRow {
    const char* name;
    const char* versionMessage;  // from the command "version", which does not name the document
    const char* checkMessage;    // from the command "check" for the document "-"
};

std::ostream& operator<<(std::ostream& out, const ExceptionRow& exception)
{
    return out << exception.name;
}

ToolResult RunThrowing(const ExceptionRow& exception, const std::vector<std::string>& arguments)
{
    // AddressSanitizer must be the first library, unless this option allows another order.
    std::vector<std::string> all{"ASAN_OPTIONS=verify_asan_link_order=0", std::string("THROWN=") + exception.name};
    all.insert(all.end(), {"LD_PRELOAD=" THROWING_LIBRARY_PATH, VANXML_PATH});
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunProgram("env", all, "<analysis/>");
}

}  // namespace

class ExceptionTextTest : public testing::TestWithParam<ExceptionRow> {};

TEST_P(ExceptionTextTest, PrintsTheCauseAndEndsWithStatus2)
{
    const ToolResult version = RunThrowing(GetParam(), {"version", "-"});
    EXPECT_EQ(version.status, 2);
    EXPECT_EQ(version.output, "");
    EXPECT_EQ(version.errors, std::string("vanxml: ") + GetParam().versionMessage + "\n");
    const ToolResult check = RunThrowing(GetParam(), {"check", "--schema", "auto", "-"});
    EXPECT_EQ(check.status, 2);
    EXPECT_EQ(check.output, "0 documents, 0 errors, 1 not checked\n");
    EXPECT_EQ(check.errors, std::string("vanxml: ") + GetParam().checkMessage + "\n");
}

#define ASSERTION "internal error LogicException_LogicAssert_0x1234ABCD in module\\file, line 42: a == b"
#define NO_MEMORY " is too large for the available memory"

const ExceptionRow Exceptions[] = {
    {"logic", ASSERTION, "'-' cannot be processed: " ASSERTION},
    {"memory", "the text" NO_MEMORY, "'-'" NO_MEMORY},
    {"parser-memory", "the text" NO_MEMORY, "'-'" NO_MEMORY},
    {"length", "the text is too large", "'-' is too large"},
    {"product", "a product's message", "'-' cannot be processed: a product's message"},
    {"parser", "NULL pointer", "'-' cannot be processed: NULL pointer"},
    {"unknown", "unknown exception", "'-' cannot be processed: unknown exception"},
};

INSTANTIATE_TEST_SUITE_P(Exceptions, ExceptionTextTest, testing::ValuesIn(Exceptions), [](const auto& test) {
    return QString(test.param.name).remove('-').toStdString();
});

TEST(ExceptionTextOfSchemaTest, AssertionWhileLoadingASchemaIsNotReportedAsASchemaError)
{
    const testsupport::TemporaryFolder folder;
    const std::string schema = folder.Write("a.xsd", "").toStdString();
    const ToolResult result = RunThrowing({"logic", "", ""}, {"check", "--schema", schema, "-"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "vanxml: '-' cannot be processed: " ASSERTION "\n");
}

TEST(LogMessageTest, LogMessagesOfTheLibraryAreEscapedLines)
{
    const ToolResult result = RunThrowing({"logged", "", ""}, {"version", "-"});
    EXPECT_EQ(result.errors, "vanxml: a\\n\\x1bb\nvanxml: unknown exception\n");
}
