#include "vancorexml/main/parser/XMLRangeTable.h"

#include <utility>

#include "tests/common/TestSupport.h"

namespace {

constexpr const char* const File = "vancorexml\\main\\parser\\XMLRangeTable";
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

TEST_P(XMLRangeTableRows, FindsTypeAndEndOfTheRange)
{
    XMLRangeTable table(GetParam().text);
    std::size_t end = Untouched;
    EXPECT_EQ(table.GetRangeTypeAt(GetParam().position, end), GetParam().type);
    EXPECT_EQ(end, GetParam().end);
}

const RangeRow RangeRows[] = {
    {"EmptyText", "", 0, XMLRangeTypeNone, Untouched},
    {"NoBang", "<a/>", 1, XMLRangeTypeNone, Untouched},
    {"BangAtTheStartEndsTheSearch", "!<!-- -->", 3, XMLRangeTypeNone, Untouched},
    {"BangWithoutLessThan", "a!<!--b-->", 4, XMLRangeTypeComment, 10},
    {"FirstByteOfCData", "<![CDATA[x]]>y", 0, XMLRangeTypeCData, 13},
    {"LastByteOfCData", "<![CDATA[x]]>y", 12, XMLRangeTypeCData, 13},
    {"AfterCData", "<![CDATA[x]]>y", 13, XMLRangeTypeNone, Untouched},
    {"CDataHidesAComment", "<![CDATA[<!--]]>-->", 17, XMLRangeTypeNone, Untouched},
    {"Comment", "a<!--b-->c", 5, XMLRangeTypeComment, 9},
    {"BeforeAComment", "a<!--b-->c", 0, XMLRangeTypeNone, Untouched},
    {"CommentOfFiveBytes", "<!-->x", 4, XMLRangeTypeComment, 5},
    {"Declaration", "<!DOCTYPE a>", 4, XMLRangeTypeDeclaration, 12},
    {"ConditionalSectionIsADeclaration", "<![IGNORE[x]]>", 4, XMLRangeTypeDeclaration, 14},
    {"UnterminatedComment", "<!--b", 4, XMLRangeTypeComment, 5},
    {"SecondRange", "<!-- --><!D>", 9, XMLRangeTypeDeclaration, 12},
};

INSTANTIATE_TEST_SUITE_P(
    XMLRangeTableTest, XMLRangeTableRows, testing::ValuesIn(RangeRows), [](const auto& row) { return row.param.name; });

TEST(XMLRangeTableTest, TypesHaveFixedValues)
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

TEST(XMLRangeTableTest, SamePositionMayBeQueriedAgain)
{
    XMLRangeTable table("<!--b-->");
    std::size_t end = 0;
    EXPECT_EQ(table.GetRangeTypeAt(3, end), XMLRangeTypeComment);
    EXPECT_EQ(table.GetRangeTypeAt(3, end), XMLRangeTypeComment);
}

TEST(XMLRangeTableTest, DecreasingPositionRaises)
{
    XMLRangeTable table("<!--b-->");
    std::size_t end = 0;
    table.GetRangeTypeAt(3, end);
    const auto goBack = [&] { table.GetRangeTypeAt(2, end); };
    testsupport::ExpectLogicException(
        goBack, File, 104, "GetRangeTypeAt must be called with increasing positions", 0x1A238B43);
}

TEST(XMLRangeTableTest, CopiesHaveTheirOwnCursor)
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

TEST(XMLRangeTableTest, MoveTransfersTheRanges)
{
    XMLRangeTable table("<!--b-->");
    XMLRangeTable moved(std::move(table));
    XMLRangeTable assigned;
    assigned = std::move(moved);
    std::size_t end = 0;
    EXPECT_EQ(assigned.GetRangeTypeAt(1, end), XMLRangeTypeComment);
}

TEST(XMLRangeTableTest, CopyOfAMovedFromTableRaises)
{
    XMLRangeTable table("<!--b-->");
    const XMLRangeTable moved(std::move(table));
    XMLRangeTable target;
    const auto expect = [](const std::function<void()>& run) {
        testsupport::ExpectLogicException(run, File, 141, "other.m_pImpl != nullptr", 0x7DE85DF8);
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
