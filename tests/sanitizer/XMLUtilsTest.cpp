#include "vancorexml/main/parser/XMLUtils.h"

#include "tests/common/TestSupport.h"

namespace {

constexpr const char* const File = "vancorexml\\main\\parser\\XMLUtils";

struct TagEndRow {
    const char* name;
    std::string text;
    std::size_t start;
    std::size_t end;
};

class FindTagEndRows : public testing::TestWithParam<TagEndRow> {};

struct ValueRow {
    const char* name;
    std::string tag;
    std::string attribute;
    std::optional<std::string> value;
};

class AttributeValueRows : public testing::TestWithParam<ValueRow> {};

struct FirstTagRow {
    const char* name;
    std::string text;
    std::size_t start;
    std::size_t length;
};

class FirstElementTagRows : public testing::TestWithParam<FirstTagRow> {};

struct QuotesRow {
    const char* name;
    std::string text;
    bool match;
};

class QuotesRows : public testing::TestWithParam<QuotesRow> {};

}  // namespace

TEST_P(FindTagEndRows, End)
{
    EXPECT_EQ(XmlUtils::FindTagEnd(GetParam().text, GetParam().start), GetParam().end);
}

INSTANTIATE_TEST_SUITE_P(XmlUtilsTest,
    FindTagEndRows,
    testing::Values(TagEndRow{"PlainTag", "<a>", 0, 2},
        TagEndRow{"InTheMiddle", "x<a>y>", 1, 3},
        TagEndRow{"Instruction", "<?a > ?>", 0, 7},
        TagEndRow{"Comment", "<!-- > -->", 0, 9},
        TagEndRow{"CommentOfFiveBytes", "<!-->", 0, 4},
        TagEndRow{"CData", "<![CDATA[ > ]]>", 0, 14},
        TagEndRow{"DeclarationWithQuotes", "<!DOCTYPE a '>'>", 0, 15},
        TagEndRow{"QuotedClose", "<a b='>' c=\">\">", 0, 14},
        TagEndRow{"OtherQuoteInside", "<a b='\">'>", 0, 9},
        TagEndRow{"QuoteWithoutItsEnd", "<a b='>", 0, XmlUtils::npos},
        TagEndRow{"NoClose", "<abc", 0, XmlUtils::npos},
        TagEndRow{"FewerThanThreeBytes", "<>", 0, XmlUtils::npos},
        TagEndRow{"ThreeBytes", "<>>", 0, 1},
        TagEndRow{"InstructionWithoutItsEnd", "<?a >", 0, XmlUtils::npos}),
    [](const auto& row) { return row.param.name; });

TEST(XmlUtilsTest, FindTagEndRaisesWithoutAnOpenBrace)
{
    testsupport::ExpectLogicException(
        [] { XmlUtils::FindTagEnd("a<b>", 0); }, File, 208, "xml[start] == c_openBrace", 0x92C7E05B);
    testsupport::ExpectLogicException(
        [] { XmlUtils::FindTagEnd("a<b>", 4); }, File, 208, "xml[start] == c_openBrace", 0x92C7E05B);
}

TEST_P(AttributeValueRows, Value)
{
    EXPECT_EQ(XmlUtils::GetAttributeValueInTag(GetParam().tag, GetParam().attribute, {0, GetParam().tag.size()}),
        GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(XmlUtilsTest,
    AttributeValueRows,
    testing::Values(ValueRow{"Apostrophes", "<a b='1'>", "b", "1"},
        ValueRow{"DoubleQuotes", "<a b=\"1'2\">", "b", "1'2"},
        ValueRow{"BlanksAroundTheSign", "<a b \t=\n '1'>", "b", "1"},
        ValueRow{"EmptyValue", "<a b=''>", "b", ""},
        ValueRow{"PartOfAName", "<a build_version='1' version='2'>", "version", "2"},
        ValueRow{"InsideAValue", "<a b=' version=\"1\" ' version='2'>", "version", "2"},
        ValueRow{"BeginningOfAName", "<a versions='1' version='2'>", "version", "2"},
        ValueRow{"NoSign", "<a b c='1'>", "b", std::nullopt},
        ValueRow{"NoQuote", "<a b=1>", "b", std::nullopt},
        ValueRow{"NoClosingQuote", "<a b='1>", "b", std::nullopt},
        ValueRow{"Missing", "<a b='1'>", "c", std::nullopt},
        ValueRow{"EmptyName", "<a b='1'>", "", std::nullopt},
        ValueRow{"ElementNameIsNone", "<a='1'>", "a", std::nullopt},
        ValueRow{"TheFirstThatCounts", "<a b='1' b='2'>", "b", "1"}),
    [](const auto& row) { return row.param.name; });

TEST(XmlUtilsTest, AttributeValueBehindTheTagIsNotSeen)
{
    EXPECT_EQ(XmlUtils::GetAttributeValueInTag("<a><b c='1'>", "c", {0, 3}), std::nullopt);
    EXPECT_EQ(XmlUtils::GetAttributeValueInTag("<a b='><c d='1'>", "b", {0, 7}), std::nullopt);
}

TEST(XmlUtilsTest, GetAttributeValueInTagRaisesOutsideOfTheText)
{
    const auto expect = [](const XmlUtils::TagRange& range) {
        testsupport::ExpectLogicException([&] { XmlUtils::GetAttributeValueInTag("<a>", "b", range); },
            File,
            358,
            "idx < xml.size() && end < xml.size()",
            0xA3E88D2C);
    };
    expect({3, 1});
    expect({0, 4});
    expect({0, 0});
    expect({XmlUtils::npos, 0});
}

TEST(XmlUtilsTest, GetAttributeValueInTagRaisesForWhatIsNoTag)
{
    const auto expect = [](const XmlUtils::TagRange& range) {
        testsupport::ExpectLogicException([&] { XmlUtils::GetAttributeValueInTag("x<a>y", "b", range); },
            File,
            359,
            "xml[idx] == c_openBrace && xml[end] == c_closeBrace",
            0xC2D03F8A);
    };
    expect({0, 4});
    expect({1, 4});
}

TEST_P(FirstElementTagRows, Range)
{
    const XmlUtils::TagRange range = XmlUtils::FindFirstElementTag(GetParam().text);
    EXPECT_EQ(range.start, GetParam().start);
    EXPECT_EQ(range.length, GetParam().length);
}

INSTANTIATE_TEST_SUITE_P(XmlUtilsTest,
    FirstElementTagRows,
    testing::Values(FirstTagRow{"OnlyAnElement", "<a b='1'/>", 0, 10},
        FirstTagRow{"BehindEverything", "<?xml?><!-- <b> --><!DOCTYPE a><a>", 31, 3},
        FirstTagRow{"BehindText", "text <a>", 5, 3},
        FirstTagRow{"Empty", "", XmlUtils::npos, 0},
        FirstTagRow{"NoElement", "<?xml?>", XmlUtils::npos, 0},
        FirstTagRow{"NotComplete", "<a b='1'", XmlUtils::npos, 0},
        FirstTagRow{"CommentNotComplete", "<!-- <a>", XmlUtils::npos, 0}),
    [](const auto& row) { return row.param.name; });

TEST_P(QuotesRows, Match)
{
    EXPECT_EQ(XmlUtils::AreQuotesMatchingInRange(GetParam().text, 0, GetParam().text.size() - 1), GetParam().match);
}

INSTANTIATE_TEST_SUITE_P(XmlUtilsTest,
    QuotesRows,
    testing::Values(QuotesRow{"None", "abc", true},
        QuotesRow{"Pair", "a'b'c", true},
        QuotesRow{"OtherInside", "'\"'", true},
        QuotesRow{"Open", "a'b", false},
        QuotesRow{"SecondOpen", "'a'\"", false},
        QuotesRow{"Crossed", "'\"'\"", false}),
    [](const auto& row) { return row.param.name; });

TEST(XmlUtilsTest, QuotesOutsideOfTheRangeDoNotCount)
{
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("'a'b'", 0, 2));
    EXPECT_FALSE(XmlUtils::AreQuotesMatchingInRange("'a'b'", 0, 1));
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("'a'b'", 1, 1));
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("'a'b'", 9, 12));
}

TEST(XmlUtilsTest, FindSearchesFromAPosition)
{
    EXPECT_EQ(XmlUtils::Find(std::string("abcabc"), std::string("bc"), 2), 4u);
    EXPECT_EQ(XmlUtils::Find(std::string("abcabc"), 'a', 0), 0u);
    EXPECT_EQ(XmlUtils::Find(std::string("abcabc"), 'x', 0), XmlUtils::npos);
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), std::string("abc"), 7), XmlUtils::npos);
    EXPECT_EQ(XmlUtils::Find(VString("aßcaßc"), VString("ßc"), 2), 4u);
    EXPECT_EQ(XmlUtils::Find(VString("aßc"), u'ß', 0), 1u);
    EXPECT_EQ(XmlUtils::Find(VString("aßc"), u'x', 0), XmlUtils::npos);
}

TEST(XmlUtilsTest, ContainsSubstringAtStaysInTheText)
{
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(std::string("abc"), "bc", 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(std::string("abc"), "bcd", 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(std::string("abc"), "c", 1));
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(std::string("abc"), "", 3));
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(VString("aßc"), "ßc", 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(VString("aßc"), "ßcd", 1));
}

TEST(XmlUtilsTest, CharacterClassesOfBytesAndUnits)
{
    EXPECT_TRUE(XmlUtils::IsNameChar('a') && XmlUtils::IsNameChar('-') && XmlUtils::IsNameChar(':') &&
        XmlUtils::IsNameChar(u'é'));
    EXPECT_FALSE(XmlUtils::IsNameChar(' ') || XmlUtils::IsNameChar('=') || XmlUtils::IsNameChar(u'<'));
    EXPECT_TRUE(XmlUtils::IsFirstNameChar('a') && XmlUtils::IsFirstNameChar('_') && XmlUtils::IsFirstNameChar(u'é'));
    EXPECT_FALSE(XmlUtils::IsFirstNameChar('-') || XmlUtils::IsFirstNameChar('1') || XmlUtils::IsFirstNameChar(u'.'));
    EXPECT_TRUE(XmlUtils::IsWhitespace(' ') && XmlUtils::IsWhitespace('\t') && XmlUtils::IsWhitespace('\n') &&
        XmlUtils::IsWhitespace('\r') && XmlUtils::IsWhitespace(u' '));
    EXPECT_FALSE(XmlUtils::IsWhitespace('\v') || XmlUtils::IsWhitespace('a') || XmlUtils::IsWhitespace(u'\u00A0'));
}

TEST(XmlUtilsTest, EveryByteOfANonAsciiNameIsANameCharacter)
{
    for (int byte = 0x80; byte < 0xFE; ++byte) {
        EXPECT_TRUE(XmlUtils::IsNameChar(static_cast<char>(byte))) << byte;
        EXPECT_FALSE(XmlUtils::IsWhitespace(static_cast<char>(byte))) << byte;
    }
}
