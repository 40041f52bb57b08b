#include "vancorexml/main/parser/XMLEventReader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"

namespace {

using EventKind = XMLEvent::Kind;

// Writes an event as a letter for its kind and its parts, which are separated by "|".
std::string Describe(const XMLEvent& event)
{
    static constexpr char Letters[] = "X!(){#?[]$*";
    std::u16string text = event.text;
    for (char16_t& unit : text) {
        if (unit == u'\0')
            unit = u'|';
        else if (unit == u'\xFFFF')
            unit = u'~';
    }
    std::string described(1, event.kind == EventKind::Text ? '"' : Letters[static_cast<int>(event.kind)]);
    described += VString(text.data(), text.size()).toStdString();
    if (event.isBlank)
        described += "(blank)";
    if (event.preserves)
        described += "(preserve)";
    return described;
}

std::vector<std::string> ReadEvents(const std::string& text)
{
    BorrowedInputSource source(text, VString(), true, TextEncoding::Utf8);
    XMLEventReader reader(source);
    std::vector<std::string> events;
    for (;;) {
        const XMLEvent& event = reader.Next();
        events.push_back(Describe(event));
        if (event.kind == EventKind::EndOfDocument || event.kind == EventKind::Fault)
            return events;
    }
}

using Events = std::vector<std::string>;

TEST(XMLEventReaderTest, ReportsElementsWithSortedAttributes)
{
    EXPECT_EQ(ReadEvents("<a c='1' b='2'><d/></a>"), (Events{"(a|b|2|c|1|", "(d|", ")", ")", "$"}));
}

TEST(XMLEventReaderTest, ReportsNamesThatBeginWithAColon)
{
    EXPECT_EQ(ReadEvents("<:a :b=\"it's > x\"/>"), (Events{"(:a|:b|it's > x|", ")", "$"}));
}

TEST(XMLEventReaderTest, DoesNotChangeTextThatLooksLikeAnAttribute)
{
    EXPECT_EQ(ReadEvents("<a>see :x = y > z</a>"), (Events{"(a|", "\"see :x = y > z", ")", "$"}));
}

TEST(XMLEventReaderTest, JoinsTextsAndSections)
{
    EXPECT_EQ(ReadEvents("<a>x&lt;<![CDATA[ & ]]>&#10;\r\ny</a>"), (Events{"(a|", "\"x< & \n\ny", ")", "$"}));
}

TEST(XMLEventReaderTest, MarksTextsOfWhiteSpaceWithoutSections)
{
    EXPECT_EQ(ReadEvents("<a> \n<b> <![CDATA[ ]]></b><b> x</b> &#9;</a>"),
        (Events{"(a|", "\" \n(blank)", "(b|", "\"  ", ")", "(b|", "\" x", ")", "\" \t(blank)", ")", "$"}));
}

TEST(XMLEventReaderTest, ReplacesLongPartsByDigests)
{
    constexpr std::size_t Longest = 0x10000;
    const auto read = [](const std::string& before, std::size_t length, const std::string& after) {
        return ReadEvents(before + std::string(length, 'x') + after);
    };
    const std::pair<std::string, std::string> places[] = {{"<a>", "</a>"},
        {"<a><![CDATA[", "]]></a>"},
        {"<a><!--", "--></a>"},
        {"<a><?p ", "?></a>"},
        {"<a b='", "'/>"},
        {"<a x", "='1'/>"},
        {"<x", "/>"}};
    for (const auto& [before, after] : places) {
        const auto size = [](const Events& events) {
            std::size_t sum = 0;
            for (const std::string& event : events)
                sum += event.size();
            return sum;
        };
        EXPECT_GT(size(read(before, Longest - 1, after)), Longest - 1) << before;
        const Events events = read(before, 3 * Longest, after);
        EXPECT_LT(size(events), 200u) << before;
        EXPECT_EQ(events, read(before, 3 * Longest, after)) << before;
        EXPECT_NE(events, read(before, 3 * Longest + 1, after)) << before;
        EXPECT_NE(events, read(before + "y", 3 * Longest - 1, after)) << before;
    }
}

TEST(XMLEventReaderTest, DigestDoesNotDependOnTheFormOfTheText)
{
    const std::string blank(0x18000, ' ');
    const Events events = ReadEvents("<a>" + blank + "x" + blank + "</a>");
    EXPECT_EQ(events, ReadEvents("<a><![CDATA[" + blank + "x]]>" + blank + "</a>"));
    EXPECT_EQ(events, ReadEvents("<a>" + blank + "&#120;" + blank + "</a>"));
    EXPECT_NE(events, ReadEvents("<a>" + blank + " " + blank + "</a>"));
    EXPECT_NE(ReadEvents("<a>" + blank + "</a>"), ReadEvents("<a><![CDATA[" + blank + "]]></a>"));
    // The digest of a text does not contain the texts before.
    EXPECT_EQ(ReadEvents("<a>" + blank + "</a>")[1], ReadEvents("<b>" + blank + "<c/>" + blank + "</b>")[4]);
}

TEST(XMLEventReaderTest, ReportsTheDeclarationWithoutTheEncoding)
{
    EXPECT_EQ(ReadEvents("<?xml version='1.0' encoding='utf-16' standalone='yes'?><a/>"),
        (Events{"X1.0|yes|", "(a|", ")", "$"}));
}

TEST(XMLEventReaderTest, ReportsCommentsAndInstructionsEverywhere)
{
    EXPECT_EQ(ReadEvents("<!--1--> <?p  2 ?><a><!--3-->x<?q?></a><!--4-->"),
        (Events{"#1|", "?p|2 |", "(a|", "#3|", "\"x", "?q||", ")", "#4|", "$"}));
}

TEST(XMLEventReaderTest, ReportsTheBoundariesOfEntities)
{
    const Events events = ReadEvents("<!DOCTYPE a [<!ENTITY e 'x<b/>'>]><a>1&e;2</a>");
    EXPECT_EQ(Events(events.begin() + 1, events.end()),
        (Events{"(a|", "\"1", "[e|", "\"x", "(b|", ")", "]e|", "\"2", ")", "$"}));
}

TEST(XMLEventReaderTest, ReportsAllDeclarationsOfTheDocumentType)
{
    const Events events = ReadEvents("<!DOCTYPE a SYSTEM 's' [<!ELEMENT a ANY><!ATTLIST a b CDATA 'd'><!ENTITY e 'x'>"
                                     "<!ENTITY % p ''><!NOTATION n PUBLIC 'q'><!--c--><?i d?>]><a/>");
    ASSERT_FALSE(events.empty());
    for (const char* part : {"!|a||s|[|",
             "|<!ELEMENT|a|ANY|",
             "|<!ATTLIST|a|b|",
             "|d|",
             "|<!ENTITY|e|x|~|~|~|",
             "|<!ENTITY %|p|",
             "|<!NOTATION|n|q|~|",
             "|<!--|c|",
             "|<?|i|d|"})
        EXPECT_NE(events[0].find(part), std::string::npos) << part << " in " << events[0];
}

TEST(XMLEventReaderTest, MarksElementsThatPreserveWhiteSpace)
{
    EXPECT_EQ(ReadEvents("<a xml:space='preserve'><b xml:space='default'/></a>"),
        (Events{"(a|xml:space|preserve|(preserve)", "(b|xml:space|default|", ")", ")", "$"}));
}

TEST(XMLEventReaderTest, ReturnsTheElementsThatPreserveByDefault)
{
    const std::string text = "<!DOCTYPE a [<!ATTLIST b xml:space (default|preserve) 'preserve'>"
                             "<!ATTLIST c xml:space (default|preserve) 'default'>"
                             "<!ATTLIST c xml:space (default|preserve) 'preserve'>]><a/>";
    BorrowedInputSource source(text, VString(), true, TextEncoding::Utf8);
    XMLEventReader reader(source);
    while (reader.Next().kind != EventKind::StartElement)
        continue;
    EXPECT_EQ(reader.PreservedElements(), std::set<std::u16string>{u"b"});
}

TEST(XMLEventReaderTest, EndsWithAFaultThatStays)
{
    const std::string text = "<a>x</b>";
    BorrowedInputSource source(text, VString(), true, TextEncoding::Utf8);
    XMLEventReader reader(source);
    while (reader.Next().kind != EventKind::Fault)
        continue;
    EXPECT_EQ(reader.Next().kind, EventKind::Fault);
}

TEST(XMLEventReaderTest, ReportsAFaultForEachKindOfError)
{
    for (const char* text : {"",
             "x",
             "<a",
             "<a><b></a>",
             "<a b='1' b='2'/>",
             "<a>&e;</a>",
             "<a/><b/>",
             "<a>\x01</a>",
             "<a>\xFF</a>",
             "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>"})
        EXPECT_EQ(ReadEvents(text).back(), "*") << text;
}

}  // namespace
