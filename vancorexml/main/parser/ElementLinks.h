// The links between elements, parents and documents that are not parent and child in a tree.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <vector>

class DOMElement;
class RecordTie;

// The elements outside of a document's tree that link to the document: removed children and copies.
//
// Ownership: part of its document. The document's destructor clears the links of the elements.
//
// Threads: the mutex guards the list. No other mutex is taken under it.
struct LinkedElements {
    std::mutex mutex;
    std::list<DOMElement*> elements;
};

// The removed children that still link to one parent.
//
// Ownership: shared by the parent and the removed children, so that each may die on a thread of its own.
//
// Threads: the mutex guards the list. Only the mutex of a DiagnosticsIndex is taken under it.
struct RemovedChildren {
    std::mutex mutex;
    std::list<DOMElement*> elements;
};

// The part of an element that most elements do not need: it exists for detached elements (removed
// children and copies), for their old parents, and for elements with ties. Once allocated it stays.
//
// Invariants
// 1. A detached element is listed by the document and by the parent that it links to. Other elements are
//    in neither list.
// 2. A document or a parent that dies makes the links of the elements in its list null.
// 3. An element that has records in a document other than its own has a tie to that document. Whichever
//    dies first cuts the tie.
//
// Ownership: owned by its element.
struct ElementLinks {
    using Position = std::list<DOMElement*>::iterator;

    // As a detached element. Guarded by the mutex of the list in question.
    bool isListedByDocument = false;
    bool isListedByParent = false;
    Position inDocument;
    Position inParent;
    // The list of the parent that this element links, or linked, to.
    std::shared_ptr<RemovedChildren> siblings;

    // As a parent.
    std::shared_ptr<RemovedChildren> removedChildren;

    std::vector<std::shared_ptr<RecordTie>> ties;
};
