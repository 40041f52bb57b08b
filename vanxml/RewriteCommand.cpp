#include "vanxml/RewriteCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

#include "vanxml/ErrorLines.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/InputFile.h"
#include "vanxml/JobQueue.h"
#include "vanxml/OutputFile.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"
#include "vanxml/UnifiedDiff.h"

// The result of one document.
struct RewriteCommand::Outcome {
    ExitStatus status = ExitStatus::Good;
    std::string lines;   // for standard error
    std::string report;  // for standard output: a name or a diff
    std::string bytes;   // the rewritten document, if it must be written
    bool mustBeWritten = false;

    std::size_t Size() const { return lines.size() + report.size() + bytes.size(); }
};

void RewriteCommand::AddFileArguments(CLI::App& command)
{
    m_selection.AddOptions(command);
    CLI::Option* inPlace = command.add_flag("--in-place", m_isInPlace, "Replace each FILE that changes");
    CLI::Option* check = command.add_flag("--check",
        m_isCheck,
        "Change nothing; print the names of the documents that would change; then the status is 1");
    CLI::Option* diff = command.add_flag("--diff", m_isDiff, "Change nothing; print the changes as a unified diff");
    CLI::Option* output =
        command.add_option("-o,--output", m_output, "Write to the file OUT; - is standard output")->type_name("OUT");
    inPlace->excludes(check)->excludes(diff)->excludes(output);
    output->excludes(check)->excludes(diff);
    AddJobsOption(command, m_jobs);
    m_command = &command;
}

bool RewriteCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus RewriteCommand::Run()
{
    const SelectedFiles selected = m_selection.Select();
    RequireUsable(selected);
    const auto process = [&](std::size_t number) { return Process(selected.files[number]); };
    JobQueue<Outcome> queue(selected.files.size(), m_jobs, [&] { return process; });
    ExitStatus status = ExitStatus::Good;
    for (std::size_t number = 0; number < selected.files.size(); ++number) {
        const Outcome outcome = queue.WaitFor(number);
        StandardStreams::WriteError(outcome.lines);
        status = Worse(status, Worse(outcome.status, Deliver(selected.files[number].name, outcome)));
    }
    return status;
}

void RewriteCommand::RequireUsable(const SelectedFiles& selected) const
{
    const auto isInput = [](const SelectedFile& file) { return file.name == "-"; };
    if (m_isInPlace && std::any_of(selected.files.begin(), selected.files.end(), isInput))
        throw ToolError("--in-place: standard input cannot be replaced");
    if (m_isInPlace || m_isCheck || m_isDiff)
        return;
    if (selected.hasFolder)
        throw ToolError("A folder needs --in-place, --check or --diff");
    if (selected.files.size() > 1)
        throw ToolError("Several documents need --in-place, --check or --diff");
}

RewriteCommand::Outcome RewriteCommand::Process(const SelectedFile& file) const
{
    Outcome outcome;
    if (!file.error.empty()) {
        outcome.status = ExitStatus::Failed;
        outcome.lines = FormatErrorLine(file.error);
        return outcome;
    }
    try {
        std::string before = ReadInputFile(file.name);
        RewrittenDocument after = Rewrite(file.name, before);
        outcome.status = after.status;
        outcome.lines = std::move(after.lines);
        if (after.status == ExitStatus::Good)
            Compare(file.name, before, after, outcome);
    } catch (...) {
        outcome = Outcome();
        outcome.status = ExitStatus::Failed;
        outcome.lines = FormatErrorLine(DescribeException(file.name));
    }
    return outcome;
}

// Drops the bytes that are not needed any more, so that they do not wait with the outcome.
void RewriteCommand::Compare(const VString& name, std::string& before, RewrittenDocument& after, Outcome& outcome) const
{
    const bool isSame = before == after.bytes;
    if (m_isCheck && !isSame)
        outcome.status = ExitStatus::Faulty;
    if (m_isDiff) {
        outcome.report = UnifiedDiff(name.toStdString(), before, after.bytes);
    } else if (m_isCheck) {
        outcome.report = isSame ? std::string() : EscapeControlCharacters(name.toStdString()) + "\n";
    } else if (!m_isInPlace || !isSame) {
        outcome.mustBeWritten = true;
        outcome.bytes = std::move(after.bytes);
    }
}

// Only the thread of the command writes: the replacement of a file may print warnings, which stay in the order of the
// documents.
ExitStatus RewriteCommand::Deliver(const VString& name, const Outcome& outcome) const
{
    StandardStreams::Write(outcome.report);
    if (!outcome.mustBeWritten)
        return ExitStatus::Good;
    if (!m_isInPlace && m_output == "-") {
        StandardStreams::Write(outcome.bytes);
        return ExitStatus::Good;
    }
    try {
        if (m_isInPlace)
            ReplaceFile(name, outcome.bytes);
        else
            WriteOutputFile(VString::fromStdString(m_output), outcome.bytes);
        return ExitStatus::Good;
    } catch (...) {
        StandardStreams::WriteError(FormatErrorLine(DescribeException(name)));
        return ExitStatus::Failed;
    }
}
