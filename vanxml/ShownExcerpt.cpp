#include "vanxml/ShownExcerpt.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "vanxml/DisplayText.h"

namespace {

// The longest part of a source line that is shown, in columns. The start of the line is part of it if the place is in
// front of the column `mostBefore`; otherwise, `columnsBefore` columns are in front of the place.
constexpr int mostColumns = 100;
constexpr int mostBefore = 80;
constexpr int columnsBefore = 30;

constexpr std::string_view ellipsis = "…";

// The part of a line that is marked, in columns.
struct Mark {
    int from;
    int to;
};

struct ShownText {
    std::string text;
    int shift = 0;              // the number of columns that the text is to the right of its place in the line
    std::size_t markStart = 0;  // the marked bytes of `text`
    std::size_t markEnd = 0;
};

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

    // Returns the columns from `left` on, with an ellipsis at each cut.
    ShownText Show(int left, Mark mark) const
    {
        ShownText shown;
        int first = m_width;
        int behind = left;
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            const int end = m_starts[i] + m_cells[i].width;
            const bool isMarkOfHiddenCell =
                m_cells[i].width == 0 && m_starts[i] == left && left > 0 && shown.text.empty();
            if (m_starts[i] < left || end > left + mostColumns || isMarkOfHiddenCell)
                continue;
            first = std::min(first, m_starts[i]);
            behind = end;
            // A combining mark belongs to the character in front of it.
            const int column = m_cells[i].width == 0 ? m_starts[i] - 1 : m_starts[i];
            if (column < mark.from)
                shown.markStart += m_cells[i].text.size();
            if (column < mark.to)
                shown.markEnd += m_cells[i].text.size();
            shown.text += m_cells[i].text;
        }
        shown.shift = -first;
        if (left > 0 || m_isCutBefore) {
            shown.text.insert(0, ellipsis);
            shown.markStart += ellipsis.size();
            shown.markEnd += ellipsis.size();
            ++shown.shift;
        }
        if (behind < m_width || m_isCutBehind)
            shown.text += ellipsis;
        return shown;
    }

private:
    std::vector<DisplayCell> m_cells;
    std::vector<int> m_starts;
    int m_width = 0;
    bool m_isCutBefore;
    bool m_isCutBehind;
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

}  // namespace

ShownExcerpt ShowExcerpt(const ParseDiagnostic& diagnostic, const SourceExcerpt& excerpt)
{
    ShownExcerpt result;
    const ShownLine line(excerpt.line);
    Mark mark = FindMark(line, diagnostic.start, diagnostic.end);
    const int left = line.FindLeft(mark.from);
    if (excerpt.before) {
        const ShownLine before(*excerpt.before);
        if (!before.IsBlank() && before.Width() > left)
            result.before = before.Show(left, {0, 0}).text;
    }
    mark.to = std::max(mark.from + 1, std::min(mark.to, left + mostColumns));
    ShownText shown = line.Show(left, mark);
    result.line = std::move(shown.text);
    result.markStart = shown.markStart;
    result.markEnd = shown.markEnd;
    result.markColumn = static_cast<std::size_t>(std::max(0, mark.from + shown.shift));
    result.markColumns = static_cast<std::size_t>(mark.to - mark.from);
    return result;
}
