// The document.
#pragma once

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <unordered_map>

#include "vancoredata/FieldName.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/PathRenames.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"
#include "vansys/VReadWriteLock.h"

class DiagnosticsIndex;
struct ErrorRecord;
struct WarningRecord;
template <typename Record>
class DiagnosticRecords;

// A document: one tree of elements under a synthetic topmost element named "Document", the
// errors and warnings recorded for them, and the names and paths that were renamed.
//
// Ownership and lifetime: the document owns the tree; it is neither copied nor moved
// (DeepCopy copies into an existing one). Elements taken out of the tree may outlive it.
//
// Threads: everything but the tree is guarded by one read/write lock that its holder may
// take again. The tree has one writer or many readers. Operations over two documents take
// both locks, the one at the higher address first.
//
//     DOM document;
//     document.GetRoot().AddNewChild("book", nullptr);
//     VString text = XMLDomFormatter::RenderAsXMLString(document, nullptr, true);
class VANCOREXML_API DOM {
public:
    DOM() : DOM(false) {}
    // The flag is kept for those who load what the document refers to; nothing here reads it.
    explicit DOM(bool restrictExternalPaths);
    virtual ~DOM();
    DOM(const DOM&) = delete;
    DOM& operator=(const DOM&) = delete;

    // The element "Document", above the document element.
    DOMElement& GetRoot() noexcept { return *m_root; }
    const DOMElement& GetRoot() const noexcept { return *m_root; }
    // The document element: the first child of GetRoot(), null when there is none.
    DOMElement* GetDocumentRoot() noexcept;
    const DOMElement* GetDocumentRoot() const noexcept;
    // The first element of that name in document order, GetRoot() included, at most 1000
    // levels below it; null when there is none. Linear.
    DOMElement* GetElement(const VString& name);
    const DOMElement* GetElement(const VString& name) const;

    // The trees alone are compared. Linear.
    bool operator==(const DOM& other) const { return *m_root == *other.m_root; }
    bool operator!=(const DOM& other) const { return *m_root != *other.m_root; }

    // Makes this document a copy of `other`: tree, diagnostics, renames and flags.
    void DeepCopy(const DOM& other);

    bool GetRestrictExternalPaths() const;
    // Field names of this data source are never renamed. The reference is valid until the
    // name is set again.
    const VString& GetProtectedDataSourceName() const;
    void SetProtectedDataSourceName(const VString& name);
    // A number that clients store here and read back.
    int GetDSValidationCancelType() const;
    void SetDSValidationCancelType(int type);
    // Valid while the document lives; must not be read while another thread sets it.
    const PathRenames& GetPathRenames() const;
    void SetPathRenames(const PathRenames& renames);

    // Diagnostics of the whole document.
    bool HasErrors() const;
    bool HasUnreportedErrors() const;
    bool HasCancelErrors() const;
    // True also when there is no error at all.
    bool HasOnlyCancelErrors() const;
    bool HasWarnings() const;
    // Messages and identities, in document order.
    std::list<VString> GetErrors() const;
    std::list<VString> GetWarnings() const;
    std::list<VError::ErrorInfo> GetMetadataForErrors() const;
    std::list<VError::ErrorInfo> GetMetadataForWarnings() const;
    // All messages, a line feed between two.
    VString GetConcatenatedErrors() const;
    VString GetConcatenatedWarnings() const;
    void ClearErrors();
    void ClearWarnings();

    // Raises a LogicException when the old caption is registered already.
    void AddCaptionRename(const VString& oldCaption, const VString& newCaption);
    // These overwrite. All adds and lookups of renames are logarithmic.
    void AddDataSourceRename(const VString& oldName, const VString& newName);
    void AddDataConnectionRename(const VString& oldName, const VString& newName);
    void AddMapSourceRename(const VString& oldName, const VString& newName);
    void AddFieldRename(const FieldName& oldName, const FieldName& newName);
    // The new name, or the argument when it was not renamed.
    VString GetCaptionRenameIfItExists(const VString& caption) const;
    VString RenameDataSource(const VString& name) const;
    VString RenameDataConnection(const VString& name) const;
    VString RenameMapSource(const VString& name) const;
    // The first old name, in order, that was renamed to `name`; else the argument. Linear.
    VString UnRenameDataSource(const VString& name) const;
    // Renames the data source of the name, then looks for a rename of the field under it.
    FieldName RenameField(FieldName field) const;

protected:
    void AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target);

private:
    friend class DOMElement;
    friend class DetachedElements;
    friend class DOMTestAccess;

    using NameMap = std::map<VString, VString>;
    using ErrorMap = std::unordered_map<const DOMElement*, DiagnosticRecords<ErrorRecord>>;
    using WarningMap = std::unordered_map<const DOMElement*, DiagnosticRecords<WarningRecord>>;

    void PushError(const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel);
    void InsertError(const DOMElement& element, const VString& message, const VError::ErrorInfo& info, bool reported);
    void PushWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info);
    void InsertWarning(const DOMElement& element, const VString& message, const VError::ErrorInfo& info);
    bool HasErrors(const DOMElement& element) const;
    bool HasUnreportedErrors(const DOMElement& element) const;
    bool HasCancelErrors(const DOMElement& element) const;
    bool HasOnlyCancelErrors(const DOMElement& element) const;
    bool HasWarnings(const DOMElement& element) const;
    void GetErrors(const DOMElement& element, std::list<VString>& messages) const;
    void GetWarnings(const DOMElement& element, std::list<VString>& messages) const;
    void GetMetadataForErrors(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const;
    void GetMetadataForWarnings(const DOMElement& element, std::list<VError::ErrorInfo>& infos) const;
    void ClearErrors(const DOMElement& element);
    void ClearWarnings(const DOMElement& element);
    void EraseErrorsAndWarningsForNode(const DOMElement& element);
    void ClearAllErrorsAndWarnings();
    void CopyErrorsAndWarningsForNode(const DOMElement& source, const DOMElement* target);
    void MoveErrorsAndWarningsTo(DOM& other);

    std::unique_ptr<DOMElement> m_root;
    NameMap m_captionRenames;
};
