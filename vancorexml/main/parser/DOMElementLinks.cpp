// How the links of detached elements end with their targets.
#include <utility>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"
#include "vancorexml/main/parser/ElementLinks.h"

namespace {

// Locks the lists of a document and of its elements. Elements without a document need no lock: they
// belong to one thread.
std::unique_lock<std::mutex> Lock(LinkedElements* linked)
{
    return linked ? std::unique_lock<std::mutex>(linked->mutex) : std::unique_lock<std::mutex>();
}

}  // namespace

LinkedElements* DOMElement::LinkedElementsOf(DOM* manager) noexcept
{
    return manager ? manager->m_linkedElements.get() : nullptr;
}

bool DOMElement::IsRemovedChild() const noexcept
{
    return m_links && m_links->isListedByParent;
}

bool DOMElement::IsRemembered() const
{
    if (!m_links)
        return false;
    const std::unique_lock<std::mutex> lock = Lock(LinkedElementsOf(m_manager));
    return !m_links->detachedChildren.empty();
}

ElementLinks& DOMElement::GetLinks() const
{
    if (!m_links)
        m_links = std::make_unique<ElementLinks>();
    return *m_links;
}

void DOMElement::Detach()
{
    if (!m_manager && !m_parent)
        return;
    // Everything that allocates comes before everything that changes.
    ElementLinks& links = GetLinks();
    ElementLinks* const parentLinks = m_parent ? &m_parent->GetLinks() : nullptr;
    std::list<DOMElement*> forDocument(m_manager ? 1 : 0, this);
    std::list<DOMElement*> forParent(m_parent ? 1 : 0, this);
    if (m_manager && m_parent)
        m_manager->m_diagnostics->ElementMoves(*this);
    const std::unique_lock<std::mutex> lock = Lock(LinkedElementsOf(m_manager));
    if (m_manager) {
        links.inDocument = forDocument.begin();
        links.isListedByDocument = true;
        std::list<DOMElement*>& elements = m_manager->m_linkedElements->elements;
        elements.splice(elements.end(), forDocument);
    }
    if (parentLinks) {
        links.inParent = forParent.begin();
        links.isListedByParent = true;
        parentLinks->detachedChildren.splice(parentLinks->detachedChildren.end(), forParent);
    }
}

void DOMElement::EndDetachment(DOM* manager) noexcept
{
    ElementLinks& links = *m_links;
    const auto leaveParent = [&] {
        if (std::exchange(links.isListedByParent, false))
            m_parent->m_links->detachedChildren.erase(links.inParent);
    };
    {
        const std::unique_lock<std::mutex> lock = Lock(LinkedElementsOf(manager));
        if (std::exchange(links.isListedByDocument, false))
            manager->m_linkedElements->elements.erase(links.inDocument);
        if (m_parent && m_parent->m_manager == manager)
            leaveParent();
    }
    // The parent is in another document by now.
    if (links.isListedByParent) {
        const std::unique_lock<std::mutex> lock = Lock(LinkedElementsOf(m_parent->m_manager));
        leaveParent();
    }
}

void DOMElement::CutLinks() noexcept
{
    for (const std::shared_ptr<RecordTie>& tie : m_links->ties)
        tie->ElementDies(*this);
    {
        const std::unique_lock<std::mutex> lock = Lock(LinkedElementsOf(m_manager));
        for (DOMElement* const child : m_links->detachedChildren) {
            if (child->m_manager)
                child->m_manager->m_diagnostics->ElementMoves(*child);
            child->m_parent = nullptr;
            child->m_links->isListedByParent = false;
        }
    }
    EndDetachment(m_manager);
}

void DOMElement::DocumentDies(DOM& document) noexcept
{
    const std::lock_guard<std::mutex> lock(document.m_linkedElements->mutex);
    for (DOMElement* const element : document.m_linkedElements->elements) {
        element->SetManager(nullptr);
        element->m_links->isListedByDocument = false;
    }
}

// An element that waits for its visit lends its first child's parent link to the list of waiting
// elements. The visit restores that link.
void DOMElement::SetManager(DOM* manager) noexcept
{
    m_manager = manager;
    DOMElement* waiting = nullptr;
    const auto wait = [&waiting](DOMElement& element) {
        if (element.m_children.empty())
            return;
        element.m_children.front()->m_parent = waiting;
        waiting = &element;
    };
    wait(*this);
    while (waiting) {
        DOMElement& element = *waiting;
        waiting = std::exchange(element.m_children.front()->m_parent, &element);
        for (const std::unique_ptr<DOMElement>& child : element.m_children) {
            child->m_manager = manager;
            wait(*child);
        }
    }
}

void DOMElement::ChangeDocument(const std::unique_ptr<DOMElement>* first, std::size_t count)
{
    if (DOM* const from = (*first)->m_manager)
        DocumentDiagnostics::SubtreesChangeDocument(first, count, *from->m_diagnostics,
                                                    m_manager ? m_manager->m_diagnostics.get() : nullptr);
    for (std::size_t i = 0; i < count; ++i)
        first[i]->SetManager(m_manager);
}
