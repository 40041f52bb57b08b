#include "vancorexml/main/parser/DOMPath.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

#include "vancorexml/main/parser/DOM.h"

namespace {

constexpr std::size_t WordBits = 64;

template <typename Word>
void SetBit(std::vector<Word>& words, std::size_t bit)
{
    words[bit / WordBits] |= Word{1} << bit % WordBits;
}

// The document element that an absolute path starts at, null when there is none.
const DOMElement* DocumentElementOf(const DOMElement& element)
{
    const DOM* const document = element.GetDOMManager();
    return document ? document->GetDocumentRoot() : nullptr;
}

}  // namespace

// A set of segments is a run of words, one bit a segment: one word for paths of up to 64.
// A set says which segments are alive for the elements of a level. The set of a level is
// closed when it is made: where an empty segment is alive so is the one behind it, because an
// empty segment stands for no level too. Only once, so every further empty segment costs a
// level more.
DOMPath::Walker::Walker(const DOMElement& element, const VString& path) : m_segments(path.split(u'/')), m_words((m_segments.size() + WordBits - 1) / WordBits)
{
    if (m_segments.back().IsEmpty()) return;
    const bool startsWithSlash = path[0] == u'/';
    const bool isAbsolute = startsWithSlash && path[1] != u'/';
    m_start = isAbsolute ? DocumentElementOf(element) : &element;
    if (!m_start) return;

    m_emptySegments.resize(m_words);
    m_starSegments.resize(m_words);
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        if (m_segments[i].IsEmpty()) SetBit(m_emptySegments, i);
        else if (m_segments[i].View() == u"*") SetBit(m_starSegments, i);
    }
    m_active.resize(m_words);
    m_next.resize(m_words);
    SetBit(m_active, startsWithSlash ? 1 : 0);
    Close(m_active.data());
}

DOMPath::Walker::Walker(const Walker& other)
    : m_words(other.m_words), m_emptySegments(other.m_emptySegments), m_starSegments(other.m_starSegments), m_start(other.m_start), m_frames(other.m_frames), m_active(other.m_active), m_next(other.m_next)
{
}

DOMPath::Walker::~Walker() = default;

const DOMElement* DOMPath::Walker::Next()
{
    while (m_start || !m_frames.empty()) {
        if (m_segments.empty()) throw std::out_of_range("invalid vector subscript");
        const DOMElement* element = m_start;
        if (element) {
            m_start = nullptr;
        } else {
            element = *m_frames.back().next++;
        }
        const bool isMatch = Visit(*element, m_active.data() + m_frames.size() * m_words);
        const bool isAlive = std::any_of(m_next.begin(), m_next.end(), [](Word word) { return word != 0; });
        // A level that is done makes room before the next one begins.
        while (!m_frames.empty() && m_frames.back().next == m_frames.back().end) {
            m_frames.pop_back();
            m_active.resize((m_frames.size() + 1) * m_words);
        }
        if (isAlive && element->HasChildren()) {
            const DOMElementChildren children = element->GetChildren();
            m_frames.push_back({children.begin(), children.end()});
            m_active.insert(m_active.end(), m_next.begin(), m_next.end());
            Close(m_active.data() + m_frames.size() * m_words);
        }
        if (isMatch) return element;
    }
    return nullptr;
}

void DOMPath::Walker::Close(Word* active) const
{
    Word carried = 0;
    for (std::size_t w = 0; w < m_words; ++w) {
        const Word empty = active[w] & m_emptySegments[w];
        active[w] |= empty << 1 | carried;
        carried = empty >> (WordBits - 1);
    }
}

// Sets m_next to what is alive for the children; says whether the element is a match.
bool DOMPath::Walker::Visit(const DOMElement& element, const Word* active)
{
    const std::size_t last = m_segments.size() - 1;
    bool isMatch = false;
    Word carried = 0;
    for (std::size_t w = 0; w < m_words; ++w) {
        const Word empty = active[w] & m_emptySegments[w];
        Word matched = active[w] & m_starSegments[w];
        for (Word names = active[w] & ~m_emptySegments[w] & ~m_starSegments[w]; names != 0; names &= names - 1) {
            const Word bit = names & (~names + 1);
            const auto segment = w * WordBits + static_cast<std::size_t>(std::countr_zero(names));
            if (IsMatch(segment, element)) matched |= bit;
        }
        m_next[w] = empty | matched << 1 | carried;
        carried = matched >> (WordBits - 1);
    }
    // The bit behind the last segment's says that the whole path is matched.
    const std::size_t end = last + 1;
    if (end % WordBits == 0) isMatch = carried != 0;
    else if (const Word bit = Word{1} << end % WordBits; m_next[end / WordBits] & bit) {
        m_next[end / WordBits] &= ~bit;
        isMatch = true;
    }
    return isMatch;
}

bool DOMPath::Walker::IsMatch(std::size_t segment, const DOMElement& element) const
{
    return m_segments[segment] == element.GetName();
}

void DOMPath::Foreach(DOMElement& element, VString path, const std::function<void(DOMElement&)>& fn)
{
    for (DOMElement* match : GetAll(element, path)) fn(*match);
}

void DOMPath::Foreach(const DOMElement& element, VString path, const std::function<void(const DOMElement&)>& fn)
{
    for (const DOMElement* match : GetAll(element, path)) fn(*match);
}
