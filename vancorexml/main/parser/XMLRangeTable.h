// The positions of the "<!" constructs in a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "vancorexml/main/parser/XMLExport.h"

enum XMLRangeType : std::uint32_t {
    XMLRangeTypeCData = 0,        // "<![CDATA[" to "]]>"
    XMLRangeTypeComment = 1,      // "<!--" to "-->"
    XMLRangeTypeDeclaration = 2,  // any other "<!" to ">"
    XMLRangeTypeNone = 0xFFFFFFFF,
};

// The "<!" constructs of a UTF-8 text, in order and without overlap. A construct that is not closed
// extends to the end of the text.
//
// Ownership: a value. It stores positions and does not refer to the text.
//
// Threads: one at a time, because a lookup moves a cursor.
class VANCOREXML_API XMLRangeTable {
public:
    // Makes a table without ranges.
    XMLRangeTable();
    // Linear in the text.
    explicit XMLRangeTable(const std::string& text);
    // Raises a LogicException if `other` was moved from.
    XMLRangeTable(const XMLRangeTable& other);
    XMLRangeTable& operator=(const XMLRangeTable& other);
    XMLRangeTable(XMLRangeTable&& other) noexcept;
    XMLRangeTable& operator=(XMLRangeTable&& other) noexcept;
    ~XMLRangeTable();

    // Returns the type of the range that contains the byte at `pos`, and sets `rangeEnd` to one past its
    // end. Without such a range, returns XMLRangeTypeNone and leaves `rangeEnd` unchanged. Raises a
    // LogicException if `pos` is lower than in the previous call. All calls together are linear in the
    // number of ranges.
    XMLRangeType GetRangeTypeAt(std::size_t pos, std::size_t& rangeEnd);

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
