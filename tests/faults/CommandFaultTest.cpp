// Runs the parts of the commands tree, stats and diff while allocations fail. No memory may be lost.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/faults/FailedAllocations.h"
#include "vanxml/DiffReport.h"
#include "vanxml/DocumentStatistics.h"
#include "vanxml/EventParse.h"
#include "vanxml/Outline.h"

namespace {

const std::string StockText =
    "<shop a='1' b='2'><item id='1' price='2'>tea</item> text <item id='2'><size>big</size></item>"
    "<shelf/><closed/></shop>";
const std::string NewText = "<shop b='3' c='2'><item id='1' price='4'>tee</item> text <closed/>"
                            "<shelf><item id='2'><size>big</size></item></shelf><open/></shop>";

class CommandFaultTest : public FaultTest {
protected:
    static SourceDocument Decode(const std::string& text)
    {
        return SourceDocument::Decode(text.data(), text.size(), "a.xml");
    }
};

TEST_P(CommandFaultTest, DiffLosesNoMemory)
{
    const auto run = [] {
        ContentTable table;
        const ComparedTree a(Decode(StockText), table);
        const ComparedTree b(Decode(NewText), table);
        const TextStyle style(false);
        const DiffReport report(a, b, table, style);
        std::string text = a.Errors() + b.Errors();
        for (const TreeDifference& each : DiffTrees(a, b, table))
            text += report.Format(each) + report.FormatJson(each);
        return text;
    };
    const std::string expected = run();
    EXPECT_NE(expected.find("moved /shop/item[2] to /shop/shelf/item"), std::string::npos) << expected;
    FailEachAllocation(run, [&](const std::string& text, bool) { EXPECT_EQ(text, expected); });
}

TEST_P(CommandFaultTest, TreeLosesNoMemory)
{
    const auto run = [] {
        SourceDocument source = Decode(StockText);
        const auto builder = std::make_shared<OutlineBuilder>();
        std::string text = ParseEvents(source, builder);
        for (const OutlineLine& line : builder->ReleaseLines())
            text += line.name.toStdString() + std::to_string(line.count) + " ";
        return text;
    };
    const std::string expected = run();
    EXPECT_EQ(expected, "shop1 item2 size1 shelf1 closed1 ");
    FailEachAllocation(run, [&](const std::string& text, bool) { EXPECT_EQ(text, expected); });
}

TEST_P(CommandFaultTest, StatsLoseNoMemory)
{
    const auto run = [] {
        SourceDocument source = Decode(StockText);
        DocumentStatistics statistics;
        std::string text = CountContents(source, statistics);
        text += std::to_string(statistics.elements);
        for (const auto& [name, count] : SortByFrequency(statistics.elementNames))
            text += " " + name.toStdString() + std::to_string(count);
        return text;
    };
    const std::string expected = run();
    EXPECT_EQ(expected, "6 item2 closed1 shelf1 shop1 size1");
    FailEachAllocation(run, [&](const std::string& text, bool) { EXPECT_EQ(text, expected); });
}

INSTANTIATE_FAULT_TEST(CommandFaultTest);

}  // namespace
