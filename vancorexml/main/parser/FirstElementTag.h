// Finding the start tag of the first element without a parse.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XMLUtils.h"

// Finds the first element's start tag in a text that arrives in pieces. The tag begins at the first "<"
// that begins neither "<?" nor "<!" and ends at its ">". The finder stores the state of its scan, so it
// scans every byte once.
//
// Threads: one at a time.
class FirstTagFinder {
public:
    // Returns the tag if it is complete, otherwise no value. Pass the text of the previous call with more
    // text appended. All calls together are linear in the text.
    std::optional<XmlUtils::TagRange> Find(const std::string& text);

private:
    bool BeginConstruct(const std::string& text);
    std::size_t FindTerminator(const std::string& text);
    std::size_t FindTagEnd(const std::string& text);

    std::size_t m_start = XmlUtils::npos;  // the start of the current construct; npos between constructs
    std::size_t m_position = 0;            // the end of the scanned text
    // The text that ends the current construct, such as "-->". Empty if a ">" outside of quotes ends it.
    std::string_view m_terminator;
    char m_quote = 0;  // the open quote; 0 for none
};

// Returns the first element's start tag, from its "<" to its ">", or an empty text if there is no complete
// tag. Reads the source in runs of 512 bytes until the tag is complete. Always resets the source to its
// start. Exceptions of the source propagate. Linear in the bytes read.
VANCOREXML_API std::string ReadFirstElementTag(InputSource& source);
