#include "vanxml/CheckCommand.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "vanxml/CheckReport.h"
#include "vanxml/CheckSummary.h"
#include "vanxml/DocumentChecker.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/JobQueue.h"
#include "vanxml/OperatingSystem.h"
#include "vanxml/OptionChecks.h"
#include "vanxml/ProgressLine.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/TextStyle.h"

namespace {

CheckedDocument CheckFile(DocumentChecker& checker, const CheckReport& report, const SelectedFile& file)
{
    if (file.error.empty())
        return checker.Check(file.name);
    CheckedDocument result;
    result.status = ExitStatus::Failed;
    result.messages.push_back({report.FormatFailure(VString(), file.error), std::nullopt, VString()});
    return result;
}

// Writes the messages of documents up to a limit and counts the others.
class LimitedReport {
public:
    LimitedReport(CheckReport& report, ProgressLine& progress, std::size_t mostMessages)
        : m_report(report),
          m_progress(progress),
          m_mostMessages(mostMessages)
    {}

    void Write(const CheckedDocument& document)
    {
        // The errors in a schema are written once, not for each document.
        const bool isRepeated = !document.brokenSchema.empty() && !m_brokenSchemas.insert(document.brokenSchema).second;
        if (!isRepeated) {
            m_omitted += document.omitted;
            for (const CheckMessage& message : document.messages)
                Write(message);
        }
        if (document.failure)
            Write(*document.failure);
    }

    // The number of messages beyond the limit.
    std::size_t Omitted() const { return m_omitted; }

private:
    void Write(const CheckMessage& message)
    {
        if (m_written == m_mostMessages) {
            ++m_omitted;
            return;
        }
        ++m_written;
        m_progress.Clear();
        m_report.Write(message);
    }

    CheckReport& m_report;
    ProgressLine& m_progress;
    const std::size_t m_mostMessages;
    std::size_t m_written = 0;
    std::size_t m_omitted = 0;
    std::set<std::string> m_brokenSchemas;
};

void AddReportOptions(CLI::App& command, std::string& format, std::string& colors)
{
    command
        .add_option("--format",
            format,
            "The form of the messages: text for people; gcc for one line a message; json for one JSON object a line; "
            "sarif for a SARIF 2.1.0 log; html for a page to look at in a browser. json, sarif and html are written to "
            "standard output, the others to standard error")
        ->check(IsOneOf({"text", "gcc", "json", "sarif", "html"}))
        ->capture_default_str()
        ->type_name("text|gcc|json|sarif|html");
    AddColorOption(command, colors);
}

// Writes the summary to standard output, unless that is for a program.
void WriteSummary(const CheckSummary& summary, std::size_t omitted, double seconds, bool isForProgram)
{
    if (omitted > 0)
        StandardStreams::WriteError(FormatErrorLine(CheckSummary::FormatOmitted(omitted)));
    using OperatingSystem::Stream;
    const bool isTerminal = OperatingSystem::IsTerminal(isForProgram ? Stream::Error : Stream::Output);
    const std::string line = summary.Format() + (isTerminal ? summary.FormatSpeed(seconds) : std::string()) + "\n";
    if (isForProgram)
        StandardStreams::WriteError(line);
    else
        StandardStreams::Write(line);
}

}  // namespace

void CheckCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("check", "Parse documents and print their errors");
    m_selection.AddOptions(*command);
    command
        ->add_option("--schema",
            m_schema,
            "The schema to check against: auto for the schema of each document's type and version, if it has a type; "
            "hints for the files that a document names with xsi:schemaLocation; none for no schema; the name of a "
            "schema of the library, such as kxa-10.2; or a schema file")
        ->capture_default_str()
        ->type_name("auto|hints|none|NAME|FILE.xsd");
    AddReportOptions(*command, m_format, m_colors);
    CLI::Option* const output =
        command->add_option("-o,--output", m_output, "Write the messages to the file OUT; - is standard output")
            ->type_name("OUT");
    CLI::Option* const most =
        command->add_option("--max-errors", m_mostMessages, "Print at most N messages, and the number of the others")
            ->check(IsWholeNumber(0, 1'000'000'000))
            ->type_name("N");
    command
        ->add_flag(
            "--quiet", m_isQuiet, "Print nothing but mistakes in the command line; the exit status tells the result")
        ->excludes(most)
        ->excludes(output);
    command->add_flag("--strict", m_isStrict, "End with status 1 if there are warnings");
    AddJobsOption(*command, m_jobs);
    m_command = command;
}

bool CheckCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus CheckCommand::Run()
{
    const auto start = std::chrono::steady_clock::now();
    const std::vector<SelectedFile> files = m_selection.Select().files;
    const SchemaOption schema(m_schema);
    const bool mayBeTerminal = !m_output;
    const TextStyle style = TextStyle::ForStandardError(mayBeTerminal || m_colors != "auto" ? m_colors : "never");
    const std::unique_ptr<CheckReport> report = CheckReport::Create(m_format, style, m_output);
    const std::size_t mostMessages = m_isQuiet ? 0 : m_mostMessages;
    const auto makeJob = [&]() -> JobQueue<CheckedDocument>::Job {
        const auto checker = std::make_shared<DocumentChecker>(schema, *report, mostMessages);
        return [&, checker](std::size_t number) { return CheckFile(*checker, *report, files[number]); };
    };
    JobQueue<CheckedDocument> queue(files.size(), m_jobs, makeJob);
    ProgressLine progress(m_isQuiet ? 0 : files.size());
    LimitedReport limited(*report, progress, mostMessages);
    CheckSummary summary;
    ExitStatus status = ExitStatus::Good;
    for (std::size_t number = 0; number < files.size(); ++number) {
        progress.Show(number);
        const CheckedDocument document = queue.WaitFor(number);
        status = Worse(status, document.status);
        summary.Add(document);
        limited.Write(document);
    }
    progress.Clear();
    if (m_isStrict && summary.warnings > 0)
        status = Worse(status, ExitStatus::Faulty);
    if (!m_isQuiet) {
        report->Finish(summary, limited.Omitted());
        const std::chrono::duration<double> duration = std::chrono::steady_clock::now() - start;
        WriteSummary(
            summary, limited.Omitted(), duration.count(), report->IsForPrograms() && report->IsOnStandardOutput());
    }
    return status;
}
