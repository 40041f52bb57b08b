// From positions of the scanner to positions of the file.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"

// The scanner reads a changed document: white space before it is skipped, and a declaration and
// prefixes are inserted if attribute names begin with a colon. This class maps the scanner's
// lines and columns back to the original text.
//
// Ownership: keeps none of the texts. A value; any number of threads may ask it.
//
// Lines and columns count from 1, columns in UTF-16 code units, and a column is that of the
// next unit, as the scanner has it. A position inside something inserted is the place where
// it was inserted.
class SourcePositions {
public:
    struct Position {
        long long line = 0;
        long long column = 0;

        friend bool operator==(const Position&, const Position&) = default;
    };

    // All three texts are UTF-8: the skipped white space, the original text after it, and the text
    // that the scanner reads in its place. Linear.
    SourcePositions(std::string_view skipped, std::string_view given, std::string_view scanned);

    // Logarithmic in the number of insertions.
    Position Map(Position scanned) const;

    // Returns the message with its position mapped. Returns messages that have no position, or
    // are not about the document `id`, unchanged.
    VString MapMessage(const VString& message, const VString& id) const;

private:
    // An insertion: text that the scanner reads but the original text does not have.
    struct Insertion {
        Position start;        // in what the scanner reads
        long long length = 0;  // in UTF-16 code units, without line ends
        long long before = 0;  // units inserted on the same line before it
    };

    void FindInsertions(std::string_view given, std::string_view scanned);
    void Insert(Position start, long long length);

    long long m_skippedLines = 0;
    long long m_skippedColumns = 0;  // on the last line of the skipped white space
    std::vector<Insertion> m_insertions;
};
