// Elements that keep links without being in a tree.
#pragma once

class DOM;
class DOMElement;

// The process-wide registry of links that whatever they point to would not know of:
//
// - An element taken out of its parent keeps its parent and document links, and a copy its
//   document link. Such an element is here until it is inserted somewhere or dies. When the
//   parent or the document dies first, the link, and the document link of all elements below
//   it, becomes null.
// - A document may have records under an element that is not, or no longer, its own. They go
//   when the element dies.
//
// Flags in elements and documents say whether there is anything here for them, so a tree that
// nothing leaves never comes here.
//
// Threads: its own mutex guards it. It is taken after a document's lock and no lock of a
// document is taken under it, only the mutex of a DiagnosticsIndex. Costs are logarithmic.
class DetachedElements {
public:
    // `element` has left the children of its parent or is a fresh copy. When it throws
    // nothing has changed.
    static void Add(DOMElement& element);
    // Takes it out again; the links are those that it had when it was added, or null where
    // they have been cut since.
    static void Remove(DOMElement& element, const DOM* manager, const DOMElement* parent) noexcept;

    static void ParentDies(const DOMElement& parent) noexcept;
    static void DocumentDies(const DOM& document) noexcept;

    // `document` is about to have records under `element` without being its manager.
    static void AddStray(const DOMElement& element, DOM& document);
    // Erases those records from their documents.
    static void StrayDies(const DOMElement& element) noexcept;
};
