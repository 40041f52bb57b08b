// UTF-8 in memory, read by Xerces as UTF-16.
#pragma once

#include <string_view>

#include <xercesc/sax/InputSource.hpp>

#include "vancorexml/main/parser/XMLExport.h"

// Gives Xerces the text of another source as UTF-16. Xerces decodes UTF-8 byte by byte, which
// costs about a tenth of a parse, but reads UTF-16 without decoding. The text is converted piece
// by piece, so no second copy of the document exists.
//
// Only for text that IsWellFormed accepts: malformed text goes to Xerces' own decoder, whose
// error messages are kept.
//
// Ownership: refers to the bytes, which must outlive it and its streams.
//
// Threads: one at a time.
class VANCOREXML_API Utf16InputSource final : public xercesc::InputSource {
public:
    // `text` is what `source` reads.
    Utf16InputSource(const xercesc::InputSource& source, std::string_view text);

    // Whether Xerces would read the text as UTF-8, by the encoding that `source` names or by
    // what the text itself says, and find all of it well-formed. False when finding the encoding
    // takes more than a look at the XML declaration. Linear.
    static bool IsWellFormed(const xercesc::InputSource& source, std::string_view text) noexcept;

    xercesc::BinInputStream* makeStream() const override;

private:
    std::string_view m_text;
};
