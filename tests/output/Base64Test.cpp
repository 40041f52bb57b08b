#include "vancorexml/main/parser/Base64.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>

#include <QByteArray>

#include "tests/common/TestSupport.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// An invalid address: a read from it crashes.
const unsigned char* const NoBytes = reinterpret_cast<const unsigned char*>(std::uintptr_t(8));

std::vector<VString> Encode(const std::string& bytes, bool splitLines)
{
    std::vector<VString> lines;
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
    Base64Encode(data, static_cast<unsigned int>(bytes.size()), lines, splitLines);
    return lines;
}

std::string Decode(const VString& text)
{
    std::vector<unsigned char> bytes;
    Base64Decode(text, bytes);
    return std::string(bytes.begin(), bytes.end());
}

VString Repeat(const std::string& piece, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += piece;
    return VString::fromStdString(result);
}

std::string RandomBytes(std::mt19937& random, std::size_t length)
{
    std::string bytes(length, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

struct EncodeRow {
    const char* name;
    std::string bytes;
    const char* text;
};

class Base64EncodeTest : public testing::TestWithParam<EncodeRow> {};

TEST_P(Base64EncodeTest, EncodesShortBytesAsOneLine)
{
    EXPECT_THAT(Encode(GetParam().bytes, true), ElementsAre(VString(GetParam().text)));
    EXPECT_THAT(Encode(GetParam().bytes, false), ElementsAre(VString(GetParam().text)));
}

const EncodeRow EncodeRows[] = {
    {"OneByte", "M", "TQ=="},
    {"TwoBytes", "Ma", "TWE="},
    {"ThreeBytes", "Man", "TWFu"},
    {"FourBytes", "ManM", "TWFuTQ=="},
    {"LastCharactersOfTheAlphabet", "\xFB\xFF\xFE", "+//+"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, Base64EncodeTest, testing::ValuesIn(EncodeRows), [](const auto& row) { return row.param.name; });

TEST(Base64EncodeLinesTest, NoBytesAppendNoLine)
{
    EXPECT_THAT(Encode("", true), IsEmpty());
    EXPECT_THAT(Encode("", false), IsEmpty());
}

TEST(Base64EncodeLinesTest, AppendsLines)
{
    std::vector<VString> lines = {"before"};
    Base64Encode(reinterpret_cast<const unsigned char*>("Man"), 3, lines, true);
    EXPECT_THAT(lines, ElementsAre(VString("before"), VString("TWFu")));
}

TEST(Base64EncodeLinesTest, FiftyFourBytesFillOneLine)
{
    EXPECT_THAT(Encode(std::string(54, '\0'), true), ElementsAre(Repeat("A", 72)));
}

TEST(Base64EncodeLinesTest, FiftyFiveBytesBeginASecondLine)
{
    EXPECT_THAT(Encode(std::string(55, '\0'), true), ElementsAre(Repeat("A", 72), VString("AA==")));
}

TEST(Base64EncodeLinesTest, WithoutSplittingThereIsOneLine)
{
    EXPECT_THAT(Encode(std::string(162, '\0'), false), ElementsAre(Repeat("A", 216)));
}

TEST(Base64EncodeLinesTest, EncodesEveryLengthLikeQt)
{
    std::mt19937 random(1);
    for (std::size_t length = 1; length < 300; ++length) {
        const std::string bytes = RandomBytes(random, length);
        const VString expected = VString::fromStdString(QByteArray::fromStdString(bytes).toBase64().toStdString());
        ASSERT_EQ(VString::join(Encode(bytes, true), VString()), expected);
        ASSERT_THAT(Encode(bytes, false), ElementsAre(expected));
    }
}

TEST(Base64EncodeLinesTest, TooManyGroupsForOneLineAssert)
{
    std::vector<VString> lines;
    const auto encode = [&lines] { Base64Encode(NoBytes, 0xBFFFFFFE, lines, false); };
    testsupport::ExpectLogicException(
        encode, "vancorexml\\main\\parser\\Base64", 49, "onethird <= 0x3FFFFFFF", 0xD5E47E3E);
    EXPECT_THAT(lines, IsEmpty());
}

TEST(Base64EncodeLinesTest, LineTooLongForAStringThrowsBeforeReading)
{
    std::vector<VString> lines;
    EXPECT_THROW(Base64Encode(NoBytes, 0xBFFFFFFD, lines, false), std::length_error);
    EXPECT_THROW(Base64Encode(NoBytes, VString::MaxLength / 4 * 3 + 1, lines, false), std::length_error);
    EXPECT_THAT(lines, IsEmpty());
}

struct DecodeRow {
    const char* name;
    const char16_t* text;
    std::string bytes;
};

class Base64DecodeTest : public testing::TestWithParam<DecodeRow> {};

TEST_P(Base64DecodeTest, DecodesTheText)
{
    EXPECT_EQ(Decode(GetParam().text), GetParam().bytes);
}

using namespace std::string_literals;

const DecodeRow DecodeRows[] = {
    {"Empty", u"", ""},
    {"WhiteSpaceOnly", u" \n\t", ""},
    {"WholeGroup", u"TWFu", "Man"},
    {"OnePadding", u"TWE=", "Ma"},
    {"TwoPaddings", u"TQ==", "M"},
    {"ThreePaddings", u"T===", "L"},
    {"Trimmed", u"  TWFu\r\n", "Man"},
    {"LineFeedBetweenGroups", u"TWFu\nTQ==", "ManM"},
    {"InvalidCharactersInsideAGroupAreSkipped", u"T-W.F u", "Man"},
    {"TruncatedWithoutPadding", u"TQ", "M\0\0"s},
    {"OneCharacter", u"T", "L\0\0"s},
    {"NoValidCharacter", u"-", "\0\0\0"s},
    {"InvalidCharacterAfterAGroup", u"TWFu-", "Man\0\0\0"s},
    {"TwoPaddingsAfterAWholeGroup", u"TWFu==", "Man\0"s},
    {"OnePaddingAfterAWholeGroup", u"TWFu=", "Man\0\0"s},
    {"GroupAfterPadding", u"TQ==TWFu", "M\x16\xE0\0"s},
    {"OnlyTheLowByteCounts", u"\u0154\u2657\u0646\u0175", "Man"},
    {"LowByteIsPadding", u"TQ\u013D\u023D", "M"},
    {"LastCharactersOfTheAlphabet", u"+//+", "\xFB\xFF\xFE"},
    {"NeighboursOfTheAlphabetAreSkipped", u"*TW{F:@[`,.u", "Man"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, Base64DecodeTest, testing::ValuesIn(DecodeRows), [](const auto& row) { return row.param.name; });

TEST(Base64DecodeTextTest, ReplacesTheOldBytes)
{
    std::vector<unsigned char> bytes = {1, 2, 3, 4, 5};
    Base64Decode("TQ==", bytes);
    EXPECT_THAT(bytes, ElementsAre('M'));
}

TEST(Base64DecodeTextTest, EncodedBytesRoundTrip)
{
    std::mt19937 random(2);
    for (std::size_t length = 0; length < 300; ++length) {
        const std::string bytes = RandomBytes(random, length);
        ASSERT_EQ(Decode(VString::join(Encode(bytes, true), VString("\n"))), bytes);
    }
}

// Decodes in a simple way. `position` is the start of the current group. Each skipped character moves it forward by
// one, and each decoded group by four.
std::string ReferenceDecode(const VString& text)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const VString trimmed = text.trimmed();
    std::string bytes;
    int position = 0;
    while (position < trimmed.length()) {
        int values[4] = {0, 0, 0, 0};
        int count = 0;
        int padding = 0;
        while (count < 4 && position + count < trimmed.length()) {
            const char character = static_cast<char>(trimmed[position + count] & 0xFF);
            const std::size_t value =
                character >= '+' && character <= 'z' ? alphabet.find(character) : std::string::npos;
            if (value != std::string::npos) {
                values[count++] = static_cast<int>(value);
                continue;
            }
            if (character == '=')
                ++padding;
            ++position;
        }
        bytes += static_cast<char>(values[0] * 4 + values[1] / 16);
        if (padding < 2)
            bytes += static_cast<char>(values[1] % 16 * 16 + values[2] / 4);
        if (padding < 1)
            bytes += static_cast<char>(values[2] % 4 * 64 + values[3]);
        position += 4;
    }
    return bytes;
}

VString RandomText(std::mt19937& random, const std::u16string& alphabet, std::size_t maxLength)
{
    std::u16string text(random() % (maxLength + 1), u' ');
    for (char16_t& unit : text)
        unit = alphabet[random() % alphabet.size()];
    return VString(text.data(), text.size());
}

TEST(Base64DecodeTextTest, AgreesWithTheReferenceOnRandomTexts)
{
    std::mt19937 random(3);
    const std::u16string alphabet = u"ABTQYZabz0189+/==== \n-*{\u0141\u2041\u013D\uFFFF";
    for (int round = 0; round < 200000; ++round) {
        const VString text = RandomText(random, alphabet, 16);
        ASSERT_EQ(Decode(text), ReferenceDecode(text)) << text;
    }
}

struct IsBase64Row {
    const char* name;
    const char16_t* text;
    bool expected;
};

class IsBase64RowTest : public testing::TestWithParam<IsBase64Row> {};

TEST_P(IsBase64RowTest, DistinguishesBase64FromOtherText)
{
    EXPECT_EQ(IsBase64(GetParam().text), GetParam().expected);
}

const IsBase64Row IsBase64Rows[] = {
    {"Empty", u"", true},
    {"OneGroup", u"TWFu", true},
    {"TwoGroups", u"TWFuTWFu", true},
    {"OnePadding", u"TWE=", true},
    {"TwoPaddings", u"TWFuTQ==", true},
    {"LastCharactersOfTheAlphabet", u"+/+/", true},
    {"ThreeCharacters", u"TQ=", false},
    {"NoPadding", u"TQ", false},
    {"ThreePaddings", u"T===", false},
    {"OnlyPadding", u"====", false},
    {"GroupAfterPadding", u"TQ==TWFu", false},
    {"PaddingBeforeTheEnd", u"TQ=T", false},
    {"LineFeedInside", u"TWF\n", false},
    {"OtherCharacter", u"TW-u", false},
    {"WideCharacterWithALowByteOfTheAlphabet", u"\u0154WFu", false},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, IsBase64RowTest, testing::ValuesIn(IsBase64Rows), [](const auto& row) { return row.param.name; });

// Checks in a simple way, without a regular expression.
bool ReferenceIsBase64(const VString& text)
{
    const std::string bytes = text.toStdString();
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t end = bytes.find_first_not_of(alphabet);
    const std::string rest = end == std::string::npos ? "" : bytes.substr(end);
    return text.length() % 4 == 0 && (rest.empty() || rest == "=" || rest == "==");
}

TEST(IsBase64Test, AgreesWithTheReferenceOnRandomTexts)
{
    std::mt19937 random(4);
    for (int round = 0; round < 50000; ++round) {
        const VString text = RandomText(random, u"AZaz09+/AZaz09+/==\n-\u0141", 12);
        ASSERT_EQ(IsBase64(text), ReferenceIsBase64(text)) << text;
    }
}

TEST(IsBase64Test, ChecksTextsOfTenMillionCharacters)
{
    const VString text(QString(10000000, QChar(u'A')));
    EXPECT_TRUE(IsBase64(text));
    EXPECT_TRUE(IsBase64(text + VString("AA==")));
    EXPECT_FALSE(IsBase64(text + VString("=AA=")));
}

}  // namespace
