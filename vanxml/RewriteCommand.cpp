#include "vanxml/RewriteCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

#include "art-cpp/Activity.h"
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
    std::string bytes;   // the rewritten document, if `hasBytes`
    bool hasBytes = false;

    std::size_t Size() const { return lines.size() + report.size() + bytes.size(); }
};

void RewriteCommand::AddFileArguments(CLI::App& command)
{
    m_selection.AddOptions(command);
    CLI::Option* inPlace = command.add_flag("--in-place", m_isInPlace, "Replace each FILE that changes");
    CLI::Option* check = command.add_flag("--check",
        m_isCheck,
        "Change nothing; print the names of the documents that would change, and end with status 1 if there are any");
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
        StandardStreams::Write(outcome.report);
        if (outcome.hasBytes)
            WriteOutput(outcome.bytes);
        status = Worse(status, outcome.status);
    }
    return status;
}

void RewriteCommand::RequireUsable(const SelectedFiles& selected) const
{
    const auto isInput = [](const SelectedFile& file) { return file.name == "-"; };
    if (m_isInPlace && std::any_of(selected.files.begin(), selected.files.end(), isInput))
        throw UsageError("--in-place: standard input cannot be replaced");
    if (m_isInPlace || m_isCheck || m_isDiff)
        return;
    if (selected.hasFolder)
        throw UsageError("a folder needs --in-place, --check or --diff");
    if (selected.hasList)
        throw UsageError("--files-from needs --in-place, --check or --diff");
    if (selected.files.size() > 1)
        throw UsageError("several documents need --in-place, --check or --diff");
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
        art::Activity activity("vanxml.document");
        activity.Tag("file", file.name);
        const std::string before = ReadInputFile(file.name);
        RewrittenDocument after = Rewrite(file.name, before);
        outcome.status = after.status;
        outcome.lines = std::move(after.lines);
        if (after.status == ExitStatus::Good)
            Finish(file.name, before, std::move(after.bytes), outcome);
    } catch (...) {
        // The other lines describe a result that was not delivered.
        FailureReport report = ReportException(file.name);
        outcome.status = report.status;
        outcome.lines = std::move(report.lines);
    }
    return outcome;
}

// Replaces the file here and not in Run: the system takes milliseconds to flush a file, and several threads can wait
// for it at once.
void RewriteCommand::Finish(const VString& name, const std::string& before, std::string&& after, Outcome& outcome) const
{
    const bool isSame = before == after;
    if (m_isCheck && !isSame)
        outcome.status = ExitStatus::Faulty;
    if (m_isDiff) {
        outcome.report = UnifiedDiff(name.toStdString(), before, after);
    } else if (m_isCheck) {
        outcome.report = isSame ? std::string() : EscapeControlCharacters(name.toStdString()) + "\n";
    } else if (m_isInPlace) {
        if (!isSame)
            outcome.lines += FormatOtherNamesWarning(name, ReplaceFile(name, before, after));
    } else {
        outcome.hasBytes = true;
        outcome.bytes = std::move(after);
    }
}

void RewriteCommand::WriteOutput(const std::string& bytes) const
{
    const art::Activity activity("vanxml.write");
    if (m_output == "-") {
        StandardStreams::Write(bytes);
        return;
    }
    const VString output = VString::fromStdString(m_output);
    StandardStreams::WriteError(FormatOtherNamesWarning(output, WriteOutputFile(output, bytes)));
}
