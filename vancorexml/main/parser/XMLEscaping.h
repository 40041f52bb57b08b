// The escaping of the XML writers.
#pragma once

#include <array>
#include <cstddef>
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

// Fills the table. Raises a LogicException if `kind` is not a MappingKind.
void InitMappingTableType(MappingTable& table, int kind);

// A table with a bit mask of the units that it replaces, so that a scan can test a unit quickly.
class EscapeTable {
public:
    explicit EscapeTable(int kind);

    bool Maps(char16_t unit) const noexcept { return unit < m_entries.size() && ((m_mapped >> unit) & 1) != 0; }
    // Returns the replacement of a unit. Precondition, not checked: Maps(unit).
    const VString& operator[](char16_t unit) const noexcept { return m_entries[unit]; }

private:
    MappingTable m_entries;
    std::uint64_t m_mapped = 0;
};

// The tables that the writers use. The first call makes the table. Thread-safe.
const EscapeTable& AttributeTable();
const EscapeTable& ContentTable();

// Escapes each code unit for which the table has a replacement or which XML does not allow. Returns the same shared
// string if there is nothing to escape. Well-formed surrogate pairs stay unchanged. Throws
// std::length_error if the result is too long for a VString. Linear.
VString EncodeWithTable(const VString& text, const EscapeTable& table);

// Like the overload above, but `isValid` decides which units above 0x80 XML allows. Calls `isValid` in
// two passes. Raises a LogicException if the second pass needs another length than the first.
VString EncodeWithTable(const VString& text, const EscapeTable& table, bool (*isValid)(char16_t));

// Content of at least 32 code units keeps its tabs and line feeds, or becomes a CDATA section if it contains "<".
// Shorter content is escaped like an attribute value.
inline bool IsLongContent(const VString& text) noexcept
{
    return text.length() >= 32;
}

// Writes the escape of a unit that XML does not allow: at most 7 units. Returns their number.
std::size_t WriteNumericEscape(char16_t unit, char16_t* out) noexcept;

// Returns what a comment contains between "<!--" and "-->": the text with a blank on both sides and no "--". Linear.
VString EncodeComment(const VString& text);

// Returns the text as a CDATA section. Divides each "]]>" in the text between two sections. If the text
// is enclosed in double quotes, the quotes become "&quot;" before and after the section. Linear.
VString EncodeAsCData(const VString& text);
// True if the text is enclosed in double quotes.
bool IsQuoted(const VString& text) noexcept;

}  // namespace XMLEscaping
