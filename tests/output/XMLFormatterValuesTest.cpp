#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "vancoredata/DataValue.h"
#include "vancoredata/QualifiedName.h"
#include "vancorexml/main/parser/XMLFormatter.h"

namespace {

TEST(XMLFormatterValuesTest, BooleansAreTrueOrFalse)
{
    EXPECT_EQ(XMLFormatter::FormatBooleanAttribute(true), VString("true"));
    EXPECT_EQ(XMLFormatter::FormatBooleanAttribute(false), VString("false"));
}

struct NumberRow {
    const char* name;
    double value;
    const char* asDouble;
    const char* asFloat;
};

class XMLFormatterNumberTest : public testing::TestWithParam<NumberRow> {};

TEST_P(XMLFormatterNumberTest, DoubleHas17Digits)
{
    EXPECT_EQ(XMLFormatter::FormatDoubleAttribute(GetParam().value), VString(GetParam().asDouble));
}

TEST_P(XMLFormatterNumberTest, FloatHas6Digits)
{
    EXPECT_EQ(XMLFormatter::FormatFloatAttribute(static_cast<float>(GetParam().value)), VString(GetParam().asFloat));
}

constexpr double Infinity = std::numeric_limits<double>::infinity();

const NumberRow NumberRows[] = {
    {"Zero", 0.0, "0", "0"},
    {"NegativeZero", -0.0, "-0", "-0"},
    {"WholeNumber", 12.0, "12", "12"},
    {"Half", -0.5, "-0.5", "-0.5"},
    {"Tenth", 0.1, "0.10000000000000001", "0.1"},
    {"Third", 1.0 / 3, "0.33333333333333331", "0.333333"},
    {"Million", 1e6, "1000000", "1e+06"},
    {"LargeWithExponent", 1e20, "1e+20", "1e+20"},
    {"LargestPowerOfTenWithoutExponent", 1e16, "10000000000000000", "1e+16"},
    {"SmallWithoutExponent", 0.0001, "0.0001", "0.0001"},
    {"SmallWithExponent", 0.00001, "1.0000000000000001e-05", "1e-05"},
    {"Infinity", Infinity, "inf", "inf"},
    {"NegativeInfinity", -Infinity, "-inf", "-inf"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLFormatterNumberTest, testing::ValuesIn(NumberRows), [](const auto& row) { return row.param.name; });

TEST(XMLFormatterValuesTest, DoublesRoundTrip)
{
    std::mt19937_64 random(1);
    for (int round = 0; round < 20000; ++round) {
        const std::uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value))
            continue;
        ASSERT_EQ(std::strtod(XMLFormatter::FormatDoubleAttribute(value).toStdString().c_str(), nullptr), value);
    }
}

TEST(XMLFormatterValuesTest, Int64IsDecimal)
{
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(XMLFormatter::FormatInt64Attribute(Limits::min()), VString("-9223372036854775808"));
    EXPECT_EQ(XMLFormatter::FormatInt64Attribute(Limits::max()), VString("9223372036854775807"));
}

TEST(XMLFormatterValuesTest, IntegerIsDecimal)
{
    EXPECT_EQ(XMLFormatter::FormatIntegerAttribute(std::numeric_limits<std::int32_t>::min()), VString("-2147483648"));
    EXPECT_EQ(XMLFormatter::FormatIntegerAttribute(0), VString("0"));
}

TEST(XMLFormatterValuesTest, UInt32IsDecimal)
{
    EXPECT_EQ(XMLFormatter::FormatUInt32Attribute(std::numeric_limits<std::uint32_t>::max()), VString("4294967295"));
}

TEST(XMLFormatterValuesTest, QualifiedNameIsItsFullValue)
{
    const QualifiedName name("ro]ot", "local");
    EXPECT_EQ(XMLFormatter::FormatQualifiedNameAttribute(name), name.GetFullValue());
    EXPECT_EQ(XMLFormatter::FormatQualifiedNameAttribute(name), VString("[ro]]ot].[local]"));
}

TEST(XMLFormatterValuesTest, DataValueIsFormattedWithDefaultOptions)
{
    EXPECT_EQ(XMLFormatter::FormatDataValueAttribute(DataValue()), VString("%null%"));
    EXPECT_EQ(XMLFormatter::FormatDataValueAttribute(DataValue("a")), VString("\"a\""));
    EXPECT_EQ(XMLFormatter::FormatDataValueAttribute(DataValue(0.25)), VString("0.25"));
}

}  // namespace
