// Messages as an HTML page.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "vanxml/CheckReport.h"

// Writes one page that needs no other file: a summary with a bar for each kind of message, and a table of the documents
// that have messages. Each message has its source lines. Without scripts, the page shows everything but the filters.
//
// All text of documents is escaped. The security policy of the page allows no script and no style but its own, and no
// request, so a document cannot change what the page does.
//
// Each row is written when it is complete, and the summary behind the last one, so the memory does not grow with the
// number of documents. The script and the style sheet move the summary to the top.
class HtmlReport : public CheckReport {
public:
    explicit HtmlReport(const std::optional<std::string>& file = std::nullopt)
        : CheckReport(file, OperatingSystem::Stream::Output)
    {}

    bool ShowsExcerpts() const override { return true; }
    bool IsForPrograms() const override { return true; }
    std::string FormatDiagnostic(
        const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt) const override;
    std::string FormatFailure(const VString& file, const std::string& message) const override;
    void Write(const CheckMessage& message) override;

private:
    struct Counts {
        std::size_t errors = 0;
        std::size_t warnings = 0;
        std::size_t failures = 0;

        std::size_t Total() const { return errors + warnings + failures; }
    };

    void WriteEnd(const CheckSummary& summary, std::size_t omitted) override;
    void WriteStart();
    void WriteRow();
    std::string FormatSummary(const CheckSummary& summary, std::size_t omitted) const;
    // Returns a bar for each kind of message, the most frequent first.
    std::string FormatBars() const;
    static std::string FormatBar(const std::string& kind, const Counts& counts, std::size_t most);

    bool m_hasStarted = false;
    std::map<std::string, Counts> m_kinds;
    std::size_t m_rows = 0;      // the number of rows that were written
    std::size_t m_unfolded = 0;  // the number of their messages that are not folded
    // The current row.
    VString m_file;
    Counts m_counts;
    std::string m_messages;
};

// Escapes text for the content and the attribute values of HTML. Control characters become visible escapes, as in
// EscapeControlCharacters.
std::string EscapeHtml(std::string_view text);
