// The node of the lightweight tree.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/XMLExport.h"

// A name, attributes, and a sequence of nodes in document order. A node is a text or a child element.
// The element has no document, no parent and no diagnostics; use DOMElement if you need those.
//
// Ownership: an element owns its children. Inserting a child transfers ownership to the element,
// removing a child returns it. References into an element die with it. References to texts are
// invalidated when nodes are added or removed.
//
// Threads: one writer or many readers.
//
// No operation uses a call stack that grows with the depth of the tree.
//
//     StandaloneDOMElement note("note");
//     note.AppendText("see ");
//     note.AppendChild(std::make_unique<StandaloneDOMElement>("link"));
class VANCOREXML_API StandaloneDOMElement {
public:
    explicit StandaloneDOMElement(const VString& name);
    explicit StandaloneDOMElement(VString&& name);
    // Destroys the whole subtree. Linear.
    ~StandaloneDOMElement();
    StandaloneDOMElement(const StandaloneDOMElement&) = delete;
    StandaloneDOMElement& operator=(const StandaloneDOMElement&) = delete;

    const VString& GetName() const noexcept { return m_name; }
    void SetName(const VString& name) { m_name = name; }
    // True if the text appended last was already escaped. For code that writes the element.
    bool IsEncoded() const noexcept { return m_encoded; }
    void SetEncoded(bool encoded) noexcept { m_encoded = encoded; }

    AttributeMap& GetAttributes() noexcept { return m_attributes; }
    const AttributeMap& GetAttributes() const noexcept { return m_attributes; }
    void SetAttributes(const AttributeMap& attributes) { m_attributes = attributes; }
    // Does nothing if `attributes` is this element's own map.
    void SetAttributes(AttributeMap&& attributes) noexcept { m_attributes = std::move(attributes); }
    void SetAttribute(const VString& name, const VString& value) { m_attributes.insert_or_assign(name, value); }
    void RemoveAttribute(const VString& name) { m_attributes.erase(name); }
    bool HasAttribute(const VString& name) const noexcept { return m_attributes.contains(name); }
    bool HasAttributes() const noexcept { return !m_attributes.empty(); }
    // Raises a LogicException if there is no such attribute.
    VString GetAttribute(const VString& name) const;
    // Returns false, without changing `value`, if there is no such attribute.
    bool TryGetAttribute(const VString& name, VString& value) const;

    // If an operation below raises an exception, the tree is unchanged and an element passed to the
    // operation is destroyed.

    // Raises a LogicException if `element` is null.
    void AppendChild(std::unique_ptr<StandaloneDOMElement> element);
    // Appends to the last node if it is a text, else appends a new node. Sets the encoded flag to
    // `encoded`.
    void AppendText(const VString& text, bool encoded);
    void AppendText(const VString& text) { AppendText(text, false); }
    // Inserts before the first child that compares deeply equal to `before`; identity does not
    // matter. Raises a LogicException if there is no such child or if `element` is null.
    void InsertChildBefore(std::unique_ptr<StandaloneDOMElement> element, const StandaloneDOMElement& before);
    // Removes `child` and returns it. Raises a LogicException if this very object is not a child of
    // this element.
    std::unique_ptr<StandaloneDOMElement> RemoveChild(const StandaloneDOMElement& child);
    // Removes all children and returns them in order. The texts stay.
    std::vector<std::unique_ptr<StandaloneDOMElement>> RemoveChildren();
    // Destroys all children and texts. Linear in the subtree. Does not allocate.
    void EraseAllChildNodes();

    // All lookups search direct children only. GetChild returns the first child named `name`, or null.
    StandaloneDOMElement* GetChild(const VString& name);
    const StandaloneDOMElement* GetChild(const VString& name) const;
    std::vector<std::reference_wrapper<const StandaloneDOMElement>> GetChildren() const;
    std::vector<std::reference_wrapper<const VString>> GetTextNodes() const;
    // Returns the concatenated texts.
    VString GetAllText() const;
    bool HasChildren() const noexcept;
    bool HasText() const noexcept;
    bool HasTextOrChildren() const noexcept { return !m_nodes.empty(); }
    // True if the element has no nodes and no attributes.
    bool IsEmpty() const noexcept { return m_nodes.empty() && m_attributes.empty(); }
    // Calls `onElement` or `onText` for each node, in order. Throws std::bad_function_call at the first
    // node whose callback is empty. The callbacks must not add or remove nodes.
    void WalkNodes(std::function<void(StandaloneDOMElement&)> onElement, std::function<void(VString&)> onText);
    void WalkNodes(
        std::function<void(const StandaloneDOMElement&)> onElement, std::function<void(const VString&)> onText) const;

    // Compares names, attributes and nodes of the two subtrees. Ignores encoded flags and the order of
    // attributes. Linear.
    bool operator==(const StandaloneDOMElement& other) const;
    bool operator!=(const StandaloneDOMElement& other) const { return !(*this == other); }
    // Returns a deep copy, which includes the encoded flags. Linear.
    std::unique_ptr<StandaloneDOMElement> Clone() const;

private:
    // Either a text or an element.
    struct Node {
        std::optional<VString> text;
        std::unique_ptr<StandaloneDOMElement> element;
    };

    static void DestroyTree(std::unique_ptr<StandaloneDOMElement> element) noexcept;
    // Copies the name, the attributes and the encoded flag, but no nodes.
    std::unique_ptr<StandaloneDOMElement> CloneWithoutNodes() const;
    // Compares everything except the child elements.
    bool IsEqualWithoutChildren(const StandaloneDOMElement& other) const;

    VString m_name;
    AttributeMap m_attributes;
    std::vector<Node> m_nodes;
    bool m_encoded = false;
};
