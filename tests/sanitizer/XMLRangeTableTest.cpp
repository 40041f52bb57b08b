#include "vancorexml/main/parser/XMLRangeTable.h"

#include <utility>

#include "tests/common/TestSupport.h"

namespace {

constexpr std::size_t Untouched = 77;

struct RangeRow {
    const char* name;
    std::string text;
    std::size_t position;
    XMLRangeType type;
    std::size_t end;
};

class XMLRangeTableRows : public testing::TestWithParam<RangeRow> {};

}  // namespace

TEST_P(XMLRangeTableRows, TypeAndEnd)
{
    XMLRangeTable table(GetParam().text);
    std::size_t end = Untouched;
    EXPECT_EQ(table.GetRangeTypeAt(GetParam().position, end), GetParam().type);
    EXPECT_EQ(end, GetParam().end);
}

INSTANTIATE_TEST_SUITE_P(XMLRangeTableTest,
    XMLRangeTableRows,
    testing::Values(RangeRow{"EmptyText", "", 0, XMLRangeTypeNone, Untouched},
        RangeRow{"NoBang", "<a/>", 1, XMLRangeTypeNone, Untouched},
        RangeRow{"BangAtTheStartEndsTheSearch", "!<!-- -->", 3, XMLRangeTypeNone, Untouched},
        RangeRow{"BangWithoutOpen", "a!<!--b-->", 4, XMLRangeTypeComment, 10},
        RangeRow{"CDataFromItsFirstByte", "<![CDATA[x]]>y", 0, XMLRangeTypeCData, 13},
        RangeRow{"CDataToItsLastByte", "<![CDATA[x]]>y", 12, XMLRangeTypeCData, 13},
        RangeRow{"BehindCData", "<![CDATA[x]]>y", 13, XMLRangeTypeNone, Untouched},
        RangeRow{"CDataHidesAComment", "<![CDATA[<!--]]>-->", 17, XMLRangeTypeNone, Untouched},
        RangeRow{"Comment", "a<!--b-->c", 5, XMLRangeTypeComment, 9},
        RangeRow{"BeforeAComment", "a<!--b-->c", 0, XMLRangeTypeNone, Untouched},
        RangeRow{"CommentOfFiveBytes", "<!-->x", 4, XMLRangeTypeComment, 5},
        RangeRow{"Declaration", "<!DOCTYPE a>", 4, XMLRangeTypeDeclaration, 12},
        RangeRow{"OtherSectionIsADeclaration", "<![IGNORE[x]]>", 4, XMLRangeTypeDeclaration, 14},
        RangeRow{"WithoutItsEnd", "<!--b", 4, XMLRangeTypeComment, 5},
        RangeRow{"SecondRange", "<!-- --><!D>", 9, XMLRangeTypeDeclaration, 12}),
    [](const auto& row) { return row.param.name; });

TEST(XMLRangeTableTest, TypesHaveTheirValues)
{
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeTypeCData), 0u);
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeTypeComment), 1u);
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeTypeDeclaration), 2u);
    EXPECT_EQ(static_cast<std::uint32_t>(XMLRangeTypeNone), 0xFFFFFFFFu);
}

TEST(XMLRangeTableTest, DefaultTableHasNoRanges)
{
    XMLRangeTable table;
    std::size_t end = Untouched;
    EXPECT_EQ(table.GetRangeTypeAt(5, end), XMLRangeTypeNone);
    EXPECT_EQ(end, Untouched);
}

TEST(XMLRangeTableTest, TheSamePositionMayBeAskedAgain)
{
    XMLRangeTable table("<!--b-->");
    std::size_t end = 0;
    EXPECT_EQ(table.GetRangeTypeAt(3, end), XMLRangeTypeComment);
    EXPECT_EQ(table.GetRangeTypeAt(3, end), XMLRangeTypeComment);
}

TEST(XMLRangeTableTest, DecreasingPositionsRaise)
{
    XMLRangeTable table("<!--b-->");
    std::size_t end = 0;
    table.GetRangeTypeAt(3, end);
    testsupport::ExpectLogicException([&] { table.GetRangeTypeAt(2, end); },
        "vancorexml\\main\\parser\\XMLRangeTable",
        104,
        "GetRangeTypeAt must be called with increasing positions",
        0x1A238B43);
}

TEST(XMLRangeTableTest, CopiesHaveACursorOfTheirOwn)
{
    XMLRangeTable table("<!--b--><!D>");
    std::size_t end = 0;
    table.GetRangeTypeAt(1, end);
    XMLRangeTable copy(table);
    XMLRangeTable assigned;
    assigned = table;
    EXPECT_EQ(copy.GetRangeTypeAt(9, end), XMLRangeTypeDeclaration);
    EXPECT_EQ(assigned.GetRangeTypeAt(9, end), XMLRangeTypeDeclaration);
    EXPECT_EQ(table.GetRangeTypeAt(2, end), XMLRangeTypeComment);
}

TEST(XMLRangeTableTest, MoveTakesTheRangesOver)
{
    XMLRangeTable table("<!--b-->");
    XMLRangeTable moved(std::move(table));
    XMLRangeTable assigned;
    assigned = std::move(moved);
    std::size_t end = 0;
    EXPECT_EQ(assigned.GetRangeTypeAt(1, end), XMLRangeTypeComment);
}

TEST(XMLRangeTableTest, CopyingWhatWasMovedFromRaises)
{
    XMLRangeTable table("<!--b-->");
    const XMLRangeTable moved(std::move(table));
    XMLRangeTable target;
    const auto expect = [](const std::function<void()>& run) {
        testsupport::ExpectLogicException(
            run, "vancorexml\\main\\parser\\XMLRangeTable", 141, "other.m_pImpl != nullptr", 0x7DE85DF8);
    };
    expect([&] { XMLRangeTable copy(table); });
    expect([&] { target = table; });
}

TEST(XMLRangeTableTest, SelfAssignmentChangesNothing)
{
    XMLRangeTable table("<!--b-->");
    const XMLRangeTable& same = table;
    table = same;
    std::size_t end = 0;
    EXPECT_EQ(table.GetRangeTypeAt(1, end), XMLRangeTypeComment);
}
