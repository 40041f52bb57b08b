#include "vancorexml/main/parser/ParseDiagnosticLinks.h"

#include <algorithm>
#include <utility>

#include "vancorexml/main/parser/DOMElementTraversal.h"

namespace {

using Walk = DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement>;

}  // namespace

void ParseDiagnosticLinks::Set(std::vector<ParseDiagnostic>&& diagnostics, const DOMElement& top)
{
    ParseDiagnosticLinks links;
    links.m_diagnostics.reserve(diagnostics.size());
    std::vector<std::size_t> positions;  // of the diagnostics that are about an element
    for (ParseDiagnostic& diagnostic : diagnostics) {
        if (diagnostic.element != 0)
            positions.push_back(links.m_diagnostics.size());
        links.m_diagnostics.push_back({nullptr, std::move(diagnostic)});
    }
    const auto elementAt = [&links](std::size_t position) { return links.m_diagnostics[position].diagnostic.element; };
    std::stable_sort(
        positions.begin(), positions.end(), [&](std::size_t a, std::size_t b) { return elementAt(a) < elementAt(b); });
    Walk walk(top);
    walk.Next();
    std::size_t number = 0;
    const DOMElement* element = &top;
    for (const std::size_t position : positions) {
        for (; element && number < elementAt(position); ++number)
            element = walk.Next();
        if (!element)
            break;
        links.Link(position, *element);
    }
    *this = std::move(links);
}

void ParseDiagnosticLinks::CopyFrom(
    const ParseDiagnosticLinks& other, const DOMElement& otherTop, const DOMElement& top)
{
    if (other.m_diagnostics.empty()) {
        Clear();
        return;
    }
    ParseDiagnosticLinks links;
    links.m_diagnostics = other.m_diagnostics;
    for (DOMParseDiagnostic& diagnostic : links.m_diagnostics)
        diagnostic.element = nullptr;
    Walk otherWalk(otherTop);
    Walk walk(top);
    while (links.m_positions.size() < other.m_positions.size()) {
        const DOMElement* const otherElement = otherWalk.Next();
        const DOMElement* const element = walk.Next();
        if (!otherElement || !element)
            break;
        const auto found = other.m_positions.find(otherElement);
        if (found == other.m_positions.end())
            continue;
        for (const std::size_t position : found->second)
            links.Link(position, *element);
    }
    *this = std::move(links);
}

void ParseDiagnosticLinks::Clear() noexcept
{
    m_diagnostics.clear();
    m_positions.clear();
}

void ParseDiagnosticLinks::Forget(const DOMElement& element) noexcept
{
    const auto found = m_positions.find(&element);
    if (found == m_positions.end())
        return;
    for (const std::size_t position : found->second)
        m_diagnostics[position].element = nullptr;
    m_positions.erase(found);
}

void ParseDiagnosticLinks::ForgetAll() noexcept
{
    for (DOMParseDiagnostic& diagnostic : m_diagnostics)
        diagnostic.element = nullptr;
    m_positions.clear();
}

void ParseDiagnosticLinks::Link(std::size_t position, const DOMElement& element)
{
    m_positions[&element].push_back(position);
    m_diagnostics[position].element = &element;
}
