// Texts made to be expensive. A scanner that looks again for every colon or every run would
// need hours for them.
#include <memory>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

namespace {

constexpr std::size_t Megabyte = 1000000;
const std::string Declared = " xmlns:IllegalColon='http://vancorexml.invalid/xml/ThisShouldNotAppear'";

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
    std::string behind;
    std::string rewrittenPiece;  // empty when the text stays as it is
};

class LargeRows : public testing::TestWithParam<LargeRow> {};

}  // namespace

TEST_P(LargeRows, TenMegabytes)
{
    const LargeRow& row = GetParam();
    const std::string body = Repeat(row.piece, 10 * Megabyte);
    const auto input = std::make_shared<std::string>(row.before + body + row.behind);
    const auto output = XercesColonSanitizer::Sanitize(input);
    if (row.rewrittenPiece.empty()) {
        EXPECT_EQ(output, input);
        return;
    }
    const std::size_t pieces = body.size() / row.piece.size();
    const std::string expected =
        row.before + Declared + Repeat(row.rewrittenPiece, pieces * row.rewrittenPiece.size()) + row.behind;
    EXPECT_TRUE(*output == expected);
}

INSTANTIATE_TEST_SUITE_P(LargeInputTest,
    LargeRows,
    testing::Values(LargeRow{"ColonsWithoutValues", "<a", " :a=", "", ""},
        LargeRow{"ColonsInOneTag", "<a", " :a='1'", "/>", " IllegalColon:a='1'"},
        LargeRow{"ColonsWithoutValuesInOneTag", "<a", " :a=", "/>", " IllegalColon:a="},
        LargeRow{"ColonsBeforeAQuoteThatStaysOpen", "<a", " :a=", "'/>", ""},
        LargeRow{"ClosesInOneValue", "<a :b='", ">", "' />", ""},
        LargeRow{"ColonsAndClosesInOneValue", "<a b='", " :a=>", "'/>", ""},
        LargeRow{"Comments", "<a>", "<!---->", "</a>", ""},
        LargeRow{"CommentsWithColons", "<a>", "<!-- :a=-->", "</a>", ""},
        LargeRow{"QuotesInOneTag", "<a", "''", "/>", ""},
        LargeRow{"QuotesBehindAColon", "<a :b=", "''", "'/>", ""},
        LargeRow{"Opens", "<a", " :a=<", "", ""}),
    [](const auto& row) { return row.param.name; });

TEST(LargeInputTest, VersionBehindACommentOfTenMegabytes)
{
    Utf8InputSource source("<!--" + std::string(10 * Megabyte, '-') + "--><a version='18.1'/>", "large", false);
    EXPECT_EQ(VersionSniffer(source, VString()).GetValue().GetAsString(), VString("18.1"));
}

TEST(LargeInputTest, VersionOfARootTagOfTenMegabytes)
{
    Utf8InputSource source("<a" + Repeat(" b='>'", 10 * Megabyte) + " version='18.1'/>", "large", false);
    EXPECT_EQ(VersionSniffer(source, VString()).GetValue().GetAsString(), VString("18.1"));
}
