// The walk behind the path queries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMPath.h"

// Steps through the matches of one path.
class DOMPath::Walker {
public:
    Walker(const DOMElement& element, const VString& path);
    // Copies the position, but not the path: Next throws if elements are left to visit.
    Walker(const Walker& other);
    Walker& operator=(const Walker&) = delete;
    ~Walker();

    // Restarts the walk at another element, with the same path. Do not call it on a copy, which has
    // no path.
    void Restart(const DOMElement& element);
    // Returns the next match, or null at the end. Throws std::out_of_range ("invalid vector
    // subscript") on a copy that has elements left to visit.
    const DOMElement* Next();

private:
    using Word = std::uint64_t;

    // A set of segments is a bit set, stored as words with one bit for each segment. The zero words at both
    // ends of a set are not stored. A Span is the range of the words that are stored.
    struct Span {
        std::size_t firstWord = 0;
        std::size_t words = 1;
    };
    // One level of the walk: the elements left to visit, and the span of the level's set of active segments.
    // The walk compares each element of the level with the active segments only.
    struct Frame {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
        Span span;
    };

    // Visits an element with its set of active segments. Returns true if the element is a match.
    bool Visit(const DOMElement& element, const Span& span);
    void PushLevel(const DOMElement& element, std::size_t firstWord);
    void ActivateSuccessors(std::vector<Word>& active, std::size_t firstWord) const;

    std::vector<VString> m_segments;
    std::vector<Word> m_emptySegments;    // the set of the empty segments
    std::vector<Word> m_starSegments;     // the set of the "*" segments
    const DOMElement* m_start = nullptr;  // null after it was visited
    std::vector<Frame> m_frames;
    // The stored words of the sets of active segments, set by set: first the set of the start element, then
    // the set of each frame in m_frames.
    std::vector<Word> m_active;
    std::vector<Word> m_next;  // the set of active segments for the children of the element visited last
};
