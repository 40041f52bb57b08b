#include "vancorexml/main/parser/DOMElement.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"
#include "vancorexml/main/parser/ElementLinks.h"
#include "vancorexml/main/parser/ElementPages.h"
#include "vansys/LogicException.h"

#if defined(__GLIBCXX__) && defined(__LP64__)
// Documents have millions of elements, so this size must not grow unnoticed. An element of a parse takes 120 bytes:
// this size and the page pointer in front of it.
static_assert(sizeof(DOMElement) == 112);
#endif

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\DOMElement";
constexpr AssertionSite ChildIsNull{File, 412, "child", 0x3E5D90A4};  // own code
constexpr AssertionSite OwnDescendant{
    File, 420, "An element cannot become its own descendant.", 0x7A41C0D3};  // own code
constexpr AssertionSite AdoptedHasNoParent{File, 492, "Cannot adopt a child without an existing parent.", 0x956B8EC3};
constexpr AssertionSite MovedHasNoParent{File, 530, "m_parent", 0x5C0E21B7};  // own code
constexpr AssertionSite MovedToFrontHasNoParent{File, 546, "parent", 0xD66645D1};
constexpr AssertionSite NotAChild{File, 556, "i != m_children.end()", 0x65F1A21B};

}  // namespace Assertions

[[noreturn]] void ThrowMissing(const VString& name, std::uint32_t code, const char* key)
{
    throw DOMException(name,
        VError::ErrorInfo(
            VantoraError::MakeError(code, key), VError::ErrorSource::Caller, VError::StatusCode::Unknown));
}

void LogMissingBefore()
{
    LogMessage(VLog::Warn,
        "DOMElement was asked to insert before a non-existent child.",
        VError::ErrorInfo(VantoraError::MakeError(0xD78DE10E, "LogSite_MissingDomElement_0xD78DE10E"),
            VError::ErrorSource::Product,
            VError::StatusCode::Unknown));
}

// Compares name, text, attributes and number of children; the caller compares the children.
bool DiffersWithoutChildren(const DOMElement& a, const DOMElement& b)
{
    return a.GetName() != b.GetName() || a.GetText() != b.GetText() || a.GetAttributes() != b.GetAttributes() ||
        a.GetChildren().size() != b.GetChildren().size();
}

}  // namespace

void* DOMElement::operator new(std::size_t size)
{
    return ElementPages::AllocateStandalone(size);
}

void* DOMElement::operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* DOMElement::operator new(std::size_t, ElementPages& pages)
{
    return pages.Allocate();
}

void DOMElement::operator delete(void* element) noexcept
{
    if (element)
        ElementPages::Free(element);
}

DOMElement::DOMElement(const VString& name) : m_name(name) {}

DOMElement::DOMElement(VString&& name) : m_name(std::move(name)) {}

DOMElement::DOMElement(const DOMElement& other, DOM* manager, DOMElement* parent)
    : m_manager(manager),
      m_parent(parent),
      m_name(other.m_name),
      m_text(other.m_text),
      m_attributes(other.m_attributes)
{}

// Delegates to the constructor above. After it the object is complete, so an exception in the body runs the
// destructor.
DOMElement::DOMElement(const DOMElement& other) : DOMElement(other, other.m_manager, nullptr)
{
    RegisterDetached();
    if (m_manager)
        m_manager->m_diagnostics->CopyErrorsAndWarningsForNode(other, this);
    CopyChildrenOf(other, m_children);
}

DOMElement::~DOMElement()
{
    DestroyChildren();
    if (m_links)
        ClearIncomingLinks();
    // Must be the last step. While children or links still lead to this element, a query on another thread could
    // add an interval for it again.
    if (m_manager)
        m_manager->m_diagnostics->ElementDies(*this);
}

DOMElement& DOMElement::operator=(const DOMElement& other)
{
    if (&other != this)
        Assign(other);
    return *this;
}

// Builds the new content before it drops the old: `other` may be an ancestor or a descendant, and a
// failure must leave this element unchanged.
DOMElement::Children DOMElement::Assign(const DOMElement& other)
{
    AttributeMap attributes = other.m_attributes;
    Children children;
    CopyChildrenOf(other, children);
    if (m_manager)
        m_manager->m_diagnostics->CopyErrorsAndWarningsForNode(other, this);
    SetName(other.m_name);
    SetText(other.m_text, false);
    m_attributes.swap(attributes);
    m_children.swap(children);
    return children;
}

bool DOMElement::operator!=(const DOMElement& other) const
{
    if (DiffersWithoutChildren(*this, other))
        return true;
    std::vector<std::pair<const DOMElement*, const DOMElement*>> equal{{this, &other}};
    while (!equal.empty()) {
        const auto [a, b] = equal.back();
        equal.pop_back();
        for (std::size_t i = 0; i < a->m_children.size(); ++i) {
            const DOMElement& childOfA = *a->m_children[i];
            const DOMElement& childOfB = *b->m_children[i];
            if (DiffersWithoutChildren(childOfA, childOfB))
                return true;
            if (childOfA.HasChildren())
                equal.emplace_back(&childOfA, &childOfB);
        }
    }
    return false;
}

void DOMElement::CopyChildrenOf(const DOMElement& source, Children& into)
{
    struct Pending {
        const DOMElement* source;
        DOMElement* parent;
        Children* into;
    };
    ElementPages pages(sizeof(DOMElement));
    std::vector<Pending> stack;
    const auto pushChildren = [&stack](const DOMElement& of, DOMElement& parent, Children& list) {
        list.reserve(of.m_children.size());
        for (auto i = of.m_children.rbegin(); i != of.m_children.rend(); ++i)
            stack.push_back({i->get(), &parent, &list});
    };
    pushChildren(source, *this, into);
    while (!stack.empty()) {
        const Pending pending = stack.back();
        stack.pop_back();
        pending.into->push_back(
            std::unique_ptr<DOMElement>(new (pages) DOMElement(*pending.source, m_manager, pending.parent)));
        DOMElement& copy = *pending.into->back();
        copy.m_position = static_cast<std::uint32_t>(pending.into->size() - 1);
        if (m_manager)
            m_manager->m_diagnostics->CopyErrorsAndWarningsForNode(*pending.source, &copy);
        pushChildren(*pending.source, copy, copy.m_children);
    }
}

// Does not recurse: descends to the last leaf, returns to its parent by the parent link, destroys the leaf, and
// repeats this.
void DOMElement::DestroyChildren() noexcept
{
    DOMElement* i = this;
    for (;;) {
        while (!i->m_children.empty())
            i = i->m_children.back().get();
        if (i == this)
            return;
        i = i->m_parent;
        i->m_children.pop_back();
    }
}

void DOMElement::SetText(VString&& text) noexcept
{
    m_text = std::move(text);
    m_encoded = false;
}

void DOMElement::SetText(const VString& text, bool encoded)
{
    m_text = text;
    m_encoded = encoded;
}

void DOMElement::AppendText(const VString& text, bool encoded)
{
    m_text += text;
    m_encoded = m_encoded && encoded;
}

bool DOMElement::StringToBool(const VString& text, bool& out)
{
    const bool isTrue = text == "true" || text == "yes" || text == "1";
    if (!isTrue && text != "false" && text != "no" && text != "0")
        return false;
    out = isTrue;
    return true;
}

VString DOMElement::GetAttribute(const VString& name) const
{
    const AttributeMap::const_iterator found = m_attributes.find(name);
    return found != m_attributes.end() ? found->second : VString();
}

void DOMElement::RequireAttribute(const VString& name) const
{
    if (!HasAttribute(name))
        ThrowMissing(name, 0x3473F8A4, "DOMException_RequiredDOMAttribute_0x3473F8A4");
}

VString DOMElement::GetParentAttr(const VString& name) const
{
    for (const DOMElement* i = this; i; i = i->m_parent) {
        const AttributeMap::const_iterator found = i->m_attributes.find(name);
        if (found != i->m_attributes.end())
            return found->second;
    }
    return VString();
}

void DOMElement::ReserveChildren(std::size_t count)
{
    if (count > m_children.capacity() - m_children.size())
        GrowChildren(count);
}

DOMElement& DOMElement::AddNewChild(const VString& name, const DOMElement* before)
{
    ReserveChildren(1);
    auto child = std::make_unique<DOMElement>(name);
    if (!before)
        return AppendNewChild(std::move(child));
    child->m_manager = m_manager;
    return InsertBefore(std::move(child), before);
}

DOMElement& DOMElement::AddNewChild(const VString& name, ElementPages& pages)
{
    ReserveChildren(1);
    return AppendNewChild(std::unique_ptr<DOMElement>(new (pages) DOMElement(name)));
}

// No links or diagnostics can refer to the new element yet, so none need an update.
DOMElement& DOMElement::AppendNewChild(std::unique_ptr<DOMElement>&& child) noexcept
{
    child->m_manager = m_manager;
    child->m_parent = this;
    child->m_position = static_cast<std::uint32_t>(m_children.size());
    m_children.push_back(std::move(child));
    return *m_children.back();
}

DOMElement& DOMElement::InsertChild(std::unique_ptr<DOMElement>&& child, const DOMElement* before)
{
    if (!child)
        ThrowLogicException(Assertions::ChildIsNull);
    DOMElement& element = *child;
    RequireNotBelow(element);
    ReserveChildren(1);
    DOM* const oldManager = element.m_manager;
    if (oldManager != m_manager)
        ChangeDocument(&child, 1);
    if (element.m_links)
        element.UnregisterDetached(oldManager);
    return InsertBefore(std::move(child), before);
}

DOMElement* DOMElement::GetChild(const VString& name)
{
    return FindChildByName(name);
}

const DOMElement* DOMElement::GetChild(const VString& name) const
{
    return FindChildByName(name);
}

DOMElement& DOMElement::GetOrNewChild(const VString& name)
{
    DOMElement* const child = FindChildByName(name);
    return child ? *child : AddNewChild(name, nullptr);
}

VString DOMElement::GetChildText(const VString& name) const
{
    const DOMElement* const child = FindChildByName(name);
    return child ? child->m_text : VString();
}

DOMElement& DOMElement::GetRequiredChild(const VString& name)
{
    return const_cast<DOMElement&>(std::as_const(*this).GetRequiredChild(name));
}

const DOMElement& DOMElement::GetRequiredChild(const VString& name) const
{
    const DOMElement* const child = FindChildByName(name);
    if (!child)
        ThrowMissing(name, 0x26487BC2, "DOMException_RequiredChildMissing_0x26487BC2");
    return *child;
}

DOMElement& DOMElement::GetRequiredChildByAttr(const VString& attrName, const VString& value)
{
    return const_cast<DOMElement&>(std::as_const(*this).GetRequiredChildByAttr(attrName, value));
}

const DOMElement& DOMElement::GetRequiredChildByAttr(const VString& attrName, const VString& value) const
{
    for (const std::unique_ptr<DOMElement>& child : m_children) {
        const AttributeMap::const_iterator found = child->m_attributes.find(attrName);
        if (found != child->m_attributes.end() && found->second == value)
            return *child;
    }
    ThrowMissing(attrName, 0x21039DFE, "DOMException_RequiredChildByAttribute_0x21039DFE");
}

std::unique_ptr<DOMElement> DOMElement::RemoveChild(DOMElement& child)
{
    const Children::iterator position = RequireChild(child);
    child.RegisterDetached();
    std::unique_ptr<DOMElement> removed = std::move(*position);
    m_children.erase(position);
    return removed;
}

std::unique_ptr<DOMElement> DOMElement::RemoveChild(const VString& name)
{
    DOMElement* const child = FindChildByName(name);
    return child ? RemoveChild(*child) : nullptr;
}

std::vector<std::unique_ptr<DOMElement>> DOMElement::RemoveChildren()
{
    for (auto i = m_children.begin(); i != m_children.end(); ++i) {
        try {
            (*i)->RegisterDetached();
        } catch (...) {
            while (i != m_children.begin()) {
                --i;
                (*i)->UnregisterDetached(m_manager);
            }
            throw;
        }
    }
    return std::exchange(m_children, Children());
}

std::unique_ptr<DOMElement> DOMElement::RemoveIfEmpty(DOMElement& child)
{
    return child.IsEmpty() ? RemoveChild(child) : nullptr;
}

std::unique_ptr<DOMElement> DOMElement::RemoveIfEmpty(const VString& name)
{
    DOMElement* const child = FindChildByName(name);
    return child ? RemoveIfEmpty(*child) : nullptr;
}

bool DOMElement::IsChildOf(const DOMElement& ancestor) const noexcept
{
    for (const DOMElement* i = m_parent; i; i = i->m_parent) {
        if (i == &ancestor)
            return true;
    }
    return false;
}

void DOMElement::Move(DOMElement& newParent, const DOMElement* before)
{
    if (!m_parent)
        ThrowLogicException(Assertions::MovedHasNoParent);
    m_parent->MoveChild(*this, newParent, before);
}

void DOMElement::MoveToFront()
{
    if (!m_parent)
        ThrowLogicException(Assertions::MovedToFrontHasNoParent);
    if (m_parent->m_children.size() > 1)
        Move(*m_parent, m_parent->m_children.front().get());
}

void DOMElement::Adopt(DOMElement& child, const DOMElement* before)
{
    if (!child.m_parent)
        ThrowLogicException(Assertions::AdoptedHasNoParent);
    if (&child == this || child.m_parent == this)
        return;
    child.m_parent->MoveChild(child, *this, before);
}

void DOMElement::AdoptChildren(DOMElement& other, const DOMElement* before)
{
    if (&other == this || other.m_children.empty())
        return;
    if (IsAtOrBelow(other)) {
        for (const DOMElement* i = this; i; i = i->m_parent) {
            if (i->m_parent == &other && !i->IsRemovedChild())
                ThrowLogicException(Assertions::OwnDescendant);
        }
    }
    ReserveChildren(other.m_children.size());
    if (other.m_manager != m_manager)
        ChangeDocument(other.m_children.data(), other.m_children.size());
    InsertAllBefore(std::exchange(other.m_children, Children()), before);
}

void DOMElement::AdoptAttribute(DOMElement& other, const VString& name)
{
    const AttributeMap::iterator found = other.m_attributes.find(name);
    if (found == other.m_attributes.end() || &other == this)
        return;
    m_attributes.insert_or_assign(name, found->second);
    other.m_attributes.erase(found);
}

void DOMElement::AdoptAttributes(DOMElement& other, bool overwrite)
{
    if (&other == this)
        return;
    if (m_attributes.empty()) {
        m_attributes = std::move(other.m_attributes);
        return;
    }
    for (const AttributeMap::value_type& attribute : other.m_attributes) {
        if (overwrite)
            m_attributes.insert_or_assign(attribute.first, attribute.second);
        else
            m_attributes.insert(attribute);
    }
    other.m_attributes.clear();
}

// Insertions and removals in front of a child move it by one place each. So a child that was used recently is near its
// stored position, and a caller that empties or fills a list works at one of its ends.
DOMElement::Children::iterator DOMElement::FindChild(const DOMElement& child)
{
    const std::size_t size = m_children.size();
    const auto isAt = [&](std::size_t i) { return m_children[i].get() == &child; };
    const auto found = [&](std::size_t i) {
        m_children[i]->m_position = static_cast<std::uint32_t>(i);
        return m_children.begin() + static_cast<Children::difference_type>(i);
    };
    const std::size_t middle = std::min<std::size_t>(child.m_position, size);
    // The searches from the ends meet in the middle of the list, so together they see every child.
    for (std::size_t distance = 0; 2 * distance < size; ++distance) {
        if (isAt(distance))
            return found(distance);
        if (isAt(size - 1 - distance))
            return found(size - 1 - distance);
        if (middle + distance < size && isAt(middle + distance))
            return found(middle + distance);
        if (distance <= middle && middle - distance < size && isAt(middle - distance))
            return found(middle - distance);
    }
    return m_children.end();
}

DOMElement::Children::iterator DOMElement::RequireChild(const DOMElement& child)
{
    const Children::iterator position = FindChild(child);
    if (position == m_children.end())
        ThrowLogicException(Assertions::NotAChild);
    return position;
}

DOMElement* DOMElement::FindChildByName(const VString& name) const noexcept
{
    for (const std::unique_ptr<DOMElement>& child : m_children) {
        if (child->m_name == name)
            return child.get();
    }
    return nullptr;
}

void DOMElement::RequireNotBelow(const DOMElement& child) const
{
    if (IsAtOrBelow(child))
        ThrowLogicException(Assertions::OwnDescendant);
}

// Alternates one step of a climb from this element with one step of a walk through the subtree of `top`, until
// one of them finds the answer. This element may also be below `top` through a removed child that links into the
// subtree. The walk cannot see removed children, so it gives up when it meets an element that has some.
bool DOMElement::IsAtOrBelow(const DOMElement& top) const
{
    struct Visit {
        const DOMElement* element;
        std::size_t nextChild;
    };
    bool walks = !top.HasRemovedChildren();
    if (walks && top.m_children.empty())
        return this == &top;
    std::vector<Visit> path{{&top, 0}};
    for (const DOMElement* i = this; i; i = i->m_parent) {
        if (i == &top)
            return true;
        if (!walks)
            continue;
        while (!path.empty() && path.back().nextChild == path.back().element->m_children.size())
            path.pop_back();
        if (path.empty())
            return false;
        const DOMElement* const child = path.back().element->m_children[path.back().nextChild++].get();
        if (child == this)
            return true;
        path.push_back({child, 0});
        walks = !child->HasRemovedChildren();
    }
    return false;
}

void DOMElement::GrowChildren(std::size_t count)
{
    // Capacities 3, 7, 15, …: with the allocator's one-word header each block fills a size class exactly.
    m_children.reserve(std::max({m_children.size() + count, 2 * m_children.size() + 1, std::size_t{3}}));
}

void DOMElement::BecomeParentOf(DOMElement& child) noexcept
{
    if (m_manager)
        m_manager->m_diagnostics->ElementMoves(child);
    child.m_parent = this;
}

DOMElement& DOMElement::InsertBefore(std::unique_ptr<DOMElement>&& child, const DOMElement* before)
{
    DOMElement& element = *child;
    const Children::iterator position = before ? FindChild(*before) : m_children.end();
    const bool isMissing = before && position == m_children.end();
    element.m_position = static_cast<std::uint32_t>(position - m_children.begin());
    m_children.insert(position, std::move(child));
    BecomeParentOf(element);
    if (isMissing)
        LogMissingBefore();
    return element;
}

void DOMElement::MoveChild(DOMElement& child, DOMElement& newParent, const DOMElement* before)
{
    const Children::difference_type position = RequireChild(child) - m_children.begin();
    newParent.RequireNotBelow(child);
    newParent.ReserveChildren(1);
    if (m_manager != newParent.m_manager)
        newParent.ChangeDocument(&m_children[static_cast<std::size_t>(position)], 1);
    std::unique_ptr<DOMElement> moved = std::move(m_children[static_cast<std::size_t>(position)]);
    m_children.erase(m_children.begin() + position);
    newParent.InsertBefore(std::move(moved), before);
}

void DOMElement::InsertAllBefore(Children&& children, const DOMElement* before)
{
    Children::iterator position = before ? FindChild(*before) : m_children.end();
    const bool isMissing = before && position == m_children.end();
    std::size_t missed = isMissing ? children.size() : 0;
    if (isMissing) {
        // If `before` is itself one of the adopted children, the children after it are inserted before it. The others
        // and `before` itself cannot find it and are appended.
        const auto own = std::find_if(children.begin(), children.end(), [before](const std::unique_ptr<DOMElement>& i) {
            return i.get() == before;
        });
        if (own != children.end()) {
            missed = static_cast<std::size_t>(own - children.begin()) + 1;
            std::rotate(own, own + 1, children.end());
        }
    }
    auto place = static_cast<std::uint32_t>(position - m_children.begin());
    for (const std::unique_ptr<DOMElement>& child : children) {
        BecomeParentOf(*child);
        child->m_position = place++;
    }
    m_children.insert(position, std::make_move_iterator(children.begin()), std::make_move_iterator(children.end()));
    for (; missed != 0; --missed)
        LogMissingBefore();
}
