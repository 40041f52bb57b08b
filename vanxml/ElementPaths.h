// Naming elements by their place in the document.
#pragma once

#include <string>
#include <unordered_map>

class DOMElement;

// Writes the path of an element: the names from the document element down, each with its
// position among the siblings of its name where there is more than one ("/a/b[2]/c").
//
// What was counted is kept, so all paths of a document together look at each list of children
// once; a path costs the number of its steps. The tree must not change meanwhile.
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
