// The lists of detached elements: elements that link to a parent or a document, but are not in its tree.
#pragma once

#include <memory>
#include <vector>

#include "vansys/VMutex.h"

class DOMElement;
class RecordTie;

// A doubly linked list of elements that needs no memory for its entries, because each entry is a part of the listed
// element. Adding and removing an entry is constant and cannot fail.
//
// Ownership: owns nothing. An entry must leave its list before it dies.
class ElementList {
public:
    class Entry {
    public:
        Entry() = default;
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        bool IsListed() const noexcept { return m_next != nullptr; }
        // Does nothing if the entry is not in a list.
        void Remove() noexcept
        {
            if (!IsListed())
                return;
            m_previous->m_next = m_next;
            m_next->m_previous = m_previous;
            m_next = nullptr;
        }

    private:
        friend class ElementList;

        // Null while the entry is not in a list.
        Entry* m_next = nullptr;
        Entry* m_previous = nullptr;
        DOMElement* m_element = nullptr;
    };

    ElementList() noexcept { m_ends.m_next = m_ends.m_previous = &m_ends; }
    ElementList(const ElementList&) = delete;
    ElementList& operator=(const ElementList&) = delete;

    bool IsEmpty() const noexcept { return m_ends.m_next == &m_ends; }
    // Appends an entry that is in no list.
    void Append(Entry& entry, DOMElement& element) noexcept
    {
        entry.m_element = &element;
        entry.m_next = &m_ends;
        entry.m_previous = m_ends.m_previous;
        entry.m_previous->m_next = &entry;
        m_ends.m_previous = &entry;
    }
    // Removes the entries, from the first to the last, and calls `visit` with the element of each.
    template <typename Visit>
    void RemoveAll(const Visit& visit)
    {
        while (!IsEmpty()) {
            Entry& first = *m_ends.m_next;
            first.Remove();
            visit(*first.m_element);
        }
    }

private:
    Entry m_ends;  // links the last entry with the first
};

// The elements outside of a document's tree that link to the document: removed children and copies.
//
// Ownership: part of its document. The document's destructor clears the links of the elements.
//
// Threads: the mutex guards the list. No other mutex is taken under it.
struct LinkedElements {
    VMutex mutex;
    ElementList elements;
};

// The removed children that still link to one parent.
//
// Ownership: shared by the parent and the removed children, so that they may die on different threads.
//
// Threads: the mutex guards the list. Only the mutex of a DiagnosticsIndex is taken under it.
struct RemovedChildren {
    VMutex mutex;
    ElementList elements;
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
    // The entries of a detached element in the two lists. Each is guarded by the mutex of its list.
    ElementList::Entry inDocument;
    ElementList::Entry inParent;
    // True while inParent is in its list. Written under the mutex of that list, but only by the thread that uses this
    // element or destroys its parent. So it may be read without the mutex, unlike the entry, which also changes when
    // a neighbour in the list dies.
    bool isRemovedChild = false;
    // The list in which this element's old parent has its removed children. This element keeps the list alive
    // after the parent has died.
    std::shared_ptr<RemovedChildren> siblings;

    // The list of the children that were removed from this element.
    std::shared_ptr<RemovedChildren> removedChildren;

    // The ties to documents that have records for this element.
    std::vector<std::shared_ptr<RecordTie>> ties;
};
