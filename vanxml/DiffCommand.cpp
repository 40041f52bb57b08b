#include "vanxml/DiffCommand.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "art-cpp/Activity.h"
#include "vanxml/ComparedTree.h"
#include "vanxml/DiffReport.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/TextStyle.h"
#include "vanxml/ToolError.h"
#include "vanxml/TreeDiff.h"

namespace {

// Reads a document. Prints its errors and returns null if there are any.
std::unique_ptr<ComparedTree> ReadTree(const VString& name, ContentTable& table)
{
    try {
        auto tree = std::make_unique<ComparedTree>(SourceDocument::Read(name), table);
        StandardStreams::WriteError(tree->Errors());
        return tree->Errors().empty() ? std::move(tree) : nullptr;
    } catch (...) {
        StandardStreams::WriteError(ReportException(name).lines);
        return nullptr;
    }
}

// Returns a line such as "4 differences: 1 changed, 3 added".
std::string Summarize(const std::vector<TreeDifference>& differences)
{
    constexpr const char* names[] = {"changed", "removed", "added", "moved"};
    std::array<std::size_t, 4> counts{};
    for (const TreeDifference& difference : differences)
        ++counts[static_cast<std::size_t>(difference.kind)];
    std::string text;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] > 0)
            text += (text.empty() ? ": " : ", ") + std::to_string(counts[i]) + " " + names[i];
    }
    return std::to_string(differences.size()) + (differences.size() == 1 ? " difference" : " differences") + text +
        "\n";
}

}  // namespace

void DiffCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand(
        "diff", "Compare two documents as trees: elements, attributes and texts, without comments and indentation");
    command->add_option("A", m_fileA, "The first document; - is standard input")->required()->type_name("FILE");
    command->add_option("B", m_fileB, "The second document; - is standard input")->required()->type_name("FILE");
    command->add_flag("--json", m_isJson, "Print one JSON object for each difference");
    AddColorOption(*command, m_colors);
    m_command = command;
}

bool DiffCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus DiffCommand::Run()
{
    if (m_fileA == "-" && m_fileB == "-")
        throw UsageError("only one of the two documents can be standard input");
    ContentTable table;
    const std::unique_ptr<ComparedTree> a = ReadTree(VString::fromStdString(m_fileA), table);
    const std::unique_ptr<ComparedTree> b = ReadTree(VString::fromStdString(m_fileB), table);
    if (!a || !b)
        return ExitStatus::Failed;
    std::vector<TreeDifference> differences;
    {
        const art::Activity activity("vanxml.compare");
        differences = DiffTrees(*a, *b, table);
    }
    const TextStyle style = TextStyle::ForStandardOutput(m_colors);
    const DiffReport report(*a, *b, table, style);
    for (const TreeDifference& difference : differences)
        StandardStreams::Write(m_isJson ? report.FormatJson(difference) : report.Format(difference));
    if (!m_isJson && !differences.empty())
        StandardStreams::Write(Summarize(differences));
    return differences.empty() ? ExitStatus::Good : ExitStatus::Faulty;
}
