// UTF-8 in memory, read by Xerces as UTF-16.
#pragma once

#include <string_view>

#include <xercesc/sax/InputSource.hpp>

#include "vancorexml/main/parser/XMLExport.h"

// The text of another source, which Xerces reads as UTF-16: it takes every byte of UTF-8
// through its own decoder one by one, which costs about a tenth of a parse, and UTF-16 as it
// comes. Piece by piece, so no second copy of the document exists.
//
// Only for text that IsWellFormed: what is not is left to the decoder of Xerces, which knows
// what to say of it.
//
// Ownership: refers to the bytes, which must outlive it and its streams.
//
// Threads: one at a time.
class VANCOREXML_API Utf16InputSource final : public xercesc::InputSource {
public:
    // `text` is what `source` reads.
    Utf16InputSource(const xercesc::InputSource& source, std::string_view text);

    // Whether Xerces would read the text as UTF-8, by the encoding that `source` names or by
    // what the text itself says, and find all of it well-formed. False where that takes more
    // than a look at the XML declaration. Linear.
    static bool IsWellFormed(const xercesc::InputSource& source, std::string_view text) noexcept;

    xercesc::BinInputStream* makeStream() const override;

private:
    std::string_view m_text;
};
