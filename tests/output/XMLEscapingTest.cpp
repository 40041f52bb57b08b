#include "vancorexml/main/parser/XMLEscaping.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vancoreplatform/CorePlatformUtils.h"
#include "vancorexml/main/parser/XMLFormatter.h"

namespace {

using namespace XMLEscaping;

constexpr char SourceFile[] = "vancorexml\\main\\parser\\XMLFormatter";

VString Unit(char16_t unit)
{
    return VString(&unit, 1);
}

std::u16string NumericEscape(char16_t unit)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "\\x%X;", static_cast<unsigned>(unit));
    const std::string text = buffer;
    return std::u16string(text.begin(), text.end());
}

// Returns the replacement of a unit in a simple way. Returns an empty text if the unit does not change.
std::u16string ReferenceEntry(char16_t unit, int kind)
{
    const bool keepsLines = kind == ContentMapping;
    const bool keepsQuotes = kind == ApostropheMapping;
    switch (unit) {
    case u'\t': return keepsLines ? u"" : u"&#9;";
    case u'\n': return keepsLines ? u"" : u"&#10;";
    case u'\r': return u"&#13;";
    case u'&': return u"&amp;";
    case u'<': return u"&lt;";
    case u'>': return u"&gt;";
    case u'\'': return keepsQuotes ? u"" : u"&apos;";
    case u'"': return keepsQuotes ? u"" : u"&quot;";
    default: return unit < 0x20 ? NumericEscape(unit) : u"";
    }
}

std::u16string ReferenceEncode(const std::u16string& text, int kind)
{
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            result.append(text, i, 2);
            ++i;
        } else if (unit < 0x3F) {
            const std::u16string entry = ReferenceEntry(unit, kind);
            result += entry.empty() ? std::u16string(1, unit) : entry;
        } else if (unit <= 0x80 || CorePlatformUtils::IsValidCharacter(unit)) {
            result += unit;
        } else {
            result += NumericEscape(unit);
        }
    }
    return result;
}

class XMLEscapingKindTest : public testing::TestWithParam<int> {};

TEST_P(XMLEscapingKindTest, TableMatchesTheReferenceForEveryUnit)
{
    MappingTable table;
    table.fill(VString("left over"));
    InitMappingTableType(table, GetParam());
    ASSERT_EQ(table.size(), 63u);
    for (char16_t unit = 0; unit < 0x3F; ++unit)
        EXPECT_EQ(table[unit].View(), ReferenceEntry(unit, GetParam())) << "unit " << static_cast<int>(unit);
}

TEST_P(XMLEscapingKindTest, EncodesEveryUnitAloneLikeTheReference)
{
    const EscapeTable table(GetParam());
    for (int unit = 0; unit <= 0xFFFF; ++unit) {
        const std::u16string text(1, static_cast<char16_t>(unit));
        ASSERT_EQ(EncodeWithTable(VString(text.data(), 1), table).View(), ReferenceEncode(text, GetParam()))
            << "unit " << unit;
    }
}

TEST_P(XMLEscapingKindTest, EncodesRandomTextsLikeTheReference)
{
    const EscapeTable table(GetParam());
    const std::u16string alphabet = u"&<>'\"\t\n\r\x01\x1F a?@Z\x7F\x80\x81\u00E4\u65E5\uE000\uFFFD\uFFFE\uFFFF" +
        std::u16string{0, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF};
    std::mt19937 random(1);
    for (int round = 0; round < 100000; ++round) {
        std::u16string text(random() % 12, u' ');
        for (char16_t& unit : text)
            unit = alphabet[random() % alphabet.size()];
        ASSERT_EQ(EncodeWithTable(VString(text.data(), text.size()), table).View(), ReferenceEncode(text, GetParam()))
            << "round " << round;
    }
}

TEST_P(XMLEscapingKindTest, EncodesEveryUnitAmongLettersLikeTheReference)
{
    const EscapeTable table(GetParam());
    for (int unit = 0; unit <= 0xFFFF; ++unit) {
        std::u16string text(19, u'a');
        text[static_cast<std::size_t>(unit) % text.size()] = static_cast<char16_t>(unit);
        ASSERT_EQ(EncodeWithTable(VString(text.data(), text.size()), table).View(), ReferenceEncode(text, GetParam()))
            << "unit " << unit;
    }
}

TEST_P(XMLEscapingKindTest, EncodesRandomRunsOfLettersLikeTheReference)
{
    const EscapeTable table(GetParam());
    const std::u16string others = u"&<>'\"\n\x1F\x7F\x80\u00E4\uFFFE" + std::u16string{0xD800, 0xDC00};
    std::mt19937 random(2);
    for (int round = 0; round < 50000; ++round) {
        std::u16string text;
        for (int run = 0; run < 4; ++run)
            text.append(random() % 20, u'a').append(1 + random() % 2, others[random() % others.size()]);
        ASSERT_EQ(EncodeWithTable(VString(text.data(), text.size()), table).View(), ReferenceEncode(text, GetParam()))
            << "round " << round;
    }
}

std::string NameOfKind(const testing::TestParamInfo<int>& info)
{
    const char* const names[] = {"Attribute", "Content", "Apostrophe"};
    return names[info.param];
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, XMLEscapingKindTest, testing::Values(AttributeMapping, ContentMapping, ApostropheMapping), NameOfKind);

TEST(XMLEscapingTest, KindsAreNumberedFromZero)
{
    EXPECT_EQ(AttributeMapping, 0);
    EXPECT_EQ(ContentMapping, 1);
    EXPECT_EQ(ApostropheMapping, 2);
}

class XMLEscapingUnknownKindTest : public testing::TestWithParam<int> {};

TEST_P(XMLEscapingUnknownKindTest, InitMappingTableTypeAsserts)
{
    MappingTable table;
    const auto init = [&table] { InitMappingTableType(table, GetParam()); };
    testsupport::ExpectLogicException(init, SourceFile, 120, "Unknown type passed to InitMappingTableType", 0xF6AD402C);
}

std::string NameOfUnknownKind(const testing::TestParamInfo<int>& info)
{
    return info.param < 0 ? "Negative" : "Number" + std::to_string(info.param);
}

INSTANTIATE_TEST_SUITE_P(Kinds, XMLEscapingUnknownKindTest, testing::Values(-1, 3, 1000), NameOfUnknownKind);

struct EncodeRow {
    const char* name;
    std::u16string text;
    std::u16string encoded;
};

class XMLEscapingAttributeTest : public testing::TestWithParam<EncodeRow> {};

TEST_P(XMLEscapingAttributeTest, EncodesTheText)
{
    const std::u16string& text = GetParam().text;
    EXPECT_EQ(XMLFormatter::EncodeAttributeString(VString(text.data(), text.size())).View(), GetParam().encoded);
}

const EncodeRow AttributeRows[] = {
    {"Empty", u"", u""},
    {"Markup", u"<a b='c' d=\"e\">&", u"&lt;a b=&apos;c&apos; d=&quot;e&quot;&gt;&amp;"},
    {"WhiteSpace", u"a\n\t\rb c", u"a&#10;&#9;&#13;b c"},
    {"ControlCharacter", u"a\u0001b", u"a\\x1;b"},
    {"ControlCharacterOfTwoDigits", u"\u001B", u"\\x1B;"},
    {"Nul", std::u16string(1, u'\0'), u"\\x0;"},
    {"QuestionMark", u"?", u"?"},
    {"Delete", u"\u007F", u"\u007F"},
    {"FirstUnitAfterAscii", std::u16string(1, 0x80), std::u16string(1, 0x80)},
    {"SurrogatePair", u"\U0001F600", u"\U0001F600"},
    {"LastSurrogatePair", u"\U0010FFFF", u"\U0010FFFF"},
    {"SurrogatePairBetweenMarkup", u"<\U0001F600>", u"&lt;\U0001F600&gt;"},
    {"HighSurrogateAtTheEnd", {u'a', 0xD800}, u"a\\xD800;"},
    {"HighSurrogateBeforeText", {0xDBFF, u'a'}, u"\\xDBFF;a"},
    {"LowSurrogate", {0xDC00, u'a'}, u"\\xDC00;a"},
    {"TwoHighSurrogatesAndALowOne",
        {0xD800, 0xD83D, 0xDE00},
        {u'\\', u'x', u'D', u'8', u'0', u'0', u';', 0xD83D, 0xDE00}},
    {"SwappedSurrogates", {0xDE00, 0xD83D}, u"\\xDE00;\\xD83D;"},
    {"Noncharacters", u"\uFFFE\uFFFF", u"\\xFFFE;\\xFFFF;"},
    {"LastValidUnit", u"\uFFFD", u"\uFFFD"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLEscapingAttributeTest, testing::ValuesIn(AttributeRows), [](const auto& row) { return row.param.name; });

TEST(XMLEscapingTest, UnchangedTextIsSharedNotCopied)
{
    const VString text = u"plain text, gr\u00FC\u00DFe \U0001F600 = 100% (no markup)";
    EXPECT_TRUE(XMLFormatter::EncodeAttributeString(text).IsSharedWith(text));
    EXPECT_TRUE(XMLFormatter::EncodeContentString(text).IsSharedWith(text));
}

// Replacements for the validity test of units. The last two count their calls in `testedUnits`.
bool RejectEveryUnit(char16_t)
{
    return false;
}
bool AcceptEveryUnit(char16_t)
{
    return true;
}

int testedUnits = 0;
bool AcceptFirstThreeUnits(char16_t)
{
    return ++testedUnits <= 3;
}
bool RejectFirstThreeUnits(char16_t)
{
    return ++testedUnits > 3;
}

struct NumericRow {
    const char* name;
    char16_t unit;
    const char16_t* escape;
};

class XMLEscapingNumericTest : public testing::TestWithParam<NumericRow> {};

TEST_P(XMLEscapingNumericTest, NumericEscapeHasNoLeadingZeros)
{
    EXPECT_EQ(EncodeWithTable(Unit(GetParam().unit), AttributeTable(), RejectEveryUnit), VString(GetParam().escape));
}

const NumericRow NumericRows[] = {
    {"SmallestOfTwoDigits", 0x81, u"\\x81;"},
    {"LargestOfTwoDigits", 0xFF, u"\\xFF;"},
    {"SmallestOfThreeDigits", 0x100, u"\\x100;"},
    {"LargestOfThreeDigits", 0xFFF, u"\\xFFF;"},
    {"SmallestOfFourDigits", 0x1000, u"\\x1000;"},
    {"Letters", 0xABCD, u"\\xABCD;"},
};

INSTANTIATE_TEST_SUITE_P(
    Lengths, XMLEscapingNumericTest, testing::ValuesIn(NumericRows), [](const auto& row) { return row.param.name; });

TEST(XMLEscapingTest, UnitsUpTo0x80AreNotTestedForValidity)
{
    const std::u16string text = {u'?', u'A', 0x7F, 0x80};
    const VString source(text.data(), text.size());
    EXPECT_TRUE(EncodeWithTable(source, AttributeTable(), RejectEveryUnit).IsSharedWith(source));
}

TEST(XMLEscapingTest, SurrogateThatTheTestAcceptsStays)
{
    const VString text = Unit(0xD800);
    EXPECT_TRUE(EncodeWithTable(text, AttributeTable(), AcceptEveryUnit).IsSharedWith(text));
}

TEST(XMLEscapingTest, AssertsIfTheSecondPassRejectsMoreUnits)
{
    testedUnits = 0;
    const auto encode = [] { EncodeWithTable(u"<\u00E4\u00E4\u00E4", AttributeTable(), AcceptFirstThreeUnits); };
    testsupport::ExpectLogicException(encode, SourceFile, 236, "ix == dst.length()", 0xF6B4AF4C);
}

TEST(XMLEscapingTest, AssertsIfTheSecondPassRejectsFewerUnits)
{
    testedUnits = 0;
    const auto encode = [] { EncodeWithTable(u"\u00E4\u00E4\u00E4", AttributeTable(), RejectFirstThreeUnits); };
    testsupport::ExpectLogicException(encode, SourceFile, 236, "ix == dst.length()", 0xF6B4AF4C);
}

TEST(XMLEscapingTest, ThrowsIfTheEscapedTextIsTooLong)
{
    const VString text(QString(VString::MaxLength / 6 + 1, QChar(u'"')));
    EXPECT_THROW(XMLFormatter::EncodeAttributeString(text), std::length_error);
}

TEST(XMLEscapingTest, FirstUseOfTheTablesIsThreadSafe)
{
    std::vector<VString> results(4);
    std::vector<std::thread> threads;
    for (VString& result : results) {
        threads.emplace_back(
            [&result] { result = XMLFormatter::EncodeContentString("a & b, in a text that is longer than 32\n"); });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const VString& result : results)
        EXPECT_EQ(result, VString("a &amp; b, in a text that is longer than 32\n"));
}

class XMLEscapingContentTest : public testing::TestWithParam<EncodeRow> {};

TEST_P(XMLEscapingContentTest, EncodesTheText)
{
    const std::u16string& text = GetParam().text;
    EXPECT_EQ(XMLFormatter::EncodeContentString(VString(text.data(), text.size())).View(), GetParam().encoded);
}

const std::u16string x28(28, u'x');

const EncodeRow ContentRows[] = {
    {"Empty", u"", u""},
    {"Length31IsEscapedLikeAnAttribute", x28 + u"\n\t<", x28 + u"&#10;&#9;&lt;"},
    {"Length31WithQuotesIsEscapedLikeAnAttribute", u"\"" + x28 + u"<\"", u"&quot;" + x28 + u"&lt;&quot;"},
    {"Length32KeepsLinesAndTabs", x28 + u"\n\tab", x28 + u"\n\tab"},
    {"LongTextWithoutLessThanIsEscaped", x28 + u">&'\"\r\u0001", x28 + u"&gt;&amp;&apos;&quot;&#13;\\x1;"},
    {"Length32WithMarkupIsCData", x28 + u"\n<&>", u"<![CDATA[" + x28 + u"\n<&>]]>"},
    {"CDataEndInTheTextIsSplit", x28 + u"<]]>y", u"<![CDATA[" + x28 + u"<]]]]><![CDATA[>y]]>"},
    {"TwoCDataEndsInTheTextAreSplit", x28 + u"<]]>]]>", u"<![CDATA[" + x28 + u"<]]]]><![CDATA[>]]]]><![CDATA[>]]>"},
    {"CDataMayEndInBrackets", x28 + u"<]]]", u"<![CDATA[" + x28 + u"<]]]]]>"},
    {"QuotesStayOutsideOfCData", u"\"" + x28 + u"<]]>\"", u"&quot;<![CDATA[" + x28 + u"<]]]]><![CDATA[>]]>&quot;"},
    {"InnerQuotesStayInsideCData", u"\"\"" + x28 + u"<\"\"", u"&quot;<![CDATA[\"" + x28 + u"<\"]]>&quot;"},
    {"LeadingQuoteAloneStaysInsideCData", u"\"" + x28 + u"<<<", u"<![CDATA[\"" + x28 + u"<<<]]>"},
    {"TrailingQuoteAloneStaysInsideCData", x28 + u"<<<\"", u"<![CDATA[" + x28 + u"<<<\"]]>"},
    {"CDataKeepsControlCharacters", x28 + u"<\u0001\r\t", u"<![CDATA[" + x28 + u"<\u0001\r\t]]>"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLEscapingContentTest, testing::ValuesIn(ContentRows), [](const auto& row) { return row.param.name; });

TEST(XMLEscapingTest, OneQuoteAloneIsNotAQuotedText)
{
    EXPECT_EQ(EncodeAsCData("\""), VString("<![CDATA[\"]]>"));
}

TEST(XMLEscapingTest, TwoQuotesAreAnEmptyQuotedText)
{
    EXPECT_EQ(EncodeAsCData("\"\""), VString("&quot;<![CDATA[]]>&quot;"));
}

}  // namespace
