#include "vancorexml/main/parser/DOMPathSteps.h"

// In every set, an active empty segment also activates its successor, because it may match zero levels. This happens
// once per level, so each further empty segment consumes one more level.
DOMPathSteps::DOMPathSteps(const VString& path) : m_segments(path.split(u'/'))
{
    if (!CanMatch())
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
    Restart();
}

DOMPathSteps::DOMPathSteps(const DOMPathSteps& other) = default;

DOMPathSteps::~DOMPathSteps() = default;

bool DOMPathSteps::IsAbsolute() const noexcept
{
    return m_segments.size() > 1 && m_segments[0].IsEmpty() && !m_segments[1].IsEmpty();
}

void DOMPathSteps::Restart()
{
    // A path that begins with a slash and does not end with one has at least two segments.
    const bool startsWithSlash = m_segments.front().IsEmpty();
    m_spans.assign(1, Span());
    m_active.assign(Span().words, 0);
    SetBit(m_active, startsWithSlash ? 1 : 0);
    ActivateSuccessors(m_active, 0);
}

bool DOMPathSteps::Enter()
{
    ActivateSuccessors(m_next, m_nextFirstWord);
    std::size_t begin = 0;
    std::size_t end = m_next.size();
    while (end > 0 && m_next[end - 1] == 0)
        --end;
    if (end == 0)
        return false;
    while (m_next[begin] == 0)
        ++begin;
    for (std::size_t i = begin; i < end; ++i)
        m_active.push_back(m_next[i]);
    m_spans.push_back({m_nextFirstWord + begin, end - begin});
    return true;
}

void DOMPathSteps::Leave()
{
    m_active.resize(m_active.size() - m_spans.back().words);
    m_spans.pop_back();
}

// Activates the successor of each active empty segment. Drops a bit that is carried out of the last word; a
// caller that could lose a segment adds a word first.
void DOMPathSteps::ActivateSuccessors(std::vector<Word>& active, std::size_t firstWord) const
{
    Word carried = 0;
    for (std::size_t i = 0; i < active.size(); ++i) {
        const Word empty = active[i] & m_emptySegments[firstWord + i];
        active[i] |= empty << 1 | carried;
        carried = empty >> (WordBits - 1);
    }
}
