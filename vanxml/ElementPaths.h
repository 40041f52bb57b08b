// The paths of elements, for output.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

class DOMElement;

// Returns paths such as "/a/b[2]/c": the names from the document element down, each with its position
// among the siblings of the same name if there are several.
//
// The positions are cached, so each list of children is counted once. The tree must not change while
// this object is used.
//
// Threads: one at a time.
class ElementPaths {
public:
    // Linear in the depth of the element, apart from lists of children that were not counted yet.
    std::string PathOf(const DOMElement& element);

private:
    void Count(const DOMElement& parent);

    // The position among the siblings of the same name, from 1; 0 for an element without such siblings.
    std::unordered_map<const DOMElement*, std::size_t> m_positions;
};
