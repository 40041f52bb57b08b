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

TEST_P(ParseBoolRows, ReturnsTheExpectedValue)
{
    EXPECT_EQ(XMLValueParsers::ParseBool(GetParam().text), GetParam().value);
    EXPECT_EQ(XMLValueParsers::ParseBool(GetParam().text, true), GetParam().valueOrTrue);
    EXPECT_EQ(XMLValueParsers::ParseBool(GetParam().text, false), GetParam().value);
}

const BoolRow BoolRows[] = {
    {"True", "true", true, true},
    {"False", "false", false, false},
    {"Empty", "", false, true},
    {"One", "1", false, false},
    {"UpperCase", "TRUE", false, false},
    {"Capitalized", "True", false, false},
    {"Yes", "yes", false, false},
    {"LeadingBlank", " true", false, false},
    {"TrailingBlank", "true ", false, false},
    {"Blank", " ", false, false},
    {"TrailingLetter", "trues", false, false},
    {"MissingLetter", "tru", false, false},
};

INSTANTIATE_TEST_SUITE_P(
    XMLValueParsersTest, ParseBoolRows, testing::ValuesIn(BoolRows), [](const auto& row) { return row.param.name; });

TEST(XMLValueParsersTest, ParseBoolComparesTheTextBehindANul)
{
    EXPECT_FALSE(XMLValueParsers::ParseBool(VString(u"true\0", 5)));
}

TEST_P(ParseIntRows, ReturnsTheExpectedValue)
{
    EXPECT_EQ(XMLValueParsers::ParseInt(GetParam().text), GetParam().value);
}

const IntRow IntRows[] = {
    {"Zero", "0", 0},
    {"Number", "42", 42},
    {"Negative", "-42", -42},
    {"Plus", "+42", 42},
    {"Largest", "2147483647", 2147483647},
    {"Least", "-2147483648", -2147483647 - 1},
    {"TooLarge", "2147483648", 0},
    {"TooSmall", "-2147483649", 0},
    {"FarTooLarge", "99999999999999999999", 0},
    {"LeadingZeros", "007", 7},
    {"Empty", "", 0},
    {"Letters", "abc", 0},
    {"Fraction", "1.5", 0},
    {"Exponent", "1e3", 0},
    {"Hexadecimal", "0x10", 0},
    {"TrailingText", "42a", 0},
    {"TwoNumbers", "4 2", 0},
    {"SignAlone", "-", 0},
};

INSTANTIATE_TEST_SUITE_P(
    XMLValueParsersTest, ParseIntRows, testing::ValuesIn(IntRows), [](const auto& row) { return row.param.name; });

TEST(XMLValueParsersTest, ParseIntReadsFormattedIntegers)
{
    for (const std::int32_t value :
        {0, 1, -1, 123456789, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(XMLValueParsers::ParseInt(XMLFormatter::FormatIntegerAttribute(value)), value);
}

TEST_P(ParseFloatRows, ReturnsTheExpectedValue)
{
    EXPECT_EQ(Bits(XMLValueParsers::ParseFloat(GetParam().text)), Bits(GetParam().value));
}

const FloatRow FloatRows[] = {
    {"Whole", "12", 12.0},
    {"Fraction", "-0.5", -0.5},
    {"Exponent", "1e3", 1000.0},
    {"CapitalExponent", "1E-2", 0.01},
    {"Infinity", "inf", Limits::infinity()},
    {"NegativeInfinity", "-inf", -Limits::infinity()},
    {"NegativeZero", "-0", -0.0},
    {"Empty", "", 0.0},
    {"Letters", "abc", 0.0},
    {"DecimalComma", "1,5", 0.0},
    {"TrailingText", "1.5x", 0.0},
    {"SignAlone", "-", 0.0},
    {"TwoPoints", "1.2.3", 0.0},
};

INSTANTIATE_TEST_SUITE_P(
    XMLValueParsersTest, ParseFloatRows, testing::ValuesIn(FloatRows), [](const auto& row) { return row.param.name; });

TEST_P(RoundTripRows, KeepsEveryBit)
{
    EXPECT_EQ(Bits(RoundTrip(GetParam().value)), Bits(GetParam().value));
}

const DoubleRow DoubleRows[] = {
    {"Zero", 0.0},
    {"NegativeZero", -0.0},
    {"Tenth", 0.1},
    {"Third", 1.0 / 3},
    {"Infinity", Limits::infinity()},
    {"NegativeInfinity", -Limits::infinity()},
    {"Largest", Limits::max()},
    {"Lowest", Limits::lowest()},
    {"SmallestNormal", Limits::min()},
    {"LargestDenormal", FromBits(0x000FFFFFFFFFFFFF)},
    {"SmallestDenormal", Limits::denorm_min()},
    {"NegativeDenormal", -Limits::denorm_min()},
    {"NextToOne", 1.0 + Limits::epsilon()},
    {"BeyondExactIntegers", 9007199254740993.0},
};

INSTANTIATE_TEST_SUITE_P(
    XMLValueParsersTest, RoundTripRows, testing::ValuesIn(DoubleRows), [](const auto& row) { return row.param.name; });

TEST(XMLValueParsersTest, NotANumberStaysNotANumber)
{
    EXPECT_TRUE(std::isnan(RoundTrip(Limits::quiet_NaN())));
}

TEST(XMLValueParsersTest, RandomDoublesKeepEveryBit)
{
    std::mt19937_64 random(17);
    for (int round = 0; round < 100000; ++round) {
        const double value = FromBits(random());
        if (std::isnan(value))
            continue;
        ASSERT_EQ(Bits(RoundTrip(value)), Bits(value)) << XMLFormatter::FormatDoubleAttribute(value);
    }
}

TEST(XMLValueParsersTest, RandomDenormalsKeepEveryBit)
{
    std::mt19937_64 random(18);
    for (int round = 0; round < 20000; ++round) {
        const double value = FromBits(random() & 0x800FFFFFFFFFFFFF);
        ASSERT_EQ(Bits(RoundTrip(value)), Bits(value)) << XMLFormatter::FormatDoubleAttribute(value);
    }
}
