// The node of the lightweight tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/XMLExport.h"

class ElementPages;

// A name, attributes, and a sequence of nodes in document order. A node is a text or a child element.
// The element has no document, no parent and no diagnostics; use DOMElement if you need those.
//
// Ownership: an element owns its children. Inserting a child transfers ownership to the element,
// removing a child returns it. References into an element die with it. References to texts are
// invalidated when nodes are added or removed. Elements made by one parse share memory pages, so a single
// survivor may keep the memory of up to a thousand elements.
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
    void AppendText(VString&& text);
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
    friend class StandaloneDOMBuilder;

    // Allocates the element in `pages`.
    static void* operator new(std::size_t, ElementPages& pages);
    static void operator delete(void* element, ElementPages&) noexcept { operator delete(element); }

    // Either an element or, if `element` is null, a text.
    struct Node {
        VString text;
        std::unique_ptr<StandaloneDOMElement> element;
    };

    // The nodes in document order. A single node is stored in the list object, several in one block, because most
    // elements have one text and nothing else. The operations are those of std::vector, but with indices in place of
    // iterators. If one throws std::bad_alloc, the list is unchanged.
    class NodeList {
    public:
        // NOLINTNEXTLINE(modernize-use-equals-default): a defaulted one is deleted, because m_node has a constructor.
        NodeList() noexcept {}
        NodeList(const NodeList&) = delete;
        NodeList& operator=(const NodeList&) = delete;
        ~NodeList()
        {
            clear();
            if (IsInBlock())
                ::operator delete(m_block);
        }

        bool empty() const noexcept { return m_size == 0; }
        std::size_t size() const noexcept { return m_size; }
        Node* begin() noexcept { return IsInBlock() ? m_block : &m_node; }
        Node* end() noexcept { return begin() + m_size; }
        const Node* begin() const noexcept { return IsInBlock() ? m_block : &m_node; }
        const Node* end() const noexcept { return begin() + m_size; }
        Node& operator[](std::size_t i) noexcept { return begin()[i]; }
        const Node& operator[](std::size_t i) const noexcept { return begin()[i]; }
        Node& front() noexcept { return begin()[0]; }
        Node& back() noexcept { return begin()[m_size - 1]; }

        void push_back(Node&& node)
        {
            if (m_size == m_capacity)
                Grow(2 * std::size_t{m_capacity} + 1);
            new (begin() + m_size) Node(std::move(node));
            ++m_size;
        }
        void insert(std::size_t position, Node&& node);
        void erase(std::size_t position) noexcept;
        void pop_back() noexcept { back().~Node(), --m_size; }
        // Destroys all nodes from `size` on.
        void truncate(std::size_t size) noexcept
        {
            while (m_size != size)
                pop_back();
        }
        void clear() noexcept { truncate(0); }
        void reserve(std::size_t capacity)
        {
            if (capacity > m_capacity)
                Grow(capacity);
        }

    private:
        bool IsInBlock() const noexcept { return m_capacity > 1; }
        void Grow(std::size_t capacity);

        std::uint32_t m_size = 0;
        std::uint32_t m_capacity = 1;
        union {
            Node m_node;    // the only node, if the capacity is 1
            Node* m_block;  // the block, if the capacity is larger
        };
    };

    static void DestroyTree(std::unique_ptr<StandaloneDOMElement> element) noexcept;
    // Copies the name, the attributes and the encoded flag, but no nodes.
    std::unique_ptr<StandaloneDOMElement> CloneWithoutNodes() const;
    // Compares everything except the child elements.
    bool IsEqualWithoutChildren(const StandaloneDOMElement& other) const;

    VString m_name;
    AttributeMap m_attributes;
    NodeList m_nodes;
    bool m_encoded = false;
};
