// Formats the differences between two documents.
#pragma once

#include <cstddef>
#include <string>

#include "vanxml/ComparedTree.h"
#include "vanxml/TextStyle.h"
#include "vanxml/TreeDiff.h"

// Formats differences as text for people or as JSON.
//
// Ownership: refers to the trees and to the table, which must outlive it.
//
// Threads: one at a time.
class DiffReport {
public:
    DiffReport(const ComparedTree& a, const ComparedTree& b, const ContentTable& table, const TextStyle& style)
        : m_a(a),
          m_b(b),
          m_table(table),
          m_style(style)
    {}

    // Returns the kind of the difference and its path, and one line for each of its places. Clips long values and
    // paths, so the size of the result does not depend on the depth and the names of the documents. The places of a
    // moved element end with its number among all elements and texts of its parent, such as ": child 2".
    //
    //     changed /shop/item[2]/@price
    //         a.xml:3:25: "2"
    //         b.xml:3:25: "4"
    std::string Format(const TreeDifference& difference) const;

    // Returns a JSON object on one line, with a line feed. Clips only paths: the number of the element tells exactly
    // which one it is. Columns count UTF-16 code units.
    //
    //     {"type":"changed","what":"attribute",
    //      "a":{"file":"a.xml","line":3,"column":25,"element":3,"name":"price","path":"…","value":"2"},"b":…}
    std::string FormatJson(const TreeDifference& difference) const;

private:
    std::string FormatPlace(const ComparedTree& tree, std::uint32_t node, const std::string& detail) const;
    void AppendSide(std::string& json,
        const char* side,
        const ComparedTree& tree,
        std::uint32_t node,
        std::uint32_t value,
        const TreeDifference& difference) const;

    const ComparedTree& m_a;
    const ComparedTree& m_b;
    const ContentTable& m_table;
    const TextStyle& m_style;
};
