#include "vancorexml/main/parser/DOMPath.h"

#include <utility>

#include "vancorexml/main/parser/DOMPathWalker.h"

DOMPath::WalkState::WalkState() noexcept = default;

DOMPath::WalkState::WalkState(const DOMElement& element, const VString& path)
    : m_walker(std::make_unique<Walker>(element, path))
{}

DOMPath::WalkState::WalkState(const WalkState& other)
    : m_walker(other.m_walker ? std::make_unique<Walker>(*other.m_walker) : nullptr)
{}

DOMPath::WalkState::WalkState(WalkState&& other) noexcept = default;

DOMPath::WalkState& DOMPath::WalkState::operator=(WalkState other) noexcept
{
    m_walker = std::move(other.m_walker);
    return *this;
}

DOMPath::WalkState::~WalkState() = default;

const DOMElement* DOMPath::WalkState::Next()
{
    if (!m_walker)
        return nullptr;
    const DOMElement* const match = m_walker->Next();
    if (!match)
        m_walker.reset();
    return match;
}

template <typename E>
std::vector<E*> DOMPath::GetAll(E& element, const VString& path)
{
    std::vector<E*> matches;
    Walker walker(element, path);
    while (const DOMElement* match = walker.Next())
        matches.push_back(const_cast<E*>(match));
    return matches;
}

template std::vector<DOMElement*> DOMPath::GetAll(DOMElement&, const VString&);
template std::vector<const DOMElement*> DOMPath::GetAll(const DOMElement&, const VString&);

template <typename E>
E* DOMPath::GetFirst(E& element, const VString& path)
{
    return const_cast<E*>(Walker(element, path).Next());
}

template DOMElement* DOMPath::GetFirst(DOMElement&, const VString&);
template const DOMElement* DOMPath::GetFirst(const DOMElement&, const VString&);

// NOLINTNEXTLINE(performance-unnecessary-value-param): part of the public interface.
void DOMPath::Foreach(DOMElement& element, VString path, const std::function<void(DOMElement&)>& fn)
{
    for (DOMElement* match : GetAll(element, path))
        fn(*match);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): part of the public interface.
void DOMPath::Foreach(const DOMElement& element, VString path, const std::function<void(const DOMElement&)>& fn)
{
    for (const DOMElement* match : GetAll(element, path))
        fn(*match);
}
