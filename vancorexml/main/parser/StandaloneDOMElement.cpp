#include "vancorexml/main/parser/StandaloneDOMElement.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <utility>

#include "vancorexml/main/parser/ElementPages.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\StandaloneDOMElement";
constexpr AssertionSite NoSuchAttribute{File, 224, "it != m_attributes.end()", 0x16A1A876};
constexpr AssertionSite AppendedChildIsNull{File, 293, "element != nullptr", 0xE9519449};
constexpr AssertionSite InsertedChildIsNull{File, 300, "element != nullptr", 0x41228A24};
constexpr AssertionSite NoChildEqualsBefore{File, 316, "false", 0xAD7AC3BE};
constexpr AssertionSite RemovedIsNoChild{File, 342, "false", 0x108BF60C};

}  // namespace Assertions

}  // namespace

void* StandaloneDOMElement::operator new(std::size_t size)
{
    return ElementPages::AllocateStandalone(size);
}

void* StandaloneDOMElement::operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* StandaloneDOMElement::operator new(std::size_t, ElementPages& pages)
{
    return pages.Allocate();
}

void StandaloneDOMElement::operator delete(void* element) noexcept
{
    if (element)
        ElementPages::Free(element);
}

void StandaloneDOMElement::NodeList::Grow(std::size_t capacity)
{
    if (capacity > (std::numeric_limits<std::uint32_t>::max)())
        throw std::length_error("too many nodes");
    auto* const block = static_cast<Node*>(::operator new(capacity * sizeof(Node)));
    std::uninitialized_move_n(begin(), m_size, block);
    std::destroy_n(begin(), m_size);
    if (IsInBlock())
        ::operator delete(m_block);
    m_block = block;
    m_capacity = static_cast<std::uint32_t>(capacity);
}

void StandaloneDOMElement::NodeList::insert(std::size_t position, Node&& node)
{
    push_back(std::move(node));
    std::rotate(begin() + position, end() - 1, end());
}

void StandaloneDOMElement::NodeList::erase(std::size_t position) noexcept
{
    std::move(begin() + position + 1, end(), begin() + position);
    pop_back();
}

StandaloneDOMElement::StandaloneDOMElement(const VString& name) : m_name(name) {}

StandaloneDOMElement::StandaloneDOMElement(VString&& name) : m_name(std::move(name)) {}

StandaloneDOMElement::~StandaloneDOMElement()
{
    EraseAllChildNodes();
}

// Neither recurses nor allocates. Elements still to be destroyed form a stack linked through
// their first node's `element`, whose own content is moved out first.
void StandaloneDOMElement::DestroyTree(std::unique_ptr<StandaloneDOMElement> element) noexcept
{
    std::unique_ptr<StandaloneDOMElement> stack;
    for (;;) {
        while (element && !element->m_nodes.empty()) {
            std::unique_ptr<StandaloneDOMElement> first = std::move(element->m_nodes.front().element);
            element->m_nodes.front().element = std::move(stack);
            stack = std::move(element);
            element = std::move(first);
        }
        element.reset();
        if (!stack)
            return;
        if (stack->m_nodes.size() > 1) {
            element = std::move(stack->m_nodes.back().element);
            stack->m_nodes.pop_back();
            continue;
        }
        std::unique_ptr<StandaloneDOMElement> below = std::move(stack->m_nodes.front().element);
        stack->m_nodes.clear();
        stack = std::move(below);
    }
}

VString StandaloneDOMElement::GetAttribute(const VString& name) const
{
    const auto found = m_attributes.find(name);
    if (found == m_attributes.end())
        ThrowLogicException(Assertions::NoSuchAttribute);
    return found->second;
}

bool StandaloneDOMElement::TryGetAttribute(const VString& name, VString& value) const
{
    const auto found = m_attributes.find(name);
    if (found == m_attributes.end())
        return false;
    value = found->second;
    return true;
}

void StandaloneDOMElement::AppendChild(std::unique_ptr<StandaloneDOMElement> element)
{
    if (!element)
        ThrowLogicException(Assertions::AppendedChildIsNull);
    m_nodes.push_back({VString(), std::move(element)});
}

void StandaloneDOMElement::AppendText(const VString& text, bool encoded)
{
    if (!m_nodes.empty() && !m_nodes.back().element)
        m_nodes.back().text += text;
    else
        m_nodes.push_back({text, nullptr});
    m_encoded = encoded;
}

void StandaloneDOMElement::AppendText(VString&& text)
{
    if (!m_nodes.empty() && !m_nodes.back().element)
        m_nodes.back().text += text;
    else
        m_nodes.push_back({std::move(text), nullptr});
    m_encoded = false;
}

void StandaloneDOMElement::InsertChildBefore(
    std::unique_ptr<StandaloneDOMElement> element, const StandaloneDOMElement& before)
{
    if (!element)
        ThrowLogicException(Assertions::InsertedChildIsNull);
    const auto place = std::find_if(m_nodes.begin(), m_nodes.end(), [&before](const Node& node) {
        return node.element && *node.element == before;
    });
    if (place == m_nodes.end())
        ThrowLogicException(Assertions::NoChildEqualsBefore);
    m_nodes.insert(static_cast<std::size_t>(place - m_nodes.begin()), {VString(), std::move(element)});
}

std::unique_ptr<StandaloneDOMElement> StandaloneDOMElement::RemoveChild(const StandaloneDOMElement& child)
{
    const auto place = std::find_if(
        m_nodes.begin(), m_nodes.end(), [&child](const Node& node) { return node.element.get() == &child; });
    if (place == m_nodes.end())
        ThrowLogicException(Assertions::RemovedIsNoChild);
    std::unique_ptr<StandaloneDOMElement> removed = std::move(place->element);
    m_nodes.erase(static_cast<std::size_t>(place - m_nodes.begin()));
    return removed;
}

std::vector<std::unique_ptr<StandaloneDOMElement>> StandaloneDOMElement::RemoveChildren()
{
    std::vector<std::unique_ptr<StandaloneDOMElement>> removed;
    removed.reserve(static_cast<std::size_t>(
        std::count_if(m_nodes.begin(), m_nodes.end(), [](const Node& node) { return node.element != nullptr; })));
    const Node* const end = std::remove_if(m_nodes.begin(), m_nodes.end(), [&removed](Node& node) {
        if (!node.element)
            return false;
        removed.push_back(std::move(node.element));
        return true;
    });
    m_nodes.truncate(static_cast<std::size_t>(end - m_nodes.begin()));
    return removed;
}

void StandaloneDOMElement::EraseAllChildNodes()
{
    while (!m_nodes.empty()) {
        DestroyTree(std::move(m_nodes.back().element));
        m_nodes.pop_back();
    }
}

const StandaloneDOMElement* StandaloneDOMElement::GetChild(const VString& name) const
{
    for (const Node& node : m_nodes) {
        if (node.element && node.element->m_name == name)
            return node.element.get();
    }
    return nullptr;
}

StandaloneDOMElement* StandaloneDOMElement::GetChild(const VString& name)
{
    return const_cast<StandaloneDOMElement*>(std::as_const(*this).GetChild(name));
}

std::vector<std::reference_wrapper<const StandaloneDOMElement>> StandaloneDOMElement::GetChildren() const
{
    std::vector<std::reference_wrapper<const StandaloneDOMElement>> children;
    for (const Node& node : m_nodes) {
        if (node.element)
            children.push_back(*node.element);
    }
    return children;
}

std::vector<std::reference_wrapper<const VString>> StandaloneDOMElement::GetTextNodes() const
{
    std::vector<std::reference_wrapper<const VString>> texts;
    for (const Node& node : m_nodes) {
        if (!node.element)
            texts.push_back(node.text);
    }
    return texts;
}

VString StandaloneDOMElement::GetAllText() const
{
    VString all;
    for (const Node& node : m_nodes) {
        if (!node.element)
            all += node.text;
    }
    return all;
}

bool StandaloneDOMElement::HasChildren() const noexcept
{
    return std::any_of(m_nodes.begin(), m_nodes.end(), [](const Node& node) { return node.element != nullptr; });
}

bool StandaloneDOMElement::HasText() const noexcept
{
    return std::any_of(m_nodes.begin(), m_nodes.end(), [](const Node& node) { return node.element == nullptr; });
}

void StandaloneDOMElement::WalkNodes(
    std::function<void(StandaloneDOMElement&)> onElement, std::function<void(VString&)> onText)
{
    for (Node& node : m_nodes) {
        if (!node.element)
            onText(node.text);
        else
            onElement(*node.element);
    }
}

void StandaloneDOMElement::WalkNodes(
    std::function<void(const StandaloneDOMElement&)> onElement, std::function<void(const VString&)> onText) const
{
    for (const Node& node : m_nodes) {
        if (!node.element)
            onText(node.text);
        else
            onElement(*node.element);
    }
}

bool StandaloneDOMElement::IsEqualWithoutChildren(const StandaloneDOMElement& other) const
{
    if (m_name != other.m_name || m_attributes != other.m_attributes || m_nodes.size() != other.m_nodes.size())
        return false;
    return std::equal(m_nodes.begin(), m_nodes.end(), other.m_nodes.begin(), [](const Node& a, const Node& b) {
        return (a.element == nullptr) == (b.element == nullptr) && a.text == b.text;
    });
}

bool StandaloneDOMElement::operator==(const StandaloneDOMElement& other) const
{
    std::vector<std::pair<const StandaloneDOMElement*, const StandaloneDOMElement*>> pending{{this, &other}};
    while (!pending.empty()) {
        const auto [a, b] = pending.back();
        pending.pop_back();
        if (a == b)
            continue;
        if (!a->IsEqualWithoutChildren(*b))
            return false;
        for (std::size_t i = 0; i < a->m_nodes.size(); ++i) {
            if (a->m_nodes[i].element)
                pending.emplace_back(a->m_nodes[i].element.get(), b->m_nodes[i].element.get());
        }
    }
    return true;
}

std::unique_ptr<StandaloneDOMElement> StandaloneDOMElement::CloneWithoutNodes() const
{
    auto clone = std::make_unique<StandaloneDOMElement>(m_name);
    clone->m_attributes = m_attributes;
    clone->m_encoded = m_encoded;
    return clone;
}

std::unique_ptr<StandaloneDOMElement> StandaloneDOMElement::Clone() const
{
    std::unique_ptr<StandaloneDOMElement> top = CloneWithoutNodes();
    std::vector<std::pair<const StandaloneDOMElement*, StandaloneDOMElement*>> pending{{this, top.get()}};
    while (!pending.empty()) {
        const auto [source, clone] = pending.back();
        pending.pop_back();
        clone->m_nodes.reserve(source->m_nodes.size());
        for (const Node& node : source->m_nodes) {
            clone->m_nodes.push_back({node.text, node.element ? node.element->CloneWithoutNodes() : nullptr});
            if (node.element)
                pending.emplace_back(node.element.get(), clone->m_nodes.back().element.get());
        }
    }
    return top;
}
