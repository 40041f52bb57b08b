#include "vancoreplatform/VString.h"

#include <gtest/gtest.h>

#include <QLocale>

#include <clocale>
#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/CorePlatformUtils.h"
#include "vancoreplatform/VCType.h"

namespace {

constexpr char16_t HighHalf = 0xD83D;
constexpr char16_t LowHalf = 0xDE00;

VString Units(std::u16string_view units)
{
    return VString(units.data(), units.size());
}

}  // namespace

TEST(VStringTest, StartsEmpty)
{
    const VString text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(text.utf16()[0], u'\0');
    EXPECT_EQ(text.begin(), text.end());
}

TEST(VStringTest, NullPointersMakeTheEmptyString)
{
    EXPECT_EQ(VString(static_cast<const char*>(nullptr)), VString());
    EXPECT_EQ(VString(static_cast<const char16_t*>(nullptr)), VString());
}

TEST(VStringTest, AllEmptyStringsAreEqual)
{
    EXPECT_EQ(VString(), VString(""));
    EXPECT_EQ(VString(""), VString("a").left(0));
    EXPECT_FALSE(VString() < VString(""));
    EXPECT_TRUE(VString().startsWith(""));
    EXPECT_TRUE(VString().endsWith(VString("a").left(0)));
    EXPECT_TRUE(VString().contains(""));
}

TEST(VStringTest, ReadsUtf8Literals)
{
    const VString text = "größe \xF0\x9F\x98\x80";
    EXPECT_EQ(text.View(), std::u16string_view(u"größe \U0001F600"));
    EXPECT_EQ(text.length(), 8);
}

TEST(VStringTest, ReadsSixteenBitLiterals)
{
    EXPECT_EQ(VString(u"größe"), VString("größe"));
}

TEST(VStringTest, KeepsTextBehindANul)
{
    const VString text = VString::fromStdString(std::string("a\0b", 3));
    EXPECT_EQ(text.View(), std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(text.toStdString(), std::string("a\0b", 3));
    EXPECT_NE(text, VString("a"));
    EXPECT_EQ(Units({u"a\0b", 3}), text);
}

TEST(VStringTest, IllFormedUtf8BecomesReplacementCharacters)
{
    const VString text = VString::fromStdString("a\377b");
    EXPECT_EQ(text, VString(u"a\uFFFDb"));
}

TEST(VStringTest, ByteOrderMarksAreCharacters)
{
    const std::string marks = "\xEF\xBB\xBF\xEF\xBB\xBFx\xEF\xBB\xBF";
    const VString text = VString::fromStdString(marks);
    EXPECT_EQ(text, VString(u"\uFEFF\uFEFFx\uFEFF"));
    EXPECT_EQ(text.toStdString(), marks);
}

TEST(VStringTest, DecodesLongTextsBehindAByteOrderMark)
{
    std::string bytes = "\xEF\xBB\xBF";
    std::u16string units = u"\uFEFF";
    for (int i = 0; i < 500000; ++i) {
        bytes += "x\xC3\xB6\xE6\x96\x87\xF0\x9F\x98\x80";
        units += u"xö文\U0001F600";
    }
    EXPECT_EQ(VString::fromStdString(bytes).View(), units);
}

TEST(VStringTest, UnpairedSurrogatesBecomeReplacementCharactersInUtf8)
{
    const std::u16string units = {u'a', HighHalf, u'b', LowHalf, HighHalf, LowHalf, HighHalf};
    EXPECT_EQ(Units(units).toStdString(), "a\uFFFDb\uFFFD\U0001F600\uFFFD");
}

TEST(VStringTest, ConvertsEveryCodePointToUtf8AndBack)
{
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; codePoint = codePoint == 0xD7FF ? 0xE000 : codePoint + 1) {
        const QString expected = QString::fromUcs4(&codePoint, 1);
        const std::string utf8 = VString(expected).toStdString();
        ASSERT_EQ(QByteArray::fromStdString(utf8), expected.toUtf8()) << static_cast<unsigned>(codePoint);
        ASSERT_EQ(VString::fromStdString(utf8).ToQString(), expected) << static_cast<unsigned>(codePoint);
    }
}

// Returns a random text and its UTF-8. It consists of `pieces` runs of ASCII, each followed by another character, which
// may be a surrogate pair or an unpaired surrogate.
std::pair<std::u16string, std::string> RandomRuns(std::mt19937& random, int pieces)
{
    const std::pair<std::u16string, std::string> others[] = {{u"\u007F", "\x7F"},
        {u"\u0080", "\xC2\x80"},
        {u"\u07FF", "\xDF\xBF"},
        {u"\u0800", "\xE0\xA0\x80"},
        {u"\uFFFD", "\xEF\xBF\xBD"},
        {u"\U0001F600", "\xF0\x9F\x98\x80"},
        {std::u16string(1, LowHalf), "\xEF\xBF\xBD"},
        {std::u16string{HighHalf, u'x'}, "\xEF\xBF\xBDx"}};
    std::pair<std::u16string, std::string> result;
    for (int piece = 0; piece < pieces; ++piece) {
        const std::size_t run = random() % 40;
        const auto& other = others[random() % std::size(others)];
        result.first.append(run, u'a').append(other.first);
        result.second.append(run, 'a').append(other.second);
    }
    return result;
}

TEST(VStringTest, ConvertsRunsOfAsciiBetweenOtherCharacters)
{
    std::mt19937 random(1);
    for (int round = 0; round < 5000; ++round) {
        const auto [units, utf8] = RandomRuns(random, 1 + round % 300);
        ASSERT_EQ(Units(units).toStdString(), utf8) << "round " << round;
    }
}

TEST(VStringTest, ConvertsLongTextsOfThreeByteCharacters)
{
    std::string expected;
    for (int i = 0; i < 10000; ++i)
        expected += "\xEF\xBF\xBD";
    EXPECT_EQ(Units(std::u16string(10000, 0xFFFD)).toStdString(), expected);
}

TEST(VStringTest, PrintsAsUtf8)
{
    std::ostringstream out;
    out << VString(u"größe");
    EXPECT_EQ(out.str(), "größe");
}

TEST(VStringTest, CopiesShareTheirBufferUntilOneChanges)
{
    const VString original = "text";
    VString copy = original;
    EXPECT_TRUE(copy.IsSharedWith(original));
    copy += u'!';
    EXPECT_FALSE(copy.IsSharedWith(original));
    EXPECT_EQ(original, VString("text"));
    EXPECT_EQ(copy, VString("text!"));
}

TEST(VStringTest, OrdersByCodeUnits)
{
    EXPECT_LT(VString("B"), VString("a"));
    EXPECT_LT(VString("a"), VString("a "));
    EXPECT_LT(VString(u"\U0001F600"), VString(u"\uFFFD"));
    EXPECT_GT(VString("b"), VString("a"));
    EXPECT_LE(VString("a"), VString("a"));
    EXPECT_GE(VString("a"), VString("a"));
}

TEST(VStringTest, FindsParts)
{
    const VString text = "one two one";
    EXPECT_TRUE(text.startsWith("one"));
    EXPECT_FALSE(text.startsWith("one two one "));
    EXPECT_TRUE(text.endsWith("one"));
    EXPECT_TRUE(text.contains("two"));
    EXPECT_TRUE(text.contains(u'w'));
    EXPECT_FALSE(text.contains(u'x'));
    EXPECT_EQ(text.indexOf("one", 1), 8);
    EXPECT_EQ(text.indexOf(u'o', 1), 6);
    EXPECT_EQ(text.indexOf("three"), -1);
}

TEST(VStringTest, LeftAndMidReturnPartsOfTheText)
{
    const VString text = "abcdef";
    EXPECT_EQ(text.left(2), VString("ab"));
    EXPECT_EQ(text.left(9), text);
    EXPECT_EQ(text.mid(2), VString("cdef"));
    EXPECT_EQ(text.mid(2, 2), VString("cd"));
    EXPECT_EQ(text.mid(9), VString());
}

TEST(VStringTest, ReplaceScansTheTextOnce)
{
    const VString text = "aaaa";
    EXPECT_EQ(text.replace("aa", "a"), VString("aa"));
    EXPECT_EQ(text.replace("a", "aa"), VString("aaaaaaaa"));
    EXPECT_EQ(VString("x-y").replace("-", ""), VString("xy"));
    EXPECT_EQ(text, VString("aaaa"));
}

TEST(VStringTest, ReplacingTheEmptyTextChangesNothing)
{
    const VString text = "abc";
    EXPECT_EQ(text.replace("", "x"), text);
    EXPECT_EQ(text.replace("d", "x"), text);
}

TEST(VStringTest, SplitKeepsEmptyParts)
{
    using Parts = std::vector<VString>;
    EXPECT_EQ(VString("a/b").split(u'/'), (Parts{"a", "b"}));
    EXPECT_EQ(VString("/a//b/").split(u'/'), (Parts{"", "a", "", "b", ""}));
    EXPECT_EQ(VString("").split(u'/'), (Parts{""}));
    EXPECT_EQ(VString("/").split(u'/'), (Parts{"", ""}));
}

TEST(VStringTest, JoinReversesSplit)
{
    for (const char* text : {"", "/", "a", "a/b", "/a//b/"}) {
        EXPECT_EQ(VString::join(VString(text).split(u'/'), "/"), VString(text));
    }
    EXPECT_EQ(VString::join({}, "/"), VString());
}

TEST(VStringTest, TrimsTabToCarriageReturnAndTheBlankOnly)
{
    const VString text = u" \t\n\v\f\r\u00A0a \u00A0\r\f\v\n\t ";
    EXPECT_EQ(text.trimLeft(), VString(u"\u00A0a \u00A0\r\f\v\n\t "));
    EXPECT_EQ(text.trimmed(), VString(u"\u00A0a \u00A0"));
    EXPECT_EQ(VString(" \t").trimLeft(), VString());
    EXPECT_EQ(VString(" \t").trimmed(), VString());
    EXPECT_EQ(VString(u"\u2003\u0085").trimmed(), VString(u"\u2003\u0085"));
}

TEST(VStringTest, ReadsNumbersInTheCLocale)
{
    bool ok = false;
    EXPECT_EQ(VString("-1.5e3").toDouble(&ok), -1500.0);
    EXPECT_TRUE(ok);
    EXPECT_EQ(VString("1,5").toDouble(&ok), 0.0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(VString("-12").toInt(&ok), -12);
    EXPECT_TRUE(ok);
    EXPECT_EQ(VString("ff").toInt(&ok, 16), 255);
    EXPECT_TRUE(ok);
    EXPECT_EQ(VString("2147483648").toInt(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(VString("12x").toInt(), 0);
}

TEST(VStringTest, FormatsIntegers)
{
    EXPECT_EQ(VString::number(std::numeric_limits<std::int32_t>::min()), VString("-2147483648"));
    EXPECT_EQ(VString::number(std::numeric_limits<std::uint32_t>::max()), VString("4294967295"));
    EXPECT_EQ(VString::number(std::numeric_limits<std::int64_t>::min()), VString("-9223372036854775808"));
    EXPECT_EQ(VString::number(std::numeric_limits<std::uint64_t>::max()), VString("18446744073709551615"));
}

struct DoubleCase {
    const char* name;
    double value;
    int precision;
    const char* text;
};

class VStringDoubleTest : public testing::TestWithParam<DoubleCase> {};

TEST_P(VStringDoubleTest, FormatsLikePrintfG)
{
    EXPECT_EQ(VString::number(GetParam().value, GetParam().precision), VString(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Values,
    VStringDoubleTest,
    testing::Values(DoubleCase{"Zero", 0.0, 17, "0"},
        DoubleCase{"NegativeZero", -0.0, 17, "-0"},
        DoubleCase{"Tenth", 0.1, 17, "0.10000000000000001"},
        DoubleCase{"TenthInSixDigits", 0.1, 6, "0.1"},
        DoubleCase{"Large", 1e21, 17, "1e+21"},
        DoubleCase{"SixDigitsTurnToExponents", 1234567.0, 6, "1.23457e+06"},
        DoubleCase{"Small", 0.00001, 6, "1e-05"},
        DoubleCase{"Infinity", std::numeric_limits<double>::infinity(), 17, "inf"},
        DoubleCase{"NegativeInfinity", -std::numeric_limits<double>::infinity(), 6, "-inf"},
        DoubleCase{"NotANumber", std::numeric_limits<double>::quiet_NaN(), 6, "nan"},
        DoubleCase{"Denormal", 5e-324, 17, "4.9406564584124654e-324"},
        DoubleCase{"MoreDigitsThanADoubleHas", 0.5, 100000, "0.5"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(VStringTest, SeventeenDigitsRestoreADouble)
{
    for (const double value : {0.1, 1.0 / 3.0, 5e-324, 1.7976931348623157e308, -123456789.12345678}) {
        EXPECT_EQ(VString::number(value, 17).toDouble(), value);
    }
    EXPECT_TRUE(std::signbit(VString::number(-0.0, 17).toDouble()));
    EXPECT_TRUE(std::isinf(VString("-inf").toDouble()));
}

TEST(VStringTest, NumbersIgnoreTheLocale)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    std::setlocale(LC_ALL, "de_DE.UTF-8");  // no effect if the machine lacks the locale
    const VString text = VString::number(0.5, 17);
    const double value = VString("0.5").toDouble();
    std::setlocale(LC_ALL, "C");
    QLocale::setDefault(before);
    EXPECT_EQ(text, VString("0.5"));
    EXPECT_EQ(value, 0.5);
}

TEST(VCTypeTest, SpaceIsTabToCarriageReturnAndTheBlank)
{
    for (int character = -130; character < 0x3001; ++character) {
        const bool expected = character == ' ' || character == '\t' || character == '\n' || character == '\v' ||
            character == '\f' || character == '\r';
        ASSERT_EQ(VCType::isSpace(character), expected) << character;
    }
}

TEST(CorePlatformUtilsTest, AcceptsTheCharactersOfXml)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const bool control = unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r';
        const bool surrogate = unit >= 0xD800 && unit <= 0xDFFF;
        ASSERT_EQ(
            CorePlatformUtils::IsValidCharacter(static_cast<char16_t>(unit)), !control && !surrogate && unit < 0xFFFE)
            << unit;
    }
}
