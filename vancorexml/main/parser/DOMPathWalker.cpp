#include "vancorexml/main/parser/DOMPathWalker.h"

#include <bit>
#include <stdexcept>
#include <utility>

#include "vancorexml/main/parser/DOM.h"

namespace {

constexpr std::size_t WordBits = 64;

template <typename Word>
void SetBit(std::vector<Word>& words, std::size_t bit)
{
    words[bit / WordBits] |= Word{1} << bit % WordBits;
}

// Returns the document element, at which an absolute path starts; null if there is none.
const DOMElement* DocumentElementOf(const DOMElement& element)
{
    const DOM* const document = element.GetDOMManager();
    return document ? document->GetDocumentRoot() : nullptr;
}

}  // namespace

// A set of segments is an array of 64-bit words with one bit for each segment. Each level of the walk has
// a set of active segments, which its elements are compared with. Only the words from the first to the last active
// segment are stored and examined, so a long path with few active segments costs no more than a short path.
//
// In every set, an active empty segment also activates its successor, because it may match zero levels.
// This happens once per level, so each further empty segment consumes one more level.
DOMPath::Walker::Walker(const DOMElement& element, const VString& path) : m_segments(path.split(u'/'))
{
    if (m_segments.back().IsEmpty())
        return;
    // One extra word, because shifting a set can carry a bit out of its last word.
    const std::size_t words = (m_segments.size() + WordBits - 1) / WordBits + 1;
    m_emptySegments.resize(words);
    m_starSegments.resize(words);
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        if (m_segments[i].IsEmpty())
            SetBit(m_emptySegments, i);
        else if (m_segments[i].View() == u"*")
            SetBit(m_starSegments, i);
    }
    Restart(element);
}

DOMPath::Walker::Walker(const Walker& other)
    : m_emptySegments(other.m_emptySegments),
      m_starSegments(other.m_starSegments),
      m_start(other.m_start),
      m_frames(other.m_frames),
      m_active(other.m_active),
      m_next(other.m_next)
{}

DOMPath::Walker::~Walker() = default;

void DOMPath::Walker::Restart(const DOMElement& element)
{
    m_start = nullptr;
    m_frames.clear();
    if (m_segments.back().IsEmpty())
        return;
    // A path that begins with a slash and does not end with one has at least two segments.
    const bool startsWithSlash = m_segments.front().IsEmpty();
    const bool isAbsolute = startsWithSlash && !m_segments[1].IsEmpty();
    m_active.assign(Span().words, 0);
    SetBit(m_active, startsWithSlash ? 1 : 0);
    ActivateSuccessors(m_active, 0);
    m_start = isAbsolute ? DocumentElementOf(element) : &element;
}

const DOMElement* DOMPath::Walker::Next()
{
    while (m_start || !m_frames.empty()) {
        if (m_segments.empty())
            throw std::out_of_range("invalid vector subscript");
        const Span span = m_start ? Span() : m_frames.back().span;
        const DOMElement* const element = m_start ? std::exchange(m_start, nullptr) : *m_frames.back().next++;
        const bool isMatch = Visit(*element, span);
        // Remove finished levels before the next one is entered, so their memory is reused.
        while (!m_frames.empty() && m_frames.back().next == m_frames.back().end) {
            m_active.resize(m_active.size() - m_frames.back().span.words);
            m_frames.pop_back();
        }
        if (element->HasChildren())
            PushLevel(*element, span.firstWord);
        if (isMatch)
            return element;
    }
    return nullptr;
}

// Sets m_next to the set of segments that are active for the children. The set begins at the first word of
// `span` and ends one word after the last. Returns true if the element is a match.
bool DOMPath::Walker::Visit(const DOMElement& element, const Span& span)
{
    const Word* const active = m_active.data() + (m_active.size() - span.words);
    m_next.resize(span.words + 1);
    Word carried = 0;
    for (std::size_t i = 0; i < span.words; ++i) {
        const std::size_t w = span.firstWord + i;
        const Word empty = active[i] & m_emptySegments[w];
        Word matched = active[i] & m_starSegments[w];
        for (Word names = active[i] & ~m_emptySegments[w] & ~m_starSegments[w]; names != 0; names &= names - 1) {
            const std::size_t segment = w * WordBits + static_cast<std::size_t>(std::countr_zero(names));
            if (m_segments[segment] == element.GetName())
                matched |= names & (~names + 1);
        }
        m_next[i] = empty | matched << 1 | carried;
        carried = matched >> (WordBits - 1);
    }
    m_next.back() = carried;
    // The bit after that of the last segment means that the whole path is matched.
    const std::size_t end = m_segments.size();
    const std::size_t i = end / WordBits - span.firstWord;
    const Word bit = Word{1} << end % WordBits;
    if (i >= m_next.size() || (m_next[i] & bit) == 0)
        return false;
    m_next[i] &= ~bit;
    return true;
}

// Enters the children of `element` as the next level, with the set m_next, if any segment is active.
void DOMPath::Walker::PushLevel(const DOMElement& element, std::size_t firstWord)
{
    ActivateSuccessors(m_next, firstWord);
    std::size_t begin = 0;
    std::size_t end = m_next.size();
    while (end > 0 && m_next[end - 1] == 0)
        --end;
    if (end == 0)
        return;
    while (m_next[begin] == 0)
        ++begin;
    for (std::size_t i = begin; i < end; ++i)
        m_active.push_back(m_next[i]);
    const Span span{firstWord + begin, end - begin};
    const DOMElementConstChildren children = element.GetChildren();
    m_frames.push_back({children.begin(), children.end(), span});
}

// Activates the successor of each active empty segment. Drops a bit that is carried out of the last word; a
// caller that could lose a segment adds a word first.
void DOMPath::Walker::ActivateSuccessors(std::vector<Word>& active, std::size_t firstWord) const
{
    Word carried = 0;
    for (std::size_t i = 0; i < active.size(); ++i) {
        const Word empty = active[i] & m_emptySegments[firstWord + i];
        active[i] |= empty << 1 | carried;
        carried = empty >> (WordBits - 1);
    }
}
