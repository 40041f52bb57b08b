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
    // One level of the walk: the elements left to visit.
    struct Frame {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
    };

    DOMPathSteps m_steps;
    bool m_isCopy = false;
    const DOMElement* m_start = nullptr;  // null after it was visited
    std::vector<Frame> m_frames;
};
