#include "vancorexml/main/parser/DOMPathCanopy.h"

#include <cstddef>

#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathWalker.h"

namespace {

constexpr std::size_t DeepestLevel = 1024;

// Visits the children of `canopy` in document order. If `visit` returns true, the children of the visited element
// are next, down to DeepestLevel levels.
template <typename Visit>
void VisitNested(const DOMElement& canopy, const Visit& visit)
{
    struct Level {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
    };
    std::vector<Level> levels;
    const auto enter = [&levels](const DOMElement& element) {
        if (levels.size() == DeepestLevel)
            return;
        const DOMElementConstChildren children = element.GetChildren();
        levels.push_back({children.begin(), children.end()});
    };
    enter(canopy);
    while (!levels.empty()) {
        if (levels.back().next == levels.back().end) {
            levels.pop_back();
            continue;
        }
        const DOMElement* const child = *levels.back().next++;
        if (visit(*child))
            enter(*child);
    }
}

template <typename E>
std::vector<E*> Within(E& element, const VString& canopyPath, const VString& name)
{
    std::vector<E*> found;
    if (name.View() == u"*")
        return found;
    for (E* canopy : DOMPath::GetAll(element, canopyPath)) {
        VisitNested(*canopy, [&](const DOMElement& child) {
            if (child.GetName() != name)
                return false;
            found.push_back(const_cast<E*>(&child));
            return true;
        });
    }
    return found;
}

template <typename E>
std::vector<E*> Underneath(E& element, const VString& canopyPath, const VString& subPath)
{
    std::vector<E*> found;
    const int slash = subPath.indexOf(u'/');
    if (slash == 0 || subPath.IsEmpty())
        return found;
    const VString head = slash < 0 ? subPath : subPath.left(slash);
    const bool isAnyHead = head.View() == u"*";
    // One walker for all start elements, so the path is parsed once.
    DOMPath::Walker walker(element, subPath);
    for (E* canopy : DOMPath::GetAll(element, canopyPath)) {
        std::vector<const DOMElement*> starts;
        VisitNested(*canopy, [&](const DOMElement& child) {
            if (child.GetName() == canopy->GetName())
                return true;
            if (isAnyHead || child.GetName() == head)
                starts.push_back(&child);
            return false;
        });
        for (const DOMElement* start : starts) {
            walker.Restart(*start);
            while (const DOMElement* match = walker.Next())
                found.push_back(const_cast<E*>(match));
        }
    }
    return found;
}

}  // namespace

std::vector<DOMElement*> DOMPathCanopy::WithinCanopy(
    DOMElement& element, const VString& canopyPath, const VString& name)
{
    return Within(element, canopyPath, name);
}

std::vector<const DOMElement*> DOMPathCanopy::WithinCanopy(
    const DOMElement& element, const VString& canopyPath, const VString& name)
{
    return Within(element, canopyPath, name);
}

std::vector<DOMElement*> DOMPathCanopy::UnderneathCanopy(
    DOMElement& element, const VString& canopyPath, const VString& subPath)
{
    return Underneath(element, canopyPath, subPath);
}

std::vector<const DOMElement*> DOMPathCanopy::UnderneathCanopy(
    const DOMElement& element, const VString& canopyPath, const VString& subPath)
{
    return Underneath(element, canopyPath, subPath);
}
