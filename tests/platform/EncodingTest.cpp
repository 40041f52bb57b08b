#include "vancoreplatform/Encoding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace {

std::size_t FirstInvalid(const std::string& bytes)
{
    return FindInvalidUtf8(bytes.data(), bytes.size());
}

Encoding Detect(const std::string& bytes)
{
    return DetectEncoding(bytes.data(), bytes.size());
}

// Scans in a simple way, for comparison: decodes each sequence with the length that its first byte determines, and
// checks the code point.
std::size_t FirstInvalidNaively(const std::string& bytes)
{
    std::size_t position = 0;
    while (position < bytes.size()) {
        const unsigned lead = static_cast<unsigned char>(bytes[position]);
        const std::size_t length = lead < 0x80 ? 1 : lead >> 5 == 6 ? 2 : lead >> 4 == 14 ? 3 : lead >> 3 == 30 ? 4 : 0;
        if (length == 0 || bytes.size() - position < length)
            return position;
        unsigned value = length == 1 ? lead : lead & (0x7F >> length);
        for (std::size_t i = 1; i < length; ++i) {
            const unsigned next = static_cast<unsigned char>(bytes[position + i]);
            if (next >> 6 != 2)
                return position;
            value = value << 6 | (next & 0x3F);
        }
        constexpr unsigned least[] = {0, 0, 0x80, 0x800, 0x10000};
        if (value < least[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            return position;
        position += length;
    }
    return bytes.size();
}

struct InvalidCase {
    const char* name;
    std::string bytes;
    std::size_t offset;
};

}  // namespace

class FindInvalidUtf8CaseTest : public testing::TestWithParam<InvalidCase> {};

TEST_P(FindInvalidUtf8CaseTest, ReturnsTheStartOfTheBadSequence)
{
    EXPECT_EQ(FirstInvalid(GetParam().bytes), GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(Sequences,
    FindInvalidUtf8CaseTest,
    testing::Values(InvalidCase{"LoneContinuation", "a\x80", 1},
        InvalidCase{"OverlongOfTwo", "ab\xC0\xAF", 2},
        InvalidCase{"OverlongSlashC1", "\xC1\xBF", 0},
        InvalidCase{"OverlongOfThree", "\xE0\x9F\xBF", 0},
        InvalidCase{"OverlongOfFour", "\xF0\x8F\xBF\xBF", 0},
        InvalidCase{"HighSurrogate", "x\xED\xA0\x80", 1},
        InvalidCase{"LowSurrogate", "x\xED\xBF\xBF", 1},
        InvalidCase{"BeyondTheLast", "\xF4\x90\x80\x80", 0},
        InvalidCase{"LeadF5", "\xF5\x80\x80\x80", 0},
        InvalidCase{"ByteFE", "\xFE", 0},
        InvalidCase{"ByteFF", "12345678\xFF", 8},
        InvalidCase{"CutOfTwo", "a\xC3", 1},
        InvalidCase{"CutOfThree", "a\xE2\x82", 1},
        InvalidCase{"CutOfFour", "a\xF0\x9F\x98", 1},
        InvalidCase{"SecondByteWrong", "\xE2(\xAC", 0},
        InvalidCase{"ThirdByteWrong", "\xE2\x82(", 0},
        InvalidCase{"FourthByteWrong", "\xF0\x9F\x98(", 0},
        InvalidCase{"BehindALongRun", std::string(1000, 'a') + "\xE4 ", 1000}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FindInvalidUtf8Test, AcceptsTheBoundsOfEveryRange)
{
    const std::string bytes = std::string("\0\x7F", 2) +
        "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    EXPECT_EQ(FirstInvalid(bytes), bytes.size());
    EXPECT_EQ(FirstInvalid(""), 0u);
}

TEST(FindInvalidUtf8Test, FindsABadByteAtEveryOffsetOfAWord)
{
    for (std::size_t length = 1; length < 40; ++length) {
        for (std::size_t bad = 0; bad < length; ++bad) {
            std::string bytes(length, 'a');
            bytes[bad] = '\x80';
            ASSERT_EQ(FirstInvalid(bytes), bad) << length;
        }
    }
}

TEST(FindInvalidUtf8Test, AgreesWithTheNaiveScanOnEveryShortSequence)
{
    for (unsigned lead = 0; lead < 0x100; ++lead) {
        for (unsigned second = 0; second < 0x100; ++second) {
            for (const char* rest : {"", "\x80", "\xBF\x80", "\xBF\xC0", "a"}) {
                const std::string bytes = std::string{static_cast<char>(lead), static_cast<char>(second)} + rest;
                ASSERT_EQ(FirstInvalid(bytes), FirstInvalidNaively(bytes)) << lead << ' ' << second << ' ' << rest;
            }
        }
    }
}

TEST(FindInvalidUtf8Test, AgreesWithTheNaiveScanOnRandomBytes)
{
    const std::string pieces[] = {"a",
        "abcdefghij",
        "\xC3\xA4",
        "\xE2\x82\xAC",
        "\xF0\x9F\x98\x80",
        "\xED\xA0",
        "\xC0",
        "\x80",
        "\xF4\x90",
        "\xE0\x80"};
    std::mt19937 random(7);
    for (int run = 0; run < 20000; ++run) {
        std::string bytes;
        for (int i = 0; i < 12; ++i)
            bytes += pieces[random() % (i < 9 ? 5 : 10)];
        ASSERT_EQ(FirstInvalid(bytes), FirstInvalidNaively(bytes)) << run;
    }
}

TEST(DetectEncodingTest, AsciiAndTheEmptyTextAreUtf8)
{
    EXPECT_EQ(Detect(""), Encoding::Utf8);
    EXPECT_EQ(Detect("<a/>"), Encoding::Utf8);
}

TEST(DetectEncodingTest, AcceptsValidUtf8WithAndWithoutAMark)
{
    EXPECT_EQ(Detect("größe"), Encoding::Utf8);
    EXPECT_EQ(Detect("\xEF\xBB\xBF<a/>"), Encoding::Utf8);
}

TEST(DetectEncodingTest, ASequenceCutAtTheEndIsValid)
{
    for (const char* cut : {"a\xC3", "a\xE2", "a\xE2\x82", "a\xF0", "a\xF0\x9F", "a\xF0\x9F\x98", "\xEF\xBB"})
        EXPECT_EQ(Detect(cut), Encoding::Utf8) << cut;
}

TEST(DetectEncodingTest, BytesThatCannotBecomeValidAreUnknown)
{
    for (const char* bytes : {"a\x80", "a\xC0", "a\xED\xA0", "a\xE0\x80", "a\xF4\x90", "a\xF8", "\xE4rger", "\xC3 "})
        EXPECT_EQ(Detect(bytes), Encoding::Unknown) << bytes;
}

TEST(DetectEncodingTest, NulsAreNotUtf8)
{
    EXPECT_EQ(Detect(std::string("a\0b", 3)), Encoding::Unknown);
    EXPECT_EQ(Detect(std::string("<\0a\0", 4)), Encoding::Unknown);
}

TEST(DetectEncodingTest, AUtf16MarkMeansUtf16)
{
    EXPECT_EQ(Detect(std::string("\xFF\xFE<\0", 4)), Encoding::Utf16);
    EXPECT_EQ(Detect(std::string("\xFE\xFF\0<", 4)), Encoding::Utf16);
}

TEST(DetectEncodingTest, HalfAUtf16MarkIsUnknown)
{
    EXPECT_EQ(Detect("\xFF"), Encoding::Unknown);
    EXPECT_EQ(Detect("\xFE"), Encoding::Unknown);
}

TEST(CountInvalidUtf8Test, CountsTheStartOfACharacter)
{
    const auto count = [](std::string_view bytes) { return CountInvalidUtf8(bytes.data(), bytes.size()); };
    EXPECT_EQ(count("\xE9t\xE9"), 1u);
    EXPECT_EQ(count("\x80\x80"), 1u);
    EXPECT_EQ(count("\xFF"), 1u);
    EXPECT_EQ(count("\xE2\x82"), 2u);
    EXPECT_EQ(count("\xE2\x82<"), 2u);
    EXPECT_EQ(count("\xF0\x9F\x98\xE9"), 3u);
    EXPECT_EQ(count("\xED\xA0\x80"), 1u);
}
