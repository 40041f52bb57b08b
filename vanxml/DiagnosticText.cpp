#include "vanxml/DiagnosticText.h"

#include <algorithm>
#include <cstdint>

#include "vanxml/ErrorLines.h"
#include "vanxml/ShownExcerpt.h"
#include "vanxml/SourceDocument.h"

namespace {

constexpr std::size_t mostAllowed = 10;

std::string Blanks(std::size_t count)
{
    return std::string(count, ' ');
}

// Returns a line behind the number of a source line.
std::string Row(const std::string& number, std::size_t width, const std::string& text, const TextStyle& style)
{
    const std::string gutter = Blanks(2 + width - number.size()) + number + " |";
    return style.Paint(TextStyle::Part::Gutter, gutter) + (text.empty() ? "" : " ") + text + "\n";
}

TextStyle::Part SeverityPart(const ParseDiagnostic& diagnostic)
{
    return IsError(diagnostic) ? TextStyle::Part::Error : TextStyle::Part::Warning;
}

std::string PaintExcerpt(const ParseDiagnostic& diagnostic, const SourceExcerpt& excerpt, const TextStyle& style)
{
    const ShownExcerpt shown = ShowExcerpt(diagnostic, excerpt);
    const std::string number = std::to_string(diagnostic.start.line);
    std::string rows;
    if (shown.before)
        rows += Row(std::to_string(diagnostic.start.line - 1), number.size(), *shown.before, style);
    rows += Row(number, number.size(), shown.line, style);
    const std::string caret = "^" + std::string(shown.markColumns - 1, '~');
    const std::string mark = style.Paint(SeverityPart(diagnostic), caret);
    return rows + Row("", number.size(), Blanks(shown.markColumn) + mark, style);
}

// Names that a reader could not tell from the list around them are quoted.
VString Quote(const VString& name)
{
    const bool isPlain = !name.IsEmpty() && !name.contains(u' ') && !name.contains(u',');
    return isPlain ? name : "'" + name + "'";
}

VString ListAllowed(const std::vector<VString>& allowed, const char* label)
{
    VString text = label;
    for (std::size_t i = 0; i < std::min(allowed.size(), mostAllowed); ++i)
        text += (i == 0 ? VString() : VString(", ")) + Quote(allowed[i]);
    if (allowed.size() > mostAllowed)
        text += " and " + VString::number(static_cast<std::uint64_t>(allowed.size() - mostAllowed)) + " more";
    return text;
}

std::string Escaped(const VString& text)
{
    return EscapeControlCharacters(text.toStdString());
}

// Returns "FILE:LINE:COLUMN:".
std::string Place(const VString& name, const ParseDiagnostic& diagnostic)
{
    std::string place = Escaped(diagnostic.sourceId.IsEmpty() ? name : diagnostic.sourceId) + ":";
    if (diagnostic.start.line != 0)
        place += std::to_string(diagnostic.start.line) + ":" + std::to_string(diagnostic.start.column) + ":";
    return place;
}

const char* SeverityName(const ParseDiagnostic& diagnostic)
{
    return IsError(diagnostic) ? "error:" : "warning:";
}

std::string FormatAll(const VString& name,
    const std::vector<ParseDiagnostic>& diagnostics,
    const std::vector<std::optional<SourceExcerpt>>& excerpts)
{
    const TextStyle style = TextStyle::ForStandardError();
    std::string lines;
    for (std::size_t i = 0; i < diagnostics.size(); ++i)
        lines += FormatDiagnostic(name, diagnostics[i], excerpts[i], style);
    return lines;
}

}  // namespace

VString DescribeNote(const ParseDiagnostic& diagnostic)
{
    VString note;
    if (diagnostic.related) {
        note = diagnostic.related->message;
        if (diagnostic.related->start.line != 0)
            note += " on line " + VString::number(diagnostic.related->start.line);
    }
    const bool isInMessage = !diagnostic.expected.IsEmpty();
    if (!diagnostic.allowed.empty() && !isInMessage) {
        const bool isAttribute = diagnostic.code == DiagnosticCode::UndeclaredAttribute;
        note += note.IsEmpty() ? "" : "; ";
        note += ListAllowed(diagnostic.allowed, isAttribute ? "further attributes: " : "allowed: ");
    }
    return note;
}

std::string FormatDiagnostic(const VString& name,
    const ParseDiagnostic& diagnostic,
    const std::optional<SourceExcerpt>& excerpt,
    const TextStyle& style)
{
    std::string lines = style.Paint(TextStyle::Part::Place, Place(name, diagnostic)) + " " +
        style.Paint(SeverityPart(diagnostic), SeverityName(diagnostic)) + " " + Escaped(diagnostic.message) + "\n";
    const bool isEmptyLine = excerpt && excerpt->line.text.empty();
    if (excerpt && !isEmptyLine)
        lines += PaintExcerpt(diagnostic, *excerpt, style);
    const VString note = DescribeNote(diagnostic);
    if (!note.IsEmpty()) {
        const std::size_t width = std::to_string(diagnostic.start.line).size();
        lines += style.Paint(TextStyle::Part::Gutter, Blanks(3 + width) + "=") + " " + Escaped(note) + "\n";
    }
    return lines;
}

std::string FormatDiagnosticLine(const VString& name, const ParseDiagnostic& diagnostic)
{
    const VString note = DescribeNote(diagnostic);
    return Place(name, diagnostic) + " " + SeverityName(diagnostic) + " " + Escaped(diagnostic.message) + " [" +
        GetDiagnosticName(diagnostic.code) + "]" + (note.IsEmpty() ? "" : " (" + Escaped(note) + ")") + "\n";
}

std::string FormatDiagnostics(
    const VString& name, const std::vector<ParseDiagnostic>& diagnostics, std::string_view text)
{
    return FormatAll(name, diagnostics, FindExcerpts(diagnostics, name, text));
}

std::string FormatDiagnostics(const std::vector<ParseDiagnostic>& diagnostics, SourceDocument& document)
{
    return FormatAll(document.Name(), diagnostics, FindExcerpts(diagnostics, document));
}
