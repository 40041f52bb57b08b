// From positions of the scanner to positions of the file.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"

// The scanner does not read a document quite as it stands: white space before it is skipped,
// and where attribute names begin with a colon a declaration and prefixes are inserted. This
// takes the scanner's lines and columns back to the text as it was given.
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

    // All three are UTF-8: the white space that was skipped, what follows it in the text as
    // given, and what the scanner reads in place of that. Linear.
    SourcePositions(std::string_view skipped, std::string_view given, std::string_view scanned);

    // Logarithmic in the number of insertions.
    Position Map(Position scanned) const;

    // The message with the position that the driver wrote into it mapped, and all else as it
    // is. Messages that do not speak of the document `id`, or have no position, come back
    // unchanged.
    VString MapMessage(const VString& message, const VString& id) const;

private:
    // Something that the scanner reads and the text lacks.
    struct Insertion {
        Position start;            // in what the scanner reads
        long long length = 0;      // in UTF-16 code units, without line ends
        long long before = 0;      // units inserted on the same line before it
    };

    void FindInsertions(std::string_view given, std::string_view scanned);
    void Insert(Position start, long long length);

    long long m_skippedLines = 0;
    long long m_skippedColumns = 0;   // on the last line of the skipped white space
    std::vector<Insertion> m_insertions;
};
