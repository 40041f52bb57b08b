// The document.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>

#include "vancoredata/FieldName.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/PathRenames.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"
#include "vansys/VReadWriteLock.h"

class DocumentDiagnostics;
struct LinkedElements;

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
    // The library only stores the flag. Clients that load the files a document refers to read it.
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

    // Makes this document a copy of `other`: tree, diagnostics, renames and flags, in this order.
    // Encoded flags are not copied. Copying a document onto itself only clears its diagnostics. If an
    // allocation fails, the diagnostics are already gone and the parts not yet copied are unchanged.
    // Linear.
    void DeepCopy(const DOM& other);

    bool GetRestrictExternalPaths() const;
    // Field names of this data source are never renamed. Empty at first: until another is
    // set, names without a data source are. The reference is valid until the name is set
    // again.
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
    // Renames the data source of the name, then looks for a rename of the field under the new
    // one. An empty name and a name of the protected data source stay as they are.
    FieldName RenameField(FieldName field) const;

protected:
    // Moves the records of `node` from its document to this one and files them under
    // `target`, or under `node` when that is null. When there are records under that key
    // already, the moved ones are dropped.
    void AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target);

private:
    // DOMElement forwards operations to m_diagnostics and m_linkedElements. DocumentDiagnostics moves
    // records between two documents.
    friend class DOMElement;
    friend class DocumentDiagnostics;
    friend class DOMTestAccess;

    using NameMap = std::map<VString, VString>;

    std::unique_ptr<DOMElement> m_root;

    // Guarded by m_lock.
    std::map<FieldName, FieldName> m_fieldRenames;
    NameMap m_captionRenames;
    NameMap m_dataSourceRenames;
    NameMap m_dataConnectionRenames;
    NameMap m_mapSourceRenames;
    // Errors and warnings. Uses m_lock itself.
    std::unique_ptr<DocumentDiagnostics> m_diagnostics;
    PathRenames m_pathRenames;
    VString m_protectedDataSourceName;
    std::int32_t m_dsValidationCancelType = 0;
    bool m_restrictExternalPaths = false;

    mutable VReadWriteLock m_lock{0};

    // The elements outside of the tree that link to this document. Guarded by its own mutex.
    std::unique_ptr<LinkedElements> m_linkedElements;
};
