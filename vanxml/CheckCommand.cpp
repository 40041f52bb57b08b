#include "vanxml/CheckCommand.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "vanxml/DocumentChecker.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/JobQueue.h"
#include "vanxml/StandardStreams.h"

namespace {

std::string FormatCount(std::size_t count, const char* what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// Returns nothing for "auto": the type and version of each document then select its schema.
std::optional<SchemaReference> ResolveSchemaOption(const std::string& name)
{
    if (name == "auto")
        return std::nullopt;
    return name == "none" ? SchemaReference() : FindSchema(VString::fromStdString(name));
}

CheckedDocument CheckFile(DocumentChecker& checker, const SelectedFile& file)
{
    if (file.error.empty())
        return checker.Check(file.name);
    CheckedDocument result;
    result.status = ExitStatus::Failed;
    result.lines = FormatErrorLine(file.error);
    return result;
}

}  // namespace

void CheckCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("check", "Parse documents and print their errors");
    m_selection.AddOptions(*command);
    command
        ->add_option("--schema",
            m_schema,
            "The schema to check against: none for no schema; auto for the schema of each document's type and version; "
            "the name of a schema of the library; or a schema file")
        ->capture_default_str()
        ->type_name("auto|none|NAME|FILE.xsd");
    AddJobsOption(*command, m_jobs);
    m_command = command;
}

bool CheckCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus CheckCommand::Run()
{
    const std::vector<SelectedFile> files = m_selection.Select().files;
    const std::optional<SchemaReference> schema = ResolveSchemaOption(m_schema);
    const auto makeJob = [&]() -> JobQueue<CheckedDocument>::Job {
        const auto checker = std::make_shared<DocumentChecker>(schema);
        return [checker, &files](std::size_t number) { return CheckFile(*checker, files[number]); };
    };
    JobQueue<CheckedDocument> queue(files.size(), m_jobs, makeJob);
    ExitStatus status = ExitStatus::Good;
    std::size_t documents = 0;
    std::size_t errors = 0;
    std::set<std::string> brokenSchemas;
    for (std::size_t number = 0; number < files.size(); ++number) {
        const CheckedDocument document = queue.WaitFor(number);
        status = Worse(status, document.status);
        errors += document.errors;
        if (document.wasChecked)
            ++documents;
        // The errors in a schema are printed once, not for each document.
        if (document.brokenSchema.empty() || brokenSchemas.insert(document.brokenSchema).second)
            StandardStreams::WriteError(document.lines);
    }
    const std::size_t unchecked = files.size() - documents;
    StandardStreams::Write(FormatCount(documents, "document") + ", " + FormatCount(errors, "error") +
        (unchecked > 0 ? ", " + std::to_string(unchecked) + " not checked" : "") + "\n");
    return status;
}
