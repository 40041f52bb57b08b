#include "vanxml/StatsCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <string_view>

#include "art-cpp/Activity.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vanxml/DocumentStatistics.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/JobQueue.h"
#include "vanxml/JsonText.h"
#include "vanxml/OptionChecks.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"

namespace {

// The result of one document.
struct CountedDocument {
    ExitStatus status = ExitStatus::Good;
    std::string errors;  // for standard error
    std::string version;
    DocumentStatistics statistics;

    std::size_t Size() const { return errors.size() + version.size() + statistics.Size(); }
};

using Versions = std::map<std::string, std::uint64_t>;

CountedDocument CountFile(const SelectedFile& file)
{
    CountedDocument result;
    if (!file.error.empty()) {
        result.status = ExitStatus::Failed;
        result.errors = FormatErrorLine(file.error);
        return result;
    }
    try {
        art::Activity activity("vanxml.document");
        activity.Tag("file", file.name);
        SourceDocument source = SourceDocument::Read(file.name);
        const Nullable<VersionNumber> version = VersionSniffer(source.Source(), "version");
        if (version.IsPresent())
            result.version = version.GetValue().GetAsString().toStdString();
        result.errors = CountContents(source, result.statistics);
        if (!result.errors.empty())
            result.status = ExitStatus::Faulty;
    } catch (...) {
        FailureReport report = ReportException(file.name);
        result.status = report.status;
        result.errors = std::move(report.lines);
    }
    return result;
}

// Aligns a number or title at the right of a column.
std::string Column(std::string_view text, std::size_t width = 10)
{
    return std::string(width - std::min(width, text.size()), ' ').append(text) + "  ";
}

std::string TableLine(const DocumentStatistics& statistics, std::string_view version, std::string_view name)
{
    return Column(std::to_string(statistics.elements)) + Column(std::to_string(statistics.attributes)) +
        Column(std::to_string(statistics.depth), 7) + Column(std::to_string(statistics.text)) +
        Column(EscapeControlCharacters(version), 8) + EscapeControlCharacters(name) + "\n";
}

std::string TableTitles()
{
    return Column("elements") + Column("attributes") + Column("depth", 7) + Column("text") + Column("version", 8) +
        "file\n";
}

std::string ListNames(std::string_view title, const NameCounts& counts, std::size_t most)
{
    if (counts.empty() || most == 0)
        return std::string();
    const auto names = SortByFrequency(counts);
    std::string text = "\n" + std::string(title) + ", by frequency:\n";
    for (std::size_t i = 0; i < std::min(most, names.size()); ++i)
        text += Column(std::to_string(names[i].second)) + EscapeControlCharacters(names[i].first.toStdString()) + "\n";
    if (names.size() > most)
        text += Column("...") + std::to_string(names.size() - most) + " more\n";
    return text;
}

std::string ListVersions(const Versions& versions)
{
    std::string text = "\nversions:\n";
    for (const auto& [version, count] : versions)
        text += Column(std::to_string(count)) + (version.empty() ? "none" : EscapeControlCharacters(version)) + "\n";
    return text;
}

void AppendMember(std::string& json, std::string_view name)
{
    json += ',';
    AppendJsonString(json, name);
    json += ':';
}

void AppendCounts(std::string& json, const NameCounts& counts)
{
    json += '{';
    bool isFirst = true;
    for (const auto& [name, count] : SortByFrequency(counts)) {
        if (!isFirst)
            json += ',';
        isFirst = false;
        AppendJsonString(json, name.toStdString());
        json += ':' + std::to_string(count);
    }
    json += '}';
}

void AppendStatistics(std::string& json, const DocumentStatistics& statistics)
{
    const std::pair<std::string_view, std::uint64_t> numbers[] = {{"bytes", statistics.bytes},
        {"elements", statistics.elements},
        {"attributes", statistics.attributes},
        {"depth", statistics.depth},
        {"text", statistics.text}};
    for (const auto& [name, number] : numbers) {
        AppendMember(json, name);
        json += std::to_string(number);
    }
    AppendMember(json, "elementNames");
    AppendCounts(json, statistics.elementNames);
    AppendMember(json, "attributeNames");
    AppendCounts(json, statistics.attributeNames);
}

std::string DocumentToJson(const std::string& name, const CountedDocument& document)
{
    std::string json = R"({"type":"document")";
    AppendMember(json, "file");
    AppendJsonString(json, name);
    if (!document.version.empty()) {
        AppendMember(json, "version");
        AppendJsonString(json, document.version);
    }
    AppendStatistics(json, document.statistics);
    return json + "}\n";
}

std::string TotalToJson(const DocumentStatistics& total, std::uint64_t documents, const Versions& versions)
{
    std::string json = R"({"type":"total","documents":)" + std::to_string(documents);
    AppendStatistics(json, total);
    AppendMember(json, "versions");
    json += '{';
    bool isFirst = true;
    for (const auto& [version, count] : versions) {
        if (!isFirst)
            json += ',';
        isFirst = false;
        AppendJsonString(json, version);
        json += ':' + std::to_string(count);
    }
    return json + "}}\n";
}

}  // namespace

void StatsCommand::AddTo(CLI::App& application)
{
    CLI::App* command =
        application.add_subcommand("stats", "Count the elements, attributes, texts and names of documents");
    m_selection.AddOptions(*command);
    command->add_option("--names", m_mostNames, "Print the N most frequent names; 0 for none")
        ->check(IsWholeNumber(0, 1'000'000'000))
        ->capture_default_str()
        ->type_name("N");
    command->add_flag(
        "--json", m_isJson, "Print one JSON object for each document, with all names, and one for the total");
    AddJobsOption(*command, m_jobs);
    m_command = command;
}

bool StatsCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus StatsCommand::Run()
{
    const std::vector<SelectedFile> files = m_selection.Select().files;
    const auto count = [&](std::size_t number) { return CountFile(files[number]); };
    JobQueue<CountedDocument> queue(files.size(), m_jobs, [&] { return count; });
    DocumentStatistics total;
    Versions versions;
    std::uint64_t documents = 0;
    ExitStatus status = ExitStatus::Good;
    for (std::size_t number = 0; number < files.size(); ++number) {
        const CountedDocument document = queue.WaitFor(number);
        status = Worse(status, document.status);
        StandardStreams::WriteError(document.errors);
        if (document.status != ExitStatus::Good)
            continue;
        const std::string name = files[number].name.toStdString();
        if (m_isJson)
            StandardStreams::Write(DocumentToJson(name, document));
        else
            StandardStreams::Write((documents == 0 ? TableTitles() : std::string()) +
                TableLine(document.statistics, document.version.empty() ? "-" : document.version, name));
        total.Add(document.statistics);
        ++versions[document.version];
        ++documents;
    }
    if (m_isJson) {
        StandardStreams::Write(TotalToJson(total, documents, versions));
        return status;
    }
    if (documents > 1)
        StandardStreams::Write(TableLine(total, "", std::to_string(documents) + " documents") + ListVersions(versions));
    StandardStreams::Write(ListNames("elements", total.elementNames, m_mostNames) +
        ListNames("attributes", total.attributeNames, m_mostNames));
    return status;
}
