#include "vanxml/DocumentChecker.h"

#include <algorithm>
#include <optional>

#include "art-cpp/Activity.h"
#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/EncodingFaults.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/ExceptionText.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/SourceLines.h"

namespace {

// Returns the surroundings of an error in a schema; empty if the schema is not a file that can be read.
std::optional<SourceExcerpt> FindSchemaExcerpt(const ParseDiagnostic& error)
{
    if (error.start.line == 0)
        return std::nullopt;
    try {
        const std::string text = VFile::LoadTextFileAsUtf8(error.sourceId, true);
        return FindExcerpts({error}, error.sourceId, text).front();
    } catch (const VIO::Exception&) {
        return std::nullopt;
    }
}

CheckMessage MakeMessage(
    const CheckReport& report, const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt)
{
    return {report.FormatDiagnostic(diagnostic, excerpt), diagnostic.code, diagnostic.sourceId, !IsError(diagnostic)};
}

}  // namespace

std::size_t CheckedDocument::Size() const
{
    std::size_t size = messages.size() * sizeof(CheckMessage);
    for (const CheckMessage& message : messages)
        size += message.text.size();
    return size + (failure ? failure->text.size() : 0);
}

CheckedDocument DocumentChecker::Check(const VString& name)
{
    try {
        art::Activity activity("vanxml.document");
        activity.Tag("file", name);
        SourceDocument source = SourceDocument::Read(name);
        CheckedDocument result;
        result.bytes = source.Source().Size();
        CheckSource(source, result);
        return result;
    } catch (const VIO::DecodingException& exception) {
        CheckedDocument result;
        const auto findExcerpts = [&](const std::vector<ParseDiagnostic>& shown) {
            return FindExcerpts(shown, name, exception.GetBadBytes().text);
        };
        Add({EncodingFaults::Describe(exception.GetBadBytes())}, name, findExcerpts, result);
        result.wasChecked = true;
        return result;
    } catch (...) {
        CheckedDocument result;
        result.status = ExitStatus::Failed;
        result.messages.push_back({m_report.FormatFailure(name, DescribeException(name)), std::nullopt, name});
        return result;
    }
}

void DocumentChecker::CheckSource(SourceDocument& source, CheckedDocument& result)
{
    if (const std::optional<ParseDiagnostic>& fault = source.EncodingFault())
        Add({*fault}, source, result);
    const SchemaSelection selection = m_schema.Select(source);
    result.wasChecked = CheckAgainst(selection.schema, source, result);
    if (result.status == ExitStatus::Good)
        Add(selection.problems, source, result);
}

bool DocumentChecker::CheckAgainst(const SchemaReference& schema, SourceDocument& source, CheckedDocument& result)
{
    std::unique_ptr<SchemaDriver>& driver = m_drivers[schema];
    if (!driver)
        driver = std::make_unique<SchemaDriver>(schema);
    if (!driver->SchemaErrors().empty()) {
        AddSchemaErrors(driver->SchemaErrors(), result);
        result.brokenSchema = schema.name.toStdString();
        if (m_report.IsForPrograms()) {
            const std::string reason = "not checked, because the schema '" + result.brokenSchema + "' cannot be used";
            result.failure = {m_report.FormatFailure(source.Name(), reason), std::nullopt, source.Name()};
        }
        return false;
    }
    Add(driver->Check(source.Source()), source, result);
    return true;
}

void DocumentChecker::AddSchemaErrors(const std::vector<ParseDiagnostic>& errors, CheckedDocument& result) const
{
    result.status = ExitStatus::Failed;
    const std::size_t count = std::min(errors.size(), m_mostMessages);
    result.omitted = errors.size() - count;
    for (std::size_t i = 0; i < count; ++i) {
        std::optional<SourceExcerpt> excerpt;
        if (m_report.ShowsExcerpts())
            excerpt = FindSchemaExcerpt(errors[i]);
        result.messages.push_back(MakeMessage(m_report, errors[i], excerpt));
    }
}

void DocumentChecker::Add(
    const std::vector<ParseDiagnostic>& diagnostics, SourceDocument& source, CheckedDocument& result) const
{
    const auto findExcerpts = [&](const std::vector<ParseDiagnostic>& shown) { return FindExcerpts(shown, source); };
    Add(diagnostics, source.Name(), findExcerpts, result);
}

void DocumentChecker::Add(const std::vector<ParseDiagnostic>& diagnostics,
    const VString& name,
    const ExcerptFinder& findExcerpts,
    CheckedDocument& result) const
{
    const auto errors = std::count_if(diagnostics.begin(), diagnostics.end(), IsError);
    result.errors += static_cast<std::size_t>(errors);
    result.warnings += diagnostics.size() - static_cast<std::size_t>(errors);
    if (errors > 0)
        result.status = ExitStatus::Faulty;

    const std::size_t count = std::min(diagnostics.size(), m_mostMessages - result.messages.size());
    result.omitted += diagnostics.size() - count;
    std::vector<ParseDiagnostic> shown(diagnostics.begin(), diagnostics.begin() + static_cast<std::ptrdiff_t>(count));
    for (ParseDiagnostic& diagnostic : shown) {
        if (diagnostic.sourceId.IsEmpty())
            diagnostic.sourceId = name;
    }
    std::vector<std::optional<SourceExcerpt>> excerpts(count);
    if (m_report.ShowsExcerpts() && count > 0)
        excerpts = findExcerpts(shown);
    for (std::size_t i = 0; i < count; ++i)
        result.messages.push_back(MakeMessage(m_report, shown[i], excerpts[i]));
}
