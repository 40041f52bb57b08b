// The errors and warnings that a document records for its elements.
#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMDiagnostic.h"
#include "vancorexml/main/parser/DiagnosticRecords.h"
#include "vancorexml/main/parser/DiagnosticsIndex.h"
#include "vancorexml/main/parser/ParseDiagnosticLinks.h"
#include "vansys/VError.h"
#include "vansys/VMutex.h"
#include "vansys/VReadWriteLock.h"

class DOM;
class DOMElement;
class DocumentDiagnostics;

// Connects an element with a document that has records for it, but is not the document of the element.
// The element and the document share the tie, so they may die on different threads.
class RecordTie {
public:
    explicit RecordTie(DocumentDiagnostics& document) noexcept : m_document(&document) {}

    // Erases the records of the dying element, unless the document died first.
    void ElementDies(const DOMElement& element) noexcept;
    // Cuts the tie.
    void DocumentDies() noexcept;
    // True if the document has died. Takes no lock.
    bool IsCut() const noexcept { return m_document.load() == nullptr; }

private:
    // Held while m_document is used or becomes null.
    VMutex m_mutex;
    std::atomic<DocumentDiagnostics*> m_document;
};

// The records of one document, by element, and the diagnostics of the parse that built the document.
//
// Invariants
// 1. Every key of the two maps is a living element. Every entry has at least one record.
// 2. A key that is not an element of this document has a tie to this document (see ElementLinks).
// 3. As long as m_index.IsBuilt() is true, the index knows the kinds of every entry.
// 4. m_parseDiagnostics links only to elements of this document.
//
// Ownership: part of its document. Elements report to it when they die, move or change their document.
//
// Threads: every operation takes the document's lock for reading or for writing, except ElementMoves and
// ChildIsRemoved. Operations over two documents take both write locks, the one at the higher address
// first. Lock order: the mutex of a RecordTie, the document's lock, the mutex of the index. A thread must
// not destroy an element while it holds a document's lock: the element's ties lock their mutexes and their
// documents, which would violate the lock order.
class DocumentDiagnostics {
public:
    // `lock` is the lock of `document`. `top` is its topmost element; all records are erased when it dies.
    DocumentDiagnostics(const DOM& document, VReadWriteLock& lock, const DOMElement& top) noexcept;
    ~DocumentDiagnostics();

    void PushError(
        const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel);
    void InsertError(const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported);
    void PushWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info);
    void InsertWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info);

    // True if `element` or an element below it has a record of that kind. For an element without a parent,
    // true if any element has one. Logarithmic in the number of elements with records; see
    // DiagnosticsIndex for elements that moved and for ancestors in another document.
    bool Has(const DOMElement& element, DiagnosticKind kind) const;

    // These append the records of the subtree in document order. Linear in the subtree.
    void GetErrors(const DOMElement& element, std::list<VString>& messages) const;
    void GetWarnings(const DOMElement& element, std::list<VString>& messages) const;
    void GetMetadataForErrors(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const;
    void GetMetadataForWarnings(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const;
    // Returns all records of the subtree in document order, the errors of an element before its warnings. Linear in the
    // subtree.
    std::vector<DOMDiagnostic> GetDiagnostics(const DOMElement& element) const;

    // These clear the records of the element and its descendants. For an element without a parent, they
    // clear the records of all elements. If an allocation fails, they throw std::bad_alloc and clear
    // nothing. Logarithmic for each cleared entry, and linear in the removed children that still link into
    // the subtree.
    void ClearErrors(const DOMElement& element);
    void ClearWarnings(const DOMElement& element);
    void ClearAllErrorsAndWarnings();

    // Copies the records of `source` from its document to this one and assigns them to `target`, or to
    // `source` if `target` is null. Drops the copied errors if that element already has errors in this
    // document, and likewise the warnings.
    void CopyErrorsAndWarningsForNode(const DOMElement& source, const DOMElement* target);
    // Like CopyErrorsAndWarningsForNode, but moves the records. Dropped records are also erased from the
    // document of `node`.
    void AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target);
    // Moves all records to `other`, which loses its earlier records. If `other` is this object, erases all
    // records.
    void MoveErrorsAndWarningsTo(DocumentDiagnostics& other);

    // Takes no lock: who changes the tree may also change the result.
    const std::vector<DOMParseDiagnostic>& GetParseDiagnostics() const noexcept { return m_parseDiagnostics.Get(); }
    // See ParseDiagnosticLinks::Set.
    void SetParseDiagnostics(std::vector<ParseDiagnostic>&& diagnostics);
    void ClearParseDiagnostics();
    // Call it after the tree of this document has become a copy of the tree of `other`.
    void CopyParseDiagnosticsFrom(const DocumentDiagnostics& other);

    // Elements report the following events. While nothing refers to an element and the index is not built, an
    // event only tests these two conditions.

    // Call it for the children of `element` first. The thread must not hold a read lock of the document,
    // because the event takes the write lock.
    void ElementDies(const DOMElement& element)
    {
        if (RefersToElements() || m_index.IsBuilt())
            ForgetElement(element);
    }
    // `element` gets, or just got, another parent.
    void ElementMoves(const DOMElement& element) noexcept { m_index.ElementMoves(element); }
    // `element` leaves its parent's children and keeps the link to the parent.
    void ChildIsRemoved(const DOMElement& element) noexcept { m_index.ChildIsRemoved(element); }
    // Call before the subtrees move from the document of `from` to the document of `to`. Moves their
    // records, and makes the links of parse diagnostics to their elements null. If the parent of a subtree is the
    // topmost element of `from`, also moves the records of that parent to the topmost element of `to`. If `to` is null,
    // all records stay, because the elements may return. If it throws std::bad_alloc, nothing has changed.
    static void SubtreesChangeDocument(const std::unique_ptr<DOMElement>* first,
        std::size_t count,
        DocumentDiagnostics& from,
        DocumentDiagnostics* to);

    // Erases all records and links and cuts all ties. Call it before the elements of the document die.
    void DocumentDies() noexcept;

private:
    friend class RecordTie;
    friend class DOMTestAccess;

    template <typename Record>
    using RecordMap = std::unordered_map<const DOMElement*, DiagnosticRecords<Record>>;
    using ErrorMap = RecordMap<ErrorRecord>;
    using WarningMap = RecordMap<WarningRecord>;

    // Returns the diagnostics of the element's document, or null if the element has none.
    static DocumentDiagnostics* DiagnosticsOf(const DOMElement& element) noexcept;

    bool RefersToElements() const noexcept { return m_refersToElements.load(std::memory_order_acquire); }
    bool HasRecordsOf(const DOMElement& element) const
    {
        return m_errors.count(&element) != 0 || m_warnings.count(&element) != 0;
    }

    template <typename Map, typename Add>
    void AddRecord(Map& map, const DOMElement& element, Add add);
    template <typename Map>
    void Clear(Map& map, const DOMElement& element, DiagnosticKind kind);
    void BuildIndex() const;
    // Erases the records of the element and the links to it.
    void ForgetElement(const DOMElement& element);
    // Call after the records of `element` have changed.
    void OnRecordsChanged(const DOMElement& element) noexcept;
    void UpdateRefersToElements() noexcept;
    // Makes sure that `count` more entries in each map need no rehash.
    void Reserve(std::size_t count);
    // Moves the entries of `node` to `key`. The caller has called Reserve, so the maps do not allocate.
    void MoveRecordsFrom(DocumentDiagnostics& from, const DOMElement& node, const DOMElement& key) noexcept;
    // Establishes invariant 2 for an element that is about to become a key.
    void AddTieIfForeign(const DOMElement& key);
    void AddTie(const DOMElement& key);
    void EraseTiedRecordsOf(const DOMElement& element);

    VReadWriteLock& m_lock;
    const DOMElement* const m_top;

    // Changed under the write lock. False only if there are no records and no parse diagnostic has a link.
    std::atomic<bool> m_refersToElements{false};

    // Guarded by m_lock.
    ErrorMap m_errors;
    WarningMap m_warnings;
    std::unordered_map<const DOMElement*, std::shared_ptr<RecordTie>> m_ties;
    ParseDiagnosticLinks m_parseDiagnostics;

    mutable DiagnosticsIndex m_index;
};
