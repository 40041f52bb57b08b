#include "vancorexml/main/parser/DOMElementSearch.h"

#include <cstddef>
#include <vector>

namespace {

bool Matches(const DOMElement& element, const VString& name, const VString& attrName, const VString& attrValue)
{
    if (element.GetName() != name)
        return false;
    if (attrName.IsEmpty())
        return true;
    const auto found = element.GetAttributes().find(attrName);
    if (found == element.GetAttributes().end())
        return false;
    return attrValue.IsEmpty() ? !found->second.IsEmpty() : found->second == attrValue;
}

}  // namespace

const DOMElement* DOMElementSearch::FindChild(
    const DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue)
{
    for (const DOMElement* child : parent.GetChildren()) {
        if (child->GetName() == name && child->GetAttribute(attrName) == attrValue)
            return child;
    }
    return nullptr;
}

DOMElement* DOMElementSearch::FindChild(
    DOMElement& parent, const VString& name, const VString& attrName, const VString& attrValue)
{
    return const_cast<DOMElement*>(FindChild(static_cast<const DOMElement&>(parent), name, attrName, attrValue));
}

const DOMElement* DOMElementSearch::FindElement(
    const DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue)
{
    // The position of the search on each level below `start`.
    struct Level {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
    };

    if (Matches(start, name, attrName, attrValue))
        return &start;
    if (depth <= 0)
        return nullptr;
    std::vector<Level> levels;
    const DOMElementConstChildren startChildren = start.GetChildren();
    levels.push_back({startChildren.begin(), startChildren.end()});
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.end) {
            levels.pop_back();
            continue;
        }
        const DOMElement* const element = *level.next++;
        if (Matches(*element, name, attrName, attrValue))
            return element;
        if (element->HasChildren() && levels.size() < static_cast<std::size_t>(depth)) {
            const DOMElementConstChildren children = element->GetChildren();
            levels.push_back({children.begin(), children.end()});
        }
    }
    return nullptr;
}

DOMElement* DOMElementSearch::FindElement(
    DOMElement& start, const VString& name, int depth, const VString& attrName, const VString& attrValue)
{
    return const_cast<DOMElement*>(
        FindElement(static_cast<const DOMElement&>(start), name, depth, attrName, attrValue));
}
