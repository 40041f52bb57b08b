#include <memory>
#include <random>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"
#include "vanxml/SourcePositions.h"

namespace {

using Position = SourcePositions::Position;

std::string Sanitize(const std::string& text)
{
    return *XercesColonSanitizer::Sanitize(std::make_shared<std::string>(text));
}

SourcePositions Positions(const std::string& skipped, const std::string& given)
{
    return SourcePositions(skipped, given, Sanitize(given));
}

// The scanner's position just behind the first occurrence of `part`.
Position Behind(const std::string& text, const std::string& part)
{
    const VString before = VString::fromStdString(text.substr(0, text.find(part) + part.size()));
    const int lines = static_cast<int>(std::count(before.begin(), before.end(), u'\n'));
    return {lines + 1, before.length() - static_cast<int>(before.View().rfind(u'\n') + 1) + 1};
}

// The mapped position of `part` is where it stands in the text as given.
void ExpectMapped(const std::string& skipped, const std::string& given, const std::string& part)
{
    const std::string scanned = Sanitize(given);
    EXPECT_EQ(Positions(skipped, given).Map(Behind(scanned, part)), Behind(skipped + given, part)) << part;
}

}  // namespace

void PrintTo(const SourcePositions::Position& position, std::ostream* out)
{
    *out << position.line << ":" << position.column;
}

TEST(SourcePositionsTest, PlainTextKeepsItsPositions)
{
    const SourcePositions positions = Positions("", "<a>\n<b/></a>");
    EXPECT_EQ(positions.Map({1, 1}), (Position{1, 1}));
    EXPECT_EQ(positions.Map({2, 5}), (Position{2, 5}));
}

TEST(SourcePositionsTest, SkippedLinesCountForAllAndSkippedColumnsForTheFirstLine)
{
    const SourcePositions positions = Positions("\r\n\n\r  ", "<a>\n<b/></a>");
    EXPECT_EQ(positions.Map({1, 4}), (Position{4, 6}));
    EXPECT_EQ(positions.Map({2, 5}), (Position{5, 5}));
}

TEST(SourcePositionsTest, DeclarationAndPrefixesCountOnTheirLine)
{
    const std::string text =
        "<!--größe \xF0\x9F\x98\x80--><a x='1' :b='2' :c='\xF0\x9F\x98\x80' d='3'>\n<e :f='4' g='5'/>\n</a>";
    for (const char* part : {"größe", "<a", "x='1'", "b='2'", "d='3'", "<e", "f='4'", "g='5'", "</a>"}) {
        ExpectMapped("", text, part);
        ExpectMapped("\n  ", text, part);
    }
}

TEST(SourcePositionsTest, PlaceInsideAnInsertionIsWhereItWasInserted)
{
    const SourcePositions positions = Positions("", "<a :b='1'/>");
    const Position nameEnd{1, 3};
    EXPECT_EQ(positions.Map({1, 3}), nameEnd);
    EXPECT_EQ(positions.Map({1, 20}), nameEnd);
    const long long colon = Behind(Sanitize("<a :b='1'/>"), " IllegalColon:").column;
    EXPECT_EQ(positions.Map({1, colon - 5}), (Position{1, 4}));
    EXPECT_EQ(positions.Map({1, colon}), (Position{1, 5}));
}

TEST(SourcePositionsTest, AttributeThatBeginsLikeTheDeclarationDoesNotMislead)
{
    for (const char* attribute : {"xmlns:x='u'", "xmlns:I='u'", "xmlns:IllegalColo='u'", "xmlns:IllegalColon='u'"}) {
        ExpectMapped("", std::string("<a ") + attribute + " :b='1' c='2'/>", "c='2'");
        ExpectMapped("", std::string("<a ") + attribute + " :b='1' c='2'/>", "b='1'");
    }
}

TEST(SourcePositionsTest, LineEndsAreThoseOfTheScanner)
{
    const std::string text = "<?xml version='1.1'?>\xC2\x85<a\r\n\xE2\x80\xA8 :b='1' c='2'/>";
    const SourcePositions positions = Positions("", text);
    const long long prefix = static_cast<long long>(std::string("IllegalColon").size());
    // Behind the next-line character, the line end and the line separator.
    EXPECT_EQ(positions.Map({4, 8 + prefix}), (Position{4, 8}));
    EXPECT_EQ(Positions("", "<a\r\n\xC2\x85 :b='1' c='2'/>").Map({2, 9 + prefix}), (Position{2, 9}));
}

TEST(SourcePositionsTest, RandomTextsMapEveryPositionBack)
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

TEST(SourcePositionsTest, MessageGetsThePlaceOfTheFile)
{
    const SourcePositions positions = Positions("\n\n", "<a/>");
    EXPECT_EQ(positions.MapMessage("Error(1,5): odd (2,3) (id: f.xml)", "f.xml"),
        VString("Error(3,5): odd (2,3) (id: f.xml)"));
    EXPECT_EQ(
        positions.MapMessage("Fatal Error(2,5): x (id: f.xml)", "f.xml"), VString("Fatal Error(4,5): x (id: f.xml)"));
    EXPECT_EQ(positions.MapMessage("Warning(1,1): x (id: f.xml)", "f.xml"), VString("Warning(3,1): x (id: f.xml)"));
    EXPECT_EQ(positions.MapMessage("Entit\xC3\xA9s (1,2) interdites.(1,7) 'e'", "f.xml"),
        VString("Entit\xC3\xA9s (1,2) interdites.(3,7) 'e'"));
}

TEST(SourcePositionsTest, MessageAboutSomethingElseIsUnchanged)
{
    const SourcePositions positions = Positions("\n\n", "<a/>");
    for (const char* message : {"Error(1,5): in a schema (id: s.xsd)",
             "Error: no place (id: f.xml)",
             "Unexpected exception",
             "",
             "Error(1;5): x (id: f.xml)",
             "it's 'so'",
             "Error(1"}) {
        EXPECT_EQ(positions.MapMessage(message, "f.xml"), VString(message));
    }
}

TEST(SourcePositionsTest, ManyInsertionsOnOneLineAreMappedQuickly)
{
    std::string text = "<a";
    for (int i = 0; i < 200000; ++i)
        text += " :a='1'";
    text += "/>";
    const SourcePositions positions = Positions("", text);
    const long long perAttribute = static_cast<long long>(std::string(" IllegalColon:a='1'").size());
    const long long first = Behind(Sanitize(text), "a='1'").column;
    for (int i = 0; i < 200000; ++i)
        ASSERT_EQ(positions.Map({1, first + i * perAttribute}).column, 10 + i * 7);
}
