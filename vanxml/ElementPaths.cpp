#include "vanxml/ElementPaths.h"

#include <map>
#include <vector>

#include "vancorexml/main/parser/DOMElement.h"

namespace {

struct SameName {
    std::size_t count = 0;
    const DOMElement* first = nullptr;
};

}  // namespace

void ElementPaths::Count(const DOMElement& parent)
{
    std::map<VString, SameName> names;
    for (const DOMElement* child : parent.GetChildren()) {
        SameName& same = names[child->GetName()];
        if (same.count++ == 0)
            same.first = child;
        m_positions[child] = same.count;
    }
    for (const auto& [name, same] : names) {
        if (same.count == 1)
            m_positions[same.first] = 0;
    }
}

std::string ElementPaths::PathOf(const DOMElement& element)
{
    std::vector<const DOMElement*> steps;
    // The element above the document element belongs to the library, not to the document.
    for (const DOMElement* step = &element; step->GetParent(); step = step->GetParent())
        steps.push_back(step);
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (m_positions.count(*step) == 0)
            Count(*(*step)->GetParent());
        path += "/" + (*step)->GetName().toStdString();
        if (const std::size_t position = m_positions[*step])
            path += "[" + std::to_string(position) + "]";
    }
    return path;
}
