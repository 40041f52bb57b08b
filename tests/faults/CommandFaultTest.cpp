// Runs the commands, and the parts of tree, stats and diff alone, while allocations fail. No memory may be lost.
#include <gtest/gtest.h>

#include <cstdio>

#include <memory>
#include <new>
#include <string>
#include <vector>

#if defined(__linux__)
#  include <fcntl.h>
#  include <unistd.h>
#endif

#include "tests/common/TestSupport.h"
#include "tests/faults/FailedAllocations.h"
#include "vanxml/CommandLine.h"
#include "vanxml/DiffReport.h"
#include "vanxml/DocumentStatistics.h"
#include "vanxml/EventParse.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/Outline.h"
#include "vanxml/StandardStreams.h"

namespace {

const std::string StockText =
    "<shop a='1' b='2'><item id='1' price='2'>tea</item> text <item id='2'><size>big</size></item>"
    "<shelf/><closed/></shop>";
const std::string NewText = "<shop b='3' c='2'><item id='1' price='4'>tee</item> text <closed/>"
                            "<shelf><item id='2'><size>big</size></item></shelf><open/></shop>";
const std::string DataSource =
    "<data-source version='18.1' name='orders'><connection class='text-file' filename='a.csv'/>"
    "<column name='Sales' data-type='real' role='measure'/></data-source>";

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

#if defined(__linux__)

// Discards what the process writes to standard output and standard error, without an allocation.
class DiscardedOutput {
public:
    DiscardedOutput()
    {
        std::fflush(stdout);
        const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            m_saved[stream] = dup(stream);
            dup2(nothing, stream);
        }
        close(nothing);
    }
    ~DiscardedOutput()
    {
        std::fflush(stdout);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            dup2(m_saved[stream], stream);
            close(m_saved[stream]);
        }
    }
    DiscardedOutput(const DiscardedOutput&) = delete;
    DiscardedOutput& operator=(const DiscardedOutput&) = delete;

private:
    int m_saved[STDERR_FILENO + 1] = {};
};

ExitStatus RunQuietly(const std::vector<std::string>& arguments)
{
    const DiscardedOutput discarded;
    ExitStatus status = ExitStatus::Failed;
    try {
        status = RunCommandLine(arguments);
        StandardStreams::FlushOutput();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        status = ReportException(VString()).status;
    }
    return status;
}

TEST_P(CommandFaultTest, CommandsLoseNoMemory)
{
    const testsupport::TemporaryFolder folder;
    const std::string stock = folder.Write("stock.xml", StockText).toStdString();
    const std::string other = folder.Write("other.xml", NewText).toStdString();
    const std::string faulty = folder.Write("faulty.xml", "<shop><item></shop>").toStdString();
    const std::string source = folder.Write("source.kxb", DataSource).toStdString();
    // Qt's list of the files of a folder loses 8 blocks if an allocation fails at its start. The resources are a
    // folder.
    constexpr std::size_t LostByListing = 8;
    const std::vector<std::vector<std::string>> commands = {
        {"check", stock, faulty, source},
        {"diff", stock, other},
        {"edit", stock, "--at", "//item", "--set", "id=new", "--after", "<new/>"},
        {"format", stock},
        {"help", "edit"},
        {"query", stock, "//item[@id='2']"},
        {"query", stock, "--at", "//item[@id='2']"},
        {"retarget", source, "--data-source", "orders=new"},
        {"schema", "list"},
        {"schema", "show", "kxa-10.2"},
        {"stats", stock},
        {"tree", stock},
        {"version", source},
    };
    for (const std::vector<std::string>& arguments : commands) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const auto run = [&arguments] { return RunQuietly(arguments); };
        const ExitStatus expected = run();
        const auto check = [expected](ExitStatus status, bool hasFailed) {
            EXPECT_TRUE(status == expected || (hasFailed && status == ExitStatus::Failed));
        };
        FailEachAllocation(run, check, arguments.front() == "schema" ? LostByListing : 0);
    }
}

// Two of these allocations once ended the process, because CLI11 looked for an option in a function that must not
// throw.
TEST_P(CommandFaultTest, EachAllocationOfAQueryMayFail)
{
    const testsupport::TemporaryFolder folder;
    const std::vector<std::string> arguments{"query", folder.Write("stock.xml", StockText).toStdString(), "//item"};
    const auto run = [&arguments] { return RunQuietly(arguments); };
    const auto check = [](ExitStatus status, bool hasFailed) {
        EXPECT_TRUE(status == ExitStatus::Good || (hasFailed && status == ExitStatus::Failed));
    };
    FailEachAllocation(run, check, 0, [](long number) { return number + 1; });
}

#endif

INSTANTIATE_FAULT_TEST(CommandFaultTest);

}  // namespace
