#include "vanxml/DiagnosticText.h"

#include "tests/common/TestSupport.h"

namespace {

// An error with a range in a text, and the lines that must be printed below its message.
struct ExcerptRow {
    const char* name;
    std::string text;
    SourcePosition start;
    SourcePosition end;
    std::string lines;
};

std::ostream& operator<<(std::ostream& out, const ExcerptRow& row)
{
    return out << row.name;
}

ParseDiagnostic MakeError(SourcePosition start, SourcePosition end = {})
{
    ParseDiagnostic error;
    error.code = DiagnosticCode::UnexpectedElement;
    error.message = "element 'ordr' is not allowed here";
    error.sourceId = "a.xml";
    error.start = start;
    error.end = end;
    return error;
}

std::string Format(const ParseDiagnostic& error, const std::string& text = std::string())
{
    const auto excerpts = FindExcerpts({error}, "a.xml", text);
    return FormatDiagnostic("a.xml", error, excerpts.front(), TextStyle(false));
}

const std::string Digits = "0123456789";

std::string Repeat(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

}  // namespace

class ExcerptTextTest : public testing::TestWithParam<ExcerptRow> {};

TEST_P(ExcerptTextTest, MarksThePlaceInTheLine)
{
    const std::string text = Format(MakeError(GetParam().start, GetParam().end), GetParam().text);
    EXPECT_EQ(text.substr(text.find('\n') + 1), GetParam().lines);
}

const ExcerptRow Excerpts[] = {
    {"FirstLine", "<ordr>\n<b/>", {1, 2}, {1, 6}, "  1 | <ordr>\n    |  ^~~~\n"},
    {"LastLine", "<a>\n<ordr>", {2, 2}, {2, 6}, "  1 | <a>\n  2 | <ordr>\n    |  ^~~~\n"},
    {"WithoutEnd", "<a><b>", {1, 4}, {}, "  1 | <a><b>\n    |    ^\n"},
    {"EmptyRange", "<a><b>", {1, 4}, {1, 4}, "  1 | <a><b>\n    |    ^\n"},
    {"EndBeforeStart", "<a><b>", {1, 4}, {1, 2}, "  1 | <a><b>\n    |    ^\n"},
    {"EndOfText", "<a>", {1, 4}, {}, "  1 | <a>\n    |    ^\n"},
    {"EndOfTextBehindALineEnd", "<a>\n", {2, 1}, {}, ""},
    {"EmptyText", "", {1, 1}, {}, ""},
    {"SeveralLines", "<a>\n<b\nc='1'>", {2, 1}, {3, 6}, "  1 | <a>\n  2 | <b\n    | ^~\n"},
    {"CarriageReturns", "<a>\r\n<b>\r\n", {2, 2}, {2, 3}, "  1 | <a>\n  2 | <b>\n    |  ^\n"},
    {"WidthOfTheNumber", Repeat("\n", 8) + "<a>\n<b>", {10, 1}, {10, 4}, "   9 | <a>\n  10 | <b>\n     | ^~~\n"},
    {"Tabs", "\t<a>\n\t<b\tc='1'>", {2, 5}, {2, 10}, "  1 |     <a>\n  2 |     <b  c='1'>\n    |         ^~~~~\n"},
    {"WideCharacters", "<a 名='値' b='値'>", {1, 12}, {1, 15}, "  1 | <a 名='値' b='値'>\n    |              ^~~~\n"},
    {"InsideAWideCharacter", "<a>😀x", {1, 5}, {1, 6}, "  1 | <a>😀x\n    |    ^~\n"},
    {"CombiningCharacters",
        "<a e\u0301='1' b='2'>",
        {1, 11},
        {1, 12},
        "  1 | <a e\u0301='1' b='2'>\n    |          ^\n"},
    {"OnACombiningCharacter", "<e\u0301\u0302>", {1, 3}, {1, 4}, "  1 | <e\u0301\u0302>\n    |   ^\n"},
    {"ControlCharacters", "<a>\x1B\u202E<b>", {1, 6}, {1, 8}, "  1 | <a>\\x1b\\u202e<b>\n    |              ^~\n"},
    {"InvalidBytes", "<a>\xFF<b>", {1, 5}, {1, 7}, "  1 | <a>\\xff<b>\n    |        ^~\n"},
    {"LongLineAtItsStart",
        "<b>" + Repeat(Digits, 20),
        {1, 1},
        {1, 4},
        "  1 | <b>" + Repeat(Digits, 9) + "0123456…\n    | ^~~\n"},
    {"LongLineBeforeColumn80",
        Repeat(" ", 79) + "<b>" + Repeat(Digits, 20),
        {1, 80},
        {1, 300},
        "  1 | " + Repeat(" ", 79) + "<b>" + Digits + "01234567…\n    |" + Repeat(" ", 80) + "^" + Repeat("~", 20) +
            "\n"},
    {"BlankLineBefore", "<a>\n \t\n<b>", {3, 1}, {}, "  3 | <b>\n    | ^\n"},
    {"LongLineInItsMiddle",
        Repeat(Digits, 50) + "<b>" + Repeat(Digits, 50),
        {1, 501},
        {1, 504},
        "  1 | …" + Repeat(Digits, 3) + "<b>" + Repeat(Digits, 6) + "0123456…\n    |" + Repeat(" ", 32) + "^~~\n"},
    {"LongLineAtItsEnd",
        Repeat(Digits, 50) + "<b>",
        {1, 504},
        {},
        "  1 | …3456789" + Repeat(Digits, 9) + "<b>\n    |" + Repeat(" ", 102) + "^\n"},
    {"LongLineBefore",
        Repeat(Digits, 50) + "\n" + Repeat(Digits, 50) + "<b>",
        {2, 504},
        {},
        "  1 | …3456789" + Repeat(Digits, 9) + "\n  2 | …3456789" + Repeat(Digits, 9) + "<b>\n    |" +
            Repeat(" ", 102) + "^\n"},
    {"LongLineOfWideCharacters",
        Repeat("漢", 150) + "<b>",
        {1, 151},
        {1, 154},
        "  1 | …" + Repeat("漢", 48) + "<b>\n    |" + Repeat(" ", 98) + "^~~\n"},
    {"LongRange",
        "<a b='" + Repeat(Digits, 100) + "'>",
        {1, 6},
        {1, 1007},
        "  1 | <a b='" + Repeat(Digits, 9) + "0123…\n    |      ^" + Repeat("~", 94) + "\n"},
};

INSTANTIATE_TEST_SUITE_P(Excerpts, ExcerptTextTest, testing::ValuesIn(Excerpts), [](const auto& test) {
    return std::string(test.param.name);
});

TEST(DiagnosticTextTest, ShowsTheRelatedPlaceAndTheAllowedNames)
{
    ParseDiagnostic error = MakeError({10, 4}, {10, 8});
    error.message = "element 'ordr' is not allowed here; did you mean 'order'?";
    error.related = ParseDiagnostic::Related{"in /orders, which began", {2, 1}};
    error.allowed = {"order"};
    EXPECT_EQ(Format(error, Repeat("\n", 8) + "  <order id=\"1\">…</order>\n  <ordr id=\"2\">"),
        "a.xml:10:4: error: element 'ordr' is not allowed here; did you mean 'order'?\n"
        "   9 |   <order id=\"1\">…</order>\n"
        "  10 |   <ordr id=\"2\">\n"
        "     |    ^~~~\n"
        "     = in /orders, which began on line 2; allowed: order\n");
}

TEST(DiagnosticTextTest, ListsAtMostTenAllowedNames)
{
    ParseDiagnostic error = MakeError({});
    for (int i = 1; i <= 12; ++i)
        error.allowed.push_back("a" + VString::number(i));
    EXPECT_EQ(DescribeNote(error), "allowed: a1, a2, a3, a4, a5, a6, a7, a8, a9, a10 and 2 more");
}

TEST(DiagnosticTextTest, QuotesAllowedValuesThatLookLikeSeveral)
{
    ParseDiagnostic error = MakeError({});
    error.allowed = {"a", "", "b c", "d,e"};
    EXPECT_EQ(DescribeNote(error), "allowed: a, '', 'b c', 'd,e'");
}

TEST(DiagnosticTextTest, DoesNotRepeatValuesThatTheMessageDescribes)
{
    ParseDiagnostic error = MakeError({});
    error.allowed = {"a", "b"};
    error.expected = "one of a, b";
    EXPECT_EQ(DescribeNote(error), "");
}

TEST(DiagnosticTextTest, WithoutAPlaceThereIsNoExcerpt)
{
    EXPECT_EQ(Format(MakeError({}), "<a>"), "a.xml: error: element 'ordr' is not allowed here\n");
}

TEST(DiagnosticTextTest, ErrorInAnotherSourceNamesThatSource)
{
    ParseDiagnostic error = MakeError({1, 1});
    error.sourceId = "b.xsd";
    EXPECT_EQ(Format(error, "<a>"), "b.xsd:1:1: error: element 'ordr' is not allowed here\n");
}

TEST(DiagnosticTextTest, EscapesControlCharacters)
{
    ParseDiagnostic error = MakeError({});
    error.sourceId = "a\n.xml";
    error.message = "bad \x1B";
    error.related = ParseDiagnostic::Related{"near \u202E", {}};
    EXPECT_EQ(Format(error), "a\\n.xml: error: bad \\x1b\n    = near \\u202e\n");
}

TEST(DiagnosticTextTest, WarningsAreWarnings)
{
    ParseDiagnostic warning = MakeError({1, 1});
    warning.severity = ParseDiagnostic::Severity::Warning;
    EXPECT_THAT(Format(warning), testing::StartsWith("a.xml:1:1: warning: "));
    EXPECT_THAT(FormatDiagnosticLine("a.xml", warning), testing::StartsWith("a.xml:1:1: warning: "));
}

TEST(DiagnosticTextTest, ColoursThePlaceTheSeverityAndTheMark)
{
    const ParseDiagnostic error = MakeError({1, 2}, {1, 3});
    const auto excerpts = FindExcerpts({error}, "a.xml", "<b>");
    EXPECT_EQ(FormatDiagnostic("a.xml", error, excerpts.front(), TextStyle(true)),
        "\x1B[1ma.xml:1:2:\x1B[0m \x1B[1;31merror:\x1B[0m element 'ordr' is not allowed here\n"
        "\x1B[34m  1 |\x1B[0m <b>\n"
        "\x1B[34m    |\x1B[0m  \x1B[1;31m^\x1B[0m\n");
}

TEST(DiagnosticTextTest, LineOfACompilerHasTheCodeAndTheNote)
{
    ParseDiagnostic error = MakeError({10, 4}, {10, 8});
    EXPECT_EQ(FormatDiagnosticLine("a.xml", error),
        "a.xml:10:4: error: element 'ordr' is not allowed here [unexpected-element]\n");
    error.allowed = {"order"};
    error.start = {};
    EXPECT_EQ(FormatDiagnosticLine("a.xml", error),
        "a.xml: error: element 'ordr' is not allowed here [unexpected-element] (allowed: order)\n");
}
