// Where the "<!" constructs of a text lie.
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

// The "<!" constructs of a UTF-8 text, in order and without overlap. One without its end
// reaches to the end of the text.
//
// Ownership: a value; it keeps positions, not the text. Threads: one at a time, because a
// lookup moves a cursor.
class VANCOREXML_API XMLRangeTable {
public:
    // No ranges.
    XMLRangeTable();
    // Linear in the text.
    explicit XMLRangeTable(const std::string& text);
    // Raises a LogicException when `other` was moved from.
    XMLRangeTable(const XMLRangeTable& other);
    XMLRangeTable& operator=(const XMLRangeTable& other);
    XMLRangeTable(XMLRangeTable&& other) noexcept;
    XMLRangeTable& operator=(XMLRangeTable&& other) noexcept;
    ~XMLRangeTable();

    // The type of the range that holds the byte at `pos`, and one past its end; without a
    // range `rangeEnd` stays as it is. Positions must not decrease from call to call: a
    // LogicException otherwise. Calls are linear over a whole scan.
    XMLRangeType GetRangeTypeAt(std::size_t pos, std::size_t& rangeEnd);

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
