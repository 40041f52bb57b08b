// The node of the lightweight tree.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/XMLExport.h"

// An element with a name, attributes and, in document order, texts and child elements that
// interleave freely. It has no document, no parent and no diagnostics; use DOMElement for
// those.
//
// Ownership: an element owns its children; handing a child in or out moves that ownership.
// References into an element die with it, and those to nodes when nodes are added or removed.
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
    // Whether the text appended last was escaped already; a mark for code that writes the element.
    bool IsEncoded() const noexcept { return m_encoded; }
    void SetEncoded(bool encoded) noexcept { m_encoded = encoded; }

    AttributeMap& GetAttributes() noexcept { return m_attributes; }
    const AttributeMap& GetAttributes() const noexcept { return m_attributes; }
    void SetAttributes(const AttributeMap& attributes) { m_attributes = attributes; }
    // Nothing when `attributes` is this element's own map.
    void SetAttributes(AttributeMap&& attributes) noexcept { m_attributes = std::move(attributes); }
    void SetAttribute(const VString& name, const VString& value) { m_attributes.insert_or_assign(name, value); }
    void RemoveAttribute(const VString& name) { m_attributes.erase(name); }
    bool HasAttribute(const VString& name) const noexcept { return m_attributes.contains(name); }
    bool HasAttributes() const noexcept { return !m_attributes.empty(); }
    // Raises a LogicException when there is no such attribute.
    VString GetAttribute(const VString& name) const;
    // False, and `value` untouched, when there is no such attribute.
    bool TryGetAttribute(const VString& name, VString& value) const;

    // The three that take an element raise a LogicException for null. The tree is unchanged when
    // an exception is raised; an element handed in is destroyed.
    void AppendChild(std::unique_ptr<StandaloneDOMElement> element);
    // A text right behind a text is merged into it. `encoded` replaces the mark.
    void AppendText(const VString& text, bool encoded);
    void AppendText(const VString& text) { AppendText(text, false); }
    // Inserts before the first child that compares deeply equal to `before`; identity does not
    // matter. Raises a LogicException when there is no such child.
    void InsertChildBefore(std::unique_ptr<StandaloneDOMElement> element, const StandaloneDOMElement& before);
    // Removes `child`, found by identity, and returns it. Raises a LogicException when it is not
    // a child of this element.
    std::unique_ptr<StandaloneDOMElement> RemoveChild(const StandaloneDOMElement& child);
    // Removes all children and returns them in order; texts stay.
    std::vector<std::unique_ptr<StandaloneDOMElement>> RemoveChildren();
    // Linear in the subtree; takes no memory.
    void EraseAllChildNodes();

    // Direct children only, here and below. The first of that name; null when there is none.
    StandaloneDOMElement* GetChild(const VString& name);
    const StandaloneDOMElement* GetChild(const VString& name) const;
    std::vector<std::reference_wrapper<const StandaloneDOMElement>> GetChildren() const;
    std::vector<std::reference_wrapper<const VString>> GetTextNodes() const;
    // All texts, concatenated.
    VString GetAllText() const;
    bool HasChildren() const noexcept;
    bool HasText() const noexcept;
    bool HasTextOrChildren() const noexcept { return !m_nodes.empty(); }
    // No nodes and no attributes.
    bool IsEmpty() const noexcept { return m_nodes.empty() && m_attributes.empty(); }
    // Calls one of the two for each node, in order. Throws std::bad_function_call when it comes to
    // a node whose callback is empty. The callbacks must not add or remove nodes.
    void WalkNodes(std::function<void(StandaloneDOMElement&)> onElement, std::function<void(VString&)> onText);
    void WalkNodes(
        std::function<void(const StandaloneDOMElement&)> onElement, std::function<void(const VString&)> onText) const;

    // In depth: names, attributes whatever their order, nodes in order. The encoded mark does not
    // count. Linear.
    bool operator==(const StandaloneDOMElement& other) const;
    bool operator!=(const StandaloneDOMElement& other) const { return !(*this == other); }
    // A deep copy, with the encoded marks. Linear.
    std::unique_ptr<StandaloneDOMElement> Clone() const;

private:
    // Either a text or an element.
    struct Node {
        std::optional<VString> text;
        std::unique_ptr<StandaloneDOMElement> element;
    };

    static void DestroyTree(std::unique_ptr<StandaloneDOMElement> element) noexcept;
    // Copies the name, the attributes and the encoded mark, but no nodes.
    std::unique_ptr<StandaloneDOMElement> CloneWithoutNodes() const;
    // Compares everything except the child elements.
    bool IsEqualWithoutChildren(const StandaloneDOMElement& other) const;

    VString m_name;
    AttributeMap m_attributes;
    std::vector<Node> m_nodes;
    bool m_encoded = false;
};
