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
// - Removed: an element, an attribute or a text is only in A. For an element or a text, only the node of A is known. An
//   element stands for everything inside it that has not moved.
// - Added: an element, an attribute or a text is only in B. For an element or a text, only the node of B is known. An
//   element stands for everything inside it that has not moved.
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
    std::uint32_t elements = 0;  // inside a moved element; inside a removed or added one, those that have not moved
};

// Finds the differences between two trees that use the same ContentTable. There is none if and only if the trees are
// equal: the same elements, attributes and texts in the same order. The order of attributes does not matter.
//
// The differences are complete: A becomes B if they are all applied. But they are not always the fewest.
//
// Document elements of the same name correspond to each other. The children of two elements that correspond to each
// other and are not equal are matched in passes. A pass matches children only between two children that earlier passes
// have matched. Children of the same key make a pair: the first of A with the first of B, the second with the second.
// Of these pairs, a pass keeps the heaviest set that do not cross each other. A pair weighs 1 unless said otherwise.
//
// 1. Equal children at the start and at the end of both lists.
// 2. The key is the content, or for elements the name with the first of the attributes id, xml:id, name and key that
//    is there. Only keys that are exactly once in the part of each list. A pair that is not equal weighs 2: without it,
//    an element is removed and another added, but most equal ones have only moved. Equal elements of pairs that are not
//    kept have changed their order, so they take no part in further passes.
// 3. The key is the content.
// 4. The key is the name with all attributes. From here on, an element of three or more parts (elements, texts and
//    attributes, itself included) that is exactly once in each document takes no part: it has moved. In pass 2, it has
//    no key but its content.
// 5. The key is the name with the identifying attribute, as in pass 2.
// 6. The key is the name. All texts have the same name.
//
// Elements that no pass has matched are removed or added, unless they have moved. An element has moved if it is equal
// in A and in B, and
//
// - it stays with its parent. If it has neither attributes nor content, it must be the only child of its name there, in
//   A and in B. Or:
// - it has attributes or content, and comes to another parent. If it is inside an element that was removed or added, it
//   needs at least three parts, because small elements such as <b>1</b> are often equal by chance. The largest elements
//   are matched first, and equal ones in their order.
//
// The result is in the order of A. An added node comes behind the last sibling in front of it in B that has neither
// moved nor been added; without one, it comes in front of all children of its parent. The attributes of an element are
// in the order of its tag in A, and then those that are only in B in the order of B.
//
// Cost: O(n log n) for n nodes and attributes. The call stack does not grow with the depth of the documents.
std::vector<TreeDifference> DiffTrees(const ComparedTree& a, const ComparedTree& b, ContentTable& table);
