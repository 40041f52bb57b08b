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

TEST_P(FindTagEndRows, FindsTheEndOfTheTag)
{
    EXPECT_EQ(XmlUtils::FindTagEnd(GetParam().text, GetParam().start), GetParam().end);
}

const TagEndRow TagEndRows[] = {
    {"PlainTag", "<a>", 0, 2},
    {"TagInTheMiddle", "x<a>y>", 1, 3},
    {"Instruction", "<?a > ?>", 0, 7},
    {"Comment", "<!-- > -->", 0, 9},
    {"CommentOfFiveBytes", "<!-->", 0, 4},
    {"CData", "<![CDATA[ > ]]>", 0, 14},
    {"DeclarationWithQuotes", "<!DOCTYPE a '>'>", 0, 15},
    {"QuotedGreaterThan", "<a b='>' c=\">\">", 0, 14},
    {"QuoteInsideTheOtherQuotes", "<a b='\">'>", 0, 9},
    {"UnterminatedQuote", "<a b='>", 0, XmlUtils::npos},
    {"UnterminatedTag", "<abc", 0, XmlUtils::npos},
    {"FewerThanThreeBytes", "<>", 0, XmlUtils::npos},
    {"ThreeBytes", "<>>", 0, 1},
    {"UnterminatedInstruction", "<?a >", 0, XmlUtils::npos},
};

INSTANTIATE_TEST_SUITE_P(
    XmlUtilsTest, FindTagEndRows, testing::ValuesIn(TagEndRows), [](const auto& row) { return row.param.name; });

TEST(XmlUtilsTest, FindTagEndRaisesUnlessStartIsALessThanSign)
{
    for (const std::size_t start : {std::size_t{0}, std::size_t{4}}) {
        const auto find = [start] { XmlUtils::FindTagEnd("a<b>", start); };
        testsupport::ExpectLogicException(find, File, 208, "xml[start] == c_openBrace", 0x92C7E05B);
    }
}

TEST_P(AttributeValueRows, FindsTheValue)
{
    EXPECT_EQ(XmlUtils::GetAttributeValueInTag(GetParam().tag, GetParam().attribute, {0, GetParam().tag.size()}),
        GetParam().value);
}

const ValueRow ValueRows[] = {
    {"Apostrophes", "<a b='1'>", "b", "1"},
    {"DoubleQuotes", "<a b=\"1'2\">", "b", "1'2"},
    {"BlanksAroundTheEqualsSign", "<a b \t=\n '1'>", "b", "1"},
    {"EmptyValue", "<a b=''>", "b", ""},
    {"SuffixOfAnotherName", "<a build_version='1' version='2'>", "version", "2"},
    {"NameInsideAValue", "<a b=' version=\"1\" ' version='2'>", "version", "2"},
    {"PrefixOfAnotherName", "<a versions='1' version='2'>", "version", "2"},
    {"NoEqualsSign", "<a b c='1'>", "b", std::nullopt},
    {"ValueWithoutQuotes", "<a b=1>", "b", std::nullopt},
    {"NoClosingQuote", "<a b='1>", "b", std::nullopt},
    {"MissingAttribute", "<a b='1'>", "c", std::nullopt},
    {"EmptyName", "<a b='1'>", "", std::nullopt},
    {"ElementNameIsNotAnAttribute", "<a='1'>", "a", std::nullopt},
    {"FirstOfTwoAttributes", "<a b='1' b='2'>", "b", "1"},
};

INSTANTIATE_TEST_SUITE_P(
    XmlUtilsTest, AttributeValueRows, testing::ValuesIn(ValueRows), [](const auto& row) { return row.param.name; });

TEST(XmlUtilsTest, GetAttributeValueInTagIgnoresTextAfterTheTag)
{
    EXPECT_EQ(XmlUtils::GetAttributeValueInTag("<a><b c='1'>", "c", {0, 3}), std::nullopt);
    EXPECT_EQ(XmlUtils::GetAttributeValueInTag("<a b='><c d='1'>", "b", {0, 7}), std::nullopt);
}

TEST(XmlUtilsTest, GetAttributeValueInTagRaisesForARangeOutsideTheText)
{
    const auto expect = [](const XmlUtils::TagRange& range) {
        const auto get = [&range] { XmlUtils::GetAttributeValueInTag("<a>", "b", range); };
        testsupport::ExpectLogicException(get, File, 358, "idx < xml.size() && end < xml.size()", 0xA3E88D2C);
    };
    expect({3, 1});
    expect({3, 0});
    expect({0, 4});
    expect({0, 0});
    expect({XmlUtils::npos, 0});
}

TEST(XmlUtilsTest, GetAttributeValueInTagRaisesForARangeThatIsNotATag)
{
    const auto expect = [](const XmlUtils::TagRange& range) {
        const auto get = [&range] { XmlUtils::GetAttributeValueInTag("x<a>y", "b", range); };
        testsupport::ExpectLogicException(
            get, File, 359, "xml[idx] == c_openBrace && xml[end] == c_closeBrace", 0xC2D03F8A);
    };
    expect({0, 4});
    expect({1, 4});
}

TEST_P(FirstElementTagRows, FindsTheRangeOfTheTag)
{
    const XmlUtils::TagRange range = XmlUtils::FindFirstElementTag(GetParam().text);
    EXPECT_EQ(range.start, GetParam().start);
    EXPECT_EQ(range.length, GetParam().length);
}

const FirstTagRow FirstTagRows[] = {
    {"OnlyAnElement", "<a b='1'/>", 0, 10},
    {"AfterDeclarationCommentAndDoctype", "<?xml?><!-- <b> --><!DOCTYPE a><a>", 31, 3},
    {"AfterText", "text <a>", 5, 3},
    {"Empty", "", XmlUtils::npos, 0},
    {"NoElement", "<?xml?>", XmlUtils::npos, 0},
    {"IncompleteTag", "<a b='1'", XmlUtils::npos, 0},
    {"IncompleteComment", "<!-- <a>", XmlUtils::npos, 0},
};

INSTANTIATE_TEST_SUITE_P(
    XmlUtilsTest, FirstElementTagRows, testing::ValuesIn(FirstTagRows), [](const auto& row) { return row.param.name; });

TEST_P(QuotesRows, ReturnsWhetherQuotesMatch)
{
    EXPECT_EQ(XmlUtils::AreQuotesMatchingInRange(GetParam().text, 0, GetParam().text.size() - 1), GetParam().match);
}

const QuotesRow QuoteRows[] = {
    {"NoQuotes", "abc", true},
    {"Pair", "a'b'c", true},
    {"QuoteInsideTheOtherQuotes", "'\"'", true},
    {"UnterminatedQuote", "a'b", false},
    {"UnterminatedSecondQuote", "'a'\"", false},
    {"CrossedQuotes", "'\"'\"", false},
};

INSTANTIATE_TEST_SUITE_P(
    XmlUtilsTest, QuotesRows, testing::ValuesIn(QuoteRows), [](const auto& row) { return row.param.name; });

TEST(XmlUtilsTest, QuotesOutsideTheRangeAreIgnored)
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

TEST(XmlUtilsTest, ContainsSubstringAtDoesNotReadPastTheText)
{
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(std::string("abc"), "bc", 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(std::string("abc"), "bcd", 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(std::string("abc"), "c", 1));
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(std::string("abc"), "", 3));
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(VString("aßc"), "ßc", 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(VString("aßc"), "ßcd", 1));
}

TEST(XmlUtilsTest, BlankTextContainsOnlyWhiteSpace)
{
    EXPECT_TRUE(XmlUtils::IsBlank("") && XmlUtils::IsBlank(" \t\r\n"));
    EXPECT_FALSE(XmlUtils::IsBlank(" x ") || XmlUtils::IsBlank("\v") || XmlUtils::IsBlank("\xC2\xA0"));
}

TEST(XmlUtilsTest, ClassifiesBytesAndCodeUnits)
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

TEST(XmlUtilsTest, NonAsciiBytesAreNameCharacters)
{
    for (int byte = 0x80; byte < 0xFE; ++byte) {
        EXPECT_TRUE(XmlUtils::IsNameChar(static_cast<char>(byte))) << byte;
        EXPECT_FALSE(XmlUtils::IsWhitespace(static_cast<char>(byte))) << byte;
    }
}
