// Names that were chosen to have the same hash must not slow the commands down that count and compare. See
// tests/hostile/CollidingNamesTest.cpp.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/common/CollidingTexts.h"
#include "tests/common/TestSupport.h"
#include "vanxml/DocumentStatistics.h"
#include "vanxml/EventParse.h"
#include "vanxml/Outline.h"
#include "vanxml/TreeDiff.h"

namespace {

constexpr std::size_t NameCount = 32768;

// Returns a document with one element of each name. The element has an attribute with the same name.
std::string MakeDocument(const std::vector<std::u16string>& names)
{
    std::string text = "<r>";
    for (const std::u16string& name : names) {
        const std::string utf8 = VString(name.data(), name.size()).toStdString();
        text += "<" + utf8 + " " + utf8 + "=''/>";
    }
    return text + "</r>";
}

std::vector<std::u16string> CollidingNames()
{
    return testsupport::CollidingTexts<char16_t>::Make(NameCount);
}

// Returns other names of the same lengths.
std::vector<std::u16string> OrdinaryNames()
{
    std::mt19937 random(1);
    std::vector<std::u16string> names = CollidingNames();
    for (std::u16string& name : names) {
        for (char16_t& letter : name)
            letter = static_cast<char16_t>('a' + random() % 26);
    }
    return names;
}

SourceDocument Decode(const std::string& text)
{
    return SourceDocument::Decode(text.data(), text.size(), "a.xml");
}

struct CommandRow {
    const char* name;
    std::function<std::size_t(const std::string&)> run;  // returns the number of names found

    friend void PrintTo(const CommandRow& row, std::ostream* out) { *out << row.name; }
};

std::size_t CountLines(const std::string& text)
{
    SourceDocument source = Decode(text);
    const auto builder = std::make_shared<OutlineBuilder>();
    EXPECT_EQ(ParseEvents(source, builder), "");
    return builder->ReleaseLines().size() - 1;
}

std::size_t CountNames(const std::string& text)
{
    SourceDocument source = Decode(text);
    DocumentStatistics statistics;
    EXPECT_EQ(CountContents(source, statistics), "");
    return statistics.attributeNames.size();
}

// Compares the document with an empty one.
std::size_t CountDifferences(const std::string& text)
{
    ContentTable table;
    const ComparedTree document(Decode(text), table);
    const ComparedTree empty(Decode("<r/>"), table);
    return DiffTrees(empty, document, table).size();
}

const CommandRow CommandRows[] = {{"Tree", CountLines}, {"Stats", CountNames}, {"Diff", CountDifferences}};

class CollidingNamesCommandTest : public testing::TestWithParam<CommandRow> {};

TEST_P(CollidingNamesCommandTest, TakesNoMoreTimeThanForOthers)
{
    const auto secondsFor = [](const std::vector<std::u16string>& names) {
        const std::string text = MakeDocument(names);
        const double start = testsupport::CpuSeconds();
        EXPECT_EQ(GetParam().run(text), NameCount);
        return testsupport::CpuSeconds() - start;
    };
    const double colliding = secondsFor(CollidingNames());
    const double ordinary = secondsFor(OrdinaryNames());
    EXPECT_LT(colliding, 3 * ordinary + 0.1);
}

INSTANTIATE_TEST_SUITE_P(
    Of, CollidingNamesCommandTest, testing::ValuesIn(CommandRows), [](const auto& row) { return row.param.name; });

}  // namespace
