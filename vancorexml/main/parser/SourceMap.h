// From positions of the scanner to positions in the source as given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vancorexml/main/parser/XMLExport.h"

// The scanner reads a changed document: white space before it is skipped, and the colon sanitizer
// inserts a declaration and prefixes. This class maps the scanner's lines and columns back to the
// document as given.
//
// Lines and columns count from 1, columns in UTF-16 code units. The column of a scanner is that of the
// next unit. A position inside an insertion becomes the place where it was inserted. A byte that
// is no part of a UTF-8 character counts as one unit: right for encodings of one byte a character.
//
// Ownership: shares the text until the first position is mapped.
//
// Threads: one at a time.
class VANCOREXML_API SourceMap {
public:
    struct Position {
        std::uint64_t line = 0;
        std::uint64_t column = 0;

        friend bool operator==(const Position&, const Position&) = default;
    };
    // Text of the rewritten document that the original does not have. All insertions are ASCII without
    // line ends.
    struct Insertion {
        std::size_t offset = 0;  // in bytes of the rewritten document
        std::size_t length = 0;

        friend bool operator==(const Insertion&, const Insertion&) = default;
    };

    // The scanner reads `text` from the byte `start` on. The insertions are sorted and lie behind `start`.
    SourceMap(std::shared_ptr<const std::string> text, std::size_t start, std::vector<Insertion> insertions);

    // A position whose line is 0 is unknown and stays so. The first call is linear in the text up to
    // the last insertion, each other logarithmic in the number of insertions.
    Position Map(Position scanned);

private:
    // An insertion as a position of the scanner.
    struct Shift {
        Position start;
        std::uint64_t before = 0;  // units inserted on the same line before it
        std::uint64_t length = 0;
    };

    void Resolve();

    // Null once the shifts are known.
    std::shared_ptr<const std::string> m_text;
    std::size_t m_start;
    std::vector<Insertion> m_insertions;
    Position m_skipped;  // lines, and columns on the last of them
    std::vector<Shift> m_shifts;
};
