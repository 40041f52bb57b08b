#include "vanxml/HtmlReport.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "vanxml/CheckSummary.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/DocumentChecker.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/HtmlPage.h"
#include "vanxml/ShownExcerpt.h"

namespace {

constexpr const char* failureKind = "not-checked";

// Once the shown messages are so many, the messages of further documents are folded.
constexpr std::size_t mostUnfolded = 1000;

constexpr std::size_t barLength = 1000;
constexpr std::size_t shortestBar = 5;  // so that it is visible

std::string Escape(const VString& text)
{
    return EscapeHtml(text.toStdString());
}

// Returns the source expression of a security policy that allows the inline text.
std::string PolicyHash(const char* text)
{
    const QByteArray hash = QCryptographicHash::hash(QByteArray(text), QCryptographicHash::Sha256);
    return "'sha256-" + hash.toBase64().toStdString() + "'";
}

std::string Span(const char* name, const std::string& content)
{
    return std::string("<span class=\"") + name + "\">" + content + "</span>";
}

std::string FormatLine(const std::string& number, const std::string& content)
{
    return "<div class=\"line\">" + Span("number", number) + "<code>" + content + "</code></div>";
}

// Returns the source lines with the marked place.
std::string FormatExcerpt(const ParseDiagnostic& diagnostic, const SourceExcerpt& excerpt)
{
    const ShownExcerpt shown = ShowExcerpt(diagnostic, excerpt);
    std::string lines;
    if (shown.before)
        lines += FormatLine(std::to_string(diagnostic.start.line - 1), EscapeHtml(*shown.before));
    const std::string_view line = shown.line;
    const std::string marked = EscapeHtml(line.substr(shown.markStart, shown.markEnd - shown.markStart));
    lines += FormatLine(std::to_string(diagnostic.start.line),
        EscapeHtml(line.substr(0, shown.markStart)) + "<mark>" + (marked.empty() ? " " : marked) + "</mark>" +
            EscapeHtml(line.substr(shown.markEnd)));
    return "<div class=\"source\">" + lines + "</div>";
}

std::string FormatMessage(const std::string& severity,
    const std::string& kind,
    const std::string& place,
    const std::string& text,
    const std::string& details)
{
    return "<li class=\"" + severity + "\" data-kind=\"" + kind + "\"><p>" +
        (place.empty() ? std::string() : Span("place", EscapeHtml(place)) + " ") + "<strong>" +
        (kind == failureKind ? "not checked" : severity) + "</strong> " + Span("text", EscapeHtml(text)) +
        (kind == failureKind ? std::string() : " <code class=\"kind\">" + kind + "</code>") + "</p>" + details +
        "</li>\n";
}

std::string Cell(std::size_t count)
{
    return "<td>" + (count == 0 ? std::string() : CheckSummary::FormatNumber(count)) + "</td>";
}

}  // namespace

std::string EscapeHtml(std::string_view text)
{
    std::string escaped;
    for (const char character : EscapeControlCharacters(text)) {
        switch (character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&#39;"; break;
        default: escaped += character;
        }
    }
    return escaped;
}

std::string HtmlReport::FormatDiagnostic(
    const ParseDiagnostic& diagnostic, const std::optional<SourceExcerpt>& excerpt) const
{
    std::string place;
    if (diagnostic.start.line != 0)
        place = std::to_string(diagnostic.start.line) + ":" + std::to_string(diagnostic.start.column);
    std::string details;
    if (excerpt && !excerpt->line.text.empty())
        details += FormatExcerpt(diagnostic, *excerpt);
    if (const VString note = DescribeNote(diagnostic); !note.IsEmpty())
        details += "<p class=\"note\">" + Escape(note) + "</p>";
    if (!diagnostic.path.IsEmpty()) {
        const VString attribute = diagnostic.attribute.IsEmpty() ? VString() : "/@" + diagnostic.attribute;
        details += "<p class=\"path\">" + Escape(diagnostic.path + attribute) + "</p>";
    }
    return FormatMessage(IsError(diagnostic) ? "error" : "warning",
        GetDiagnosticName(diagnostic.code),
        place,
        diagnostic.message.toStdString(),
        details);
}

std::string HtmlReport::FormatFailure(const VString& /*file*/, const std::string& message) const
{
    return FormatMessage("failure", failureKind, std::string(), message, std::string());
}

void HtmlReport::Write(const CheckMessage& message)
{
    WriteStart();
    if (message.file != m_file)
        WriteRow();
    m_file = message.file;
    m_messages += message.text;
    Counts& kind = m_kinds[message.code ? GetDiagnosticName(*message.code) : failureKind];
    if (!message.code) {
        ++kind.failures;
        ++m_counts.failures;
    } else if (message.isWarning) {
        ++kind.warnings;
        ++m_counts.warnings;
    } else {
        ++kind.errors;
        ++m_counts.errors;
    }
}

void HtmlReport::WriteStart()
{
    if (m_hasStarted)
        return;
    m_hasStarted = true;
    const std::string policy = std::string("default-src 'none'; base-uri 'none'; form-action 'none'; style-src ") +
        PolicyHash(HtmlPage::Style) + " " + PolicyHash(HtmlPage::StyleWithoutScript) + "; script-src " +
        PolicyHash(HtmlPage::Script);
    WriteBytes(std::string(HtmlPage::Start) + "<meta http-equiv=\"Content-Security-Policy\" content=\"" + policy +
        "\">\n<meta name=\"viewport\" content=\"width=device-width\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n<meta name=\"generator\" content=\"vanxml " VANXML_VERSION
        "\">\n<title>Report of vanxml check</title>\n<style>" +
        HtmlPage::Style + "</style>\n<noscript><style>" + HtmlPage::StyleWithoutScript +
        "</style></noscript>\n</head>\n<body>\n<main>\n<h1>Report of <code>vanxml check</code></h1>\n");
}

void HtmlReport::WriteRow()
{
    if (m_messages.empty())
        return;
    if (m_rows == 0)
        WriteBytes(HtmlPage::TableStart);
    const std::string id = "f" + std::to_string(++m_rows);
    const std::string name = m_file.IsEmpty() ? std::string("(command line)") : Escape(m_file);
    const std::string errors =
        m_counts.errors == 0 && m_counts.failures > 0 ? std::string("<td>not checked</td>") : Cell(m_counts.errors);
    const bool isFolded = m_unfolded >= mostUnfolded;
    if (!isFolded)
        m_unfolded += m_counts.Total();
    WriteBytes("<tbody>\n<tr class=\"name\"><th scope=\"row\"><button type=\"button\" aria-expanded=\"" +
        std::string(isFolded ? "false" : "true") + "\" aria-controls=\"" + id + "\">" + name + "</button></th>" +
        errors + Cell(m_counts.warnings) + "</tr>\n<tr class=\"messages\" id=\"" + id + "\"" +
        (isFolded ? " hidden" : "") + "><td colspan=\"3\"><ul>\n" + m_messages + "</ul></td></tr>\n</tbody>\n");
    m_messages.clear();
    m_counts = Counts();
}

void HtmlReport::WriteEnd(const CheckSummary& summary, std::size_t omitted)
{
    WriteStart();
    WriteRow();
    const std::string tableEnd = m_rows == 0 ? std::string() : "</table>\n</section>\n";
    WriteBytes(tableEnd + FormatSummary(summary, omitted) + "</main>\n<script>" + HtmlPage::Script +
        "</script>\n</body>\n</html>\n");
}

std::string HtmlReport::FormatSummary(const CheckSummary& summary, std::size_t omitted) const
{
    const auto item = [](const char* name, std::size_t count, const char* one, const char* many) {
        return std::string("<li class=\"") + name + "\"><b>" + CheckSummary::FormatNumber(count) + "</b> " +
            (count == 1 ? one : many) + "</li>\n";
    };
    std::string text = "<section id=\"summary\" aria-labelledby=\"summary-title\">\n"
                       "<h2 id=\"summary-title\">Summary</h2>\n<ul class=\"counts\">\n" +
        item("documents", summary.documents, "document", "documents") +
        item(summary.errors > 0 ? "error" : "good", summary.errors, "error", "errors");
    if (summary.warnings > 0)
        text += item("warning", summary.warnings, "warning", "warnings");
    if (summary.unchecked > 0)
        text += item("failure", summary.unchecked, "not checked", "not checked");
    text += "</ul>\n";
    if (m_kinds.empty() && omitted == 0)
        text += "<p>No document has an error or a warning.</p>\n";
    if (!m_kinds.empty())
        text += FormatBars();
    if (omitted > 0)
        text += "<p>" + CheckSummary::FormatOmitted(omitted) + ".</p>\n";
    return text + "</section>\n";
}

std::string HtmlReport::FormatBars() const
{
    std::vector<std::pair<std::string, Counts>> kinds(m_kinds.begin(), m_kinds.end());
    std::stable_sort(
        kinds.begin(), kinds.end(), [](const auto& a, const auto& b) { return a.second.Total() > b.second.Total(); });
    const std::size_t most = kinds.front().second.Total();
    std::string text = "<h3>Kinds of messages</h3>\n<ul class=\"bars\">\n";
    for (const auto& [kind, counts] : kinds)
        text += FormatBar(kind, counts, most);
    return text + "</ul>\n";
}

std::string HtmlReport::FormatBar(const std::string& kind, const Counts& counts, std::size_t most)
{
    // The parts fill the bar, and each is visible. The last one takes the rest.
    const std::size_t total = counts.Total();
    std::size_t parts = std::min<std::size_t>(counts.errors, 1) + std::min<std::size_t>(counts.warnings, 1) +
        std::min<std::size_t>(counts.failures, 1);
    const std::size_t length = std::max(total * barLength / most, parts * shortestBar);
    std::string bar;
    std::size_t start = 0;
    const auto add = [&](const char* name, std::size_t count) {
        if (count == 0)
            return;
        --parts;
        const std::size_t longest = length - start - parts * shortestBar;
        const std::size_t width = parts == 0 ? longest : std::clamp(count * length / total, shortestBar, longest);
        bar += std::string("<rect class=\"") + name + "\" x=\"" + std::to_string(start) + "\" width=\"" +
            std::to_string(width) + "\" height=\"1\"/>";
        start += width;
    };
    add("error", counts.errors);
    add("warning", counts.warnings);
    add("failure", counts.failures);
    return "<li><button type=\"button\" aria-pressed=\"false\" data-kind=\"" + kind + "\">" +
        Span("label", kind == failureKind ? "not checked" : kind) + "<svg viewBox=\"0 0 " + std::to_string(barLength) +
        " 1\" preserveAspectRatio=\"none\" aria-hidden=\"true\">" + bar + "</svg>" +
        Span("count", CheckSummary::FormatNumber(counts.Total())) + "</button></li>\n";
}
