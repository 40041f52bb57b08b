// Large texts. A scanner that searched them from the start for every colon or every block would take hours.
#include <memory>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

namespace {

constexpr std::size_t Megabyte = 1000000;
const std::string Declaration = " xmlns:IllegalColon='http://vancorexml.invalid/xml/ThisShouldNotAppear'";

std::string Repeat(const std::string& piece, std::size_t bytes)
{
    std::string text;
    text.reserve(bytes + piece.size());
    while (text.size() < bytes)
        text += piece;
    return text;
}

struct LargeRow {
    const char* name;
    std::string before;
    std::string piece;
    std::string after;
    std::string rewrittenPiece;  // empty if the text does not change
};

class LargeRows : public testing::TestWithParam<LargeRow> {};

}  // namespace

TEST_P(LargeRows, SanitizesTenMegabytesInLinearTime)
{
    const LargeRow& row = GetParam();
    const std::string body = Repeat(row.piece, 10 * Megabyte);
    const auto input = std::make_shared<std::string>(row.before + body + row.after);
    const auto output = XercesColonSanitizer::Sanitize(input);
    if (row.rewrittenPiece.empty()) {
        EXPECT_EQ(output, input);
        return;
    }
    const std::size_t pieces = body.size() / row.piece.size();
    const std::string expected =
        row.before + Declaration + Repeat(row.rewrittenPiece, pieces * row.rewrittenPiece.size()) + row.after;
    EXPECT_TRUE(*output == expected);
}

const LargeRow LargeTexts[] = {
    {"ColonsWithoutValues", "<a", " :a=", "", ""},
    {"ColonsInOneTag", "<a", " :a='1'", "/>", " IllegalColon:a='1'"},
    {"ColonsWithoutValuesInOneTag", "<a", " :a=", "/>", " IllegalColon:a="},
    {"ColonsBeforeAnUnterminatedQuote", "<a", " :a=", "'/>", ""},
    {"GreaterThansInOneValue", "<a :b='", ">", "' />", ""},
    {"ColonsAndGreaterThansInOneValue", "<a b='", " :a=>", "'/>", ""},
    {"Comments", "<a>", "<!---->", "</a>", ""},
    {"CommentsWithColons", "<a>", "<!-- :a=-->", "</a>", ""},
    {"QuotesInOneTag", "<a", "''", "/>", ""},
    {"QuotesAfterAColon", "<a :b=", "''", "'/>", ""},
    {"ColonsAndLessThans", "<a", " :a=<", "", ""},
};

INSTANTIATE_TEST_SUITE_P(
    LargeInputTest, LargeRows, testing::ValuesIn(LargeTexts), [](const auto& row) { return row.param.name; });

TEST(LargeInputTest, SnifferFindsTheVersionAfterACommentOfTenMegabytes)
{
    Utf8InputSource source("<!--" + std::string(10 * Megabyte, '-') + "--><a version='18.1'/>", "large", false);
    EXPECT_EQ(VersionSniffer(source, VString()).GetValue().GetAsString(), VString("18.1"));
}

TEST(LargeInputTest, SnifferFindsTheVersionInATagOfTenMegabytes)
{
    Utf8InputSource source("<a" + Repeat(" b='>'", 10 * Megabyte) + " version='18.1'/>", "large", false);
    EXPECT_EQ(VersionSniffer(source, VString()).GetValue().GetAsString(), VString("18.1"));
}
