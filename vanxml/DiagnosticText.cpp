#include "vanxml/DiagnosticText.h"

#include <algorithm>
#include <cstdint>

#include "vanxml/DisplayText.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/SourceDocument.h"

namespace {

// The longest part of a source line that is shown, in columns. The start of the line is part of it if the place is in
// front of the column `mostBefore`; otherwise, `columnsBefore` columns are in front of the place.
constexpr int mostColumns = 100;
constexpr int mostBefore = 80;
constexpr int columnsBefore = 30;

constexpr std::size_t mostAllowed = 10;

// A line that is shown, as cells with the columns in which they begin.
class ShownLine {
public:
    explicit ShownLine(const LinePart& part)
        : m_cells(SplitIntoCells(part.text, part.firstColumn)),
          m_isCutBefore(part.firstColumn > 1),
          m_isCutBehind(part.isContinued)
    {
        for (const DisplayCell& cell : m_cells) {
            m_starts.push_back(m_width);
            m_width += cell.width;
        }
    }

    int Width() const { return m_width; }
    bool IsBlank() const
    {
        return std::all_of(m_cells.begin(), m_cells.end(), [](const DisplayCell& cell) {
            return cell.text.find_first_not_of(' ') == std::string::npos;
        });
    }

    // Returns the first column from which the line is shown so that the column `place` is visible.
    int FindLeft(int place) const
    {
        const bool showsStart = !m_isCutBefore && (m_width <= mostColumns || place < mostBefore);
        return showsStart ? 0 : std::max(0, std::min(place - columnsBefore, m_width - mostColumns));
    }

    // Returns the column of the cell that contains a column of the source; the width if the cell is behind the line.
    int FindCell(std::uint64_t sourceColumn) const
    {
        const auto behind = std::upper_bound(
            m_cells.begin(), m_cells.end(), sourceColumn, [](std::uint64_t column, const DisplayCell& cell) {
                return column < cell.column;
            });
        if (behind == m_cells.begin())
            return 0;
        const DisplayCell& cell = *(behind - 1);
        const bool isInLine = m_isCutBehind || sourceColumn < cell.column + cell.units;
        return isInLine ? m_starts[static_cast<std::size_t>(behind - m_cells.begin() - 1)] : m_width;
    }

    // Returns the columns from `left` on, with an ellipsis at each cut. Sets `shift` to the number of columns that the
    // shown text is to the right of its place in the line.
    std::string Show(int left, int& shift) const
    {
        std::string text;
        int first = m_width;
        int behind = left;
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            const int end = m_starts[i] + m_cells[i].width;
            const bool isMarkOfHiddenCell = m_cells[i].width == 0 && m_starts[i] == left && left > 0 && text.empty();
            if (m_starts[i] < left || end > left + mostColumns || isMarkOfHiddenCell)
                continue;
            first = std::min(first, m_starts[i]);
            behind = end;
            text += m_cells[i].text;
        }
        shift = -first;
        if (left > 0 || m_isCutBefore) {
            text.insert(0, "…");
            ++shift;
        }
        if (behind < m_width || m_isCutBehind)
            text += "…";
        return text;
    }

private:
    std::vector<DisplayCell> m_cells;
    std::vector<int> m_starts;
    int m_width = 0;
    bool m_isCutBefore;
    bool m_isCutBehind;
};

// The part of a line that is marked, in columns.
struct Mark {
    int from;
    int to;
};

Mark FindMark(const ShownLine& line, SourcePosition start, SourcePosition end)
{
    Mark mark;
    mark.from = line.FindCell(start.column);
    mark.to = mark.from + 1;
    if (end.line > start.line)
        mark.to = std::max(mark.to, line.Width());
    else if (end.line == start.line && end.column > start.column)
        mark.to = std::max(mark.to, line.FindCell(end.column));
    return mark;
}

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

std::string ShowExcerpt(const ParseDiagnostic& diagnostic, const SourceExcerpt& excerpt, const TextStyle& style)
{
    const std::string number = std::to_string(diagnostic.start.line);
    const ShownLine line(excerpt.line);
    Mark mark = FindMark(line, diagnostic.start, diagnostic.end);
    const int left = line.FindLeft(mark.from);
    int shift = 0;
    std::string rows;
    if (excerpt.before) {
        const ShownLine before(*excerpt.before);
        if (!before.IsBlank() && before.Width() > left) {
            const std::string text = before.Show(left, shift);
            rows += Row(std::to_string(diagnostic.start.line - 1), number.size(), text, style);
        }
    }
    rows += Row(number, number.size(), line.Show(left, shift), style);
    mark.to = std::max(mark.from + 1, std::min(mark.to, left + mostColumns));
    const std::string caret = "^" + std::string(static_cast<std::size_t>(mark.to - mark.from - 1), '~');
    return rows +
        Row("",
            number.size(),
            Blanks(static_cast<std::size_t>(std::max(0, mark.from + shift))) +
                style.Paint(SeverityPart(diagnostic), caret),
            style);
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
        lines += ShowExcerpt(diagnostic, *excerpt, style);
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
