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

// Nested intervals of one document: an element with a record, and each of its ancestors, has an
// interval that lies within its parent's. Sorted lists hold the intervals of the elements with records.
// An element has diagnostics at or below it when the list has an interval within its own. So a question
// or a change of records costs logarithmic time, at any depth. A subtree that moves loses its intervals,
// and the next question adds them again: linear in their number.
//
// "Below" follows the parent links, as DOMElement::IsChildOf does. A removed child therefore still
// counts for the parent that it links to.
//
// Invariants
// 1. Only living elements of the document have intervals. An element's parent, if it has one, has
//    an interval too, and the element's lies within it.
// 2. While the index is built, an element with records is indexed or is in m_pending. Indexed means that
//    it has an interval and that m_intervalsByKind holds the interval for each kind of its records.
// 3. m_pending holds new records until the next question. An element with an ancestor in another
//    document stays there, because that ancestor reports its changes to the other document. Each
//    question climbs from such an element again.
// 4. An interval stays until its element dies or moves, even without records. Otherwise questions that
//    alternate with ClearErrors would add the same intervals again and again.
//
// Ownership: part of its document. Refers to the document's elements.
//
// Threads: readers of the document ask and build at the same time, so the index has a mutex. No other
// mutex is taken under it.
class DiagnosticsIndex {
public:
    using KindsByElement = std::unordered_map<const DOMElement*, DiagnosticKinds>;

    explicit DiagnosticsIndex(const DOM& document) noexcept : m_document(document) {}

    bool IsBuilt() const noexcept { return m_isBuilt.load(std::memory_order_acquire); }
    // Starts with these records; does nothing when another thread has built the index meanwhile.
    void Build(KindsByElement&& records) noexcept;
    // Frees everything; the next question needs a new Build.
    void Drop() noexcept;

    // The events do nothing while the index is not built. When memory runs out they drop the index.
    // `element` now has records of these kinds, 0 for none.
    void SetKinds(const DOMElement& element, DiagnosticKinds kinds) noexcept;
    // `element` gets, or just got, another parent or document.
    void ElementMoves(const DOMElement& element) noexcept;
    // `element` leaves its parent's children and keeps the link to the parent.
    void ChildIsRemoved(const DOMElement& element) noexcept;
    // Comes after the same event of the element's children.
    void ElementDies(const DOMElement& element) noexcept;

    // Questions need a built index. When memory runs out they throw std::bad_alloc, and the index stays
    // right.
    bool Has(const DOMElement& element, DiagnosticKind kind);
    // Whether any element has such a record.
    bool HasAny(DiagnosticKind kind);
    // Appends the elements with such a record among `element` and its descendants. Unlike Has, skips
    // removed children with their subtrees. Linear in the number of elements found and skipped.
    void Collect(const DOMElement& element, DiagnosticKind kind, std::vector<const DOMElement*>& found);

private:
    friend class DOMTestAccess;

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

    SortedIntervals& IntervalsOf(DiagnosticKinds kind) noexcept;
    void InsertPendingIntervals();
    // Also inserts the missing intervals of the ancestors. Returns false for an element that must stay
    // pending (invariant 3).
    bool TryInsertInterval(const DOMElement& element, DiagnosticKinds kinds);
    // The parent, if there is one, must have its interval already.
    void InsertIntoParent(const DOMElement& element);
    void UpdateKinds(Interval& interval, DiagnosticKinds kinds);
    void MoveToPending(Intervals::iterator position);
    void RemoveInterval(Intervals::iterator position) noexcept;
    void DropLocked() noexcept;

    const DOM& m_document;
    std::mutex m_mutex;
    std::atomic<bool> m_isBuilt{false};
    // Guarded by m_mutex.
    KindsByElement m_pending;
    Intervals m_intervals;
    OrderedMarks m_marks;
    std::array<SortedIntervals, DiagnosticKindCount> m_intervalsByKind;
    // The intervals of removed children, which remember a parent.
    SortedIntervals m_removedChildren;
};
