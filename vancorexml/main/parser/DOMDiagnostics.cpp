#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DetachedElements.h"
#include "vancorexml/main/parser/TwoWriteLocks.h"

namespace {

using Walk = DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement>;

// Calls `add` with the records of `element`. When it fails, no entry without records stays.
template <typename Map, typename Add>
void AddRecord(Map& map, const DOMElement& element, Add add)
{
    const auto i = map.try_emplace(&element).first;
    try {
        add(i->second);
    } catch (...) {
        if (i->second.empty())
            map.erase(i);
        throw;
    }
}

// Calls `visit` with every record of the subtree, in document order.
template <typename Map, typename Visit>
void ForEachRecord(const Map& map, const DOMElement& element, Visit visit)
{
    std::size_t left = map.size();
    if (left == 0)
        return;
    Walk walk(element);
    for (const DOMElement* i = walk.Next(); i && left != 0; i = walk.Next()) {
        const auto found = map.find(i);
        if (found == map.end())
            continue;
        found->second.ForEach(visit);
        --left;
    }
}

// Without the entries of the subtree; of anything for a root.
template <typename Map>
void ClearRecords(Map& map, const DOMElement& element)
{
    if (element.IsRootNode()) {
        map.clear();
        return;
    }
    if (map.empty())
        return;
    Walk walk(element);
    for (const DOMElement* i = walk.Next(); i && !map.empty(); i = walk.Next())
        map.erase(i);
}

// So that `count` more entries need no rehash. Grows by doubling and never shrinks.
template <typename Map>
void MakeRoomInMap(Map& map, std::size_t count)
{
    const auto needed = static_cast<std::size_t>(std::ceil(static_cast<double>(map.size() + count) / static_cast<double>(map.max_load_factor()))) + 1;
    if (needed > map.bucket_count())
        map.rehash(std::max(needed, 2 * map.bucket_count()));
}

// Refiles `node`'s entry of `from` under `key` in `to`, where an entry that is there stays.
template <typename Map>
void TakeEntry(Map& to, Map& from, const DOMElement& node, const DOMElement& key) noexcept
{
    if (&to == &from && &node == &key) {
        from.erase(&node);
        return;
    }
    auto entry = from.extract(&node);
    if (!entry)
        return;
    entry.key() = &key;
    to.insert(std::move(entry));
}

// A copy of `source`'s entry of `from` under `key` in `to`, where an entry that is there
// stays. Says whether there was anything to do.
template <typename Map>
bool CopyEntry(Map& to, const Map& from, const DOMElement& source, const DOMElement& key)
{
    const auto found = from.find(&source);
    if (found == from.end() || to.count(&key) != 0)
        return false;
    to.emplace(&key, found->second);
    return true;
}

VString Concatenate(const std::list<VString>& messages)
{
    return VString::join({messages.begin(), messages.end()}, VString("\n"));
}

}  // namespace

void DOM::PushError(const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel)
{
    const VWriteLocker lock(m_lock);
    ErrorRecord record{message, info, reported, cancel};
    const std::uint8_t bits = DiagnosticsIndex::BitsOf(record);
    AddRecord(m_errors, element, [&record](auto& records) { records.PushBack(std::move(record)); });
    NoteRecord(element, bits);
}

void DOM::InsertError(const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported)
{
    const VWriteLocker lock(m_lock);
    ErrorRecord record{message, info, reported, false};
    const std::uint8_t bits = DiagnosticsIndex::BitsOf(record);
    AddRecord(m_errors, element, [&record](auto& records) { records.PushFront(std::move(record)); });
    NoteRecord(element, bits);
}

void DOM::PushWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info)
{
    const VWriteLocker lock(m_lock);
    AddRecord(m_warnings, element, [&](auto& records) { records.PushBack({message, info}); });
    NoteRecord(element, DiagnosticsIndex::Warning);
}

void DOM::InsertWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info)
{
    const VWriteLocker lock(m_lock);
    AddRecord(m_warnings, element, [&](auto& records) { records.PushFront({message, info}); });
    NoteRecord(element, DiagnosticsIndex::Warning);
}

// An entry has a record at least, so the whole document is asked without the index.
bool DOM::HasErrors(const DOMElement& element) const
{
    const VReadLocker lock(m_lock);
    return !m_errors.empty() && (element.IsRootNode() || (GetBits(element) & DiagnosticsIndex::Error) != 0);
}

bool DOM::HasUnreportedErrors(const DOMElement& element) const
{
    const VReadLocker lock(m_lock);
    return !m_errors.empty() && (GetBits(element) & DiagnosticsIndex::UnreportedError) != 0;
}

bool DOM::HasCancelErrors(const DOMElement& element) const
{
    const VReadLocker lock(m_lock);
    return !m_errors.empty() && (GetBits(element) & DiagnosticsIndex::CancelError) != 0;
}

bool DOM::HasOnlyCancelErrors(const DOMElement& element) const
{
    const VReadLocker lock(m_lock);
    return m_errors.empty() || (GetBits(element) & DiagnosticsIndex::FaultError) == 0;
}

bool DOM::HasWarnings(const DOMElement& element) const
{
    const VReadLocker lock(m_lock);
    return !m_warnings.empty() && (element.IsRootNode() || (GetBits(element) & DiagnosticsIndex::Warning) != 0);
}

void DOM::GetErrors(const DOMElement& element, std::list<VString>& messages) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_errors, element, [&messages](const ErrorRecord& record) { messages.push_back(record.message); });
}

void DOM::GetWarnings(const DOMElement& element, std::list<VString>& messages) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_warnings, element, [&messages](const WarningRecord& record) { messages.push_back(record.message); });
}

void DOM::GetMetadataForErrors(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_errors, element, [&infos](const ErrorRecord& record) { infos.push_back(record.info); });
}

void DOM::GetMetadataForWarnings(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_warnings, element, [&infos](const WarningRecord& record) { infos.push_back(record.info); });
}

void DOM::ClearErrors(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    // Also when memory for the walk runs out half-way.
    m_index.Drop();
    ClearRecords(m_errors, element);
    NoteRecordsChanged();
}

void DOM::ClearWarnings(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    m_index.Drop();
    ClearRecords(m_warnings, element);
    NoteRecordsChanged();
}

void DOM::EraseErrorsAndWarningsForNode(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    const std::size_t erased = m_errors.erase(&element) + m_warnings.erase(&element);
    if (erased != 0)
        NoteRecordsChanged();
}

void DOM::ClearAllErrorsAndWarnings()
{
    const VWriteLocker lock(m_lock);
    m_errors.clear();
    m_warnings.clear();
    NoteRecordsChanged();
}

void DOM::ForgetElement(const DOMElement& element)
{
    if (&element == m_topElement)
        ClearAllErrorsAndWarnings();
    else
        EraseErrorsAndWarningsForNode(element);
}

void DOM::CopyErrorsAndWarningsForNode(const DOMElement& source, const DOMElement* target)
{
    DOM* const from = source.m_manager;
    if (!from || !from->HasRecords())
        return;
    const TwoWriteLocks locks(m_lock, from->m_lock);
    if (!from->HasRecordsOf(source))
        return;
    const DOMElement& key = target ? *target : source;
    NoteKey(key);
    const bool hasNewErrors = CopyEntry(m_errors, from->m_errors, source, key);
    bool hasNewWarnings = false;
    try {
        hasNewWarnings = CopyEntry(m_warnings, from->m_warnings, source, key);
    } catch (...) {
        // An assignment that fails leaves its target without the errors, too.
        if (hasNewErrors)
            m_errors.erase(&key);
        throw;
    }
    if (hasNewErrors)
        NoteRecord(key, DiagnosticsIndex::BitsOf(m_errors.find(&key)->second));
    if (hasNewWarnings)
        NoteRecord(key, DiagnosticsIndex::Warning);
}

void DOM::AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    DOM* const from = node.m_manager;
    if (!from || !from->HasRecords())
        return;
    const TwoWriteLocks locks(m_lock, from->m_lock);
    if (!from->HasRecordsOf(node))
        return;
    const DOMElement& key = target ? *target : node;
    NoteKey(key);
    MakeRoomForRecords(1);
    TakeRecords(*from, node, key);
}

void DOM::MoveErrorsAndWarningsTo(DOM& other)
{
    const TwoWriteLocks locks(m_lock, other.m_lock);
    if (&other != this) {
        for (const auto& [element, records] : m_errors)
            other.NoteKey(*element);
        for (const auto& [element, records] : m_warnings)
            other.NoteKey(*element);
        other.m_errors.swap(m_errors);
        other.m_warnings.swap(m_warnings);
        other.NoteRecordsChanged();
    }
    ClearAllErrorsAndWarnings();
}

void DOM::Retarget(const std::unique_ptr<DOMElement>* first, std::size_t count, DOM* now)
{
    DOM* const old = (*first)->m_manager;
    if (old && old->HasRecords())
        MoveRecords(first, count, *old, now);
    for (std::size_t i = 0; i < count; ++i)
        first[i]->SetManager(now);
}

void DOM::MoveRecords(const std::unique_ptr<DOMElement>* first, std::size_t count, DOM& old, DOM* now)
{
    const TwoWriteLocks locks(old.m_lock, now ? now->m_lock : old.m_lock);
    std::vector<const DOMElement*> recorded;
    bool takesRootRecords = false;
    for (std::size_t i = 0; i < count; ++i) {
        const DOMElement* const parent = first[i]->m_parent;
        takesRootRecords = takesRootRecords || (parent && parent == old.m_root.get());
        Walk walk(*first[i]);
        for (const DOMElement* element = walk.Next(); element; element = walk.Next())
            if (old.HasRecordsOf(*element))
                recorded.push_back(element);
    }
    if (now) {
        now->MakeRoomForRecords(recorded.size() + 1);
    } else {
        // They stay where they are, in case the elements come back.
        for (const DOMElement* element : recorded)
            DetachedElements::AddStray(*element, old);
    }
    // From here on nothing fails.
    for (std::size_t i = 0; i < count; ++i)
        old.m_index.ElementMoves(*first[i]);
    if (!now)
        return;
    for (const DOMElement* element : recorded)
        now->TakeRecords(old, *element, *element);
    if (takesRootRecords && old.HasRecordsOf(*old.m_root))
        now->TakeRecords(old, *old.m_root, *now->m_root);
}

void DOM::TakeRecords(DOM& from, const DOMElement& node, const DOMElement& key) noexcept
{
    TakeEntry(m_errors, from.m_errors, node, key);
    TakeEntry(m_warnings, from.m_warnings, node, key);
    from.NoteRecordsChanged();
    NoteRecordsChanged();
}

void DOM::MakeRoomForRecords(std::size_t count)
{
    MakeRoomInMap(m_errors, count);
    MakeRoomInMap(m_warnings, count);
}

void DOM::NoteRecord(const DOMElement& element, std::uint8_t bits)
{
    m_hasRecords = true;
    m_index.Add(*this, element, bits);
}

std::uint8_t DOM::GetBits(const DOMElement& element) const
{
    return m_index.Get(*this, element.IsRootNode() ? nullptr : &element);
}

void DOM::NoteRecordsChanged() noexcept
{
    m_hasRecords = !m_errors.empty() || !m_warnings.empty();
    m_index.Drop();
}

void DOM::NoteKey(const DOMElement& key)
{
    if (key.m_manager != this)
        DetachedElements::AddStray(key, *this);
}

bool DOM::HasErrors() const
{
    return HasErrors(*m_root);
}

bool DOM::HasUnreportedErrors() const
{
    return HasUnreportedErrors(*m_root);
}

bool DOM::HasCancelErrors() const
{
    return HasCancelErrors(*m_root);
}

bool DOM::HasOnlyCancelErrors() const
{
    return HasOnlyCancelErrors(*m_root);
}

bool DOM::HasWarnings() const
{
    return HasWarnings(*m_root);
}

std::list<VString> DOM::GetErrors() const
{
    std::list<VString> messages;
    GetErrors(*m_root, messages);
    return messages;
}

std::list<VString> DOM::GetWarnings() const
{
    std::list<VString> messages;
    GetWarnings(*m_root, messages);
    return messages;
}

std::list<VError::ErrorInfo> DOM::GetMetadataForErrors() const
{
    std::list<VError::ErrorInfo> infos;
    GetMetadataForErrors(*m_root, infos);
    return infos;
}

std::list<VError::ErrorInfo> DOM::GetMetadataForWarnings() const
{
    std::list<VError::ErrorInfo> infos;
    GetMetadataForWarnings(*m_root, infos);
    return infos;
}

VString DOM::GetConcatenatedErrors() const
{
    return Concatenate(GetErrors());
}

VString DOM::GetConcatenatedWarnings() const
{
    return Concatenate(GetWarnings());
}

void DOM::ClearErrors()
{
    ClearErrors(*m_root);
}

void DOM::ClearWarnings()
{
    ClearWarnings(*m_root);
}
