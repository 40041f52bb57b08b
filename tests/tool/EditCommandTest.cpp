#include <QDateTime>

#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

namespace {

const std::string Document = "<?xml version=\"1.0\"?>\r\n<a>\r\n\t<b x=\"1\"/> <!-- b -->\r\n\t<c>t</c>\r\n</a>\r\n";

std::string Edit(const std::string& input, const std::vector<std::string>& arguments)
{
    std::vector<std::string> all{"edit", "-"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ToolResult result = RunTool(all, input);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.status, 0);
    return result.output;
}

std::string Utf16(const std::u16string& text)
{
    std::string bytes = "\xFE\xFF";
    for (const char16_t unit : text)
        (bytes += static_cast<char>(unit >> 8)) += static_cast<char>(unit & 0xFF);
    return bytes;
}

}  // namespace

TEST(EditCommandTest, ActionsApplyToThePathBeforeThem)
{
    EXPECT_EQ(Edit(Document, {"--at", "/a/b", "--set", "x=2", "--at", "/a/c", "--set", "x=3", "--set", "y=4=5"}),
        "<?xml version=\"1.0\"?>\r\n<a>\r\n\t<b x=\"2\"/> <!-- b -->\r\n\t<c x='3' y='4=5'>t</c>\r\n</a>\r\n");
}

TEST(EditCommandTest, HasAllActions)
{
    EXPECT_EQ(Edit("<a>\n  <b x='1'/>\n  <c/>\n</a>\n",
                  {"--at",
                      "//b",
                      "--unset",
                      "x",
                      "--rename",
                      "d",
                      "--append",
                      "<e/>",
                      "--prepend",
                      "<f/>",
                      "--before",
                      "<g/>",
                      "--after",
                      "<h/>",
                      "--at",
                      "//c",
                      "--delete"}),
        "<a>\n  <g/>\n  <d>\n    <f/>\n    <e/>\n  </d>\n  <h/>\n</a>\n");
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text", "<"}), "<a>&lt;</a>");
}

TEST(EditCommandTest, TakesValuesBehindAnEqualsSignLiterally)
{
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text=", "--set", "b=1"}), "<a b='1'></a>");
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text", ""}), "<a></a>");
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text=-1"}), "<a>-1</a>");
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text=[b,c]"}), "<a>[b,c]</a>");
    EXPECT_EQ(RunTool({"edit", "-", "--at", "/a/b", "--delete=false"}, "<a><b/></a>").status, 2);
}

TEST(EditCommandTest, ValuesMayBeEmptyAndHaveBracketsAndDashes)
{
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text", "", "--set", "b="}), "<a b=''></a>");
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text", "[x,y]", "--set", "b=[1,2]"}), "<a b='[1,2]'>[x,y]</a>");
    EXPECT_EQ(Edit("<a>x</a>", {"--at", "a", "--text=--x"}), "<a>--x</a>");
    EXPECT_EQ(Edit("<a :b='1'/>", {"--at", "a", "--set", ":b=2"}), "<a :b='2'/>");
}

TEST(EditCommandTest, KeepsTheBytesOfOtherEncodings)
{
    const std::vector<std::string> edits{"--at", "/a", "--set", "b=€", "--text", "é€"};
    EXPECT_EQ(Edit("\xEF\xBB\xBF<a b='1'>x</a>", edits), "\xEF\xBB\xBF<a b='€'>é€</a>");
    EXPECT_EQ(Edit(Utf16(u"<a c='\U00010000'>x</a>"), edits), Utf16(u"<a c='\U00010000' b='€'>é€</a>"));
    const std::string latin1 = "<?xml version='1.0' encoding='iso-8859-1'?>\r<!-- \xE4 -->";
    EXPECT_EQ(Edit(latin1 + "<a c='\xFC'>x</a>\n", edits), latin1 + "<a c='\xFC' b='&#8364;'>\xE9&#8364;</a>\n");
    const std::string japanese = "<?xml version='1.0' encoding='Shift_JIS'?><a c='\x93\xFA\x96\x7B'>";
    EXPECT_EQ(Edit(japanese + "\x93\xFA</a>", {"--at", "/a", "--text", "本é"}), japanese + "\x96\x7B&#233;</a>");
}

TEST(EditCommandTest, ErrorsHaveThePlaceAndThePathAndNothingIsWritten)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", Document);
    const ToolResult result =
        RunTool({"edit", "--in-place", file.toStdString(), "--at", "//b", "--set", "y=1", "--at", "a", "--text", "x"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, testing::StartsWith(file.toStdString() + ":2:1: error: "));
    EXPECT_THAT(result.errors, testing::HasSubstr("\n  2 | <a>\n    | ^"));
    EXPECT_EQ(TemporaryFolder::Read(file), Document);
}

TEST(EditCommandTest, PathWithoutAMatchIsAWarning)
{
    const ToolResult result = RunTool({"edit", "-", "--at", "/b", "--delete"}, Document);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, Document);
    EXPECT_THAT(result.errors, testing::StartsWith("-: warning: "));
    EXPECT_THAT(result.errors, testing::HasSubstr("'/b'"));
}

TEST(EditCommandTest, RefusesMistakesInTheCommandLine)
{
    const std::pair<std::vector<std::string>, std::string> mistakes[] = {
        {{"--set", "x=1", "--at", "a"}, "vanxml: --set needs an --at in front of it\n"},
        {{"--at", "a"}, "vanxml: --at 'a' has no action behind it\n"},
        {{"--at", "a", "--at", "b", "--delete"}, "vanxml: --at 'a' has no action behind it\n"},
        {{"--at", "a", "--set", "x"}, "vanxml: --set 'x' has no '=' between the name and the value\n"},
        {{"--at", "a", "--text", "x", "--text", "y"},
            "vanxml: --text 'x' and --text 'y' stand behind one --at; keep one of them, or write --at in front of "
            "each\n"},
        {{"--at", "a", "--rename", "x", "--rename", "y"},
            "vanxml: --rename 'x' and --rename 'y' stand behind one --at; keep one of them, or write --at in front of "
            "each\n"},
    };
    for (const auto& [arguments, message] : mistakes) {
        std::vector<std::string> all{"edit", "-"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ToolResult result = RunTool(all, Document);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, message + "Run 'vanxml help edit' for more information.\n");
    }
    EXPECT_EQ(RunTool({"edit", "-"}, Document).status, 2);
}

// "edit" and "query" print the same message for a path that can never match. No document is read.
TEST(EditCommandTest, RefusesThePathsThatQueryRefuses)
{
    for (const char* path : {"",
             "/",
             "//",
             "/a/",
             "a//",
             ".",
             "//b/..",
             "//b[last()]",
             "//b[x=1]",
             "b[0]",
             "child::b",
             "a b",
             "a|b",
             "text()",
             "@",
             "b@c",
             "b]",
             "b["}) {
        const ToolResult query = RunTool({"query", "no-such-file", "--at", path});
        const ToolResult edit = RunTool({"edit", "no-such-file", "--at", path, "--delete"});
        const ToolResult second = RunTool({"edit", "no-such-file", "--at", "a", "--delete", "--at", path, "--delete"});
        const std::string message = query.errors.substr(0, query.errors.find('\n') + 1);
        EXPECT_THAT(message, testing::HasSubstr(" the path ")) << path;
        EXPECT_EQ(query.status, 2) << path;
        EXPECT_EQ(edit.status, 2) << path;
        EXPECT_EQ(edit.errors, message + "Run 'vanxml help edit' for more information.\n");
        EXPECT_EQ(second.status, 2) << path;
        EXPECT_EQ(second.errors, edit.errors);
    }
}

TEST(EditCommandTest, RefusesPredicatesAndAttributes)
{
    const std::string help = "Run 'vanxml help edit' for more information.\n";
    for (const std::string path : {"/a/b[1]", "//b[@x]", "//b[@x='1']/c"}) {
        const ToolResult result = RunTool({"edit", "-", "--at", path, "--delete"}, Document);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "vanxml: --at '" + path + "' has a predicate, which only query supports\n" + help);
    }
    for (const std::string path : {"/a/b/@x", "//@x", "//b[1]/@x"}) {
        const ToolResult result = RunTool({"edit", "-", "--at", path, "--delete"}, Document);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors,
            "vanxml: --at '" + path +
                "' selects attributes; select their elements, and write --set x=VALUE or --unset x behind the path\n" +
                help);
    }
}

TEST(EditCommandTest, KeepsWildcardsAndSkippedLevels)
{
    EXPECT_EQ(Edit("<a><b/><c><b/></c></a>", {"--at", "//b", "--set", "x=1", "--at", "/a/*", "--set", "y=2"}),
        "<a><b x='1' y='2'/><c y='2'><b x='1'/></c></a>");
    EXPECT_EQ(Edit("<a><b/><c><b/></c></a>", {"--at", "a///b", "--delete"}), "<a><b/><c></c></a>");
}

TEST(EditCommandTest, EditsSeveralDocumentsAndTouchesOnlyThoseThatChange)
{
    const TemporaryFolder folder;
    const std::string changed = folder.Write("a.xml", "<a><b/></a>").toStdString();
    const std::string same = folder.Write("b.xml", "<a/>").toStdString();
    const std::string bad = folder.Write("c.xml", "<a>").toStdString();
    const QDateTime before = QFileInfo(QString::fromStdString(same)).lastModified();
    const ToolResult check = RunTool({"edit", "--check", changed, same, "--at", "//b", "--delete"});
    EXPECT_EQ(check.status, 1);
    EXPECT_EQ(check.output, changed + "\n");
    const ToolResult result = RunTool({"edit", "--in-place", changed, bad, same, "--at", "//b", "--delete"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(TemporaryFolder::Read(VString::fromStdString(changed)), "<a></a>");
    EXPECT_EQ(TemporaryFolder::Read(VString::fromStdString(bad)), "<a>");
    EXPECT_EQ(QFileInfo(QString::fromStdString(same)).lastModified(), before);
}
