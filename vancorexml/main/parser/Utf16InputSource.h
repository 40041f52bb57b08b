// Presents UTF-8 text in memory to Xerces as UTF-16.
#pragma once

#include <string_view>

#include <xercesc/sax/InputSource.hpp>

// Converts the text of another source to UTF-16 while Xerces reads it. Xerces decodes UTF-8 byte by
// byte, which takes about a tenth of a parse, but reads UTF-16 without decoding. The text is converted in
// pieces, so there is no second copy of the document.
//
// Use it only for text that IsWellFormed accepts. Pass other text directly to Xerces: its own decoder
// detects the encoding and reports malformed text.
//
// Ownership: refers to the bytes, which must outlive it and its streams.
//
// Threads: one at a time.
class Utf16InputSource final : public xercesc::InputSource {
public:
    // `text` is the content of `source`, in UTF-8.
    Utf16InputSource(const xercesc::InputSource& source, std::string_view text);

    // True if Xerces would read the text as UTF-8 and all bytes are well-formed UTF-8. If `source` does not set
    // the encoding, the XML declaration determines it. Returns false if the encoding remains in doubt, for
    // example because of a byte order mark: Xerces itself must decode such a text. Linear.
    static bool IsWellFormed(const xercesc::InputSource& source, std::string_view text) noexcept;

    xercesc::BinInputStream* makeStream() const override;

private:
    std::string_view m_text;
};
