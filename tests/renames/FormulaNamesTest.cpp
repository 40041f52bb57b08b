#include "vancorexml/main/parser/FormulaNames.h"

#include <string>

#include "tests/common/TestSupport.h"

namespace {

struct FormulaRow {
    const char* name;
    const char* formula;
    const char* found;  // the written names with their offsets, as "4:[Sales]", separated by blanks
};

void PrintTo(const FormulaRow& row, std::ostream* out)
{
    *out << row.formula;
}

std::string Find(const VString& formula)
{
    std::string found;
    for (const FormulaName& name : FindFormulaNames(formula)) {
        const VString text = formula.mid(static_cast<int>(name.offset), static_cast<int>(name.length));
        EXPECT_EQ(name.name, FieldName::ParseGlobal(text));
        found += (found.empty() ? "" : " ") + std::to_string(name.offset) + ":" + text.toStdString();
    }
    return found;
}

class FormulaNamesTest : public testing::TestWithParam<FormulaRow> {};

TEST_P(FormulaNamesTest, FindsNames)
{
    EXPECT_EQ(Find(GetParam().formula), GetParam().found);
}

const FormulaRow FormulaRows[] = {
    {"Empty", "", ""},
    {"NoNames", "1 + SUM(2)", ""},
    {"LocalNames", "SUM([Profit]) / SUM([Sales])", "4:[Profit] 20:[Sales]"},
    {"GlobalNames", "[orders].[Sales] * [orders].[Order Date]", "0:[orders].[Sales] 19:[orders].[Order Date]"},
    {"AdjacentNames", "[a][b]", "0:[a] 3:[b]"},
    {"DoubledBracket", "[a]]b]", "0:[a]]b]"},
    {"DoubledBracketInBothParts", "[a]]].[]]b]", "0:[a]]].[]]b]"},
    {"OpeningBracketInsideName", "[a[b]", "0:[a[b]"},
    {"QuotesInsideName", "[it's] + [\"] + [c]", "0:[it's] 9:[\"] 15:[c]"},
    {"CommentMarksInsideName", "[a//b] + [/*] + [c]", "0:[a//b] 9:[/*] 16:[c]"},
    {"BlanksAroundThePoint", "[a] . [b]", "0:[a] 6:[b]"},
    {"PointWithoutSecondPart", "[a].b", "0:[a]"},
    {"ThreeParts", "[a].[b].[c] + [d]", "14:[d]"},
    {"EmptyName", "[] + [b]", "5:[b]"},
    {"UnfinishedName", "[a] + [b", "0:[a]"},
    {"UnfinishedNameAfterDoubledBracket", "[a] + [b]]", "0:[a]"},
    {"UnfinishedSecondPart", "[c] + [a].[b", "0:[c]"},
    {"TextInApostrophes", "'[a]' + [b]", "8:[b]"},
    {"TextInQuotes", "\"[a]\" + [b]", "8:[b]"},
    {"QuoteInsideApostrophes", "'\"' + [b] + '\"'", "6:[b]"},
    {"DoubledApostrophe", "'it''s [a]' + [b]", "14:[b]"},
    {"DoubledQuote", "\"x\"\"[a]\" + [b]", "11:[b]"},
    {"BackslashBeforeApostrophe", "'C:\\' + [b]", "8:[b]"},
    {"CommentMarksInsideText", "'//' + [a] + '/*' + [b]", "7:[a] 20:[b]"},
    {"UnfinishedText", "[a] + '[b]", "0:[a]"},
    {"LineComment", "[a] // [b]\n+ [c]", "0:[a] 13:[c]"},
    {"LineCommentAtTheEnd", "[a] // [b]", "0:[a]"},
    {"ApostropheInLineComment", "// it's\n[a]", "8:[a]"},
    {"BlockComment", "[a] /* [b]\n[c] */ + [d]", "0:[a] 20:[d]"},
    {"BlockCommentEndsAtItsFirstEnd", "/* /* [a] */ [b] */", "13:[b]"},
    {"BlockCommentThatOnlyBegins", "/*/ [a] */ [b]", "11:[b]"},
    {"UnfinishedBlockComment", "[a] /* [b]", "0:[a]"},
    {"DivisionIsNoComment", "[a] / [b]", "0:[a] 6:[b]"},
    {"CharactersBeyondTheBasicPlane", "'\xF0\x9F\x98\x80' + [b]", "7:[b]"},
};

INSTANTIATE_TEST_SUITE_P(Rows, FormulaNamesTest, testing::ValuesIn(FormulaRows), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(FormulaNamesCostTest, ManyUnfinishedPartsTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(5);
    std::string formula;
    for (int i = 0; i < 300000; ++i)
        formula += "[a].";
    EXPECT_TRUE(FindFormulaNames(VString::fromStdString(formula + "[")).empty());
}

}  // namespace
