// Runs the tool while its allocations fail: by operator new, and those of Qt, ICU and the C library. The preloaded
// library is FailingAllocations.cpp.
#include <gtest/gtest.h>

#include <QJsonDocument>

#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tool/ToolRun.h"

namespace {

using testsupport::TemporaryFolder;

const std::string Text = "<a b='c'><g h='i'>text</g>\n\n<j><![CDATA[<]]></j><k/></a>";
const std::string DataSource =
    "<data-source version='18.1' name='orders'><connection class='text-file' filename='a.csv'/>"
    "<column name='Sales' data-type='real' role='measure'/></data-source>";

bool IsEmptyText(const std::string& text)
{
    return text.empty();
}

struct Row {
    const char* name;
    std::vector<std::string> arguments;
    std::string text = Text;
    std::string input = {};                                // standard input
    std::string output = {};                               // the content of the file "output" before the run, if any
    bool (*isComplete)(const std::string&) = IsEmptyText;  // true for a file that may replace it
    std::size_t documents = 1;                             // files with the text; threads process several files
};

std::ostream& operator<<(std::ostream& out, const Row& row)
{
    return out << row.name;
}

class ToolFaultTest : public testing::TestWithParam<Row> {
protected:
    // The result of a run. `status` is that of the tool.
    struct Run {
        ToolResult result;
        bool hasFailed = false;          // an allocation
        std::vector<std::string> texts;  // of the documents after the run
        std::string output;              // of the file "output" after the run
    };

    // Runs the tool in a new folder with the documents. With `forever`, all allocations after the first failing one
    // fail too. Expects that no other file comes into the folder.
    static Run RunWithFault(long number, bool forever)
    {
        const TemporaryFolder folder;
        const TemporaryFolder other;
        std::vector<VString> documents;
        for (std::size_t i = 0; i < GetParam().documents; ++i)
            documents.push_back(folder.Write(VString::fromStdString(std::to_string(i) + ".xml"), GetParam().text));
        const VString output = GetParam().output.empty() ? VString() : folder.Write("output", GetParam().output);
        const std::vector<std::string> names = folder.Names();
        const VString failed = other.Path("failed");
        std::vector<std::string> all{"LD_PRELOAD=" FAILING_ALLOCATIONS_PATH,
            "FAILED_FILE=" + failed.toStdString(),
            "FAILING_ALLOCATION=" + std::to_string(number)};
        if (forever)
            all.emplace_back("FAILING_FOREVER=1");
        all.emplace_back(VANXML_PATH);
        for (const std::string& argument : GetParam().arguments)
            all.push_back(argument == "OUTPUT" ? output.toStdString() : argument);
        for (const VString& document : documents)
            all.push_back(document.toStdString());
        Run run;
        run.result = RunProgram("env", all, GetParam().input);
        // The name of the folder differs between two runs.
        for (std::string* const text : {&run.result.output, &run.result.errors})
            *text = QString::fromStdString(*text).remove(folder.Path("").ToQString()).toStdString();
        run.hasFailed = !other.Names().empty();
        for (const VString& document : documents)
            run.texts.push_back(TemporaryFolder::Read(document));
        run.output = output.IsEmpty() ? std::string() : TemporaryFolder::Read(output);
        EXPECT_EQ(folder.Names(), names);
        return run;
    }

    // Expects that each document is the old or the new one. With a single document, that is told by the status.
    static void ExpectWhole(
        const std::vector<std::string>& texts, bool isRefused, const std::vector<std::string>& expected, long number)
    {
        const bool isSingle = texts.size() == 1;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const bool isOld = isRefused && (isSingle || texts[i] == GetParam().text);
            EXPECT_EQ(texts[i], isOld ? GetParam().text : expected[i]) << "after " << number;
        }
    }

    // Makes allocations fail, one in each run, until none fails. Leaves out most of them to keep the test short, unless
    // the environment variable VANCOREXML_ALL_ALLOCATION_FAULTS is set.
    static void FailAllocations(bool forever)
    {
        const bool all = std::getenv("VANCOREXML_ALL_ALLOCATION_FAULTS") != nullptr;
        constexpr long Never = 1'000'000'000;
        const Run expected = RunWithFault(Never, false);
        for (long number = 0;; number += all ? 1 : 1 + number / 2) {
            const Run run = RunWithFault(number, forever);
            if (HasFailure() || !run.hasFailed) {
                EXPECT_GT(number, 1000);
                return;
            }
            // A single fault may be without effect, for example in a cache. So may the last allocation of one of
            // several threads.
            const bool mayBeSound = !forever || GetParam().documents > 1;
            const bool isRefused = !mayBeSound || run.result.status == 2;
            EXPECT_EQ(run.result.status, isRefused ? 2 : expected.result.status) << "after " << number;
            // Without memory for an explanation, an error has the message of Xerces.
            if (!isRefused) {
                EXPECT_EQ(run.result.output, expected.result.output) << "after " << number;
            }
            // A report in a file contains the failure of a document.
            const bool isReported = !GetParam().output.empty() && run.output != GetParam().output;
            EXPECT_TRUE(isReported || run.result.errors.empty() == (!isRefused && expected.result.errors.empty()))
                << "after " << number;
            ExpectWhole(run.texts, isRefused, expected.texts, number);
            const bool isOld = isRefused && run.output == GetParam().output;
            EXPECT_TRUE(isOld || GetParam().isComplete(run.output)) << "after " << number << "\n" << run.output;
        }
    }
};

TEST_P(ToolFaultTest, OneFaultLeavesTheFileWhole)
{
    FailAllocations(false);
}

TEST_P(ToolFaultTest, NoMoreMemoryEndsInAFailure)
{
    FailAllocations(true);
}

bool IsWholePage(const std::string& text)
{
    return text.starts_with("<!DOCTYPE html>") && text.ends_with("</html>\n");
}

bool IsWholeTrace(const std::string& text)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).isObject();
}

const std::string OldTrace = "{\"traceEvents\":[\n]}\n";

const Row Rows[] = {
    {"Check", {"check"}, "<a><b></a>"},
    {"Format", {"format", "--in-place"}},
    {"Edit", {"edit", "--at", "//g", "--set", "h=new", "--in-place"}},
    {"CheckJson", {"check", "--format", "json"}, "<a><b></a>"},
    {"CheckSarif", {"check", "--format", "sarif"}, "<a><b></a>"},
    {"Query", {"query", "//g"}},
    {"QueryFirst", {"query", "--first", "--at", "//g"}},
    {"Version", {"version"}, DataSource},
    {"Tree", {"tree"}},
    {"Stats", {"stats", "--json"}},
    {"Validate", {"check"}, DataSource},
    {"Retarget", {"retarget", "--data-source", "orders=new", "--in-place"}, DataSource},
    {"Diff", {"diff", "-"}, Text, "<a b='d'><k/><g h='i'>text</g><j>&lt;</j></a>"},
    {"DiffJson", {"diff", "--json", "-"}, Text, "<a b='d'><k/><g h='i'>text</g><j>&lt;</j></a>"},
    {"HtmlReport", {"check", "--format", "html", "-o", "OUTPUT"}, "<a><b></a>", "", "<!DOCTYPE html>old", IsWholePage},
    {"Trace", {"check", "--trace", "OUTPUT"}, Text, "", OldTrace, IsWholeTrace},
    {"CheckJobs", {"check", "--jobs", "2"}, "<a><b></a>", "", "", IsEmptyText, 6},
    {"ValidateJobs", {"check", "--jobs", "2"}, DataSource, "", "", IsEmptyText, 6},
    {"FormatJobs", {"format", "--in-place", "--jobs", "2"}, Text, "", "", IsEmptyText, 6},
    {"StatsJobs", {"stats", "--json", "--jobs", "2"}, Text, "", "", IsEmptyText, 6},
    {"EditJobs", {"edit", "--at", "//g", "--set", "h=new", "--in-place", "--jobs", "2"}, Text, "", "", IsEmptyText, 6},
    {"RetargetJobs",
        {"retarget", "--data-source", "orders=new", "--in-place", "--jobs", "2"},
        DataSource,
        "",
        "",
        IsEmptyText,
        6},
    {"SchemaList", {"schema", "list"}, "", "", "", IsEmptyText, 0},
    {"SchemaShow", {"schema", "show", "kxa-10.2"}, "", "", "", IsEmptyText, 0},
    {"TracedDiff", {"diff", "--trace", "OUTPUT", "-"}, Text, "<a/>", OldTrace, IsWholeTrace},
};

INSTANTIATE_TEST_SUITE_P(Rows, ToolFaultTest, testing::ValuesIn(Rows), [](const auto& row) { return row.param.name; });

}  // namespace
