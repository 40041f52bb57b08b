#include "vancorexml/main/parser/DOMPathWalker.h"

#include <bit>
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
      m_sharedNames(other.m_sharedNames),
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
    if (!m_start && m_frames.empty())
        return nullptr;
    if (m_isCopy)
        throw std::out_of_range("invalid vector subscript");
    return m_steps.FitsWord() ? NextInWord() : NextInWords();
}

// Compares the lengths before the code units. Equal names of a parse share their strings, so the first match replaces
// the name of the segment by the string of the tree, and most later matches are found by comparing two pointers.
inline bool DOMPath::Walker::HasName(const DOMElement& element, std::size_t segment)
{
    const VString& name = m_steps.Segments()[segment];
    const VString& found = element.GetName();
    if (found.ToQString().isSharedWith(name.ToQString()))
        return true;
    if (found.View() != name.View())
        return false;
    const Word bit = Word{1} << segment;
    if ((m_sharedNames & bit) == 0) {
        m_sharedNames |= bit;
        m_steps.ShareName(segment, found);
    }
    return true;
}

inline DOMPath::Walker::Word DOMPath::Walker::Step(const DOMElement& element, Word active)
{
    const Word empty = active & m_steps.EmptySegments();
    Word matched = active & m_steps.StarSegments();
    for (Word names = active & ~empty & ~matched; names != 0; names &= names - 1) {
        if (HasName(element, static_cast<std::size_t>(std::countr_zero(names))))
            matched |= names & (~names + 1);
    }
    return empty | matched << 1;
}

// Finished levels leave before another one is entered, so their memory is reused.
void DOMPath::Walker::LeaveFinishedLevels()
{
    while (!m_frames.empty() && m_frames.back().next == m_frames.back().end)
        m_frames.pop_back();
}

inline void DOMPath::Walker::EnterInWord(const DOMElement& element, Word active)
{
    if (active == 0 || !element.HasChildren())
        return;
    const DOMElementConstChildren children = element.GetChildren();
    m_frames.push_back({children.begin(), children.end(), m_steps.WithSuccessors(active)});
}

const DOMElement* DOMPath::Walker::NextInWord()
{
    const Word end = m_steps.EndBit();
    if (const DOMElement* const start = std::exchange(m_start, nullptr)) {
        const Word below = Step(*start, m_steps.StartSegments());
        EnterInWord(*start, below & ~end);
        if ((below & end) != 0)
            return start;
    }
    while (!m_frames.empty()) {
        Frame& level = m_frames.back();
        const Word active = level.active;
        auto next = level.next;
        const DOMElement* element = nullptr;
        Word below = 0;
        const VString* name = nullptr;
        // Most siblings neither match nor have a level to enter, and many have the name of the sibling before them. If
        // they also share its string, their step has the same result.
        do {
            element = *next++;
            if (!name || !element->GetName().ToQString().isSharedWith(name->ToQString())) {
                name = &element->GetName();
                below = Step(*element, active);
            }
        } while ((below == 0 || ((below & end) == 0 && !element->HasChildren())) && next != level.end);
        level.next = next;
        LeaveFinishedLevels();
        EnterInWord(*element, below & ~end);
        if ((below & end) != 0)
            return element;
    }
    return nullptr;
}

const DOMElement* DOMPath::Walker::NextInWords()
{
    while (m_start || !m_frames.empty()) {
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
            m_frames.push_back({children.begin(), children.end(), 0});
        }
        if (isMatch)
            return element;
    }
    return nullptr;
}
