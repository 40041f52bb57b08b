#include "vanxml/Outline.h"

#include <algorithm>

#include "vancorexml/main/parser/AttributeMap.h"
#include "vanxml/EventParse.h"

void OutlineBuilder::StartElement(const VString& name, const AttributeMap& attributes)
{
    const bool isHidden = m_hiddenLevels > 0 || (m_current != None && m_nodes[m_current].line.level == m_depth);
    if (isHidden) {
        ++m_hiddenLevels;
        ++m_nodes[m_current].line.hidden;
    } else {
        m_current = FindNode(m_current, name);
        ++m_nodes[m_current].line.count;
    }
    Node& node = m_nodes[m_current];
    // Most elements of a path have the same attributes in the same order, so the next count is often the right one.
    auto next = node.attributes.begin();
    for (const auto& [attribute, value] : attributes) {
        node.line.size += CountUtf8Bytes(value);
        if (isHidden)
            continue;
        if (next == node.attributes.end() || m_names[next->first] != attribute)
            next = node.attributes.try_emplace(IdentifyName(attribute)).first;
        ++next->second;
        ++next;
    }
}

void OutlineBuilder::EndElement()
{
    if (m_hiddenLevels > 0)
        --m_hiddenLevels;
    else
        m_current = m_nodes[m_current].parent;
}

void OutlineBuilder::Characters(const VString& text)
{
    if (m_current == None || IsBlankText(text))
        return;
    const std::uint64_t bytes = CountUtf8Bytes(text);
    OutlineLine& line = m_nodes[m_current].line;
    line.size += bytes;
    line.text += m_hiddenLevels > 0 ? 0 : bytes;
}

std::vector<OutlineLine> OutlineBuilder::ReleaseLines()
{
    for (std::size_t i = m_nodes.size(); i-- > 1;) {
        OutlineLine& parent = m_nodes[m_nodes[i].parent].line;
        parent.size += m_nodes[i].line.size;
        parent.hidden += m_nodes[i].line.hidden;
    }
    std::vector<OutlineLine> lines;
    lines.reserve(m_nodes.size());
    // Goes down to the first child, else to the next sibling of the node or of the nearest parent that has one.
    for (std::uint32_t next = m_nodes.empty() ? None : 0; next != None;) {
        Node& node = m_nodes[next];
        node.line.attributes = NameAttributes(node);
        node.line.isLast = node.nextSibling == None;
        lines.push_back(std::move(node.line));
        std::uint32_t last = next;
        next = node.firstChild;
        while (next == None && last != None) {
            next = m_nodes[last].nextSibling;
            last = m_nodes[last].parent;
        }
    }
    return lines;
}

std::uint32_t OutlineBuilder::IdentifyName(const VString& name)
{
    const auto [found, isNew] = m_identifiers.try_emplace(name, static_cast<std::uint32_t>(m_names.size()));
    if (isNew)
        m_names.push_back(name);
    return found->second;
}

std::uint32_t OutlineBuilder::FindNode(std::uint32_t parent, const VString& name)
{
    const auto added = static_cast<std::uint32_t>(m_nodes.size());
    const auto [found, isNew] = m_children.try_emplace({parent, IdentifyName(name)}, added);
    if (!isNew)
        return found->second;
    Node& node = m_nodes.emplace_back();
    node.line.name = m_names[found->first.second];
    node.parent = parent;
    if (parent == None)
        return added;
    Node& above = m_nodes[parent];
    node.line.level = above.line.level + 1;
    if (above.lastChild == None)
        above.firstChild = added;
    else
        m_nodes[above.lastChild].nextSibling = added;
    above.lastChild = added;
    return added;
}

std::vector<std::pair<VString, std::uint64_t>> OutlineBuilder::NameAttributes(const Node& node) const
{
    std::vector<std::pair<VString, std::uint64_t>> attributes;
    attributes.reserve(node.attributes.size());
    for (const auto& [identifier, count] : node.attributes)
        attributes.emplace_back(m_names[identifier], count);
    std::sort(attributes.begin(), attributes.end());
    return attributes;
}
