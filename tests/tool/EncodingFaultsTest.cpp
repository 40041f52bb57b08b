// How the commands report bad bytes and wrong names of encodings.
#include <string>
#include <string_view>
#include <vector>

#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;
using namespace std::string_literals;

namespace {

const std::string latin1 = "<a>\n  <b>Ren\xE9</b>\n</a>";
const std::string latin1Error = ":2:9: error: the byte E9 is not UTF-8; save the document as UTF-8, or declare its "
                                "encoding, such as ISO-8859-1\n  1 | <a>\n  2 |   <b>Ren\\xe9</b>\n    |         ^";

std::string DeclareEncoding(const std::string& encoding)
{
    return "<?xml version='1.0' encoding='" + encoding + "'?>";
}

std::string AsciiToUtf16(std::string_view ascii)
{
    std::string bytes;
    for (const char character : ascii)
        bytes += std::string{character, '\0'};
    return bytes;
}

}  // namespace

TEST(EncodingFaultsTest, CheckCountsBadBytesAsAnErrorAndChecksTheOtherDocuments)
{
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.xml", latin1).toStdString();
    const ToolResult result = RunTool({"check", bad, folder.Write("good.xml", "<a/>").toStdString()});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith(bad + latin1Error));
    EXPECT_EQ(result.output, "2 documents, 1 error\n");
}

class EncodingFaultCommandTest : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(EncodingFaultCommandTest, ReportsBadBytesInTheSameWay)
{
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.kxa", latin1).toStdString();
    std::vector<std::string> arguments = GetParam();
    arguments.insert(arguments.begin() + 1, bad);
    const ToolResult result = RunTool(arguments);
    // The status 1 of query means that nothing matches.
    EXPECT_EQ(result.status, arguments.front() == "query" ? 2 : 1);
    EXPECT_THAT(result.errors, StartsWith(bad + latin1Error));
    EXPECT_EQ(result.output, "");
}

using Arguments = std::vector<std::string>;

INSTANTIATE_TEST_SUITE_P(Commands,
    EncodingFaultCommandTest,
    testing::Values(Arguments{"format"},
        Arguments{"edit", "--at", "/a/b", "--text", "x"},
        Arguments{"retarget", "--data-source", "a=b"},
        Arguments{"query", "/a"},
        Arguments{"version"}),
    [](const auto& test) { return test.param.front(); });

TEST(EncodingFaultsTest, StandardInputIsNamedLikeAFile)
{
    EXPECT_THAT(RunTool({"check", "-"}, latin1).errors, StartsWith("-" + latin1Error));
    EXPECT_THAT(RunTool({"version", "-"}, latin1).errors, StartsWith("-" + latin1Error));
}

TEST(EncodingFaultsTest, UnknownEncodingIsAnErrorAtItsName)
{
    const ToolResult result = RunTool({"check", "-"}, DeclareEncoding("UFT-8") + "<a/>");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors,
        StartsWith("-:1:31: error: the encoding 'UFT-8' is unknown; the document is UTF-8, so write 'UTF-8'\n"));
    EXPECT_EQ(result.output, "1 document, 1 error\n");
}

TEST(EncodingFaultsTest, Utf8DeclaredAsAnotherEncodingIsAWarning)
{
    for (const char* name : {"UTF-16", "ISO-8859-1"}) {
        const ToolResult result = RunTool({"check", "-"}, DeclareEncoding(name) + "<a>ö</a>");
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.errors,
            StartsWith("-:1:31: warning: the document declares the encoding '"s + name +
                "', but it is UTF-8; write 'UTF-8'\n"));
    }
}

TEST(EncodingFaultsTest, Utf16DeclaredAsAnotherEncodingIsAnError)
{
    const ToolResult result = RunTool({"check", "-"}, "\xFF\xFE" + AsciiToUtf16(DeclareEncoding("UTF-8") + "<a/>"));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors,
        StartsWith("-:1:31: error: the document declares the encoding 'UTF-8', but it is UTF-16; write 'UTF-16'\n"));
}

TEST(EncodingFaultsTest, RightEncodingIsNotMentioned)
{
    for (const std::string& document : {DeclareEncoding("utf-8") + "<a>ö</a>",
             DeclareEncoding("ISO-8859-1") + "<a/>",
             DeclareEncoding("ISO-8859-1") + "<a>\xF6</a>",
             AsciiToUtf16(DeclareEncoding("UTF-16") + "<a/>"),
             AsciiToUtf16("<a/>")}) {
        const ToolResult result = RunTool({"check", "-"}, document);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.status, 0);
    }
}

TEST(EncodingFaultsTest, FormatAndEditKeepUtf16WithoutAMark)
{
    const std::string document = AsciiToUtf16(DeclareEncoding("UTF-16") + "<a><b>x</b></a>");
    const ToolResult edited = RunTool({"edit", "-", "--at", "/a/b", "--text", "y"}, document);
    EXPECT_EQ(edited.errors, "");
    EXPECT_EQ(edited.output, AsciiToUtf16(DeclareEncoding("UTF-16") + "<a><b>y</b></a>"));
    const ToolResult formatted = RunTool({"format", "-"}, document);
    EXPECT_EQ(formatted.errors, "");
    EXPECT_THAT(formatted.output, StartsWith(AsciiToUtf16("<?xml version='1.0' encoding='UTF-16' ?>\n")));
    EXPECT_THAT(formatted.output, HasSubstr(AsciiToUtf16("<b>x</b>")));
}

TEST(EncodingFaultsTest, FormatRefusesUtf16WithoutAMarkThatWouldNotBeReadAgain)
{
    std::string document = AsciiToUtf16(DeclareEncoding("UTF-16") + "<oe/>");
    document.replace(document.size() - 8, 4, "\xF6\0\xF6\0"s);
    EXPECT_EQ(RunTool({"format", "-"}, document).status, 0);
    const ToolResult refused = RunTool({"format", "-", "--no-header"}, document);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.output, "");
}

TEST(EncodingFaultsTest, BadBytesInATableOfRenamesEndWithStatus2)
{
    const TemporaryFolder folder;
    const std::string table = folder.Write("table.csv", "field,a,\xE9\n").toStdString();
    const ToolResult result = RunTool({"retarget", folder.Write("a.kxa", "<a/>").toStdString(), "--from", table});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith("vanxml: Cannot read \"" + table + "\": not valid UTF-8"));
}

TEST(EncodingFaultsTest, BadBytesInAnIncludedSchemaAreShownInItsFile)
{
    const TemporaryFolder folder;
    const std::string begin = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n";
    const std::string base = folder.Write("base.xsd", begin + "<!-- \xE9 --></xs:schema>").toStdString();
    const std::string schema =
        folder.Write("main.xsd", begin + "<xs:include schemaLocation='base.xsd'/></xs:schema>").toStdString();
    const ToolResult result = RunTool({"check", "--schema", schema, "-"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(base + ":2:6: error: the byte E9 is not UTF-8"));
}
