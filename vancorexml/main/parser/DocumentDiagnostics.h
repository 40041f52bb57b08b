// The errors and warnings that a document records for its elements.
#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DiagnosticRecords.h"
#include "vancorexml/main/parser/DiagnosticsIndex.h"
#include "vansys/VError.h"
#include "vansys/VReadWriteLock.h"

class DOM;
class DOMElement;
class DocumentDiagnostics;

// Connects an element with a document that has records for it although it is not the element's document.
// The two share the tie, so that they may die on different threads.
class RecordTie {
public:
    explicit RecordTie(DocumentDiagnostics& document) noexcept : m_document(&document) {}

    // Erases the records of the dying element, unless the document died first.
    void ElementDies(const DOMElement& element) noexcept;
    void DocumentDies() noexcept;
    // Takes no lock.
    bool IsCut() const noexcept { return m_document.load() == nullptr; }

private:
    // Held while m_document is used or becomes null.
    std::mutex m_mutex;
    std::atomic<DocumentDiagnostics*> m_document;
};

// The records of one document, by element.
//
// Invariants
// 1. Every key of the two maps is a living element. An entry has a record at least.
// 2. A key that is not of this document has a tie to it (ElementLinks).
// 3. When m_index is built, it knows the kinds of every entry.
//
// Ownership: part of its document. Elements tell it when they die, move or change their document.
//
// Threads: every operation takes the document's lock, for reading or for writing; only the events about
// moves do without. Operations over two documents take both write locks, the one at the higher address
// first. Lock order: the mutex of a RecordTie, the document's lock, the mutex of the index. Elements must
// not die under a document's lock, because their ties may lock a third document.
class DocumentDiagnostics {
public:
    // `lock` is the document's and `top` its topmost element, whose death clears all records.
    DocumentDiagnostics(const DOM& document, VReadWriteLock& lock, const DOMElement& top) noexcept;
    ~DocumentDiagnostics();

    void PushError(
        const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel);
    void InsertError(const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported);
    void PushWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info);
    void InsertWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info);

    // Whether `element` or anything below it has a record of that kind; for an element without a
    // parent, whether any element has one. Logarithmic in the number of elements with records; see
    // DiagnosticsIndex for elements that moved and for ancestors in another document.
    bool Has(const DOMElement& element, DiagnosticKind kind) const;

    // Append in document order. Linear in the subtree.
    void GetErrors(const DOMElement& element, std::list<VString>& messages) const;
    void GetWarnings(const DOMElement& element, std::list<VString>& messages) const;
    void GetMetadataForErrors(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const;
    void GetMetadataForWarnings(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const;

    // Of the element and its descendants; of all elements when it has no parent. When memory runs
    // out they throw std::bad_alloc and clear nothing. Logarithmic for each cleared entry, and linear in
    // the removed children that still link into the subtree.
    void ClearErrors(const DOMElement& element);
    void ClearWarnings(const DOMElement& element);
    void ClearAllErrorsAndWarnings();

    // Copies the records of `source` from its document and files them under `target`, or under
    // `source` when that is null. An entry that is there already stays.
    void CopyErrorsAndWarningsForNode(const DOMElement& source, const DOMElement* target);
    // Moves them instead. When there is an entry already, the moved records are dropped.
    void AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target);
    // Replaces the records of `other` by these. Called on itself it clears.
    void MoveErrorsAndWarningsTo(DocumentDiagnostics& other);

    // Elements report these events. Each costs a test while nothing was recorded. An element must die
    // after its children, and not under a read lock of its thread: the death takes the write lock.
    void ElementDies(const DOMElement& element)
    {
        if (HasRecords() || m_index.IsBuilt())
            EraseRecordsOf(element);
    }
    // `element` gets, or just got, another parent.
    void ElementMoves(const DOMElement& element) noexcept { m_index.ElementMoves(element); }
    // `element` leaves its parent's children and keeps the link to the parent.
    void ChildIsRemoved(const DOMElement& element) noexcept { m_index.ChildIsRemoved(element); }
    // The subtrees are about to leave `from` for `to`, which may be null. Their records move with them;
    // without a new document the records stay, in case the elements come back. When it throws
    // std::bad_alloc nothing has changed.
    static void SubtreesChangeDocument(const std::unique_ptr<DOMElement>* first,
        std::size_t count,
        DocumentDiagnostics& from,
        DocumentDiagnostics* to);

    // Clears everything and cuts all ties. The elements of the document die afterwards.
    void DocumentDies() noexcept;

private:
    friend class RecordTie;
    friend class DOMTestAccess;

    template <typename Record>
    using RecordMap = std::unordered_map<const DOMElement*, DiagnosticRecords<Record>>;
    using ErrorMap = RecordMap<ErrorRecord>;
    using WarningMap = RecordMap<WarningRecord>;

    // The document of an element; null for none.
    static DocumentDiagnostics* DiagnosticsOf(const DOMElement& element) noexcept;

    bool HasRecords() const noexcept { return m_hasRecords.load(std::memory_order_acquire); }
    bool HasRecordsOf(const DOMElement& element) const
    {
        return m_errors.count(&element) != 0 || m_warnings.count(&element) != 0;
    }

    template <typename Map, typename Add>
    void AddRecord(Map& map, const DOMElement& element, Add add);
    template <typename Map>
    void Clear(Map& map, const DOMElement& element, DiagnosticKind kind);
    void BuildIndex() const;
    void EraseRecordsOf(const DOMElement& element);
    // The records of `element` changed.
    void OnRecordsChanged(const DOMElement& element) noexcept;
    void Reserve(std::size_t count);
    // Moves the entries of `node`, which must not need memory: see Reserve.
    void MoveRecordsFrom(DocumentDiagnostics& from, const DOMElement& node, const DOMElement& key) noexcept;
    // Establishes invariant 2 for an element that is about to become a key.
    void AddTieIfForeign(const DOMElement& key);
    void AddTie(const DOMElement& key);
    void EraseTiedRecordsOf(const DOMElement& element);

    VReadWriteLock& m_lock;
    const DOMElement* const m_top;

    // Changed under the write lock. False only when both maps are empty.
    std::atomic<bool> m_hasRecords{false};

    // Guarded by m_lock.
    ErrorMap m_errors;
    WarningMap m_warnings;
    std::unordered_map<const DOMElement*, std::shared_ptr<RecordTie>> m_ties;

    mutable DiagnosticsIndex m_index;
};
