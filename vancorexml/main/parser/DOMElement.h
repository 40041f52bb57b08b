// The node of a document tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <new>
#include <vector>

#include "vancoredata/FieldName.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/DOMElementChildren.h"
#include "vancorexml/main/parser/DOMException.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"

class DOM;
class DocumentDiagnostics;
class ElementPages;
struct AssertionSite;
struct ElementLinks;

// The node of a document tree: a name, a text, attributes and owned children.
//
// Ownership and lifetime: an element owns its children. The DOM owns its topmost element.
// References and pointers to an element die with it. The links to the parent and to the
// document (the manager) do not own. A removed element keeps both links until it is inserted
// elsewhere; a link becomes null if its target dies first. Elements made by one parse or copy
// share memory pages, so a single survivor may keep the memory of up to a thousand elements.
//
// The document of an element holds the diagnostics of the element and the rename tables. An
// element made on its own has no document until it is inserted into a tree that has one.
//
// Threads: one writer or many readers per document. Making a copy counts as reading, and so
// does destroying an unchanged copy. The operations for diagnostics and renames use the lock of
// the document; elements have no locks. A removed element counts as part of the
// document A that it links to. If its old parent has moved to another document B since the removal,
// the element counts as part of both documents: a query of the diagnostics of A follows the link to
// the parent and reads B. So while one thread changes B, no other thread may query the diagnostics
// of A. Two threads may destroy A and B at the same time.
//
// No operation uses a call stack that grows with the depth of the tree.
//
//     DOM document;
//     DOMElement& book = document.GetRoot().AddNewChild("book", nullptr);
//     book.SetAttribute("lang", "de");
class VANCOREXML_API DOMElement {
public:
    explicit DOMElement(const VString& name);
    explicit DOMElement(VString&& name);
    // Copies the subtree and the diagnostics of its elements. The copy has the document of `other`,
    // but no parent, no locations and no encoded flags. Linear.
    DOMElement(const DOMElement& other);
    // Erases the diagnostics of all elements of the subtree. The topmost element of a document
    // erases all diagnostics of the document. Linear.
    ~DOMElement();

    // operator new stores a pointer in front of each element: to the shared page of the element, or null if
    // there is none. operator delete reads the pointer to free the element.
    static void* operator new(std::size_t size);
    static void operator delete(void* element) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    // For derived classes with an alignment above __STDCPP_DEFAULT_NEW_ALIGNMENT__.
    static void* operator new(std::size_t size, std::align_val_t alignment) { return ::operator new(size, alignment); }
    static void operator delete(void* element, std::align_val_t alignment) noexcept
    {
        ::operator delete(element, alignment);
    }
    // Returns null if the allocation fails.
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void operator delete(void* element, const std::nothrow_t&) noexcept { operator delete(element); }
    static void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept
    {
        return ::operator new(size, alignment, tag);
    }
    static void operator delete(void* element, std::align_val_t alignment, const std::nothrow_t&) noexcept
    {
        operator delete(element, alignment);
    }

    // Copies name, text, attributes and children, but no encoded flags. Keeps this element's document,
    // parent and locations. `other` may be an ancestor or a descendant of this element. If this element has a
    // document, also copies the diagnostics of the subtree. If this element already has errors, they
    // stay and the errors of `other` itself are not copied, and likewise the warnings. Linear.
    DOMElement& operator=(const DOMElement& other);

    // Compares names, texts, attributes and children of the two subtrees. Ignores locations, encoded flags,
    // diagnostics and the order of attributes. Linear.
    bool operator==(const DOMElement& other) const { return !(*this != other); }
    bool operator!=(const DOMElement& other) const;

    const VString& GetName() const noexcept { return m_name; }
    void SetName(const VString& name) { m_name = name; }

    const VString& GetText() const noexcept { return m_text; }
    void SetText(const VString& text) { SetText(text, false); }
    void SetText(VString&& text) noexcept;
    // If `encoded`, the text is already escaped and writers write it unchanged.
    void SetText(const VString& text, bool encoded);
    void AppendText(const VString& text) { AppendText(text, false); }
    // The resulting text is encoded only if both parts are. Amortised linear in `text`.
    void AppendText(const VString& text, bool encoded);
    bool HasText() const noexcept { return !m_text.IsEmpty(); }
    bool IsEncoded() const noexcept { return m_encoded; }
    void SetEncoded(bool encoded) noexcept { m_encoded = encoded; }

    // True if the element has no text, no children and no attributes.
    bool IsEmpty() const noexcept { return m_text.IsEmpty() && m_children.empty() && m_attributes.empty(); }
    // True if the element has no parent.
    bool IsRootNode() const noexcept { return m_parent == nullptr; }
    bool HasChildren() const noexcept { return !m_children.empty(); }
    // True if the element was removed from the children of its parent and still links to that parent.
    bool IsRemovedChild() const noexcept;

    DOMElement* GetParent() noexcept { return m_parent; }
    const DOMElement* GetParent() const noexcept { return m_parent; }
    DOM* GetDOMManager() noexcept { return m_manager; }
    const DOM* GetDOMManager() const noexcept { return m_manager; }

    // Lines and columns count from 1, columns in UTF-16 code units; 0 means unknown.
    void SetElementStartLocation(int line, int column) noexcept
    {
        m_startLine = line;
        m_startColumn = column;
    }
    void SetElementEndLocation(int line, int column) noexcept
    {
        m_endLine = line;
        m_endColumn = column;
    }
    int GetStartLine() const noexcept { return m_startLine; }
    int GetStartColumn() const noexcept { return m_startColumn; }
    int GetEndLine() const noexcept { return m_endLine; }
    int GetEndColumn() const noexcept { return m_endColumn; }

    // Accepts "true", "yes", "1", "false", "no" and "0" in exactly this spelling. Returns false
    // for any other text, without changing `out`.
    static bool StringToBool(const VString& text, bool& out);

    // Returns the value, or an empty text if the element has no such attribute.
    VString GetAttribute(const VString& name) const;
    AttributeMap& GetAttributes() noexcept { return m_attributes; }
    const AttributeMap& GetAttributes() const noexcept { return m_attributes; }
    bool HasAttribute(const VString& name) const noexcept { return m_attributes.contains(name); }
    bool HasAttributes() const noexcept { return !m_attributes.empty(); }
    void SetAttribute(const VString& name, const VString& value) { m_attributes.insert_or_assign(name, value); }
    void SetAttributes(const AttributeMap& attributes) { m_attributes = attributes; }
    // Does nothing if `attributes` is this element's own map.
    void SetAttributes(AttributeMap&& attributes) noexcept { m_attributes = std::move(attributes); }
    void RemoveAttribute(const VString& name) { m_attributes.erase(name); }
    // Throws DOMException (DOMException_RequiredDOMAttribute) if there is no such attribute.
    void RequireAttribute(const VString& name) const;
    // Returns the value at this element or, if it has no such attribute, at the nearest ancestor that has
    // it. Returns an empty text if there is none. Linear in the depth.
    VString GetParentAttr(const VString& name) const;

    // Returns a view of the children. The view follows later changes and is valid while the element lives.
    DOMElementChildren GetChildren() noexcept { return DOMElementChildren(*this); }
    const DOMElementConstChildren GetChildren() const noexcept { return DOMElementConstChildren(*this); }

    // Inserts a new element before the child `before`, or at the end if `before` is null.
    DOMElement& AddNewChild(const VString& name, const DOMElement* before);
    DOMElement& AppendChild(std::unique_ptr<DOMElement>&& child) { return InsertChild(std::move(child), nullptr); }
    // Inserts the child with its subtree and its diagnostics. If `before` is not a child of this
    // element, a message is logged and the child is appended. Raises a LogicException, before
    // anything changes, if the child is null, this element or an ancestor of this element.
    //
    // Cost: constant for a new leaf at the end. Otherwise the sum of
    // - the check for a cycle: the size of the child's subtree or this element's depth, whichever is
    //   smaller; always the depth if an element of the subtree has removed children that still link to it,
    // - the change of document, if the documents differ: the size of the child's subtree,
    // - the search for `before`, which must be alive: its distance from the place where it was inserted or found
    //   last, or from the nearer end of the children, whichever is smallest,
    // - the number of children behind the place of insertion.
    DOMElement& InsertChild(std::unique_ptr<DOMElement>&& child, const DOMElement* before);

    // Returns the first child named `name`, or null. This and the other lookups are linear in the
    // number of children.
    DOMElement* GetChild(const VString& name);
    const DOMElement* GetChild(const VString& name) const;
    // Appends a new child if there is none.
    DOMElement& GetOrNewChild(const VString& name);
    // Returns the text of the first child named `name`, or an empty text.
    VString GetChildText(const VString& name) const;
    // Throws DOMException (DOMException_RequiredChildMissing) if there is no such child.
    DOMElement& GetRequiredChild(const VString& name);
    const DOMElement& GetRequiredChild(const VString& name) const;
    // Returns the first child whose attribute `attrName` has the value `value`. Throws DOMException
    // (DOMException_RequiredChildByAttribute) if there is none.
    DOMElement& GetRequiredChildByAttr(const VString& attrName, const VString& value);
    const DOMElement& GetRequiredChildByAttr(const VString& attrName, const VString& value) const;

    // The next five operations return ownership of the removed children. The removed children keep their
    // links to this element and to the document.

    // Raises a LogicException if `child` is not a child of this element. Searches the child as InsertChild searches
    // `before`. Linear in the number of children behind it.
    std::unique_ptr<DOMElement> RemoveChild(DOMElement& child);
    // Removes the first child named `name`. Returns null if there is none.
    std::unique_ptr<DOMElement> RemoveChild(const VString& name);
    // Removes all children and returns them in order.
    std::vector<std::unique_ptr<DOMElement>> RemoveChildren();
    // Removes the child if it is empty. Otherwise returns null.
    std::unique_ptr<DOMElement> RemoveIfEmpty(DOMElement& child);
    // Removes the first child named `name` if it is empty. Otherwise, or if there is none, returns null.
    std::unique_ptr<DOMElement> RemoveIfEmpty(const VString& name);

    // True if `ancestor` is this element's parent or any ancestor above it; never true for the
    // element itself. Linear in the depth.
    bool IsChildOf(const DOMElement& ancestor) const noexcept;

    // Move, MoveToFront, Adopt and AdoptChildren move elements within a tree or between trees. Each
    // raises a LogicException, before anything changes, if a moved element has no parent, was removed
    // from its parent, or would become its own descendant. If an operation has nothing to do (see its
    // comment), it checks only that the element has a parent. Move, MoveToFront and Adopt cost as much as
    // RemoveChild and InsertChild.

    // Moves this element to `newParent`, before `before`.
    void Move(DOMElement& newParent, const DOMElement* before);
    // Moves this element before its first sibling. If it already is the first of several, it moves
    // to the end and a message is logged. Does nothing if the parent has fewer than two children.
    void MoveToFront();
    // Moves `child` to this element, before `before`. Does nothing if `child` is this element or
    // already has this element as its parent.
    void Adopt(DOMElement& child, const DOMElement* before);
    // Moves all children of `other` to this element, in order. Does nothing if `other` is this
    // element. Linear in both lists of children, plus the check for a cycle and the change of document (see
    // InsertChild) for the subtree of `other`.
    void AdoptChildren(DOMElement& other, const DOMElement* before);
    // Moves the attribute from `other` and overwrites an attribute of that name here. Does nothing if
    // `other` has no such attribute or is this element.
    void AdoptAttribute(DOMElement& other, const VString& name);
    void AdoptAttributes(DOMElement& other) { AdoptAttributes(other, true); }
    // Moves all attributes of `other`. Without `overwrite`, an attribute that exists here keeps its
    // value, and the value of `other` is dropped. Does nothing if `other` is this element.
    void AdoptAttributes(DOMElement& other, bool overwrite);

    // The document stores the diagnostics. Get..., Has... and Clear... cover this element and its subtree; on
    // an element without a parent, Has... and Clear... cover the whole document. Each of these operations
    // raises a LogicException if the element has no document.

    // Records an error. If `reported`, HasUnreportedErrors ignores the error. If `cancel`, it is a cancel
    // error: it stands for a cancellation instead of a fault.
    void Error(const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel) const;
    void Warning(const VString& message, const VError::ErrorInfo& info) const;
    // These insert a record before all other records of the element. An inserted error is not a cancel error.
    // Amortised constant.
    void PrefixError(const VString& message, const VError::ErrorInfo& info, bool reported) const;
    void PrefixWarning(const VString& message, const VError::ErrorInfo& info) const;
    void ClearErrors();
    void ClearWarnings();
    // These append to the list: the elements in document order, the records of each element in their order.
    void GetErrors(std::list<VString>& messages) const;
    void GetWarnings(std::list<VString>& messages) const;
    void GetMetadataForErrors(std::list<VError::ErrorInfo>& infos) const;
    void GetMetadataForWarnings(std::list<VError::ErrorInfo>& infos) const;
    bool HasErrors() const;
    bool HasWarnings() const;
    bool HasCancelErrors() const;
    // True if all errors are cancel errors. Also true if there are no errors.
    bool HasOnlyCancelErrors() const;
    bool HasUnreportedErrors() const;

    // These parse the attribute or the text as a field name and apply the renames of the document.
    FieldName GetFieldName(const VString& attrName) const;
    FieldName GetFieldName(const VString& attrName, QualifiedNameCache& cache) const;
    // These parse the attribute as a field name of the data source `dataSourceName`, apply the renames, and
    // return the name without its data source.
    FieldName GetLocalFieldName(const VString& attrName, const VString& dataSourceName) const;
    FieldName GetLocalFieldName(
        const VString& attrName, const VString& dataSourceName, QualifiedNameCache& cache) const;
    FieldName GetTextAsFieldName() const;
    FieldName GetTextAsFieldName(QualifiedNameCache& cache) const;

    // These two raise a LogicException if the element has no document.
    void AddCaptionRename(const VString& oldCaption, const VString& newCaption);
    void AddFieldRename(const FieldName& oldName, const FieldName& newName);
    // These forward to the document. Without a document, they return the argument.
    FieldName RenameField(const FieldName& field) const;
    VString RenameDataSource(const VString& name) const;
    VString RenameDataConnection(const VString& name) const;
    VString RenameMapSource(const VString& name) const;
    // Returns the new caption for the value of the attribute, or the value if it was not renamed.
    // Raises a LogicException if the element has no document.
    VString GetCaptionRenameIfItExists(const VString& attrName) const;

private:
    friend class DOM;
    friend class DOMBuilder;
    friend class DOMElementChildren;
    friend class DocumentDiagnostics;

    using Children = std::vector<std::unique_ptr<DOMElement>>;

    // Allocates the element in `pages`.
    static void* operator new(std::size_t, ElementPages& pages);
    static void operator delete(void* element, ElementPages&) noexcept { operator delete(element); }

    // Copies name, text and attributes of `other`, but no children.
    DOMElement(const DOMElement& other, DOM* manager, DOMElement* parent);

    // Appends copies of the children of `source`, with their subtrees and diagnostics, to `into`.
    // The copies get this element as their parent and its document.
    void CopyChildrenOf(const DOMElement& source, Children& into);
    void DestroyChildren() noexcept;
    // Assigns `other` and returns the old children. `other` must not be this element.
    Children Assign(const DOMElement& other);
    // Sets the document of the whole subtree. Neither allocates nor recurses.
    void SetSubtreeManager(DOM* manager) noexcept;
    // Moves subtrees to this element's document. They must all belong to the same document, or all have no
    // document. If it throws, nothing has changed.
    void ChangeDocument(const std::unique_ptr<DOMElement>* first, std::size_t count);
    DocumentDiagnostics& RequireDiagnostics(const AssertionSite& site) const;

    ElementLinks& GetLinks() const;
    // True if a removed child still links to this element as its parent.
    bool HasRemovedChildren() const;
    // Call before this element is removed from its parent's children, and for a new copy. If it
    // throws, nothing has changed.
    void RegisterDetached();
    // Call before a detached element gets another parent. `manager` is its old document.
    void UnregisterDetached(DOM* manager) noexcept;
    // Sets all links to this dying element to null.
    void ClearIncomingLinks() noexcept;
    // Sets all links to a dying document to null.
    static void DocumentDies(DOM& document) noexcept;

    // Searches from both ends, and in both directions from the position that `child` stores. Returns the end if
    // `child` is not a child of this element.
    Children::iterator FindChild(const DOMElement& child);
    Children::iterator RequireChild(const DOMElement& child);
    DOMElement* FindChildByName(const VString& name) const noexcept;
    // Raises a LogicException if `child` is this element or an ancestor of it. Linear in the child's
    // subtree or this element's depth, whichever is smaller.
    void RequireNotBelow(const DOMElement& child) const;
    bool IsAtOrBelow(const DOMElement& top) const;
    // Appends a new child that is allocated in `pages`.
    DOMElement& AddNewChild(const VString& name, ElementPages& pages);
    // Appends a new child, to which no links or diagnostics refer yet. The caller has reserved the capacity.
    DOMElement& AppendNewChild(std::unique_ptr<DOMElement>&& child) noexcept;
    // Makes sure that `count` more children need no allocation.
    void ReserveChildren(std::size_t count);
    // The slow path of ReserveChildren: allocates.
    void GrowChildren(std::size_t count);
    // Does the last steps of an insertion. The caller has reserved the capacity and set the document.
    DOMElement& InsertBefore(std::unique_ptr<DOMElement>&& child, const DOMElement* before);
    // Moves `child` from this element to `newParent`, before `before`.
    void MoveChild(DOMElement& child, DOMElement& newParent, const DOMElement* before);
    // Like InsertBefore for each child in turn.
    void InsertAllBefore(Children&& children, const DOMElement* before);
    // Makes this element the child's parent.
    void BecomeParentOf(DOMElement& child) noexcept;

    // The document and the parent. Neither is owned.
    DOM* m_manager = nullptr;
    DOMElement* m_parent = nullptr;
    VString m_name;
    VString m_text;
    AttributeMap m_attributes;
    Children m_children;
    std::int32_t m_startLine = 0;
    std::int32_t m_startColumn = 0;
    std::int32_t m_endLine = 0;
    std::int32_t m_endColumn = 0;
    bool m_encoded = false;
    // Where FindChild begins to search for this element among the children of its parent: the position at which the
    // element was inserted or found last. Other insertions and removals may have moved it since. The member lies in
    // the padding behind m_encoded, so it takes no memory.
    std::uint32_t m_position = 0;
    // Exists for detached elements, for their old parents and for elements with ties (see ElementLinks.h).
    // Null for most elements.
    mutable std::unique_ptr<ElementLinks> m_links;
};
