// The lists of detached elements: elements that link to a parent or a document, but are not in its tree.
#pragma once

#include <list>
#include <memory>
#include <vector>

#include "vansys/VMutex.h"

class DOMElement;
class RecordTie;

// The elements outside of a document's tree that link to the document: removed children and copies.
//
// Ownership: part of its document. The document's destructor clears the links of the elements.
//
// Threads: the mutex guards the list. No other mutex is taken under it.
struct LinkedElements {
    VMutex mutex;
    std::list<DOMElement*> elements;
};

// The removed children that still link to one parent.
//
// Ownership: shared by the parent and the removed children, so that they may die on different threads.
//
// Threads: the mutex guards the list. Only the mutex of a DiagnosticsIndex is taken under it.
struct RemovedChildren {
    VMutex mutex;
    std::list<DOMElement*> elements;
};

// The part of an element's data that only a few elements need: detached elements (removed children and
// copies), their old parents, and elements with ties. Once allocated, it lives as long as the element.
//
// Invariants
// 1. A detached element is in the LinkedElements of the document to which it links, and in the
//    RemovedChildren of the parent to which it links. No other element is in these lists.
// 2. When a document or a parent dies, the links of all elements in its list become null.
// 3. An element that has records in a document other than its own has a tie to that document. If the element
//    dies first, it erases these records. If the document dies first, it cuts the tie.
//
// Ownership: owned by its element.
struct ElementLinks {
    using Position = std::list<DOMElement*>::iterator;

    // The positions of a detached element in the two lists. Each is guarded by the mutex of its list.
    bool isListedByDocument = false;
    bool isListedByParent = false;
    Position inDocument;
    Position inParent;
    // The list in which this element's old parent has its removed children. This element keeps the list alive
    // after the parent has died.
    std::shared_ptr<RemovedChildren> siblings;

    // The list of the children that were removed from this element.
    std::shared_ptr<RemovedChildren> removedChildren;

    // The ties to documents that have records for this element.
    std::vector<std::shared_ptr<RecordTie>> ties;
};
