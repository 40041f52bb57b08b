// Links of elements that no tree keeps up to date.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <vector>

class DOMElement;
class RecordTie;

// The elements outside of a document's tree that link to the document: removed children and copies.
//
// Ownership: part of its document; the destructor of DOM clears the links of the elements.
//
// Threads: the mutex guards the list, and `detachedChildren` of every element of the document. It is
// taken after the document's lock and before the mutex of the document's DiagnosticsIndex; never two
// of these mutexes at once.
struct LinkedElements {
    std::mutex mutex;
    std::list<DOMElement*> elements;
};

// What an element keeps besides its place in a tree. Only elements that need it have one.
//
// Invariants
// 1. A detached element (a removed child or a copy) is listed by the document it links to and by the
//    parent it links to. Other elements are in neither list.
// 2. A document or a parent that dies makes the links of the elements in its list null.
// 3. An element that has records in a document other than its own has a tie to that document. The
//    one that dies first cuts the tie.
//
// Ownership: owned by its element.
struct ElementLinks {
    using Position = std::list<DOMElement*>::iterator;

    bool isListedByDocument = false;
    bool isListedByParent = false;
    Position inDocument;
    Position inParent;
    // The detached elements that link to this one as their parent.
    std::list<DOMElement*> detachedChildren;
    std::vector<std::shared_ptr<RecordTie>> ties;
};
