#include "vanxml/CheckReport.h"

#include <algorithm>
#include <filesystem>

#include "vancoreplatform/VFile.h"
#include "vanxml/DiagnosticJson.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/HtmlPage.h"
#include "vanxml/HtmlReport.h"
#include "vanxml/SarifReport.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace {

// Throws ToolError if the file may be a document and is no page of a report. Without this check, the forgotten name in
// "-o *.kxa" would cost the first document. A document begins with "<", perhaps behind white space, or has NUL bytes at
// its start (UTF-16 or UTF-32).
void RefuseToReplaceDocument(const VString& name)
{
    const std::filesystem::path path(name.View());
    if (OperatingSystem::FindStream(path) || OperatingSystem::TypeOf(path) != std::filesystem::file_type::regular)
        return;
    VFile file{VPath(name)};
    file.OpenForReading();
    char bytes[128] = {};
    std::string_view start(bytes, file.Read(bytes, sizeof bytes));
    const bool isLonger = start.size() == sizeof bytes;
    const bool isWide =
        start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF") || start.find('\0') != std::string_view::npos;
    if (start.starts_with("\xEF\xBB\xBF"))
        start.remove_prefix(3);
    start.remove_prefix(std::min(start.find_first_not_of(" \t\r\n"), start.size()));
    const bool hasMoreBlanks = isLonger && start.empty();
    if (isWide || hasMoreBlanks || (start.starts_with('<') && !start.starts_with(HtmlPage::Start)))
        throw ToolError("--output: the file '" + name.toStdString() +
            "' exists and may be a document; delete it or choose another name");
}

// Writes lines for people.
class LineReport : public CheckReport {
public:
    explicit LineReport(const std::optional<std::string>& file) : CheckReport(file, OperatingSystem::Stream::Error) {}

    std::string FormatFailure(const VString&, const std::string& message) const override
    {
        return FormatErrorLine(message);
    }

    void Write(const CheckMessage& message) override { WriteBytes(message.text); }
};

class TextReport : public LineReport {
public:
    TextReport(const TextStyle& style, const std::optional<std::string>& file) : LineReport(file), m_style(style) {}

    bool ShowsExcerpts() const override { return true; }

    std::string FormatDiagnostic(
        const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt) const override
    {
        return ::FormatDiagnostic(VString(), diagnostic, excerpt, m_style);
    }

private:
    const TextStyle m_style;
};

class GccReport : public LineReport {
public:
    using LineReport::LineReport;

    std::string FormatDiagnostic(const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>&) const override
    {
        return FormatDiagnosticLine(VString(), diagnostic);
    }
};

// Writes one JSON object on each line.
class JsonReport : public CheckReport {
public:
    explicit JsonReport(const std::optional<std::string>& file) : CheckReport(file, OperatingSystem::Stream::Output) {}

    bool IsForPrograms() const override { return true; }

    std::string FormatDiagnostic(const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>&) const override
    {
        return DiagnosticToJson(diagnostic) + "\n";
    }

    std::string FormatFailure(const VString& file, const std::string& message) const override
    {
        return FailureToJson(file, message) + "\n";
    }

    void Write(const CheckMessage& message) override { WriteBytes(message.text); }
};

}  // namespace

std::unique_ptr<CheckReport> CheckReport::Create(
    const std::string& format, const TextStyle& style, const std::optional<std::string>& file)
{
    if (format == "gcc")
        return std::make_unique<GccReport>(file);
    if (format == "json")
        return std::make_unique<JsonReport>(file);
    if (format == "sarif")
        return std::make_unique<SarifReport>(file);
    if (format == "html")
        return std::make_unique<HtmlReport>(file);
    return std::make_unique<TextReport>(style, file);
}

CheckReport::CheckReport(const std::optional<std::string>& file, OperatingSystem::Stream stream) : m_stream(stream)
{
    if (file) {
        RefuseToReplaceDocument(VString::fromStdString(*file));
        m_file.emplace(VString::fromStdString(*file));
    }
}

bool CheckReport::IsOnStandardOutput() const
{
    return m_file ? m_file->IsStandardOutput() : m_stream == OperatingSystem::Stream::Output;
}

void CheckReport::WriteBytes(std::string_view bytes)
{
    if (m_file)
        m_file->Write(bytes);
    else if (m_stream == OperatingSystem::Stream::Output)
        StandardStreams::Write(bytes);
    else
        StandardStreams::WriteError(bytes);
}

void CheckReport::Finish(const CheckSummary& summary, std::size_t omitted)
{
    WriteEnd(summary, omitted);
    if (m_file)
        StandardStreams::WriteError(FormatOtherNamesWarning(m_file->Name(), m_file->Finish()));
}
