// Maps the positions that Xerces reports to positions in the source as given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vancorexml/main/parser/SourcePosition.h"
#include "vancorexml/main/parser/XMLExport.h"

// The scanner of Xerces reads a changed document: the parser skips white space before it, and the colon
// sanitizer inserts a declaration and prefixes. This class maps the lines and columns of the scanner to
// the document as given.
//
// Lines and columns count from 1, columns in UTF-16 code units. The scanner's column is that of the next
// unit to read. A position inside an insertion maps to the position at which the text was inserted. A
// byte that is not part of a UTF-8 character counts as one unit, which is correct for encodings with one
// byte per character.
//
// Ownership: shares the text until the first position is mapped.
//
// Threads: one at a time.
class VANCOREXML_API SourceMap {
public:
    using Position = SourcePosition;
    // A range of the rewritten document that the original does not contain. It is ASCII without line ends.
    struct Insertion {
        std::size_t offset = 0;  // in bytes of the rewritten document
        std::size_t length = 0;

        friend bool operator==(const Insertion&, const Insertion&) = default;
    };

    // The scanner reads `text` from the byte `start` on. The insertions must be sorted and behind `start`.
    SourceMap(std::shared_ptr<const std::string> text, std::size_t start, std::vector<Insertion> insertions);

    // Returns the position in the document as given. A position with line 0 is unknown and is returned
    // unchanged. The first call is linear in the text up to the last insertion. Later calls are
    // logarithmic in the number of insertions.
    Position Map(Position scanned);

private:
    // An insertion, by its position in the text that the scanner reads.
    struct Shift {
        Position start;
        std::uint64_t before = 0;  // units inserted on the same line before it
        std::uint64_t length = 0;
    };

    // Computes m_skipped and m_shifts.
    void Resolve();

    // Null after Resolve.
    std::shared_ptr<const std::string> m_text;
    std::size_t m_start;
    std::vector<Insertion> m_insertions;
    Position m_skipped;  // the number of skipped lines, and of skipped columns on the line where the document begins
    std::vector<Shift> m_shifts;
};
