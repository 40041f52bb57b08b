#include "vancorexml/main/parser/XMLValueParsers.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/XMLFormatter.h"

namespace {

struct BoolRow {
    const char* name;
    const char* text;
    bool value;
    bool valueOrTrue;
};

class ParseBoolRows : public testing::TestWithParam<BoolRow> {};

struct IntRow {
    const char* name;
    const char* text;
    std::int32_t value;
};

class ParseIntRows : public testing::TestWithParam<IntRow> {};

struct FloatRow {
    const char* name;
    const char* text;
    double value;
};

class ParseFloatRows : public testing::TestWithParam<FloatRow> {};

struct DoubleRow {
    const char* name;
    double value;
};

class RoundTripRows : public testing::TestWithParam<DoubleRow> {};

std::uint64_t Bits(double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double FromBits(std::uint64_t bits)
{
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double RoundTrip(double value)
{
    return XMLValueParsers::ParseFloat(XMLFormatter::FormatDoubleAttribute(value));
}

using Limits = std::numeric_limits<double>;

}  // namespace

TEST_P(ParseBoolRows, Value)
{
    EXPECT_EQ(XMLValueParsers::ParseBool(GetParam().text), GetParam().value);
    EXPECT_EQ(XMLValueParsers::ParseBool(GetParam().text, true), GetParam().valueOrTrue);
    EXPECT_EQ(XMLValueParsers::ParseBool(GetParam().text, false), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(XMLValueParsersTest,
    ParseBoolRows,
    testing::Values(BoolRow{"True", "true", true, true},
        BoolRow{"False", "false", false, false},
        BoolRow{"Empty", "", false, true},
        BoolRow{"One", "1", false, false},
        BoolRow{"Capitals", "TRUE", false, false},
        BoolRow{"Capital", "True", false, false},
        BoolRow{"Yes", "yes", false, false},
        BoolRow{"LeadingBlank", " true", false, false},
        BoolRow{"TrailingBlank", "true ", false, false},
        BoolRow{"Blank", " ", false, false},
        BoolRow{"Longer", "trues", false, false},
        BoolRow{"Shorter", "tru", false, false}),
    [](const auto& row) { return row.param.name; });

TEST(XMLValueParsersTest, ParseBoolReadsTheWholeTextBehindANul)
{
    EXPECT_FALSE(XMLValueParsers::ParseBool(VString(u"true\0", 5)));
}

TEST_P(ParseIntRows, Value)
{
    EXPECT_EQ(XMLValueParsers::ParseInt(GetParam().text), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(XMLValueParsersTest,
    ParseIntRows,
    testing::Values(IntRow{"Zero", "0", 0},
        IntRow{"Number", "42", 42},
        IntRow{"Negative", "-42", -42},
        IntRow{"Plus", "+42", 42},
        IntRow{"Largest", "2147483647", 2147483647},
        IntRow{"Least", "-2147483648", -2147483647 - 1},
        IntRow{"TooLarge", "2147483648", 0},
        IntRow{"TooSmall", "-2147483649", 0},
        IntRow{"FarTooLarge", "99999999999999999999", 0},
        IntRow{"LeadingZeros", "007", 7},
        IntRow{"Empty", "", 0},
        IntRow{"Words", "abc", 0},
        IntRow{"Fraction", "1.5", 0},
        IntRow{"Exponent", "1e3", 0},
        IntRow{"Hexadecimal", "0x10", 0},
        IntRow{"TextBehind", "42a", 0},
        IntRow{"TwoNumbers", "4 2", 0},
        IntRow{"SignAlone", "-", 0}),
    [](const auto& row) { return row.param.name; });

TEST(XMLValueParsersTest, ParseIntReadsWhatIsFormatted)
{
    for (const std::int32_t value :
        {0, 1, -1, 123456789, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(XMLValueParsers::ParseInt(XMLFormatter::FormatIntegerAttribute(value)), value);
}

TEST_P(ParseFloatRows, Value)
{
    EXPECT_EQ(Bits(XMLValueParsers::ParseFloat(GetParam().text)), Bits(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(XMLValueParsersTest,
    ParseFloatRows,
    testing::Values(FloatRow{"Whole", "12", 12.0},
        FloatRow{"Fraction", "-0.5", -0.5},
        FloatRow{"Exponent", "1e3", 1000.0},
        FloatRow{"CapitalExponent", "1E-2", 0.01},
        FloatRow{"Infinity", "inf", Limits::infinity()},
        FloatRow{"NegativeInfinity", "-inf", -Limits::infinity()},
        FloatRow{"NegativeZero", "-0", -0.0},
        FloatRow{"Empty", "", 0.0},
        FloatRow{"Words", "abc", 0.0},
        FloatRow{"CommaIsNoPoint", "1,5", 0.0},
        FloatRow{"TextBehind", "1.5x", 0.0},
        FloatRow{"SignAlone", "-", 0.0},
        FloatRow{"TwoPoints", "1.2.3", 0.0}),
    [](const auto& row) { return row.param.name; });

TEST_P(RoundTripRows, ComesBackBitForBit)
{
    EXPECT_EQ(Bits(RoundTrip(GetParam().value)), Bits(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(XMLValueParsersTest,
    RoundTripRows,
    testing::Values(DoubleRow{"Zero", 0.0},
        DoubleRow{"NegativeZero", -0.0},
        DoubleRow{"Tenth", 0.1},
        DoubleRow{"Third", 1.0 / 3},
        DoubleRow{"Infinity", Limits::infinity()},
        DoubleRow{"NegativeInfinity", -Limits::infinity()},
        DoubleRow{"Largest", Limits::max()},
        DoubleRow{"Lowest", Limits::lowest()},
        DoubleRow{"SmallestNormal", Limits::min()},
        DoubleRow{"LargestDenormal", FromBits(0x000FFFFFFFFFFFFF)},
        DoubleRow{"SmallestDenormal", Limits::denorm_min()},
        DoubleRow{"NegativeDenormal", -Limits::denorm_min()},
        DoubleRow{"NextToOne", 1.0 + Limits::epsilon()},
        DoubleRow{"PastTheWholeNumbers", 9007199254740993.0}),
    [](const auto& row) { return row.param.name; });

TEST(XMLValueParsersTest, NotANumberStaysNotANumber)
{
    EXPECT_TRUE(std::isnan(RoundTrip(Limits::quiet_NaN())));
}

TEST(XMLValueParsersTest, RandomDoublesComeBackBitForBit)
{
    std::mt19937_64 random(17);
    for (int round = 0; round < 100000; ++round) {
        const double value = FromBits(random());
        if (std::isnan(value))
            continue;
        ASSERT_EQ(Bits(RoundTrip(value)), Bits(value)) << XMLFormatter::FormatDoubleAttribute(value);
    }
}

TEST(XMLValueParsersTest, RandomDenormalsComeBackBitForBit)
{
    std::mt19937_64 random(18);
    for (int round = 0; round < 20000; ++round) {
        const double value = FromBits(random() & 0x800FFFFFFFFFFFFF);
        ASSERT_EQ(Bits(RoundTrip(value)), Bits(value)) << XMLFormatter::FormatDoubleAttribute(value);
    }
}
