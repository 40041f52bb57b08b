#include "vanxml/UnifiedDiff.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "vansys/TextHash.h"
#include "vanxml/ErrorLines.h"

namespace {

constexpr std::size_t contextLines = 3;

// A range of lines of each text.
struct Block {
    std::size_t beforeBegin;
    std::size_t beforeEnd;
    std::size_t afterBegin;
    std::size_t afterEnd;
    int depth;  // the number of blocks that contain this one

    bool IsOneSided() const { return beforeBegin == beforeEnd || afterBegin == afterEnd; }
};

// The lines of a text, each with its line end. Does not own the text.
class Lines {
public:
    explicit Lines(std::string_view text) : m_text(text)
    {
        for (std::size_t start = 0; start < text.size(); start = LineEnd(start))
            m_starts.push_back(start);
        m_starts.push_back(text.size());
    }

    std::size_t Count() const { return m_starts.size() - 1; }
    std::string_view operator[](std::size_t number) const
    {
        return m_text.substr(m_starts[number], m_starts[number + 1] - m_starts[number]);
    }

private:
    std::size_t LineEnd(std::size_t start) const
    {
        const std::size_t end = m_text.find('\n', start);
        return end == std::string_view::npos ? m_text.size() : end + 1;
    }

    std::string_view m_text;
    std::vector<std::size_t> m_starts;  // and the end of the text
};

// Numbers the distinct lines of two texts, so that lines are compared by their numbers.
class LineNumbers {
public:
    using Number = std::uint32_t;

    LineNumbers(const Lines& textBefore, const Lines& textAfter) : m_textBefore(textBefore), m_textAfter(textAfter)
    {
        std::size_t slots = 16;
        while (slots < 2 * (textBefore.Count() + textAfter.Count()))
            slots *= 2;
        m_slots.resize(slots, 0);
        before.reserve(textBefore.Count());
        for (std::size_t i = 0; i < textBefore.Count(); ++i)
            before.push_back(Intern(textBefore[i], i));
        after.reserve(textAfter.Count());
        for (std::size_t i = 0; i < textAfter.Count(); ++i)
            after.push_back(Intern(textAfter[i], textBefore.Count() + i));
        m_slots = std::vector<Number>();
    }

    std::size_t Count() const { return m_firsts.size(); }

    std::vector<Number> before;  // the number of each line
    std::vector<Number> after;

private:
    // `position` counts the lines of both texts.
    Number Intern(std::string_view line, std::size_t position)
    {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t slot = TextHash()(line) & mask;; slot = (slot + 1) & mask) {
            if (m_slots[slot] == 0) {
                m_firsts.push_back(position);
                m_slots[slot] = static_cast<Number>(m_firsts.size());
            }
            const Number number = m_slots[slot] - 1;
            if (LineAt(m_firsts[number]) == line)
                return number;
        }
    }

    std::string_view LineAt(std::size_t position) const
    {
        const std::size_t count = m_textBefore.Count();
        return position < count ? m_textBefore[position] : m_textAfter[position - count];
    }

    const Lines& m_textBefore;
    const Lines& m_textAfter;
    std::vector<std::size_t> m_firsts;  // the first position of each distinct line
    std::vector<Number> m_slots;        // a hash table: numbers plus 1, 0 for free slots
};

// The lines that differ. The other lines of both texts are equal and in the same order.
struct Differences {
    std::vector<bool> deleted;   // for each line of the text before
    std::vector<bool> inserted;  // for each line of the text after
};

// Finds the differences of two texts.
class LineMatcher {
public:
    explicit LineMatcher(const LineNumbers& numbers)
        : m_before(numbers.before),
          m_after(numbers.after),
          m_occurrences(numbers.Count()),
          m_differences{std::vector<bool>(m_before.size()), std::vector<bool>(m_after.size())}
    {}

    // Call it once.
    Differences FindDifferences()
    {
        // A list instead of a recursion, because blocks can be nested deeply.
        m_blocks.push_back({0, m_before.size(), 0, m_after.size(), 0});
        while (!m_blocks.empty()) {
            const Block block = m_blocks.back();
            m_blocks.pop_back();
            Match(block);
        }
        return std::move(m_differences);
    }

private:
    // A pair of equal lines.
    struct Anchor {
        std::size_t before;
        std::size_t after;
    };
    // The occurrences of a line in a block.
    struct Occurrences {
        std::size_t after = 0;         // the position of the last one in the text after
        std::uint8_t beforeCount = 0;  // at most 2
        std::uint8_t afterCount = 0;   // at most 2
    };

    // A level costs time linear in the size of its blocks. Texts whose lines become unique one at a time would need a
    // level for each line.
    static constexpr int mostDepth = 32;
    // The largest number of edits in a block without unique lines. The search for them costs time linear in the
    // lines of the block times this number.
    static constexpr int mostEdits = 128;

    void Match(Block block)
    {
        SkipEqualEnds(block);
        if (block.IsOneSided()) {
            MarkAll(block);
            return;
        }
        const std::vector<Anchor> anchors = block.depth < mostDepth ? FindAnchors(block) : std::vector<Anchor>();
        if (anchors.empty()) {
            if (!FindShortestEdits(block))
                MarkAll(block);
            return;
        }
        Block part = block;
        ++part.depth;
        for (const Anchor& anchor : anchors) {
            part.beforeEnd = anchor.before;
            part.afterEnd = anchor.after;
            m_blocks.push_back(part);
            part.beforeBegin = anchor.before + 1;
            part.afterBegin = anchor.after + 1;
        }
        part.beforeEnd = block.beforeEnd;
        part.afterEnd = block.afterEnd;
        m_blocks.push_back(part);
    }

    void SkipEqualEnds(Block& block) const
    {
        while (!block.IsOneSided() && m_before[block.beforeBegin] == m_after[block.afterBegin]) {
            ++block.beforeBegin;
            ++block.afterBegin;
        }
        while (!block.IsOneSided() && m_before[block.beforeEnd - 1] == m_after[block.afterEnd - 1]) {
            --block.beforeEnd;
            --block.afterEnd;
        }
    }

    void MarkAll(const Block& block)
    {
        for (std::size_t i = block.beforeBegin; i < block.beforeEnd; ++i)
            m_differences.deleted[i] = true;
        for (std::size_t i = block.afterBegin; i < block.afterEnd; ++i)
            m_differences.inserted[i] = true;
    }

    // Returns pairs of lines that are unique in both texts of the block: the longest list in which both positions grow.
    std::vector<Anchor> FindAnchors(const Block& block)
    {
        for (std::size_t i = block.beforeBegin; i < block.beforeEnd; ++i)
            m_occurrences[m_before[i]] = Occurrences();
        for (std::size_t i = block.afterBegin; i < block.afterEnd; ++i)
            m_occurrences[m_after[i]] = Occurrences();
        for (std::size_t i = block.beforeBegin; i < block.beforeEnd; ++i)
            CountUpTo2(m_occurrences[m_before[i]].beforeCount);
        for (std::size_t i = block.afterBegin; i < block.afterEnd; ++i) {
            CountUpTo2(m_occurrences[m_after[i]].afterCount);
            m_occurrences[m_after[i]].after = i;
        }
        std::vector<Anchor> unique;
        for (std::size_t i = block.beforeBegin; i < block.beforeEnd; ++i) {
            const Occurrences& line = m_occurrences[m_before[i]];
            if (line.beforeCount == 1 && line.afterCount == 1)
                unique.push_back({i, line.after});
        }
        return LongestIncreasing(unique);
    }

    static void CountUpTo2(std::uint8_t& count) { count = static_cast<std::uint8_t>(std::min(count + 1, 2)); }

    // Returns the longest subsequence in which the positions in the text after grow (patience sorting).
    static std::vector<Anchor> LongestIncreasing(const std::vector<Anchor>& anchors)
    {
        std::vector<std::size_t> ends;  // the best last anchor of a subsequence of each length
        std::vector<std::size_t> previous(anchors.size());
        for (std::size_t i = 0; i < anchors.size(); ++i) {
            const auto isBelow = [&](std::size_t end, const Anchor& anchor) {
                return anchors[end].after < anchor.after;
            };
            const auto place = std::lower_bound(ends.begin(), ends.end(), anchors[i], isBelow);
            if (place != ends.begin())
                previous[i] = *(place - 1);
            if (place == ends.end())
                ends.push_back(i);
            else
                *place = i;
        }
        std::vector<Anchor> longest(ends.size());
        std::size_t last = ends.empty() ? 0 : ends.back();
        for (std::size_t length = ends.size(); length > 0; --length) {
            longest[length - 1] = anchors[last];
            last = previous[last];
        }
        return longest;
    }

    // Finds the smallest number of deleted and inserted lines, by the greedy algorithm of Myers. Returns false if there
    // are more than mostEdits. A diagonal k holds the positions at which `before` is k lines ahead of `after`.
    bool FindShortestEdits(const Block& block)
    {
        const std::ptrdiff_t beforeSize = static_cast<std::ptrdiff_t>(block.beforeEnd - block.beforeBegin);
        const std::ptrdiff_t afterSize = static_cast<std::ptrdiff_t>(block.afterEnd - block.afterBegin);
        const auto isSame = [&](std::ptrdiff_t x, std::ptrdiff_t y) {
            return m_before[block.beforeBegin + static_cast<std::size_t>(x)] ==
                m_after[block.afterBegin + static_cast<std::size_t>(y)];
        };
        std::vector<Reach> rounds;  // the positions that are reached with 0, 1, 2, … edits
        for (int edits = 0; edits <= mostEdits; ++edits) {
            Reach& reach = rounds.emplace_back();
            for (int k = -edits; k <= edits; k += 2) {
                std::ptrdiff_t x = edits == 0 ? 0 : Step(rounds[static_cast<std::size_t>(edits) - 1], edits, k).x;
                // Positions outside of the block stay where they are: no line is compared there.
                while (x < beforeSize && x - k < afterSize && x - k >= 0 && isSame(x, x - k))
                    ++x;
                At(reach, k) = x;
                if (x >= beforeSize && x - k >= afterSize) {
                    MarkEdits(block, rounds, k);
                    return true;
                }
            }
        }
        return false;
    }

    // The furthest position in `before` on each diagonal.
    using Reach = std::array<std::ptrdiff_t, 2 * mostEdits + 1>;
    // The start of an edit's snake, and the diagonal from which the edit came.
    struct Move {
        std::ptrdiff_t x;
        int from;
    };

    static std::ptrdiff_t& At(Reach& reach, int k)
    {
        const int index = k + mostEdits;
        return reach[static_cast<std::size_t>(index)];
    }

    static Move Step(Reach& last, int edits, int k)
    {
        const bool isInsertion = k == -edits || (k != edits && At(last, k - 1) < At(last, k + 1));
        return isInsertion ? Move{At(last, k + 1), k + 1} : Move{At(last, k - 1) + 1, k - 1};
    }

    void MarkEdits(const Block& block, std::vector<Reach>& rounds, int k)
    {
        for (int edits = static_cast<int>(rounds.size()) - 1; edits > 0; --edits) {
            Reach& last = rounds[static_cast<std::size_t>(edits) - 1];
            const Move move = Step(last, edits, k);
            const std::ptrdiff_t x = At(last, move.from);
            const bool isInsertion = move.from > k;
            if (isInsertion)
                m_differences.inserted[block.afterBegin + static_cast<std::size_t>(x - move.from)] = true;
            else
                m_differences.deleted[block.beforeBegin + static_cast<std::size_t>(x)] = true;
            k = move.from;
        }
    }

    const std::vector<LineNumbers::Number>& m_before;
    const std::vector<LineNumbers::Number>& m_after;
    std::vector<Occurrences> m_occurrences;  // by the numbers of the lines
    std::vector<Block> m_blocks;             // blocks that were not matched yet
    Differences m_differences;
};

// A maximal run of lines that differ. One of the two ranges may be empty.
struct Change {
    std::size_t beforeBegin;
    std::size_t beforeEnd;
    std::size_t afterBegin;
    std::size_t afterEnd;
};

std::vector<Change> CollectChanges(const Differences& differences)
{
    const std::size_t beforeCount = differences.deleted.size();
    const std::size_t afterCount = differences.inserted.size();
    std::vector<Change> changes;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < beforeCount || j < afterCount) {
        Change change{i, i, j, j};
        while (change.beforeEnd < beforeCount && differences.deleted[change.beforeEnd])
            ++change.beforeEnd;
        while (change.afterEnd < afterCount && differences.inserted[change.afterEnd])
            ++change.afterEnd;
        i = change.beforeEnd;
        j = change.afterEnd;
        if (i > change.beforeBegin || j > change.afterBegin)
            changes.push_back(change);
        ++i;  // an equal line, or the end
        ++j;
    }
    return changes;
}

// Writes the hunks of a diff.
class HunkWriter {
public:
    // `skippedLines` is the number of lines before those of `before` and `after`.
    HunkWriter(const Lines& before, const Lines& after, std::size_t skippedLines, std::string& output)
        : m_before(before),
          m_after(after),
          m_skippedLines(skippedLines),
          m_output(output)
    {}

    void Write(const std::vector<Change>& changes)
    {
        const auto isNear = [&](std::size_t next) {
            return changes[next].beforeBegin - changes[next - 1].beforeEnd <= 2 * contextLines;
        };
        for (std::size_t first = 0; first < changes.size();) {
            std::size_t next = first + 1;
            while (next < changes.size() && isNear(next))
                ++next;
            WriteHunk(changes.data() + first, changes.data() + next);
            first = next;
        }
    }

private:
    void WriteHunk(const Change* begin, const Change* end)
    {
        const Change& first = *begin;
        const Change& last = *(end - 1);
        const std::size_t lead = std::min(contextLines, first.beforeBegin);
        const std::size_t trail = std::min(contextLines, m_before.Count() - last.beforeEnd);
        m_output += "@@ -" + DescribeRange(first.beforeBegin - lead, last.beforeEnd + trail) + " +" +
            DescribeRange(first.afterBegin - lead, last.afterEnd + trail) + " @@\n";
        std::size_t position = first.beforeBegin - lead;
        for (const Change* change = begin; change != end; ++change) {
            WriteLines(' ', m_before, position, change->beforeBegin);
            WriteLines('-', m_before, change->beforeBegin, change->beforeEnd);
            WriteLines('+', m_after, change->afterBegin, change->afterEnd);
            position = change->beforeEnd;
        }
        WriteLines(' ', m_before, position, position + trail);
    }

    // An empty range is described by the line before it.
    std::string DescribeRange(std::size_t begin, std::size_t end) const
    {
        const std::size_t line = m_skippedLines + begin + (begin == end ? 0 : 1);
        return std::to_string(line) + "," + std::to_string(end - begin);
    }

    void WriteLines(char mark, const Lines& lines, std::size_t begin, std::size_t end)
    {
        for (std::size_t i = begin; i < end; ++i) {
            m_output += mark;
            m_output += lines[i];
            if (!lines[i].ends_with('\n'))
                m_output += "\n\\ No newline at end of file\n";
        }
    }

    const Lines& m_before;
    const Lines& m_after;
    const std::size_t m_skippedLines;
    std::string& m_output;
};

// Returns the length of the equal lines at the start of both texts, in bytes, without the last `contextLines` of them,
// which the diff shows as context.
std::size_t CommonHead(std::string_view before, std::string_view after)
{
    const auto differ = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    std::size_t length = static_cast<std::size_t>(differ.first - before.begin());
    for (std::size_t lines = 0; length > 0; --length) {
        const bool isLineStart = before[length - 1] == '\n';
        if (isLineStart && lines++ == contextLines)
            break;
    }
    return length;
}

// Returns the length of the equal lines at the end of both texts, in bytes, without the first `contextLines` of them,
// which the diff shows as context.
std::size_t CommonTail(std::string_view before, std::string_view after)
{
    const auto differ = std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
    std::size_t start = before.size() - static_cast<std::size_t>(differ.first - before.rbegin());
    // The first line may be only partly equal.
    for (std::size_t lines = 0; lines <= contextLines && start < before.size(); ++lines)
        start = std::min(before.size(), before.find('\n', start)) + 1;
    return before.size() - std::min(before.size(), start);
}

bool HasNul(std::string_view text)
{
    return text.find('\0') != std::string_view::npos;
}

// Appends a tab to a name that contains blanks: `patch` then reads the name up to the tab and not only to a blank.
std::string DescribeName(std::string_view name)
{
    const std::string escaped = EscapeControlCharacters(name);
    return escaped.find(' ') == std::string::npos ? escaped : escaped + "\t";
}

}  // namespace

std::string UnifiedDiff(std::string_view name, std::string_view before, std::string_view after)
{
    if (before == after)
        return std::string();
    if (HasNul(before) || HasNul(after))
        return EscapeControlCharacters(name) + " would change; its encoding has no lines that a diff can show\n";
    const std::size_t head = CommonHead(before, after);
    const std::size_t skippedLines =
        static_cast<std::size_t>(std::count(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(head), '\n'));
    before.remove_prefix(head);
    after.remove_prefix(head);
    const std::size_t tail = CommonTail(before, after);
    before.remove_suffix(tail);
    after.remove_suffix(tail);

    const Lines linesBefore(before);
    const Lines linesAfter(after);
    const Differences differences = LineMatcher(LineNumbers(linesBefore, linesAfter)).FindDifferences();
    const std::string shownName = DescribeName(name);
    std::string output = "--- " + shownName + "\n+++ " + shownName + "\n";
    HunkWriter(linesBefore, linesAfter, skippedLines, output).Write(CollectChanges(differences));
    return output;
}
