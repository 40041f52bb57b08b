// A plain implementation of the rules of paths. The path walk of the library must have the same results.
#pragma once

#include <cstddef>
#include <set>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace reference {

using Segments = std::vector<VString>;
using Matches = std::vector<const DOMElement*>;

// Visits `element` and its descendants. `active` holds the segments that may match `element`. At each
// element, an active empty segment also activates the next segment, but not the one after that.
inline void Visit(
    const DOMElement& element, const std::set<std::size_t>& active, const Segments& segments, Matches& matches)
{
    std::set<std::size_t> closed = active;
    for (const std::size_t i : active) {
        if (segments[i].IsEmpty())
            closed.insert(i + 1);
    }
    std::set<std::size_t> below;
    for (const std::size_t i : closed) {
        if (segments[i].IsEmpty())
            below.insert(i);
        else if (segments[i] == VString("*") || segments[i] == element.GetName())
            below.insert(i + 1);
    }
    if (below.erase(segments.size()) != 0)
        matches.push_back(&element);
    if (below.empty())
        return;
    for (const DOMElement* child : element.GetChildren())
        Visit(*child, below, segments, matches);
}

// Returns the matches in document order. There must be at least one segment.
inline Matches WalkPath(const DOMElement& element, const Segments& segments)
{
    Matches matches;
    if (segments.back().IsEmpty())
        return matches;
    const bool startsWithSlash = segments.front().IsEmpty();
    const bool isAbsolute = startsWithSlash && !segments[1].IsEmpty();
    const DOMElement* const start = isAbsolute ? element.GetDOMManager()->GetDocumentRoot() : &element;
    Visit(*start, {startsWithSlash ? 1u : 0u}, segments, matches);
    return matches;
}

}  // namespace reference
