#include "vancorexml/main/parser/DocumentDiagnostics.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/ElementLinks.h"
#include "vancorexml/main/parser/TwoWriteLocks.h"

namespace {

using Walk = DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement>;

template <typename Map>
DiagnosticKinds KindsIn(const Map& map, const DOMElement& element)
{
    const auto found = map.find(&element);
    return found != map.end() ? found->second.Kinds() : DiagnosticKinds{0};
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

// Makes room for `count` more entries, so that inserting them causes no rehash. Grows by doubling and never
// shrinks.
template <typename Map>
void ReserveInMap(Map& map, std::size_t count)
{
    const auto entries = static_cast<double>(map.size() + count);
    const auto needed = static_cast<std::size_t>(std::ceil(entries / static_cast<double>(map.max_load_factor()))) + 1;
    if (needed > map.bucket_count())
        map.rehash(std::max(needed, 2 * map.bucket_count()));
}

// Moves the entry of `node` in `from` to `key` in `to`. If `key` has an entry, that one stays and the entry of
// `node` is erased. Moving an entry onto itself erases it.
template <typename Map>
void MoveEntry(Map& to, Map& from, const DOMElement& node, const DOMElement& key) noexcept
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

// Copies the entry of `source` in `from` to `key` in `to`. An existing entry of `key` stays. Returns true if
// it copied the entry.
template <typename Map>
bool CopyEntry(Map& to, const Map& from, const DOMElement& source, const DOMElement& key)
{
    const auto found = from.find(&source);
    if (found == from.end() || to.count(&key) != 0)
        return false;
    to.emplace(&key, found->second);
    return true;
}

}  // namespace

void RecordTie::ElementDies(const DOMElement& element) noexcept
{
    const std::lock_guard<VMutex> lock(m_mutex);
    if (DocumentDiagnostics* const document = m_document)
        document->EraseTiedRecordsOf(element);
}

void RecordTie::DocumentDies() noexcept
{
    const std::lock_guard<VMutex> lock(m_mutex);
    m_document = nullptr;
}

DocumentDiagnostics::DocumentDiagnostics(const DOM& document, VReadWriteLock& lock, const DOMElement& top) noexcept
    : m_lock(lock),
      m_top(&top),
      m_index(document)
{}

DocumentDiagnostics::~DocumentDiagnostics() = default;

void DocumentDiagnostics::PushError(
    const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel)
{
    const VWriteLocker lock(m_lock);
    AddRecord(m_errors, element, [&](auto& records) { records.PushBack({message, info, reported, cancel}); });
}

void DocumentDiagnostics::InsertError(
    const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported)
{
    const VWriteLocker lock(m_lock);
    AddRecord(m_errors, element, [&](auto& records) { records.PushFront({message, info, reported, false}); });
}

void DocumentDiagnostics::PushWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info)
{
    const VWriteLocker lock(m_lock);
    AddRecord(m_warnings, element, [&](auto& records) { records.PushBack({message, info}); });
}

void DocumentDiagnostics::InsertWarning(
    const DOMElement& element, const VString& message, const VError::ErrorInfo& info)
{
    const VWriteLocker lock(m_lock);
    AddRecord(m_warnings, element, [&](auto& records) { records.PushFront({message, info}); });
}

bool DocumentDiagnostics::Has(const DOMElement& element, DiagnosticKind kind) const
{
    const VReadLocker lock(m_lock);
    const bool mayHave = kind == AnyWarning ? !m_warnings.empty() : !m_errors.empty();
    if (!mayHave)
        return false;
    // An entry is never empty, so for the whole document AnyError and AnyWarning need no index.
    const bool isRoot = element.IsRootNode();
    if (isRoot && (kind == AnyError || kind == AnyWarning))
        return true;
    BuildIndex();
    return isRoot ? m_index.HasAny(kind) : m_index.Has(element, kind);
}

void DocumentDiagnostics::GetErrors(const DOMElement& element, std::list<VString>& messages) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_errors, element, [&messages](const ErrorRecord& record) { messages.push_back(record.message); });
}

void DocumentDiagnostics::GetWarnings(const DOMElement& element, std::list<VString>& messages) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(
        m_warnings, element, [&messages](const WarningRecord& record) { messages.push_back(record.message); });
}

void DocumentDiagnostics::GetMetadataForErrors(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_errors, element, [&infos](const ErrorRecord& record) { infos.push_back(record.info); });
}

void DocumentDiagnostics::GetMetadataForWarnings(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const
{
    const VReadLocker lock(m_lock);
    ForEachRecord(m_warnings, element, [&infos](const WarningRecord& record) { infos.push_back(record.info); });
}

std::vector<DOMDiagnostic> DocumentDiagnostics::GetDiagnostics(const DOMElement& element) const
{
    const VReadLocker lock(m_lock);
    std::vector<DOMDiagnostic> diagnostics;
    std::size_t left = m_errors.size() + m_warnings.size();
    Walk walk(element);
    for (const DOMElement* i = left != 0 ? walk.Next() : nullptr; i && left != 0; i = walk.Next()) {
        if (const auto found = m_errors.find(i); found != m_errors.end()) {
            found->second.ForEach([&](const ErrorRecord& record) {
                diagnostics.push_back(
                    {i, ParseDiagnostic::Severity::Error, record.message, record.info, record.reported, record.cancel});
            });
            --left;
        }
        if (const auto found = m_warnings.find(i); found != m_warnings.end()) {
            found->second.ForEach([&](const WarningRecord& record) {
                diagnostics.push_back({i, ParseDiagnostic::Severity::Warning, record.message, record.info});
            });
            --left;
        }
    }
    return diagnostics;
}

void DocumentDiagnostics::ClearErrors(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    Clear(m_errors, element, AnyError);
}

void DocumentDiagnostics::ClearWarnings(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    Clear(m_warnings, element, AnyWarning);
}

void DocumentDiagnostics::ClearAllErrorsAndWarnings()
{
    const VWriteLocker lock(m_lock);
    Clear(m_errors, *m_top, AnyError);
    Clear(m_warnings, *m_top, AnyWarning);
}

void DocumentDiagnostics::CopyErrorsAndWarningsForNode(const DOMElement& source, const DOMElement* target)
{
    DocumentDiagnostics* const from = DiagnosticsOf(source);
    if (!from || !from->RefersToElements())
        return;
    const TwoWriteLocks locks(m_lock, from->m_lock);
    if (!from->HasRecordsOf(source))
        return;
    const DOMElement& key = target ? *target : source;
    AddTieIfForeign(key);
    const bool copiedErrors = CopyEntry(m_errors, from->m_errors, source, key);
    try {
        CopyEntry(m_warnings, from->m_warnings, source, key);
    } catch (...) {
        if (copiedErrors)
            m_errors.erase(&key);
        throw;
    }
    OnRecordsChanged(key);
}

void DocumentDiagnostics::AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    DocumentDiagnostics* const from = DiagnosticsOf(node);
    if (!from || !from->RefersToElements())
        return;
    const TwoWriteLocks locks(m_lock, from->m_lock);
    if (!from->HasRecordsOf(node))
        return;
    const DOMElement& key = target ? *target : node;
    AddTieIfForeign(key);
    Reserve(1);
    MoveRecordsFrom(*from, node, key);
}

void DocumentDiagnostics::MoveErrorsAndWarningsTo(DocumentDiagnostics& other)
{
    const TwoWriteLocks locks(m_lock, other.m_lock);
    if (&other != this) {
        for (const auto& [element, records] : m_errors)
            other.AddTieIfForeign(*element);
        for (const auto& [element, records] : m_warnings)
            other.AddTieIfForeign(*element);
        other.m_errors.swap(m_errors);
        other.m_warnings.swap(m_warnings);
        other.UpdateRefersToElements();
        other.m_index.Drop();
        m_index.Drop();
    }
    ClearAllErrorsAndWarnings();
}

void DocumentDiagnostics::SetParseDiagnostics(std::vector<ParseDiagnostic>&& diagnostics)
{
    const VWriteLocker lock(m_lock);
    m_parseDiagnostics.Set(std::move(diagnostics), *m_top);
    UpdateRefersToElements();
}

void DocumentDiagnostics::ClearParseDiagnostics()
{
    const VWriteLocker lock(m_lock);
    m_parseDiagnostics.Clear();
    UpdateRefersToElements();
}

void DocumentDiagnostics::CopyParseDiagnosticsFrom(const DocumentDiagnostics& other)
{
    const TwoWriteLocks locks(m_lock, other.m_lock);
    m_parseDiagnostics.CopyFrom(other.m_parseDiagnostics, *other.m_top, *m_top);
    UpdateRefersToElements();
}

void DocumentDiagnostics::SubtreesChangeDocument(
    const std::unique_ptr<DOMElement>* first, std::size_t count, DocumentDiagnostics& from, DocumentDiagnostics* to)
{
    if (!from.RefersToElements() && !from.m_index.IsBuilt())
        return;
    const TwoWriteLocks locks(from.m_lock, to ? to->m_lock : from.m_lock);
    std::vector<const DOMElement*> recorded;
    std::vector<const DOMElement*> linked;
    bool movesRecordsOfTop = false;
    for (std::size_t i = 0; i < count && from.RefersToElements(); ++i) {
        movesRecordsOfTop = movesRecordsOfTop || first[i]->GetParent() == from.m_top;
        Walk walk(*first[i]);
        for (const DOMElement* element = walk.Next(); element; element = walk.Next()) {
            if (from.HasRecordsOf(*element))
                recorded.push_back(element);
            if (from.m_parseDiagnostics.HasLinkTo(*element))
                linked.push_back(element);
        }
    }
    if (to) {
        to->Reserve(recorded.size() + 1);
    } else {
        for (const DOMElement* element : recorded)
            from.AddTie(*element);
    }
    // From here on nothing can fail.
    for (std::size_t i = 0; i < count; ++i)
        from.m_index.ElementMoves(*first[i]);
    for (const DOMElement* element : linked)
        from.m_parseDiagnostics.Forget(*element);
    from.UpdateRefersToElements();
    if (!to)
        return;
    for (const DOMElement* element : recorded)
        to->MoveRecordsFrom(from, *element, *element);
    if (movesRecordsOfTop && from.HasRecordsOf(*from.m_top))
        to->MoveRecordsFrom(from, *from.m_top, *to->m_top);
}

void DocumentDiagnostics::DocumentDies() noexcept
{
    std::unordered_map<const DOMElement*, std::shared_ptr<RecordTie>> ties;
    {
        const VWriteLocker lock(m_lock);
        ForgetElement(*m_top);
        ties.swap(m_ties);
    }
    // The document must be unlocked here: an element that dies on another thread locks first the tie and then
    // the document.
    for (const auto& [element, tie] : ties)
        tie->DocumentDies();
}

// If an allocation fails, no entry without records may remain.
template <typename Map, typename Add>
void DocumentDiagnostics::AddRecord(Map& map, const DOMElement& element, Add add)
{
    const auto entry = map.try_emplace(&element).first;
    try {
        add(entry->second);
    } catch (...) {
        if (entry->second.empty())
            map.erase(entry);
        throw;
    }
    OnRecordsChanged(element);
}

template <typename Map>
void DocumentDiagnostics::Clear(Map& map, const DOMElement& element, DiagnosticKind kind)
{
    if (map.empty())
        return;
    if (element.IsRootNode()) {
        Map cleared;
        cleared.swap(map);
        for (const auto& [key, records] : cleared)
            OnRecordsChanged(*key);
        return;
    }
    std::vector<const DOMElement*> keys{&element};
    if (element.HasChildren()) {
        BuildIndex();
        m_index.Collect(element, kind, keys);
    }
    for (const DOMElement* key : keys) {
        if (map.erase(key) != 0)
            OnRecordsChanged(*key);
    }
}

void DocumentDiagnostics::BuildIndex() const
{
    if (m_index.IsBuilt())
        return;
    DiagnosticsIndex::KindsByElement kinds;
    for (const auto& [element, records] : m_errors)
        kinds[element] = records.Kinds();
    for (const auto& [element, records] : m_warnings)
        kinds[element] = static_cast<DiagnosticKinds>(kinds[element] | records.Kinds());
    m_index.Build(std::move(kinds));
}

void DocumentDiagnostics::ForgetElement(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    if (&element == m_top) {
        m_index.Drop();
        m_errors.clear();
        m_warnings.clear();
        m_parseDiagnostics.ForgetAll();
    } else {
        m_errors.erase(&element);
        m_warnings.erase(&element);
        m_parseDiagnostics.Forget(element);
        m_index.ElementDies(element);
    }
    UpdateRefersToElements();
}

void DocumentDiagnostics::OnRecordsChanged(const DOMElement& element) noexcept
{
    UpdateRefersToElements();
    if (m_index.IsBuilt()) {
        m_index.SetKinds(
            element, static_cast<DiagnosticKinds>(KindsIn(m_errors, element) | KindsIn(m_warnings, element)));
    }
}

void DocumentDiagnostics::UpdateRefersToElements() noexcept
{
    m_refersToElements = !m_errors.empty() || !m_warnings.empty() || m_parseDiagnostics.HasLinks();
}

void DocumentDiagnostics::Reserve(std::size_t count)
{
    ReserveInMap(m_errors, count);
    ReserveInMap(m_warnings, count);
}

void DocumentDiagnostics::MoveRecordsFrom(
    DocumentDiagnostics& from, const DOMElement& node, const DOMElement& key) noexcept
{
    MoveEntry(m_errors, from.m_errors, node, key);
    MoveEntry(m_warnings, from.m_warnings, node, key);
    from.OnRecordsChanged(node);
    OnRecordsChanged(key);
}

void DocumentDiagnostics::AddTieIfForeign(const DOMElement& key)
{
    if (DiagnosticsOf(key) != this)
        AddTie(key);
}

void DocumentDiagnostics::AddTie(const DOMElement& key)
{
    const auto [entry, isNew] = m_ties.try_emplace(&key);
    if (!isNew)
        return;
    try {
        entry->second = std::make_shared<RecordTie>(*this);
        auto& ties = key.GetLinks().ties;
        std::erase_if(ties, [](const std::shared_ptr<RecordTie>& tie) { return tie->IsCut(); });
        ties.push_back(entry->second);
    } catch (...) {
        m_ties.erase(entry);
        throw;
    }
}

void DocumentDiagnostics::EraseTiedRecordsOf(const DOMElement& element)
{
    const VWriteLocker lock(m_lock);
    m_ties.erase(&element);
    ForgetElement(element);
}

DocumentDiagnostics* DocumentDiagnostics::DiagnosticsOf(const DOMElement& element) noexcept
{
    DOM* const document = const_cast<DOM*>(element.GetDOMManager());
    return document ? document->m_diagnostics.get() : nullptr;
}
