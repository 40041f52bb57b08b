#include "vancorexml/main/parser/SourceMap.h"

#include <memory>
#include <random>

#include "tests/parsing/ParsingTestSupport.h"

using Position = SourceMap::Position;

static void PrintTo(const Position& position, std::ostream* out)
{
    *out << position.line << ":" << position.column;
}

namespace {

// Returns the view that a parser reads of `given`, from the byte `start` on.
XercesInputSource View(const std::string& given, std::size_t start = 0)
{
    return XercesInputSource(
        std::make_shared<std::string>(given), start, "id", ColonProcessingSanitize, TextEncoding::Utf8);
}

Position Map(const XercesInputSource& view, Position scanned)
{
    return view.GetSourceMap() ? view.GetSourceMap()->Map(scanned) : scanned;
}

Position Map(const std::string& given, Position scanned)
{
    return Map(View(given), scanned);
}

// Returns the position of the scanner just behind the first occurrence of `part`.
Position PositionBehind(std::string_view text, const std::string& part)
{
    const VString before = VString::fromStdString(std::string(text.substr(0, text.find(part) + part.size())));
    const auto lines = static_cast<std::uint64_t>(std::count(before.begin(), before.end(), u'\n'));
    const std::size_t lineStart = before.View().rfind(u'\n') + 1;
    return {lines + 1, before.View().size() - lineStart + 1};
}

// Expects that the mapped position of `part` is its position in the text as given.
void ExpectMapped(const std::string& skipped, const std::string& given, const std::string& part)
{
    const XercesInputSource view = View(skipped + given, skipped.size());
    EXPECT_EQ(Map(view, PositionBehind(view.View(), part)), PositionBehind(skipped + given, part)) << part;
}

TEST(SourceMapTest, UnchangedTextHasNoMap)
{
    EXPECT_EQ(View("<a>\n<b c:d='1'/></a>").GetSourceMap(), nullptr);
}

TEST(SourceMapTest, UnknownPositionStaysUnknown)
{
    EXPECT_EQ(Map(View("\n\n <a :b='1'/>", 3), {0, 0}), (Position{0, 0}));
}

TEST(SourceMapTest, SkippedLinesShiftAllLinesAndSkippedColumnsOnlyTheFirst)
{
    const XercesInputSource view = View("\r\n\n\r  <a>\n<b/></a>", 6);
    EXPECT_EQ(Map(view, {1, 4}), (Position{4, 6}));
    EXPECT_EQ(Map(view, {2, 5}), (Position{5, 5}));
}

TEST(SourceMapTest, DeclarationAndPrefixesShiftOnlyTheirLine)
{
    const std::string text =
        "<!--größe \xF0\x9F\x98\x80--><a x='1' :b='2' :c='\xF0\x9F\x98\x80' d='3'>\n<e :f='4' g='5'/>\n</a>";
    for (const char* part : {"größe", "<a", "x='1'", "b='2'", "d='3'", "<e", "f='4'", "g='5'", "</a>"}) {
        ExpectMapped("", text, part);
        ExpectMapped("\n  ", text, part);
    }
}

TEST(SourceMapTest, PrefixBeforeTheDeclarationShiftsTheLine)
{
    for (const char* part : {"b='1'", "<a", "c='2'", "d='3'"})
        ExpectMapped(" ", "<?p :b='1'?><a :c='2' d='3'/>", part);
}

TEST(SourceMapTest, PositionInsideAnInsertionMapsToThePlaceOfTheInsertion)
{
    const std::string text = "<a :b='1'/>";
    const Position nameEnd{1, 3};
    EXPECT_EQ(Map(text, {1, 3}), nameEnd);
    EXPECT_EQ(Map(text, {1, 20}), nameEnd);
    const std::uint64_t colon = PositionBehind(View(text).View(), " IllegalColon:").column;
    EXPECT_EQ(Map(text, {1, colon - 5}), (Position{1, 4}));
    EXPECT_EQ(Map(text, {1, colon}), (Position{1, 5}));
}

TEST(SourceMapTest, NamesThatLookInsertedDoNotShiftPositions)
{
    for (const char* attribute :
        {"xmlns:x='u'", "xmlns:I='u'", "xmlns:IllegalColo='u'", "xmlns:IllegalColon='u'", "IllegalColon:x='u'"}) {
        ExpectMapped("", std::string("<a ") + attribute + " :b='1' c='2'/>", "c='2'");
        ExpectMapped("", std::string("<a ") + attribute + " :b='1' c='2'/>", "b='1'");
    }
}

TEST(SourceMapTest, UsesTheLineEndsOfTheScanner)
{
    const std::uint64_t prefix = std::string("IllegalColon").size();
    // These are line ends in XML 1.1: the next-line character, the pair \r\n and the line separator.
    EXPECT_EQ(Map("<?xml version='1.1'?>\xC2\x85<a\r\n\xE2\x80\xA8 :b='1' c='2'/>", {4, 8 + prefix}), (Position{4, 8}));
    EXPECT_EQ(Map("<a\r\n\xC2\x85 :b='1' c='2'/>", {2, 9 + prefix}), (Position{2, 9}));
}

TEST(SourceMapTest, EachInvalidUtf8ByteCountsAsOneUnit)
{
    const std::string text = "<a x='gr\xF6\xDF\x65 \xC3' :b='1'/>";
    const XercesInputSource view = View(text);
    const std::uint64_t inserted = view.View().size() - text.size();
    EXPECT_EQ(Map(view, {1, text.size() + inserted + 1}), (Position{1, text.size() + 1}));
    const std::uint64_t colon = text.find(':') + 1;
    const std::uint64_t declaration = inserted - std::string("IllegalColon").size();
    EXPECT_EQ(Map(view, {1, colon + declaration + 5}), (Position{1, colon}));
}

TEST(SourceMapTest, ByteOrderMarkHasNoColumn)
{
    const XercesInputSource view = View("\xEF\xBB\xBF<a :b='1'/>");
    EXPECT_EQ(Map(view, {1, 3}), (Position{1, 3}));
    EXPECT_EQ(Map(view, {1, 20}), (Position{1, 3}));
}

TEST(SourceMapTest, RandomTextsMapEveryPositionBack)
{
    std::mt19937 random(7);
    const std::vector<std::string> pieces{
        "\n", "  ", "<b ", "/>", " :x='1'", " y='2'", "ö", "<!-- :c='' -->", "text", "\xF0\x9F\x98\x80"};
    for (int round = 0; round < 2000; ++round) {
        std::string text = "<a";
        for (int i = 0; i < 8; ++i)
            text += pieces[random() % pieces.size()];
        text += ">mark</a>";
        ExpectMapped(" \n ", text, "mark");
    }
}

TEST(SourceMapTest, ManyInsertionsOnOneLineAreMappedQuickly)
{
    const testsupport::CpuTimeLimit limit(10);
    const std::string text = "<a" + testsupport::Repeat(" :a='1'", 200000) + "/>";
    const XercesInputSource view = View(text);
    const std::uint64_t perAttribute = std::string(" IllegalColon:a='1'").size();
    const std::uint64_t first = PositionBehind(view.View(), "a='1'").column;
    for (std::uint64_t i = 0; i < 200000; ++i)
        ASSERT_EQ(Map(view, {1, first + i * perAttribute}).column, 10 + i * 7);
}

}  // namespace
