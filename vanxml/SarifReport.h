// Diagnostics as SARIF.
#pragma once

#include <set>
#include <vector>

#include "vanxml/CheckReport.h"

// Writes a SARIF 2.1.0 log with one run. Failures become notifications of the invocation, and so does the number of
// omitted messages.
//
// The results are written as they come, and the rules behind them, so the memory does not grow with the number of
// results.
class SarifReport : public CheckReport {
public:
    explicit SarifReport(const std::optional<std::string>& file = std::nullopt)
        : CheckReport(file, OperatingSystem::Stream::Output)
    {}

    bool IsForPrograms() const override { return true; }
    std::string FormatDiagnostic(
        const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt) const override;
    std::string FormatFailure(const VString& file, const std::string& message) const override;
    void Write(const CheckMessage& message) override;

private:
    void WriteEnd(const CheckSummary& summary, std::size_t omitted) override;
    void WriteStart();

    bool m_hasStarted = false;
    bool m_hasResults = false;
    std::set<DiagnosticCode> m_codes;          // of the results
    std::vector<std::string> m_notifications;  // JSON objects
};

// Returns the URI reference for a file, in ASCII: relative for a relative name.
std::string ToUriReference(const VString& file);
