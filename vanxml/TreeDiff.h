// The differences between two documents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "vanxml/ComparedTree.h"

// A difference between the document A and the document B.
//
// - Changed: an attribute or a text has another value. Both nodes are known.
// - Removed: an element, an attribute or a text is only in A. For an element or a text, only the node of A is known.
// - Added: an element, an attribute or a text is only in B. For an element or a text, only the node of B is known.
// - Moved: an element is in both documents, with equal content, but at another place. Both nodes are known.
struct TreeDifference {
    enum class Kind : std::uint8_t { Changed, Removed, Added, Moved };
    static constexpr std::uint32_t None = ComparedTree::None;

    Kind kind = Kind::Changed;
    std::uint32_t a = None;          // the node in A; for an attribute, its element
    std::uint32_t b = None;          // the node in B; for an attribute, its element
    std::uint32_t attribute = None;  // the number of the attribute's name; None for an element or a text
    std::uint32_t valueA = None;     // the numbers of the values of an attribute or text
    std::uint32_t valueB = None;
};

// Finds the differences between two trees that use the same ContentTable. There is none if and only if the trees are
// equal: the same elements, attributes and texts in the same order. The order of attributes does not matter.
//
// Equal children correspond to each other, as many as possible in the same order. Then children of the same name do,
// first those with equal attributes, then those with the same value of an attribute that usually identifies an
// element (id, xml:id, name, key), then the others in their order. Elements that correspond to each other and are not
// equal are compared further. The result is in the order of A, with added nodes behind the node that they follow.
//
// Cost: O(n log n) for n nodes. The call stack does not grow with the depth of the documents.
std::vector<TreeDifference> DiffTrees(const ComparedTree& a, const ComparedTree& b, ContentTable& table);
