// Finds the elements of a document that have diagnostics at or below them.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <set>
#include <unordered_map>
#include <vector>

#include "vancorexml/main/parser/DiagnosticRecords.h"
#include "vancorexml/main/parser/OrderedMarks.h"
#include "vansys/VMutex.h"

class DOM;
class DOMElement;

// An index of nested intervals. Each element with a record, and each of its ancestors, has an interval
// within the interval of its parent. For each kind of records, a sorted list contains the intervals of the
// elements with such records. An element has such records at or below it if the list contains an interval
// within the element's own.
//
// Cost: a query and a change of records are logarithmic, at any depth. When a subtree moves, it loses its
// intervals. The next query inserts them again, which is linear in their number.
//
// "Below" follows the parent links, as DOMElement::IsChildOf does. So a removed child still counts for the
// parent that it links to.
//
// Invariants
// 1. Only living elements of the document have intervals. If an element with an interval has a parent, the
//    parent has an interval that contains it.
// 2. As long as IsBuilt() is true, an element with records is indexed or is in m_pending. Indexed means that
//    it has an interval and that m_intervalsByKind holds the interval for each kind of its records.
// 3. m_pending holds the elements with new records until the next query. An element with an ancestor in
//    another document stays in m_pending, because that ancestor reports its changes to the other document.
//    Every query follows the parent links of such an element again.
// 4. An interval stays until its element dies or moves, even without records. Otherwise queries that
//    alternate with ClearErrors would insert the same intervals again and again.
//
// Ownership: part of its document. Refers to the document's elements.
//
// Threads: readers of the document query and build the index at the same time, so the index has a mutex.
// No other mutex is taken under it.
class DiagnosticsIndex {
public:
    using KindsByElement = std::unordered_map<const DOMElement*, DiagnosticKinds>;

    explicit DiagnosticsIndex(const DOM& document) noexcept : m_document(document) {}

    bool IsBuilt() const noexcept { return m_isBuilt.load(std::memory_order_acquire); }
    // Builds the index for these records. Does nothing if another thread has built it meanwhile.
    void Build(KindsByElement&& records) noexcept;
    // Frees everything. The next query needs a new Build.
    void Drop() noexcept;

    // The next four operations report events. They do nothing while the index is not built. If an
    // allocation fails, they drop the index.

    // The records of `element` now have these kinds, 0 for no records.
    void SetKinds(const DOMElement& element, DiagnosticKinds kinds) noexcept;
    // `element` gets, or just got, another parent or document.
    void ElementMoves(const DOMElement& element) noexcept;
    // `element` leaves its parent's children and keeps the link to the parent.
    void ChildIsRemoved(const DOMElement& element) noexcept;
    // Call it for the children of `element` first.
    void ElementDies(const DOMElement& element) noexcept;

    // The next three operations are the queries. They require a built index. If an allocation fails, they
    // throw std::bad_alloc and the index stays correct.

    // True if `element` or an element below it has a record of that kind.
    bool Has(const DOMElement& element, DiagnosticKind kind);
    // True if any element has a record of that kind.
    bool HasAny(DiagnosticKind kind);
    // Appends each element that has a record of that kind, among `element` and its descendants. Unlike Has,
    // skips removed children with their subtrees. Linear in the number of elements found and skipped.
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
    // Inserts an interval within the interval of the parent, which must exist if there is a parent.
    void InsertIntoParent(const DOMElement& element);
    void UpdateKinds(Interval& interval, DiagnosticKinds kinds);
    void MoveToPending(Intervals::iterator position);
    void RemoveInterval(Intervals::iterator position) noexcept;
    void DropLocked() noexcept;

    const DOM& m_document;
    VMutex m_mutex;
    std::atomic<bool> m_isBuilt{false};
    // Guarded by m_mutex.
    KindsByElement m_pending;
    Intervals m_intervals;
    OrderedMarks m_marks;
    std::array<SortedIntervals, DiagnosticKindCount> m_intervalsByKind;
    // The intervals of removed children that still link to a parent.
    SortedIntervals m_removedChildren;
};
