// The document.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <vector>

#include "vancoredata/FieldName.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMDiagnostic.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/PathRenames.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"
#include "vansys/VReadWriteLock.h"

class DocumentDiagnostics;
struct LinkedElements;

// A document: a tree of elements below a synthetic topmost element named "Document", the errors
// and warnings recorded for these elements, and the tables of renamed names and paths.
//
// Ownership and lifetime: the document owns the tree. It cannot be copied or moved; DeepCopy
// copies into an existing document. Elements that are removed from the tree may outlive it.
//
// Threads: the tree has one writer or many readers. A recursive read/write lock guards
// everything else. Operations over two documents take both locks, the one at the higher address
// first.
//
//     DOM document;
//     document.GetRoot().AddNewChild("book", nullptr);
//     VString text = XMLDomFormatter::RenderAsXMLString(document, nullptr, true);
class VANCOREXML_API DOM {
public:
    DOM() : DOM(false) {}
    // The flag is for clients that load the files to which a document refers. The library only
    // stores it.
    explicit DOM(bool restrictExternalPaths);
    virtual ~DOM();
    DOM(const DOM&) = delete;
    DOM& operator=(const DOM&) = delete;

    // Returns the topmost element, "Document", which is above the document element.
    ::DOMElement& GetRoot() noexcept { return *m_root; }
    const ::DOMElement& GetRoot() const noexcept { return *m_root; }
    // Returns the document element: the first child of GetRoot(), or null.
    ::DOMElement* GetDocumentRoot() noexcept;
    const ::DOMElement* GetDocumentRoot() const noexcept;
    // Returns the first element named `name` in document order, or null. Searches GetRoot() and
    // 1000 levels below it. Linear.
    ::DOMElement* GetElement(const VString& name);
    const ::DOMElement* GetElement(const VString& name) const;

    // Compares the trees only. Linear.
    bool operator==(const DOM& other) const { return *m_root == *other.m_root; }
    bool operator!=(const DOM& other) const { return *m_root != *other.m_root; }

    // Makes this document a copy of `other`: tree, diagnostics, renames and flags, in this order.
    // The encoded flags of the elements are not copied. Parse diagnostics are copied too: they get the
    // elements of the copy, and null for elements outside of the tree of `other`. Copying a document onto
    // itself only clears its errors and warnings. If an allocation fails, this document has already lost its
    // old diagnostics, and the parts not yet copied are unchanged. Linear.
    void DeepCopy(const DOM& other);

    bool GetRestrictExternalPaths() const;
    // RenameField never renames a field name of the protected data source. The name of that data source
    // is empty at first, so field names without a data source are protected. The returned reference is
    // valid until the next call of SetProtectedDataSourceName.
    const VString& GetProtectedDataSourceName() const;
    void SetProtectedDataSourceName(const VString& name);
    // A number that clients store here and read back.
    int GetDSValidationCancelType() const;
    void SetDSValidationCancelType(int type);
    // The reference is valid while the document lives. Do not read it while another thread sets it.
    const PathRenames& GetPathRenames() const;
    void SetPathRenames(const PathRenames& renames);

    // Diagnostics of the whole document.
    bool HasErrors() const;
    bool HasUnreportedErrors() const;
    bool HasCancelErrors() const;
    // True if all errors are cancel errors (see DOMElement::Error). Also true if there are no errors.
    bool HasOnlyCancelErrors() const;
    bool HasWarnings() const;
    // These return the messages, or the ErrorInfo of each message, in document order.
    // Lines and columns in the messages of a parse count in the text that Xerces reads, which may differ from
    // the source. GetParseDiagnostics() returns those of the source.
    std::list<VString> GetErrors() const;
    std::list<VString> GetWarnings() const;
    std::list<VError::ErrorInfo> GetMetadataForErrors() const;
    std::list<VError::ErrorInfo> GetMetadataForWarnings() const;
    // These return all messages as one text, separated by line feeds.
    VString GetConcatenatedErrors() const;
    VString GetConcatenatedWarnings() const;
    // Returns every error and warning with its element: the elements in document order, the errors of each
    // element before its warnings. Linear in the tree: one walk, up to the last element with a record.
    std::vector<DOMDiagnostic> GetDiagnostics() const;
    void ClearErrors();
    void ClearWarnings();

    // Returns the faults that the parse of this document found, as DOMParser::GetDiagnostics() does, each with
    // the element that it is about. The element is null if the diagnostic is about none or the tree does not have it,
    // for example because the parse ended at its start tag. It becomes null when the element dies or moves to another
    // document or to a tree without one. It stays if the element is removed, until then. Copies of elements are not
    // linked; DeepCopy links its own. The other operations for errors and warnings, such as
    // ClearErrors(), neither change this list nor its records.
    //
    // The reference is valid while the document lives. Reading the list counts as reading the tree. Constant.
    const std::vector<DOMParseDiagnostic>& GetParseDiagnostics() const noexcept;
    // For parsers that build a document: replaces the list of GetParseDiagnostics(). Finds each element by its number
    // (see ParseDiagnostic::element), all in one walk up to the last of them. Counts as changing the tree. If an
    // allocation fails, nothing has changed. If the list is empty, constant.
    void SetParseDiagnostics(std::vector<ParseDiagnostic> diagnostics);

    // Raises a LogicException if the old caption is already registered.
    void AddCaptionRename(const VString& oldCaption, const VString& newCaption);
    // These overwrite an existing rename. Adding and looking up a rename is logarithmic.
    void AddDataSourceRename(const VString& oldName, const VString& newName);
    void AddDataConnectionRename(const VString& oldName, const VString& newName);
    void AddMapSourceRename(const VString& oldName, const VString& newName);
    void AddFieldRename(const FieldName& oldName, const FieldName& newName);
    // These return the new name, or the argument if it was not renamed.
    VString GetCaptionRenameIfItExists(const VString& caption) const;
    VString RenameDataSource(const VString& name) const;
    VString RenameDataConnection(const VString& name) const;
    VString RenameMapSource(const VString& name) const;
    // Returns the old name that was renamed to `name`, the first in code unit order if there are
    // several, or the argument if there is none. Linear.
    VString UnRenameDataSource(const VString& name) const;
    // Renames the data source of the field name, then applies the field rename of the resulting name.
    // Returns an empty name, or a name of the protected data source, unchanged.
    FieldName RenameField(FieldName field) const;

protected:
    // Moves the diagnostics of `node` from its document to this one and assigns them to `target`, or
    // to `node` if `target` is null. Drops the moved errors if that element already has errors in this
    // document, and likewise the warnings.
    //
    // If `node` belongs to this document, `target` must be another element. With null or `node`, the call
    // would drop all diagnostics of `node`, because `node` already has them in this document.
    void AdoptErrorsAndWarningsForNode(const ::DOMElement& node, const ::DOMElement* target);

private:
    // DOMElement forwards operations to m_diagnostics and m_linkedElements. DocumentDiagnostics moves
    // records between two documents.
    friend class ::DOMElement;
    friend class DocumentDiagnostics;
    friend class DOMTestAccess;

    using NameMap = std::map<VString, VString>;

    std::unique_ptr<::DOMElement> m_root;

    // Guarded by m_lock.
    std::map<FieldName, FieldName> m_fieldRenames;
    NameMap m_captionRenames;
    NameMap m_dataSourceRenames;
    NameMap m_dataConnectionRenames;
    NameMap m_mapSourceRenames;
    // Errors and warnings. Its operations take m_lock.
    std::unique_ptr<DocumentDiagnostics> m_diagnostics;
    PathRenames m_pathRenames;
    VString m_protectedDataSourceName;
    std::int32_t m_dsValidationCancelType = 0;
    bool m_restrictExternalPaths = false;

    mutable VReadWriteLock m_lock{0};

    // The elements outside of the tree that link to this document. Guarded by its own mutex.
    std::unique_ptr<LinkedElements> m_linkedElements;
};
