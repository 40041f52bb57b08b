#include "vanxml/DisplayText.h"

#include "tests/common/TestSupport.h"

namespace {

struct CharacterRow {
    const char* name;
    char32_t character;
    int columns;
};

std::ostream& operator<<(std::ostream& out, const CharacterRow& row)
{
    return out << row.name;
}

// Returns the texts of the cells, each in brackets.
std::string Cells(std::string_view text)
{
    std::string all;
    for (const DisplayCell& cell : SplitIntoCells(text, 1))
        all += "[" + cell.text + "]";
    return all;
}

}  // namespace

class CountColumnsTest : public testing::TestWithParam<CharacterRow> {};

TEST_P(CountColumnsTest, ReturnsTheWidthOnATerminal)
{
    EXPECT_EQ(CountColumns(GetParam().character), GetParam().columns);
}

const CharacterRow Characters[] = {
    {"Letter", U'a', 1},
    {"Umlaut", U'ü', 1},
    {"Ellipsis", U'…', 1},
    {"SoftHyphen", 0xAD, 1},
    {"CombiningAcute", 0x301, 0},
    {"EnclosingCircle", 0x20DD, 0},
    {"ZeroWidthJoiner", 0x200D, 0},
    {"HangulVowel", 0x1161, 0},
    {"FirstWide", 0x1100, 2},
    {"BeforeFirstWide", 0x10FF, 1},
    {"Ideograph", U'漢', 2},
    {"Hiragana", U'か', 2},
    {"HangulSyllable", U'한', 2},
    {"FullwidthLetter", U'Ａ', 2},
    {"HalfwidthKatakana", U'ｱ', 1},
    {"IdeographicSpace", 0x3000, 2},
    {"Emoji", U'😀', 2},
    {"SupplementaryIdeograph", 0x20000, 2},
    {"BehindLastWide", 0x3FFFE, 1},
    {"MusicalSymbol", 0x1D11E, 1},
};

INSTANTIATE_TEST_SUITE_P(
    Characters, CountColumnsTest, testing::ValuesIn(Characters), [](const auto& test) { return test.param.name; });

TEST(SplitIntoCellsTest, ExpandsTabsToEveryFourthColumn)
{
    EXPECT_EQ(Cells("\ta\tabc\tabcd\t"), "[    ][a][   ][a][b][c][ ][a][b][c][d][    ]");
    EXPECT_EQ(Cells("漢\t"), "[漢][  ]");
}

TEST(SplitIntoCellsTest, EscapesControlCharactersAndInvalidBytes)
{
    EXPECT_EQ(Cells("a\x1B\u202E\xFFü\xC3"), "[a][\\x1b][\\u202e][\\xff][ü][\\xc3]");
    EXPECT_EQ(Cells("~\x7F"), "[~][\\x7f]");
    EXPECT_EQ(SplitIntoCells("\u202E", 1).front().width, 6);
}

TEST(SplitIntoCellsTest, CountsSourceColumnsInCodeUnits)
{
    std::vector<std::uint64_t> columns;
    for (const DisplayCell& cell : SplitIntoCells("a😀\xFFü\tb", 10))
        columns.push_back(cell.column);
    EXPECT_THAT(columns, testing::ElementsAre(10, 11, 13, 14, 15, 16));
}
