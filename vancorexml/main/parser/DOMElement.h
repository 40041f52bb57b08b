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
struct ElementLinks;

// The node of a document tree: a name, a text, attributes, owned children.
//
// Ownership and lifetime: an element owns its children; the topmost element of a document
// is owned by its DOM. References and pointers to an element die with it. `parent` and
// `manager` only observe. An element taken out of its parent keeps both links until it is
// inserted elsewhere; should the old parent or the document die first, the link becomes
// null. Elements made by one parse or copy share allocations: one of them that outlives all
// the others may keep the memory of up to a thousand.
//
// The document of an element (its manager) keeps its diagnostics and the rename tables; an
// element made on its own has none until it is inserted into a tree that has one.
//
// Threads: one writer or many readers per document; no lock of its own. Making a copy counts as reading,
// and so does destroying a copy that was not changed. An element outside of the tree counts as part of
// the document that it links to. While its old parent is in another document, the element also counts as
// part of that one: do not ask the first document about diagnostics while another thread changes the
// second. The two may be destroyed at once on different threads. The document's lock guards the
// operations that an element forwards to its document.
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
    // A deep copy, with `other`'s document but without a parent, locations or the encoded
    // flag; the document copies the diagnostics recorded for each element. Linear.
    DOMElement(const DOMElement& other);
    // Erases the diagnostics of every element of the subtree from their document; the
    // document's own topmost element clears all. Linear.
    ~DOMElement();
    // Elements made by one parse or copy share memory pages; each element records its page.
    static void* operator new(std::size_t size);
    static void operator delete(void* element) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    // For a derived class that is aligned beyond the usual.
    static void* operator new(std::size_t size, std::align_val_t alignment) { return ::operator new(size, alignment); }
    static void operator delete(void* element, std::align_val_t alignment) noexcept
    {
        ::operator delete(element, alignment);
    }
    // Null when there is no memory.
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

    // Takes over name, text, attributes and copies of the children; keeps document, parent
    // and locations. `other` may be an ancestor or a descendant of this element. Linear.
    DOMElement& operator=(const DOMElement& other);

    // Name, text, attributes and children, compared in depth; the order of attributes does
    // not count, nor do locations, the encoded flag and diagnostics. Linear.
    bool operator==(const DOMElement& other) const { return !(*this != other); }
    bool operator!=(const DOMElement& other) const;

    const VString& GetName() const noexcept { return m_name; }
    void SetName(const VString& name) { m_name = name; }

    const VString& GetText() const noexcept { return m_text; }
    void SetText(const VString& text) { SetText(text, false); }
    void SetText(VString&& text) noexcept;
    // `encoded`: the text is escaped already, so writers write it unchanged.
    void SetText(const VString& text, bool encoded);
    void AppendText(const VString& text) { AppendText(text, false); }
    // The whole stays marked encoded only while every piece is. Amortised linear in `text`.
    void AppendText(const VString& text, bool encoded);
    bool HasText() const noexcept { return !m_text.IsEmpty(); }
    bool IsEncoded() const noexcept { return m_encoded; }
    void SetEncoded(bool encoded) noexcept { m_encoded = encoded; }

    // No text, no children, no attributes.
    bool IsEmpty() const noexcept { return m_text.IsEmpty() && m_children.empty() && m_attributes.empty(); }
    // Has no parent.
    bool IsRootNode() const noexcept { return m_parent == nullptr; }
    bool HasChildren() const noexcept { return !m_children.empty(); }
    // True for an element that was removed from its parent's children and still links to that parent.
    bool IsRemovedChild() const noexcept;

    DOMElement* GetParent() noexcept { return m_parent; }
    const DOMElement* GetParent() const noexcept { return m_parent; }
    DOM* GetDOMManager() noexcept { return m_manager; }
    const DOM* GetDOMManager() const noexcept { return m_manager; }

    // Lines and columns count from 1, columns in UTF-16 code units; 0 is unknown.
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

    // Reads "true", "yes", "1" and "false", "no", "0", exactly so written. Any other text
    // gives false and leaves `out` as it is.
    static bool StringToBool(const VString& text, bool& out);

    // The value; empty when there is no such attribute.
    VString GetAttribute(const VString& name) const;
    AttributeMap& GetAttributes() noexcept { return m_attributes; }
    const AttributeMap& GetAttributes() const noexcept { return m_attributes; }
    bool HasAttribute(const VString& name) const noexcept { return m_attributes.contains(name); }
    bool HasAttributes() const noexcept { return !m_attributes.empty(); }
    void SetAttribute(const VString& name, const VString& value) { m_attributes.insert_or_assign(name, value); }
    void SetAttributes(const AttributeMap& attributes) { m_attributes = attributes; }
    // Nothing when `attributes` is this element's own map.
    void SetAttributes(AttributeMap&& attributes) noexcept { m_attributes = std::move(attributes); }
    void RemoveAttribute(const VString& name) { m_attributes.erase(name); }
    // Throws DOMException (DOMException_RequiredDOMAttribute) when there is no such attribute.
    void RequireAttribute(const VString& name) const;
    // The value here, or on the nearest ancestor that has the attribute; else empty.
    // Linear in the depth.
    VString GetParentAttr(const VString& name) const;

    // A view of the children; it reads them at each call and is valid while the element lives.
    DOMElementChildren GetChildren() noexcept { return DOMElementChildren(*this); }
    const DOMElementConstChildren GetChildren() const noexcept { return DOMElementConstChildren(*this); }

    // `before` is a child of this element, or null for the end.
    DOMElement& AddNewChild(const VString& name, const DOMElement* before);
    DOMElement& AppendChild(std::unique_ptr<DOMElement>&& child) { return InsertChild(std::move(child), nullptr); }
    // Takes the child over with its subtree and the diagnostics its document recorded for
    // it. A `before` that is no child of this element is logged and the child appended.
    // Raises a LogicException, before anything changes, when the child is null, this element
    // or one of its ancestors. Constant for a new leaf at the end. Else linear in the smaller of
    // the child's subtree and this element's depth (the depth, while removed children still link into
    // the subtree); in the child's subtree when documents differ; and in the distance of `before` from
    // the nearer end of the children.
    DOMElement& InsertChild(std::unique_ptr<DOMElement>&& child, const DOMElement* before);

    // The first child of that name in document order; null when there is none. Linear in
    // the children, as are the other lookups.
    DOMElement* GetChild(const VString& name);
    const DOMElement* GetChild(const VString& name) const;
    DOMElement& GetOrNewChild(const VString& name);
    // The text of the first child of that name; empty when there is none.
    VString GetChildText(const VString& name) const;
    // Throws DOMException (DOMException_RequiredChildMissing).
    DOMElement& GetRequiredChild(const VString& name);
    const DOMElement& GetRequiredChild(const VString& name) const;
    // The first child whose attribute has that value. Throws DOMException
    // (DOMException_RequiredChildByAttribute).
    DOMElement& GetRequiredChildByAttr(const VString& attrName, const VString& value);
    const DOMElement& GetRequiredChildByAttr(const VString& attrName, const VString& value) const;

    // Returns ownership; the removed child keeps its parent and document links.
    // Raises a LogicException when it is no child of this element.
    std::unique_ptr<DOMElement> RemoveChild(DOMElement& child);
    // The first child of that name, null when there is none.
    std::unique_ptr<DOMElement> RemoveChild(const VString& name);
    std::vector<std::unique_ptr<DOMElement>> RemoveChildren();
    // Removes the child when it is empty; else null.
    std::unique_ptr<DOMElement> RemoveIfEmpty(DOMElement& child);
    std::unique_ptr<DOMElement> RemoveIfEmpty(const VString& name);

    // True when `ancestor` is this element's parent or any ancestor above it; never true for the
    // element itself. Linear in the depth.
    bool IsChildOf(const DOMElement& ancestor) const noexcept;

    // The four take elements from where they are to before `before`, with the costs of
    // InsertChild and of finding them among their siblings. Each raises a LogicException,
    // before anything changes, when a moved element has no parent, is no longer among its
    // parent's children, or would become its own descendant.
    void Move(DOMElement& newParent, const DOMElement* before);
    // To the front of its siblings. An element that is the first of several already goes to
    // the end, and the missing "before" is logged.
    void MoveToFront();
    // Nothing, not even a new place, when `child` is this element or its parent link leads
    // here already.
    void Adopt(DOMElement& child, const DOMElement* before);
    // All children of `other`, in order; nothing when `other` is this element. Linear in
    // both child lists.
    void AdoptChildren(DOMElement& other, const DOMElement* before);
    // Takes the attribute from `other`, where it has it, and overwrites.
    void AdoptAttribute(DOMElement& other, const VString& name);
    void AdoptAttributes(DOMElement& other) { AdoptAttributes(other, true); }
    // Leaves `other` without attributes, also without those not taken; nothing when
    // `other` is this element.
    void AdoptAttributes(DOMElement& other, bool overwrite);

    // Diagnostics, which the document keeps. The Has… queries, Get… and Clear… cover this element and its
    // subtree; on an element without a parent, Has… and Clear… cover the whole document. Each operation
    // raises a LogicException when the element has no document.
    void Error(const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel) const;
    void Warning(const VString& message, const VError::ErrorInfo& info) const;
    // These insert before the element's other records. Constant.
    void PrefixError(const VString& message, const VError::ErrorInfo& info, bool reported) const;
    void PrefixWarning(const VString& message, const VError::ErrorInfo& info) const;
    void ClearErrors();
    void ClearWarnings();
    // Append, in document order; within an element in the order of its records.
    void GetErrors(std::list<VString>& messages) const;
    void GetWarnings(std::list<VString>& messages) const;
    void GetMetadataForErrors(std::list<VError::ErrorInfo>& infos) const;
    void GetMetadataForWarnings(std::list<VError::ErrorInfo>& infos) const;
    bool HasErrors() const;
    bool HasWarnings() const;
    bool HasCancelErrors() const;
    // True also when there is no error at all.
    bool HasOnlyCancelErrors() const;
    bool HasUnreportedErrors() const;

    // Field names in attributes and in the text, passed through the document's renames.
    FieldName GetFieldName(const VString& attrName) const;
    FieldName GetFieldName(const VString& attrName, QualifiedNameCache& cache) const;
    // Read as a name of that data source, renamed, and given back without its root.
    FieldName GetLocalFieldName(const VString& attrName, const VString& dataSourceName) const;
    FieldName GetLocalFieldName(
        const VString& attrName, const VString& dataSourceName, QualifiedNameCache& cache) const;
    FieldName GetTextAsFieldName() const;
    FieldName GetTextAsFieldName(QualifiedNameCache& cache) const;

    // The two raise a LogicException when the element has no document.
    void AddCaptionRename(const VString& oldCaption, const VString& newCaption);
    void AddFieldRename(const FieldName& oldName, const FieldName& newName);
    // The document's answers; the argument unchanged when the element has none.
    FieldName RenameField(const FieldName& field) const;
    VString RenameDataSource(const VString& name) const;
    VString RenameDataConnection(const VString& name) const;
    VString RenameMapSource(const VString& name) const;
    // The new caption for the value of that attribute. Raises a LogicException when the
    // element has no document.
    VString GetCaptionRenameIfItExists(const VString& attrName) const;

private:
    friend class DOM;
    friend class DOMBuilder;
    friend class DOMElementChildren;
    friend class DocumentDiagnostics;

    using Children = std::vector<std::unique_ptr<DOMElement>>;

    // For elements that are made together.
    static void* operator new(std::size_t, ElementPages& pages);
    static void operator delete(void* element, ElementPages&) noexcept { operator delete(element); }

    // Name, text and attributes of `other`, for that document and parent.
    DOMElement(const DOMElement& other, DOM* manager, DOMElement* parent);

    // Copies of the children of `source`, with their subtrees and diagnostics, at the end of
    // `into`; they get this element's document and this element as their parent.
    void CopyChildrenOf(const DOMElement& source, Children& into);
    void DestroyChildren() noexcept;
    // Assigns and returns the old children. `other` is not this element.
    Children Assign(const DOMElement& other);
    // Sets the document of the whole subtree, without allocating and without recursion.
    void SetManager(DOM* manager) noexcept;
    // Moves the subtrees, which have one document (or none), to this element's document. When it
    // throws, nothing has changed.
    void ChangeDocument(const std::unique_ptr<DOMElement>* first, std::size_t count);
    DocumentDiagnostics& RequireDiagnostics(const char* operation, int line, std::uint32_t code) const;

    ElementLinks& GetLinks() const;
    // A removed child still links to this element as its parent.
    bool HasRemovedChildren() const;
    // This element is about to leave its parent's children, or is a new copy. When it throws, nothing has
    // changed.
    void Detach();
    // This element is about to get another parent. `manager` is its document until now.
    void EndDetachment(DOM* manager) noexcept;
    // Makes the links to this dying element null.
    void CutLinks() noexcept;
    // Makes the links to a dying document null.
    static void DocumentDies(DOM& document) noexcept;

    // Searches from both ends; the end when there is no such child.
    Children::iterator FindChild(const DOMElement& child);
    Children::iterator RequireChild(const DOMElement& child);
    DOMElement* FindChildByName(const VString& name) const noexcept;
    // Raises a LogicException when `child` is this element or above it. Linear in the smaller of the
    // child's subtree and this element's depth.
    void RequireNotBelow(const DOMElement& child) const;
    bool IsAtOrBelow(const DOMElement& top) const;
    // A new child at the end.
    DOMElement& AddNewChild(const VString& name, ElementPages& pages);
    DOMElement& TakeNewChild(std::unique_ptr<DOMElement>&& child) noexcept;
    // Room for that many more children.
    void MakeRoom(std::size_t count);
    void Grow(std::size_t count);
    // The last steps of an insertion; room is made, the document is set.
    DOMElement& Place(std::unique_ptr<DOMElement>&& child, const DOMElement* before);
    // From its place among this element's children to the other parent.
    void MoveChild(DOMElement& child, DOMElement& newParent, const DOMElement* before);
    // As if each were inserted before `before` in turn.
    void PlaceAll(Children&& children, const DOMElement* before);
    // Makes this element the child's parent.
    void Link(DOMElement& child) noexcept;

    // Fixed after construction or an insertion: who manages and who holds this element.
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
    // Null for most elements.
    mutable std::unique_ptr<ElementLinks> m_links;
};
