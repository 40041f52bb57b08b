// The matching of names with a path, level by level.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "vancoreplatform/VString.h"

// Matches the elements of a tree with a path (see DOMPath.h) while the caller visits them parents first. It needs only
// the names of the elements, so it serves trees and texts.
//
//     steps.Visit(isName of the document element);
//     if (steps.Enter()) {
//         steps.Visit(isName of a child);
//         ...
//         steps.Leave();
//     }
//
// Threads: one at a time.
//
// Cost: each operation is linear in the distance between the first and the last active segment, in words of 64
// segments. A segment is active on a level if the elements of this level are compared with it.
class DOMPathSteps {
public:
    // A set of up to 64 segments: bit i stands for segment i.
    using Word = std::uint64_t;

    explicit DOMPathSteps(const VString& path);
    ~DOMPathSteps();
    DOMPathSteps(const DOMPathSteps& other);
    DOMPathSteps& operator=(const DOMPathSteps&) = delete;

    const std::vector<VString>& Segments() const noexcept { return m_segments; }
    // False if the path is empty or ends with a slash. It then matches nothing; call only Segments and IsAbsolute.
    bool CanMatch() const noexcept { return !m_segments.back().IsEmpty(); }
    // True if the path starts at the document element.
    bool IsAbsolute() const noexcept;

    // Returns to the level of the start element.
    void Restart();
    // Visits an element of the current level. `isName` is called with the index of a segment that is a name, and
    // returns true if the element has this name. Returns true if the element matches the path.
    template <typename IsName>
    bool Visit(const IsName& isName);
    // Enters the level of the children of the element that was visited last. Returns false and stays if no element
    // below it can match. The caller may call Leave between this last Visit and Enter.
    bool Enter();
    // Returns to the level above.
    void Leave();

    // True if every set of the path, with the bit behind its last segment, fits into one word. A caller may then keep
    // the sets itself and call none of Visit, Enter and Leave. The next operations need such a path.
    bool FitsWord() const noexcept { return m_segments.size() < WordBits; }
    Word EmptySegments() const noexcept { return m_emptySegments.front(); }
    Word StarSegments() const noexcept { return m_starSegments.front(); }
    // The bit behind the last segment. It becomes active when the whole path is matched.
    Word EndBit() const noexcept { return Word{1} << m_segments.size(); }
    // Returns the set of active segments on the level of the start element.
    Word StartSegments() const noexcept { return WithSuccessors(Word{1} << (m_segments.front().IsEmpty() ? 1 : 0)); }
    // Returns the set with the successor of each active empty segment.
    Word WithSuccessors(Word active) const noexcept { return active | (active & EmptySegments()) << 1; }
    // Replaces the name of a segment by an equal string.
    void ShareName(std::size_t segment, const VString& name) { m_segments[segment] = name; }

private:
    static constexpr std::size_t WordBits = 64;

    // A set of segments is an array of 64-bit words with one bit for each segment. Each level has a set of active
    // segments, which its elements are compared with. Only the words from the first to the last active segment are
    // stored and examined, so a long path with few active segments costs no more than a short path. A Span is the
    // range of the words that are stored.
    struct Span {
        std::size_t firstWord = 0;
        std::size_t words = 1;
    };

    static void SetBit(std::vector<Word>& words, std::size_t bit)
    {
        words[bit / WordBits] |= Word{1} << bit % WordBits;
    }
    void ActivateSuccessors(std::vector<Word>& active, std::size_t firstWord) const;

    std::vector<VString> m_segments;
    std::vector<Word> m_emptySegments;  // the set of the empty segments
    std::vector<Word> m_starSegments;   // the set of the "*" segments
    std::vector<Span> m_spans;          // of the level of the start element and each entered level
    std::vector<Word> m_active;         // the stored words of the sets of active segments, set by set
    std::vector<Word> m_next;           // the set of active segments for the children of the element visited last
    std::size_t m_nextFirstWord = 0;    // the word of the path at which m_next begins
};

// Sets m_next to the set of segments that are active for the children. It has one word more than the set of the current
// level, because the match of the last segment of a word activates the first segment of the next word.
template <typename IsName>
bool DOMPathSteps::Visit(const IsName& isName)
{
    const Span span = m_spans.back();
    const Word* const active = m_active.data() + (m_active.size() - span.words);
    m_next.resize(span.words + 1);
    m_nextFirstWord = span.firstWord;
    Word carried = 0;
    for (std::size_t i = 0; i < span.words; ++i) {
        const std::size_t w = span.firstWord + i;
        const Word empty = active[i] & m_emptySegments[w];
        Word matched = active[i] & m_starSegments[w];
        for (Word names = active[i] & ~m_emptySegments[w] & ~m_starSegments[w]; names != 0; names &= names - 1) {
            if (isName(w * WordBits + static_cast<std::size_t>(std::countr_zero(names))))
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
