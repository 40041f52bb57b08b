// The walk behind the path queries.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathSteps.h"

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
    using Word = DOMPathSteps::Word;

    // One level of the walk: the elements left to visit. Between two calls of Next there is at least one.
    struct Frame {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
        Word active;  // the active segments, if m_steps.FitsWord()
    };

    // Next for paths whose sets fit into one word. Such a set stays in a register while the walk visits siblings.
    const DOMElement* NextInWord();
    const DOMElement* NextInWords();
    // Returns the segments that are active for the children of `element`, and the end bit if the element matches.
    Word Step(const DOMElement& element, Word active);
    bool HasName(const DOMElement& element, std::size_t segment);
    void LeaveFinishedLevels();
    void EnterInWord(const DOMElement& element, Word active);

    DOMPathSteps m_steps;
    Word m_sharedNames = 0;  // the segments whose string is that of an element of the tree
    bool m_isCopy = false;
    const DOMElement* m_start = nullptr;  // null after it was visited
    std::vector<Frame> m_frames;
};
