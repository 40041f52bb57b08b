// Naming elements by their place in the document.
#pragma once

#include <string>
#include <unordered_map>

class DOMElement;

// Writes the path of an element: the names from the document element down, each with its
// position among the siblings of its name if there is more than one ("/a/b[2]/c").
//
// Positions are cached, so all paths of a document together count each list of children once.
// Apart from that, a path is linear in the number of its steps. The tree must not change while
// this object is used.
//
// Threads: one at a time.
class ElementPaths {
public:
    std::string PathOf(const DOMElement& element);

private:
    void Count(const DOMElement& parent);

    // From 1 among the siblings of the same name, 0 where there is no other.
    std::unordered_map<const DOMElement*, std::size_t> m_positions;
};
