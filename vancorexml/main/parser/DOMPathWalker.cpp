#include "vancorexml/main/parser/DOMPathWalker.h"

#include <stdexcept>
#include <utility>

#include "vancorexml/main/parser/DOM.h"

namespace {

// Returns the document element, at which an absolute path starts; null if there is none.
const DOMElement* DocumentElementOf(const DOMElement& element)
{
    const DOM* const document = element.GetDOMManager();
    return document ? document->GetDocumentRoot() : nullptr;
}

}  // namespace

DOMPath::Walker::Walker(const DOMElement& element, const VString& path) : m_steps(path)
{
    Restart(element);
}

DOMPath::Walker::Walker(const Walker& other)
    : m_steps(other.m_steps),
      m_isCopy(true),
      m_start(other.m_start),
      m_frames(other.m_frames)
{}

DOMPath::Walker::~Walker() = default;

void DOMPath::Walker::Restart(const DOMElement& element)
{
    m_start = nullptr;
    m_frames.clear();
    if (!m_steps.CanMatch())
        return;
    m_steps.Restart();
    m_start = m_steps.IsAbsolute() ? DocumentElementOf(element) : &element;
}

const DOMElement* DOMPath::Walker::Next()
{
    while (m_start || !m_frames.empty()) {
        if (m_isCopy)
            throw std::out_of_range("invalid vector subscript");
        const DOMElement* const element = m_start ? std::exchange(m_start, nullptr) : *m_frames.back().next++;
        const auto isName = [&](std::size_t segment) { return m_steps.Segments()[segment] == element->GetName(); };
        const bool isMatch = m_steps.Visit(isName);
        // Leave finished levels before the next one is entered, so their memory is reused.
        while (!m_frames.empty() && m_frames.back().next == m_frames.back().end) {
            m_steps.Leave();
            m_frames.pop_back();
        }
        if (element->HasChildren() && m_steps.Enter()) {
            const DOMElementConstChildren children = element->GetChildren();
            m_frames.push_back({children.begin(), children.end()});
        }
        if (isMatch)
            return element;
    }
    return nullptr;
}
