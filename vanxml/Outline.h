// The outline of a document: one line for all elements with the same path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vansys/VHash32.h"

// All elements whose names, from the document element down, are the same.
struct OutlineLine {
    VString name;
    std::size_t level = 1;     // of the document element: 1
    std::uint64_t count = 0;   // the number of the elements
    std::uint64_t text = 0;    // bytes in UTF-8 of their own texts that are not only white space
    std::uint64_t size = 0;    // bytes in UTF-8 of the texts and attribute values in them and in all elements inside
    std::uint64_t hidden = 0;  // the number of elements inside that are too deep for the outline
    std::vector<std::pair<VString, std::uint64_t>> attributes;  // sorted, with the number of elements that have them
    bool isLast = true;                                         // the last line inside its parent
};

// Builds the outline from the events of a parse.
//
// Memory: grows with the number of different paths and the depth of the document, not with its length.
//
// Threads: one at a time.
class OutlineBuilder : public SAXInterface {
public:
    // Elements deeper than `depth` have no lines.
    explicit OutlineBuilder(std::size_t depth = std::numeric_limits<std::size_t>::max()) : m_depth(depth) {}

    void StartElement(const VString& name, const AttributeMap& attributes) override;
    void EndElement() override;
    void Characters(const VString& text) override;

    // Returns the lines in the order of a tree: behind each line come the lines inside it, in the order in which their
    // paths occur first. Call it once, at the end of the document. Linear in the number of lines.
    std::vector<OutlineLine> ReleaseLines();

private:
    static constexpr std::uint32_t None = std::numeric_limits<std::uint32_t>::max();

    struct Node {
        OutlineLine line;
        std::uint32_t parent = None;
        std::uint32_t firstChild = None;
        std::uint32_t lastChild = None;
        std::uint32_t nextSibling = None;
        std::map<std::uint32_t, std::uint64_t> attributes;  // the identifier of the name, and the count
    };

    std::uint32_t IdentifyName(const VString& name);
    std::uint32_t FindNode(std::uint32_t parent, const VString& name);
    std::vector<std::pair<VString, std::uint64_t>> NameAttributes(const Node& node) const;

    const std::size_t m_depth;
    std::unordered_map<VString, std::uint32_t, VStringHash> m_identifiers;
    std::vector<VString> m_names;                                                 // by identifier
    std::vector<Node> m_nodes;                                                    // a parent comes before its children
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> m_children;  // by parent and name
    std::uint32_t m_current = None;    // the deepest node around the current place
    std::uint64_t m_hiddenLevels = 0;  // of the open elements, those that are too deep
};
