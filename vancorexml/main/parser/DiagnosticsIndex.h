// Answers which elements of a document have diagnostics at or below them.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <set>
#include <unordered_map>
#include <vector>

#include "vancorexml/main/parser/DiagnosticRecords.h"
#include "vancorexml/main/parser/OrderedMarks.h"

class DOM;
class DOMElement;

// Nested intervals of one document: each element with a record, and each of its ancestors, has an
// interval that lies within its parent's. An element has diagnostics at or below it when the sorted
// list of elements with such records has one in the interval. So questions and changes may
// alternate in any order, at any depth, at logarithmic cost each.
//
// "Below" follows the parent links, as DOMElement::IsChildOf does. A removed child therefore still
// counts for the parent that it remembers.
//
// Invariants
// 1. Only living elements of the document have intervals. An element's parent, if it has one, has
//    an interval too, and the element's lies within it.
// 2. An element with records is either placed (it has an interval, and m_placed holds it for each
//    kind of its records) or listed in m_unplaced, or the index is not built.
// 3. m_unplaced holds new records until the next question. An element whose ancestors are not all
//    of this document stays there: its ancestors could change without this document hearing of it,
//    so each question climbs from it anew.
// 4. An interval stays until its element dies or moves, even without records. This keeps questions
//    that alternate with ClearErrors from building the same intervals again and again.
//
// Ownership: part of its document. Refers to the document's elements.
//
// Threads: readers of the document ask and build at the same time, so the index has a mutex. Lock
// order: the document's lock, the mutex of LinkedElements, this mutex.
class DiagnosticsIndex {
public:
    using KindsByElement = std::unordered_map<const DOMElement*, DiagnosticKinds>;

    explicit DiagnosticsIndex(const DOM& document) noexcept : m_document(document) {}

    bool IsBuilt() const noexcept { return m_isBuilt.load(std::memory_order_acquire); }
    // Starts with these records; does nothing when another thread has built the index meanwhile.
    void Build(KindsByElement&& records) noexcept;
    // Frees everything; the next question needs a new Build.
    void Drop() noexcept;

    // The following three do nothing when the index is not built. When memory runs out they drop it.
    // `element` now has records of these kinds, 0 for none.
    void SetKinds(const DOMElement& element, DiagnosticKinds kinds) noexcept;
    // `element` gets another parent or document, or leaves its parent's children.
    void ElementMoves(const DOMElement& element) noexcept;
    void ElementDies(const DOMElement& element) noexcept;

    // The three need a built index; when memory runs out they throw std::bad_alloc and the index stays
    // right.
    bool Has(const DOMElement& element, DiagnosticKind kind);
    // Whether any element has such a record.
    bool HasAny(DiagnosticKind kind);
    // Appends the elements with such a record among `element` and its descendants. Unlike Has it
    // leaves out what hangs on a removed child. Linear in the number of elements found.
    void Collect(const DOMElement& element, DiagnosticKind kind, std::vector<const DOMElement*>& found);

private:
    struct BeginMark : OrderedMarks::Mark {
        const DOMElement* element = nullptr;
    };
    struct Interval {
        BeginMark begin;
        OrderedMarks::Mark end;
        DiagnosticKinds kinds = 0;
    };
    using Intervals = std::unordered_map<const DOMElement*, Interval>;
    struct ByBegin {
        using is_transparent = void;
        bool operator()(const Interval* a, const Interval* b) const noexcept { return a->begin.label < b->begin.label; }
        bool operator()(const Interval* a, std::uint64_t label) const noexcept { return a->begin.label < label; }
    };
    using SortedIntervals = std::set<const Interval*, ByBegin>;

    SortedIntervals& Placed(DiagnosticKinds kind) noexcept;
    void PlaceAll();
    bool Place(const DOMElement& element, DiagnosticKinds kinds);
    void AddInterval(const DOMElement& element);
    void SetPlacedKinds(Interval& interval, DiagnosticKinds kinds);
    void Unplace(Intervals::iterator position);
    void RemoveInterval(Intervals::iterator position) noexcept;
    void DropLocked() noexcept;

    const DOM& m_document;
    std::mutex m_mutex;
    std::atomic<bool> m_isBuilt{false};
    // Guarded by m_mutex.
    KindsByElement m_unplaced;
    Intervals m_intervals;
    OrderedMarks m_marks;
    std::array<SortedIntervals, DiagnosticKindCount> m_placed;
    // The intervals of removed children, which remember a parent.
    SortedIntervals m_removedChildren;
};
