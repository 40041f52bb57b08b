#include "vancorexml/main/parser/ElementTrail.h"

#include <utility>

namespace {

constexpr std::size_t LongestPath = 1000;

}  // namespace

TrailElement& ElementTrail::Push(const VString& name)
{
    TrailElement element;
    element.name = name;
    element.number = ++m_count;
    element.index = m_elements.empty() ? 1 : ++m_elements.back().counts[std::u16string(name.View())];
    m_elements.push_back(std::move(element));
    return m_elements.back();
}

VString ElementTrail::GetPath(std::size_t depth) const
{
    VString path;
    for (; depth > 0; --depth) {
        const TrailElement& element = m_elements[depth - 1];
        VString step = "/" + element.name;
        if (depth > 1)
            step += "[" + VString::fromStdString(std::to_string(element.index)) + "]";
        if (path.View().size() + step.View().size() > LongestPath)
            return u"\u2026" + path;
        path = step + path;
    }
    return path;
}
