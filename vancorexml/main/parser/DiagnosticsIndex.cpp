#include "vancorexml/main/parser/DiagnosticsIndex.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <new>
#include <utility>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace {

constexpr DiagnosticKind AllKinds[] = {AnyError, CancelError, FaultError, UnreportedError, AnyWarning};

bool IsAtOrBelow(const DOMElement& element, const DOMElement& ancestor)
{
    return &element == &ancestor || element.IsChildOf(ancestor);
}

// Like IsAtOrBelow, but false if `element`, or an element between the two, is a removed child.
bool IsInTreeBelow(const DOMElement& element, const DOMElement& ancestor)
{
    for (const DOMElement* i = &element; i; i = i->GetParent()) {
        if (i == &ancestor)
            return true;
        if (i->IsRemovedChild())
            return false;
    }
    return false;
}

}  // namespace

void DiagnosticsIndex::Build(KindsByElement&& records) noexcept
{
    const std::lock_guard<VMutex> lock(m_mutex);
    if (m_isBuilt)
        return;
    m_pending = std::move(records);
    m_isBuilt = true;
}

void DiagnosticsIndex::Drop() noexcept
{
    if (!IsBuilt())
        return;
    const std::lock_guard<VMutex> lock(m_mutex);
    DropLocked();
}

void DiagnosticsIndex::SetKinds(const DOMElement& element, DiagnosticKinds kinds) noexcept
{
    if (!IsBuilt())
        return;
    const std::lock_guard<VMutex> lock(m_mutex);
    try {
        const auto interval = m_intervals.find(&element);
        if (interval == m_intervals.end() && kinds != 0) {
            m_pending[&element] = kinds;
            return;
        }
        m_pending.erase(&element);
        if (interval != m_intervals.end())
            UpdateKinds(interval->second, kinds);
    } catch (const std::bad_alloc&) {
        DropLocked();
    }
}

void DiagnosticsIndex::ElementMoves(const DOMElement& element) noexcept
{
    if (!IsBuilt())
        return;
    const std::lock_guard<VMutex> lock(m_mutex);
    const auto top = m_intervals.find(&element);
    if (top == m_intervals.end())
        return;
    const Interval& moved = top->second;
    try {
        // The first mark within `moved` begins a nested interval. Once that interval is removed, the first mark
        // begins the next one, until none is left.
        while (moved.begin.next != &moved.end)
            MoveToPending(m_intervals.find(static_cast<const BeginMark*>(moved.begin.next)->element));
        MoveToPending(top);
    } catch (const std::bad_alloc&) {
        DropLocked();
    }
}

void DiagnosticsIndex::ChildIsRemoved(const DOMElement& element) noexcept
{
    if (!IsBuilt())
        return;
    const std::lock_guard<VMutex> lock(m_mutex);
    const auto interval = m_intervals.find(&element);
    if (interval == m_intervals.end())
        return;
    try {
        m_removedChildren.insert(&interval->second);
    } catch (const std::bad_alloc&) {
        DropLocked();
    }
}

void DiagnosticsIndex::ElementDies(const DOMElement& element) noexcept
{
    if (!IsBuilt())
        return;
    const std::lock_guard<VMutex> lock(m_mutex);
    m_pending.erase(&element);
    const auto interval = m_intervals.find(&element);
    if (interval != m_intervals.end())
        RemoveInterval(interval);
}

bool DiagnosticsIndex::Has(const DOMElement& element, DiagnosticKind kind)
{
    const std::lock_guard<VMutex> lock(m_mutex);
    InsertPendingIntervals();
    const auto found = m_intervals.find(&element);
    if (found != m_intervals.end()) {
        const SortedIntervals& intervals = IntervalsOf(kind);
        const auto first = intervals.lower_bound(&found->second);
        if (first != intervals.end() && (*first)->begin.label < found->second.end.label)
            return true;
    }
    for (const auto& [other, kinds] : m_pending) {
        if ((kinds & kind) != 0 && IsAtOrBelow(*other, element))
            return true;
    }
    return false;
}

bool DiagnosticsIndex::HasAny(DiagnosticKind kind)
{
    const std::lock_guard<VMutex> lock(m_mutex);
    InsertPendingIntervals();
    const auto hasKind = [kind](const auto& entry) { return (entry.second & kind) != 0; };
    return !IntervalsOf(kind).empty() || std::any_of(m_pending.begin(), m_pending.end(), hasKind);
}

void DiagnosticsIndex::Collect(const DOMElement& element, DiagnosticKind kind, std::vector<const DOMElement*>& found)
{
    const std::lock_guard<VMutex> lock(m_mutex);
    InsertPendingIntervals();
    for (const auto& [other, kinds] : m_pending) {
        if ((kinds & kind) != 0 && IsInTreeBelow(*other, element))
            found.push_back(other);
    }
    const auto position = m_intervals.find(&element);
    if (position == m_intervals.end())
        return;
    const Interval& interval = position->second;
    const SortedIntervals& intervals = IntervalsOf(kind);
    auto removed = m_removedChildren.upper_bound(&interval);
    for (auto i = intervals.lower_bound(&interval); i != intervals.end() && (*i)->begin.label < interval.end.label;) {
        while (removed != m_removedChildren.end() && (*removed)->end.label < (*i)->begin.label)
            ++removed;
        if (removed != m_removedChildren.end() && (*removed)->begin.label <= (*i)->begin.label) {
            i = intervals.lower_bound((*removed)->end.label);
        } else {
            found.push_back((*i)->begin.element);
            ++i;
        }
    }
}

DiagnosticsIndex::SortedIntervals& DiagnosticsIndex::IntervalsOf(DiagnosticKinds kind) noexcept
{
    std::size_t i = 0;
    while (AllKinds[i] != kind)
        ++i;
    return m_intervalsByKind[i];
}

void DiagnosticsIndex::InsertPendingIntervals()
{
    for (auto i = m_pending.begin(); i != m_pending.end();)
        i = TryInsertInterval(*i->first, i->second) ? m_pending.erase(i) : std::next(i);
}

bool DiagnosticsIndex::TryInsertInterval(const DOMElement& element, DiagnosticKinds kinds)
{
    std::vector<const DOMElement*> missing;
    for (const DOMElement* i = &element; i && m_intervals.count(i) == 0; i = i->GetParent()) {
        if (i->GetDOMManager() != &m_document)
            return false;
        missing.push_back(i);
    }
    for (; !missing.empty(); missing.pop_back())
        InsertIntoParent(*missing.back());
    UpdateKinds(m_intervals.find(&element)->second, kinds);
    return true;
}

void DiagnosticsIndex::InsertIntoParent(const DOMElement& element)
{
    const auto position = m_intervals.try_emplace(&element).first;
    Interval& interval = position->second;
    interval.begin.element = &element;
    if (const DOMElement* const parent = element.GetParent())
        m_marks.InsertAfter(m_intervals.find(parent)->second.begin, interval.begin);
    else
        m_marks.Append(interval.begin);
    m_marks.InsertAfter(interval.begin, interval.end);
    if (!element.IsRemovedChild())
        return;
    try {
        m_removedChildren.insert(&interval);
    } catch (const std::bad_alloc&) {
        RemoveInterval(position);
        throw;
    }
}

void DiagnosticsIndex::UpdateKinds(Interval& interval, DiagnosticKinds kinds)
{
    for (const DiagnosticKind kind : AllKinds) {
        const bool had = (interval.kinds & kind) != 0;
        const bool has = (kinds & kind) != 0;
        if (had == has)
            continue;
        if (has)
            IntervalsOf(kind).insert(&interval);
        else
            IntervalsOf(kind).erase(&interval);
        interval.kinds = static_cast<DiagnosticKinds>(interval.kinds ^ kind);
    }
}

void DiagnosticsIndex::MoveToPending(Intervals::iterator position)
{
    // If an allocation failed while the interval was inserted, m_pending still has an entry with all kinds, and
    // that entry stays.
    if (position->second.kinds != 0)
        m_pending.try_emplace(position->first, position->second.kinds);
    RemoveInterval(position);
}

void DiagnosticsIndex::RemoveInterval(Intervals::iterator position) noexcept
{
    Interval& interval = position->second;
    UpdateKinds(interval, 0);
    m_removedChildren.erase(&interval);
    OrderedMarks::Remove(interval.begin);
    OrderedMarks::Remove(interval.end);
    m_intervals.erase(position);
}

void DiagnosticsIndex::DropLocked() noexcept
{
    m_isBuilt = false;
    for (SortedIntervals& intervals : m_intervalsByKind)
        intervals.clear();
    m_removedChildren.clear();
    m_marks.Clear();
    // Swaps, because clear() keeps the buckets.
    Intervals().swap(m_intervals);
    KindsByElement().swap(m_pending);
}
