// Finding the start tag of the first element without a parse.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XMLUtils.h"

// Finds the first element's start tag in a text that arrives in pieces: the first "<" that begins
// neither "<?" nor "<!", to its ">". Remembers the construct that it is in, and within a tag the
// quote, so it scans every byte once.
//
// Threads: one at a time.
class FirstTagFinder {
public:
    // Returns the tag once it is complete. Each call passes the text of the previous call with more
    // text appended. All calls together are linear in the text.
    std::optional<XmlUtils::TagRange> Find(const std::string& text);

private:
    bool BeginConstruct(const std::string& text);
    std::size_t FindTerminator(const std::string& text);
    std::size_t FindTagEnd(const std::string& text);

    std::size_t m_start = XmlUtils::npos;  // of the construct; npos between constructs
    std::size_t m_position = 0;            // everything before is scanned
    std::string_view m_terminator;         // of the construct; empty for one that ends at a ">"
    char m_quote = 0;                      // the open quote; 0 for none
};

// Returns the first element's start tag, from its "<" to its ">"; empty when there is no complete tag.
// Reads the source in runs of 512 bytes until the tag is complete, and resets it to its start in every
// case. Exceptions of the source propagate. Linear in the bytes read.
VANCOREXML_API std::string ReadFirstElementTag(InputSource& source);
