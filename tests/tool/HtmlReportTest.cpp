// The page of "vanxml check --format html", and the file of "vanxml check --output". tests/shell/check-report.py opens
// the page in a browser.
#include "vanxml/HtmlReport.h"

#include <QCryptographicHash>

#include "tests/tool/ToolRun.h"
#include "vanxml/CheckSummary.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class HtmlReportTest : public testing::Test {
protected:
    HtmlReportTest()
    {
        m_folder.Write("good.xml", "<a/>");
        m_folder.Write("bad.xml", "<a>\n  <b></c>\n</a>");
        m_folder.Write("worse.xml", "<a>");
    }

    ToolResult Check(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "check");
        return RunProgram(VANXML_PATH, arguments, std::string(), std::string(), m_folder.Path("").toStdString());
    }

    // Writes a document with 1,000 errors.
    void WriteManyErrors()
    {
        std::string many = "<a>";
        for (int i = 0; i < 1000; ++i)
            many += "<b>text</b>";
        m_folder.Write("many.xml", many + "</a>");
        m_folder.Write("numbers.xsd",
            "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:complexType><xs:sequence>"
            "<xs:element name='b' type='xs:int' maxOccurs='unbounded'/>"
            "</xs:sequence></xs:complexType></xs:element></xs:schema>");
    }

    std::string Read(const char* name) const { return testsupport::TemporaryFolder::Read(m_folder.Path(name)); }

    testsupport::TemporaryFolder m_folder;
};

using CheckOutputTest = HtmlReportTest;

// Returns the text between two texts.
std::string Between(const std::string& text, const std::string& start, const std::string& end)
{
    const std::size_t from = text.find(start);
    if (from == std::string::npos)
        return std::string();
    const std::size_t begin = from + start.size();
    return text.substr(begin, text.find(end, begin) - begin);
}

std::size_t CountOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

}  // namespace

TEST_F(HtmlReportTest, ShowsEachFaultyFileWithItsMessages)
{
    const ToolResult result = Check({"--format", "html", "good.xml", "bad.xml", "worse.xml", "missing.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "3 documents, 2 errors, 1 not checked\n");
    EXPECT_THAT(result.output, StartsWith("<!DOCTYPE html>\n"));
    EXPECT_THAT(result.output, EndsWith("</html>\n"));
    EXPECT_EQ(CountOf(result.output, "<tbody>"), 3u);
    EXPECT_THAT(result.output, Not(HasSubstr("good.xml")));
    EXPECT_EQ(Between(result.output, "<p><span class=\"place\">", "</span>"), "2:6");
    EXPECT_THAT(result.output, HasSubstr("<code>  &lt;b&gt;<mark>&lt;/c&gt;</mark></code>"));
    EXPECT_THAT(result.output, HasSubstr("data-kind=\"not-checked\""));
}

TEST_F(HtmlReportTest, PageOfGoodDocumentsHasNoTable)
{
    const ToolResult result = Check({"--format", "html", "good.xml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("No document has an error or a warning."));
    EXPECT_THAT(result.output, Not(HasSubstr("<table>")));
}

TEST_F(HtmlReportTest, PartsOfABarFillItsLength)
{
    const auto rectangles = [&](int errors, int warnings, int longest) {
        HtmlReport report(m_folder.Path("report").toStdString());
        const auto write = [&](DiagnosticCode code, bool isWarning, int count) {
            for (int i = 0; i < count; ++i)
                report.Write({std::string(), code, VString("a"), isWarning});
        };
        write(DiagnosticCode::BadValue, false, errors);
        write(DiagnosticCode::BadValue, true, warnings);
        write(DiagnosticCode::MissingAttribute, false, longest);
        report.Finish(CheckSummary(), 0);
        return Between(Between(Read("report"), ">bad-value</span>", "</svg>"), "\"true\">", "</svg>");
    };
    const std::string error = "<rect class=\"error\" x=\"0\" width=\"";
    const auto warning = [](const std::string& start, const std::string& width) {
        return "\" height=\"1\"/><rect class=\"warning\" x=\"" + start + "\" width=\"" + width + "\" height=\"1\"/>";
    };
    EXPECT_EQ(rectangles(1, 2, 0), error + "333" + warning("333", "667"));
    EXPECT_EQ(rectangles(1, 999, 0), error + "5" + warning("5", "995"));
    EXPECT_EQ(rectangles(999, 1, 0), error + "995" + warning("995", "5"));
    EXPECT_EQ(rectangles(1, 1, 2000), error + "5" + warning("5", "5"));
}

TEST_F(HtmlReportTest, TellsHowManyMessagesAreLeftOut)
{
    const std::string page = Check({"--format", "html", "--max-errors", "1", "bad.xml", "worse.xml"}).output;
    EXPECT_EQ(CountOf(page, "<tbody>"), 1u);
    EXPECT_THAT(page, HasSubstr("1 more message is not shown."));
}

TEST_F(HtmlReportTest, FoldsTheMessagesBehindTheFirstThousand)
{
    WriteManyErrors();
    const std::string page = Check({"--format", "html", "--schema", "numbers.xsd", "many.xml", "bad.xml"}).output;
    EXPECT_THAT(page, HasSubstr("id=\"f1\"><td"));
    EXPECT_THAT(page, HasSubstr("id=\"f2\" hidden><td"));
}

TEST_F(HtmlReportTest, GroupsTheErrorsOfASchemaByTheFileOfTheSchema)
{
    m_folder.Write("broken.xsd", "<a>");
    const std::string page = Check({"--format", "html", "--schema", "broken.xsd", "good.xml", "bad.xml"}).output;
    EXPECT_THAT(page, HasSubstr(">broken.xsd</button>"));
    EXPECT_THAT(page, HasSubstr(">good.xml</button>"));
    EXPECT_THAT(page, HasSubstr("the schema &#39;broken.xsd&#39; cannot be used"));
}

TEST(HtmlPageTest, PolicyAllowsOnlyTheStyleAndTheScriptOfThePage)
{
    const std::string page = RunTool({"check", "--format", "html", "-"}, "<a>").output;
    const auto hash = [](const std::string& text) {
        const QByteArray bytes = QByteArray::fromStdString(text);
        return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toBase64().toStdString();
    };
    const std::string policy = Between(page, "Content-Security-Policy\" content=\"", "\"");
    EXPECT_THAT(policy, StartsWith("default-src 'none'; "));
    EXPECT_THAT(policy, HasSubstr("style-src 'sha256-" + hash(Between(page, "<style>", "</style>")) + "'"));
    EXPECT_THAT(policy, HasSubstr("'sha256-" + hash(Between(page, "<noscript><style>", "</style>")) + "'"));
    EXPECT_THAT(policy, HasSubstr("script-src 'sha256-" + hash(Between(page, "<script>", "</script>")) + "'"));
    EXPECT_THAT(policy, Not(HasSubstr("unsafe")));
    EXPECT_THAT(page, Not(HasSubstr("http://")));
    EXPECT_THAT(page, Not(HasSubstr("https://")));
}

TEST(HtmlPageTest, TextOfDocumentsIsEscaped)
{
    EXPECT_EQ(EscapeHtml("<a b=\"c\">&'"), "&lt;a b=&quot;c&quot;&gt;&amp;&#39;");
    EXPECT_EQ(EscapeHtml("\x1b\xff\u202e"), "\\x1b\\xff\\u202e");
    ParseDiagnostic diagnostic;
    diagnostic.message = "<script>1</script>";
    diagnostic.path = "/<b>";
    diagnostic.attribute = "\"c";
    diagnostic.allowed = {"<i>"};
    diagnostic.start = {2, 1};
    diagnostic.end = {2, 4};
    const SourceExcerpt excerpt{{"<u>", 1, false}, LinePart{"<v>", 1, false}};
    const std::string message = HtmlReport().FormatDiagnostic(diagnostic, excerpt);
    for (const char* tag : {"<script", "<b>", "<i>", "<u>", "<v>", "\"c"})
        EXPECT_THAT(message, Not(HasSubstr(tag)));
    EXPECT_THAT(message, HasSubstr("<mark>&lt;u&gt;</mark>"));
    const std::string failure = HtmlReport().FormatFailure(VString(), "<s>\xff");
    EXPECT_THAT(failure, HasSubstr("&lt;s&gt;\\xff</span>"));
}

TEST_F(CheckOutputTest, EveryFormIsWrittenToTheFile)
{
    for (const char* format : {"text", "gcc", "json", "sarif", "html"}) {
        const ToolResult plain = Check({"--format", format, "bad.xml", "worse.xml"});
        const ToolResult result = Check({"--format", format, "-o", "report", "bad.xml", "worse.xml"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "2 documents, 2 errors\n") << format;
        EXPECT_EQ(result.errors, "") << format;
        const bool isForPeople = plain.output == "2 documents, 2 errors\n";
        EXPECT_EQ(Read("report"), isForPeople ? plain.errors : plain.output) << format;
    }
}

TEST_F(CheckOutputTest, LargeOutputIsWrittenToTheFileAndToADevice)
{
    WriteManyErrors();
    const std::vector<std::string> check{"--format", "json", "--schema", "numbers.xsd", "many.xml"};
    const auto checkTo = [&](const std::string& file) {
        std::vector<std::string> arguments{"-o", file};
        arguments.insert(arguments.end(), check.begin(), check.end());
        return Check(arguments);
    };
    const std::string plain = Check(check).output;
    ASSERT_GT(plain.size(), 131072u);
    EXPECT_EQ(checkTo("report").status, 1);
    EXPECT_EQ(Read("report"), plain);
#if defined(__linux__)
    EXPECT_EQ(checkTo("/dev/stdout").output, plain);
    EXPECT_EQ(checkTo("/dev/null").status, 1);
    EXPECT_EQ(checkTo("/dev/full").status, 2);
#endif
}

TEST_F(CheckOutputTest, DashIsStandardOutput)
{
    const ToolResult text = Check({"-o", "-", "worse.xml"});
    EXPECT_THAT(text.output, StartsWith("worse.xml:1:4: error: "));
    EXPECT_THAT(text.output, EndsWith("\n1 document, 1 error\n"));
    const ToolResult json = Check({"-o", "-", "--format", "json", "worse.xml"});
    EXPECT_THAT(json.output, EndsWith("}\n"));
    EXPECT_EQ(json.errors, "1 document, 1 error\n");
}

TEST_F(CheckOutputTest, FileThatCannotBeWrittenIsAnError)
{
    for (const char* name : {"no-such-folder/report", ".", ""}) {
        const ToolResult result = Check({"--format", "html", "-o", name, "good.xml"});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_THAT(result.errors, HasSubstr("Cannot write")) << name;
        EXPECT_EQ(result.output, "") << name;
    }
}

TEST_F(CheckOutputTest, MistakeKeepsTheOldFile)
{
    m_folder.Write("report", "old");
    EXPECT_EQ(Check({"--schema", "no-such-schema", "-o", "report", "good.xml"}).status, 2);
    EXPECT_EQ(Check({"--quiet", "-o", "report", "good.xml"}).status, 2);
    EXPECT_EQ(Read("report"), "old");
    EXPECT_EQ(Check({"--format", "json", "-o", "report", "good.xml"}).status, 0);
    EXPECT_EQ(Read("report"), "");
}

TEST_F(CheckOutputTest, DocumentIsNotReplaced)
{
    using namespace std::string_literals;
    for (const std::string& document : {"<a>"s,
             "\xEF\xBB\xBF \n<a/>"s,
             "<?xml version='1.0'?><a/>"s,
             "\xFF\xFE<"s,
             "\0<\0?"s,
             "<\0\0\0"s,
             std::string(128, ' ') + "<a/>",
             "\xEF\xBB\xBF" + std::string(128, '\n') + "<a/>",
             "<!doctype html>"s}) {
        m_folder.Write("first.xml", document);
        const ToolResult result = Check({"--format", "html", "-o", "first.xml", "good.xml"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.errors,
            "vanxml: --output: the file 'first.xml' exists and may be a document; delete it or choose another name\n");
        EXPECT_EQ(Read("first.xml"), document);
    }
}

TEST_F(CheckOutputTest, EveryReportIsReplacedByTheNext)
{
    for (const char* format : {"text", "gcc", "json", "sarif", "html", "text"}) {
        EXPECT_EQ(Check({"--format", format, "-o", "report", "bad.xml"}).status, 1) << format;
        EXPECT_EQ(Check({"--format", format, "-o", "report", "good.xml"}).status, 0) << format;
    }
}

TEST_F(CheckOutputTest, FileHasColoursOnlyIfTheyAreAskedFor)
{
    Check({"-o", "report", "bad.xml"});
    EXPECT_THAT(Read("report"), Not(HasSubstr("\x1b")));
    Check({"-o", "report", "--color", "always", "bad.xml"});
    EXPECT_THAT(Read("report"), HasSubstr("\x1b["));
}
