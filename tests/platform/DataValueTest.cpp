#include "vancoredata/DataValue.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "vancoredata/Tuple.h"

namespace {

struct FormatCase {
    const char* name;
    DataValue value;
    const char* text;
};

}  // namespace

class DataValueFormatterCaseTest : public testing::TestWithParam<FormatCase> {};

TEST_P(DataValueFormatterCaseTest, FormatsTheValue)
{
    EXPECT_EQ(
        DataValueFormatter::Format(GetParam().value, DataValueFormatter::FormatOptions()), VString(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Values,
    DataValueFormatterCaseTest,
    testing::Values(FormatCase{"Null", DataValue(), "%null%"},
        FormatCase{"True", DataValue(true), "true"},
        FormatCase{"False", DataValue(false), "false"},
        FormatCase{"Integer", DataValue(-12), "-12"},
        FormatCase{"LargestInteger", DataValue(std::numeric_limits<std::int64_t>::max()), "9223372036854775807"},
        FormatCase{"Double", DataValue(0.1), "0.10000000000000001"},
        FormatCase{"Infinity", DataValue(-std::numeric_limits<double>::infinity()), "-inf"},
        FormatCase{"Text", DataValue("größe"), "\"größe\""},
        FormatCase{"SixteenBitText", DataValue(u"größe"), "\"größe\""},
        FormatCase{"EmptyText", DataValue(VString()), "\"\""},
        FormatCase{"QuotesAndBackslashes", DataValue("a\"b\\c"), "\"a\\\"b\\\\c\""}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(DataValueFormatterTest, FormatsNullAsTheOptionsRequire)
{
    DataValueFormatter::FormatOptions options;
    options.null = "none";
    EXPECT_EQ(DataValueFormatter::Format(DataValue(), options), VString("none"));
}

TEST(DataValueTest, ValuesOfDifferentTypesDiffer)
{
    EXPECT_EQ(DataValue(1), DataValue(std::int64_t{1}));
    EXPECT_NE(DataValue(1), DataValue(1.0));
    EXPECT_NE(DataValue(1), DataValue(true));
    EXPECT_NE(DataValue("1"), DataValue(1));
    EXPECT_EQ(DataValue("a"), DataValue(VString("a")));
}

TEST(DataValueTest, OnlyTheDefaultValueIsNull)
{
    EXPECT_TRUE(DataValue().IsNull());
    EXPECT_FALSE(DataValue("").IsNull());
    EXPECT_FALSE(DataValue(0).IsNull());
}

TEST(TupleTest, KeepsItsValuesInOrder)
{
    Tuple tuple{1, "two"};
    tuple.Append(3.0);
    ASSERT_EQ(tuple.GetSize(), 3u);
    EXPECT_EQ(tuple.GetDataValue(0), DataValue(1));
    EXPECT_EQ(tuple.GetDataValue(1), DataValue("two"));
    EXPECT_EQ(tuple.GetDataValue(2), DataValue(3.0));
    EXPECT_EQ(Tuple().GetSize(), 0u);
}
