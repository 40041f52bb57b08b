#include "vancorexml/main/parser/DetachedElements.h"

#include <mutex>
#include <set>
#include <utility>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace {

struct Registry {
    std::mutex mutex;
    std::set<std::pair<const DOMElement*, DOMElement*>> byParent;
    std::set<std::pair<const DOM*, DOMElement*>> byManager;
    std::set<std::pair<const DOMElement*, DOM*>> strays;
    std::set<std::pair<const DOM*, const DOMElement*>> straysByDocument;
};

// Never destroyed: static elements may outlive any static of this module.
Registry& GetRegistry()
{
    static Registry* const registry = new Registry;
    return *registry;
}

// The first pair with that key, which the caller will use up.
template <typename Key, typename Value>
typename std::set<std::pair<const Key*, Value*>>::iterator FirstOf(std::set<std::pair<const Key*, Value*>>& pairs, const Key* key)
{
    const auto i = pairs.lower_bound({key, nullptr});
    return i != pairs.end() && i->first == key ? i : pairs.end();
}

}  // namespace

void DetachedElements::Add(DOMElement& element)
{
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    if (element.m_parent)
        registry.byParent.emplace(element.m_parent, &element);
    if (element.m_manager) {
        try {
            registry.byManager.emplace(element.m_manager, &element);
        } catch (...) {
            registry.byParent.erase({element.m_parent, &element});
            throw;
        }
        element.m_manager->m_isLinkedFromOutside = true;
    }
    if (element.m_parent)
        element.m_parent->m_hasDetachedChildren = true;
    element.m_detached = true;
}

void DetachedElements::Remove(DOMElement& element, const DOM* manager, const DOMElement* parent) noexcept
{
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    registry.byParent.erase({parent, &element});
    registry.byManager.erase({manager, &element});
    element.m_detached = false;
}

void DetachedElements::ParentDies(const DOMElement& parent) noexcept
{
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    for (auto i = FirstOf(registry.byParent, &parent); i != registry.byParent.end(); i = FirstOf(registry.byParent, &parent)) {
        DOMElement& element = *i->second;
        registry.byParent.erase(i);
        if (element.m_manager)
            element.m_manager->m_index.ElementMoves(element);
        else
            element.m_detached = false;
        element.m_parent = nullptr;
    }
}

void DetachedElements::DocumentDies(const DOM& document) noexcept
{
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    for (auto i = FirstOf(registry.byManager, &document); i != registry.byManager.end(); i = FirstOf(registry.byManager, &document)) {
        DOMElement& element = *i->second;
        registry.byManager.erase(i);
        element.SetManager(nullptr);
        if (!element.m_parent)
            element.m_detached = false;
    }
    for (auto i = FirstOf(registry.straysByDocument, &document); i != registry.straysByDocument.end(); i = FirstOf(registry.straysByDocument, &document)) {
        registry.strays.erase({i->second, const_cast<DOM*>(&document)});
        registry.straysByDocument.erase(i);
    }
}

void DetachedElements::AddStray(const DOMElement& element, DOM& document)
{
    Registry& registry = GetRegistry();
    const std::lock_guard<std::mutex> lock(registry.mutex);
    const bool isNew = registry.strays.emplace(&element, &document).second;
    try {
        registry.straysByDocument.emplace(&document, &element);
    } catch (...) {
        if (isNew)
            registry.strays.erase({&element, &document});
        throw;
    }
    document.m_isLinkedFromOutside = true;
    element.m_hasStrayRecords = true;
}

void DetachedElements::StrayDies(const DOMElement& element) noexcept
{
    Registry& registry = GetRegistry();
    for (;;) {
        DOM* document = nullptr;
        {
            const std::lock_guard<std::mutex> lock(registry.mutex);
            const auto i = FirstOf(registry.strays, &element);
            if (i == registry.strays.end())
                return;
            document = i->second;
            registry.straysByDocument.erase({document, &element});
            registry.strays.erase(i);
        }
        document->EraseErrorsAndWarningsForNode(element);
    }
}
