#include "vanxml/CheckReport.h"

#include "vanxml/DiagnosticJson.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/SarifReport.h"
#include "vanxml/StandardStreams.h"

namespace {

// Writes lines to standard error.
class LineReport : public CheckReport {
public:
    std::string FormatFailure(const VString&, const std::string& message) const override
    {
        return FormatErrorLine(message);
    }

    void Write(const CheckMessage& message) override { StandardStreams::WriteError(message.text); }
};

class TextReport : public LineReport {
public:
    explicit TextReport(const TextStyle& style) : m_style(style) {}

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
    std::string FormatDiagnostic(const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>&) const override
    {
        return FormatDiagnosticLine(VString(), diagnostic);
    }
};

// Writes one JSON object on each line of standard output.
class JsonReport : public CheckReport {
public:
    bool IsForPrograms() const override { return true; }

    std::string FormatDiagnostic(const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>&) const override
    {
        return DiagnosticToJson(diagnostic) + "\n";
    }

    std::string FormatFailure(const VString& file, const std::string& message) const override
    {
        return FailureToJson(file, message) + "\n";
    }

    void Write(const CheckMessage& message) override { StandardStreams::Write(message.text); }
};

}  // namespace

std::unique_ptr<CheckReport> CheckReport::Create(const std::string& format, const TextStyle& style)
{
    if (format == "gcc")
        return std::make_unique<GccReport>();
    if (format == "json")
        return std::make_unique<JsonReport>();
    if (format == "sarif")
        return std::make_unique<SarifReport>();
    return std::make_unique<TextReport>(style);
}
