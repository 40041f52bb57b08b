// The lines of a source that messages show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/SourcePosition.h"

class SourceDocument;

// A part of a line.
struct LinePart {
    std::string text;               // UTF-8 without its line end. Bytes that are not UTF-8 stay
    std::uint64_t firstColumn = 1;  // of the first character of `text`, in UTF-16 code units
    bool isContinued = false;       // true if the line goes on behind `text`
};

// The surroundings of a place.
struct SourceExcerpt {
    LinePart line;
    std::optional<LinePart> before;  // the same columns of the line before; empty if that line has none of them
};

// Finds the surroundings of places in a text that it reads once, in chunks. A line ends at a line feed, a carriage
// return, or both. Columns count in UTF-16 code units; a byte that is not UTF-8 counts as one. A byte order mark at the
// start is skipped.
//
// Cost: linear in the text and the excerpts, also if all places are on one line. Memory: at most 200 code units of a
// line for each place, and as many of the line before.
//
// Threads: one at a time.
//
//     SourceLines lines({{10, 5}});
//     lines.Add(text);
//     const std::vector<std::optional<SourceExcerpt>> excerpts = lines.Finish();
class SourceLines {
public:
    // The text begins at the position `start` of the source. Blanks stand for the text before it.
    explicit SourceLines(const std::vector<SourcePosition>& places, SourcePosition start = {1, 1});

    // Reads the next bytes of the text.
    void Add(std::string_view bytes);
    // True if the rest of the text is not needed.
    bool IsComplete() const noexcept { return m_next == m_parts.size() && m_open.empty(); }
    // Returns one excerpt for each place, in their order; empty if the text does not have that line. Call it once.
    std::vector<std::optional<SourceExcerpt>> Finish();

private:
    // A part to find: the characters from the column `from` to before the column `to`.
    struct Part {
        std::uint64_t line;
        std::uint64_t from;
        std::uint64_t to;
        std::size_t place;
        bool isBefore;
        LinePart found;
        bool hasLine = false;
    };

    void AddCharacter(std::string_view bytes, unsigned units);
    void EndLine();
    void CloseParts();
    // Returns the number of bytes that were read: all, unless the last character may be incomplete.
    std::size_t ReadCharacters(std::string_view bytes, bool isLast);

    std::size_t m_count;
    std::vector<Part> m_parts;        // sorted by line and column
    std::size_t m_next = 0;           // the first part that is not reached yet
    std::vector<std::size_t> m_open;  // the parts that contain the next character
    std::uint64_t m_line = 1;
    std::uint64_t m_column = 1;
    bool m_isBehindCarriageReturn = false;
    bool m_mayHaveMark = true;
    std::string m_rest;  // the bytes of an incomplete character
};

// Returns an excerpt for each diagnostic: empty if its position is unknown, or if it is about another source than
// `name`. `text` is UTF-8.
std::vector<std::optional<SourceExcerpt>> FindExcerpts(
    const std::vector<ParseDiagnostic>& diagnostics, const VString& name, std::string_view text);
// The same for the diagnostics of a document. Resets its source to the start and reads it.
std::vector<std::optional<SourceExcerpt>> FindExcerpts(
    const std::vector<ParseDiagnostic>& diagnostics, SourceDocument& document);
