// The escaping of the XML writers.
#pragma once

#include <array>
#include <cstdint>

#include "vancoreplatform/VString.h"

namespace XMLEscaping {

// The replacement of each code unit from 0 to 0x3E; empty for a unit that is not replaced.
using MappingTable = std::array<VString, 63>;

// The kinds of tables.
enum MappingKind : int {
    AttributeMapping = 0,
    ContentMapping = 1,     // tabs and line feeds stay
    ApostropheMapping = 2,  // apostrophes and quotes stay
};

// Fills the table. Raises a LogicException when there is no such kind.
void InitMappingTableType(MappingTable& table, int kind);

// A table with a mask of the units that it replaces, which a scan can test quickly.
class EscapeTable {
public:
    explicit EscapeTable(int kind);

    bool Maps(char16_t unit) const noexcept { return unit < m_entries.size() && ((m_mapped >> unit) & 1) != 0; }
    // Unchecked: Maps(unit).
    const VString& operator[](char16_t unit) const noexcept { return m_entries[unit]; }

private:
    MappingTable m_entries;
    std::uint64_t m_mapped = 0;
};

// The tables in use, made on first use. Threads: any.
const EscapeTable& AttributeTable();
const EscapeTable& ContentTable();

// Escapes the units that the table maps and those that XML does not allow. Returns the same
// shared string when there are none. Well-formed surrogate pairs stay unchanged. Throws
// std::length_error when the result is too long for a VString.
VString EncodeWithTable(const VString& text, const EscapeTable& table);

// The same with another test of single units above 0x80. Calls the test in two passes, and raises
// a LogicException when its answers differ between them.
VString EncodeWithTable(const VString& text, const EscapeTable& table, bool (*isValid)(char16_t));

// The text as a CDATA section; the quotes of a quoted text stay outside of it.
VString EncodeAsCData(const VString& text);

}  // namespace XMLEscaping
