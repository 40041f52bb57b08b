#include "vanxml/ComparedTree.h"

#include <algorithm>
#include <stdexcept>

#include "art-cpp/Activity.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/EventParse.h"

namespace {

// A longer path is shortened. The differences of two documents with 100,000 levels have 200,000 paths: with 64 steps,
// they take 50 MB of JSON; with all steps, they would take 20 GB.
constexpr std::size_t mostSteps = 64;
constexpr std::size_t longestPath = 1000;  // in UTF-16 code units

}  // namespace

// Appends the nodes in document order.
class ComparedTree::Builder : public SAXInterface {
public:
    explicit Builder(ComparedTree& tree) : m_tree(tree) {}

    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        ReadLocation();
        ComparedNode& node = Append();
        node.name = m_tree.m_table.IdentifyText(name);
        node.attributes = static_cast<std::uint32_t>(m_tree.m_attributes.size());
        node.attributeCount = static_cast<std::uint32_t>(attributes.size());
        // An AttributeMap from which nothing was erased has the order in which the parser filled it.
        for (const auto& [key, value] : attributes)
            m_tree.m_attributes.emplace_back(m_tree.m_table.IdentifyText(key), m_tree.m_table.IdentifyText(value));
        m_parent = static_cast<std::uint32_t>(m_tree.m_nodes.size() - 1);
    }

    void EndElement() override
    {
        ReadLocation();
        ComparedNode& node = m_tree.m_nodes[m_parent];
        node.end = static_cast<std::uint32_t>(m_tree.m_nodes.size());
        m_parent = node.parent;
    }

    // The text begins behind the last tag.
    void Characters(const VString& text) override
    {
        if (m_parent == None || text.IsEmpty())
            return;
        ComparedNode& node = Append();
        node.value = m_tree.m_table.IdentifyText(text);
        node.end = static_cast<std::uint32_t>(m_tree.m_nodes.size());
    }

    SAXFileLocation* location = nullptr;

private:
    ComparedNode& Append()
    {
        if (m_tree.m_nodes.size() >= None || m_tree.m_attributes.size() >= None)
            throw std::length_error("the document has too many nodes");
        ComparedNode& node = m_tree.m_nodes.emplace_back();
        node.parent = m_parent;
        node.line = static_cast<std::uint32_t>(m_line);
        node.column = static_cast<std::uint32_t>(m_column);
        return node;
    }

    void ReadLocation() { location->GetCurrentLocation(m_line, m_column); }

    ComparedTree& m_tree;
    std::uint32_t m_parent = None;
    int m_line = 0;
    int m_column = 0;
};

ComparedTree::ComparedTree(SourceDocument source, ContentTable& table) : m_table(table), m_source(std::move(source))
{
    const auto builder = std::make_shared<Builder>(*this);
    m_errors = ParseEvents(m_source, builder, [&](SAXFileLocation& location) { builder->location = &location; });
    if (!m_errors.empty()) {
        m_nodes.clear();
        return;
    }
    const art::Activity activity("vanxml.identify-contents");
    DropIgnorableSpace();
    NumberSiblings();
    IdentifyContents();
}

void ComparedTree::DropIgnorableSpace()
{
    const std::uint32_t space = m_table.IdentifyText("xml:space");
    const std::uint32_t preserve = m_table.IdentifyText("preserve");
    std::vector<bool> isBlank(m_nodes.size());
    std::vector<bool> hasElement(m_nodes.size());
    std::vector<bool> hasText(m_nodes.size());
    for (std::size_t i = 1; i < m_nodes.size(); ++i) {
        const ComparedNode& node = m_nodes[i];
        isBlank[i] = node.IsText() && IsBlankText(m_table.Text(node.value));
        if (!node.IsText())
            hasElement[node.parent] = true;
        else if (!isBlank[i])
            hasText[node.parent] = true;
    }
    // A node knows whether white space counts in it when its own parent knows it.
    std::vector<bool> isMixed(m_nodes.size());
    std::vector<bool> preserves(m_nodes.size());
    std::vector<std::uint32_t> newNumbers(m_nodes.size() + 1);
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < m_nodes.size(); ++i) {
        const ComparedNode& node = m_nodes[i];
        const bool hasParent = node.parent != None;
        newNumbers[i] = count;
        if (isBlank[i]) {
            const bool isKept = isMixed[node.parent] || preserves[node.parent] || !hasElement[node.parent];
            count += isKept ? 1u : 0u;
            isBlank[i] = !isKept;  // now: is dropped
            continue;
        }
        ++count;
        isMixed[i] = (hasElement[i] && hasText[i]) || (hasParent && isMixed[node.parent]);
        const std::uint32_t value = FindAttribute(i, space);
        preserves[i] = value == None ? hasParent && preserves[node.parent] : value == preserve;
    }
    newNumbers[m_nodes.size()] = count;
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        if (isBlank[i])
            continue;
        ComparedNode& node = m_nodes[newNumbers[i]];
        node = m_nodes[i];
        node.end = newNumbers[node.end];
        node.parent = node.parent == None ? None : newNumbers[node.parent];
    }
    m_nodes.resize(count);
    m_nodes.shrink_to_fit();
}

// A child stands behind its parent, so its number is known first in the reverse order.
void ComparedTree::IdentifyContents()
{
    std::vector<std::uint32_t> sequence;
    std::vector<Attribute> attributes;
    for (std::uint32_t i = static_cast<std::uint32_t>(m_nodes.size()); i-- > 0;) {
        ComparedNode& node = m_nodes[i];
        sequence.assign({node.name, node.value});
        const auto first = m_attributes.begin() + static_cast<std::ptrdiff_t>(node.attributes);
        attributes.assign(first, first + static_cast<std::ptrdiff_t>(node.attributeCount));
        std::sort(attributes.begin(), attributes.end());
        for (const auto& [name, value] : attributes)
            sequence.insert(sequence.end(), {name, value});
        node.tag = m_table.IdentifySequence(sequence);
        node.content = node.tag;
        if (node.end == i + 1)
            continue;
        // A tag begins with the number of a name, which is never None. So no content has the number of a tag.
        sequence.assign({None, node.tag});
        for (std::uint32_t child = i + 1; child < node.end; child = m_nodes[child].end)
            sequence.push_back(m_nodes[child].content);
        node.content = m_table.IdentifySequence(sequence);
    }
}

void ComparedTree::NumberSiblings()
{
    std::vector<std::pair<std::uint32_t, std::uint32_t>> children;  // name and node
    std::uint32_t elements = 0;
    for (std::uint32_t i = 0; i < m_nodes.size(); ++i) {
        ComparedNode& node = m_nodes[i];
        elements += node.IsText() ? 0u : 1u;
        node.elements = elements;
        children.clear();
        for (std::uint32_t child = i + 1; child < node.end; child = m_nodes[child].end) {
            children.emplace_back(m_nodes[child].name, child);
            m_nodes[child].child = static_cast<std::uint32_t>(children.size());
        }
        std::sort(children.begin(), children.end());
        for (std::size_t first = 0; first < children.size();) {
            std::size_t end = first;
            while (end < children.size() && children[end].first == children[first].first)
                ++end;
            for (std::size_t k = first; k < end && end - first > 1; ++k)
                m_nodes[children[k].second].position = static_cast<std::uint32_t>(k - first + 1);
            first = end;
        }
    }
}

std::vector<ComparedTree::Attribute> ComparedTree::AttributesOf(std::uint32_t node) const
{
    const auto first = m_attributes.begin() + static_cast<std::ptrdiff_t>(m_nodes[node].attributes);
    return {first, first + static_cast<std::ptrdiff_t>(m_nodes[node].attributeCount)};
}

std::uint32_t ComparedTree::FindAttribute(std::uint32_t node, std::uint32_t name) const
{
    const auto first = m_attributes.begin() + static_cast<std::ptrdiff_t>(m_nodes[node].attributes);
    const auto end = first + static_cast<std::ptrdiff_t>(m_nodes[node].attributeCount);
    const auto found = std::find_if(first, end, [name](const Attribute& each) { return each.first == name; });
    return found != end ? found->second : None;
}

std::vector<std::uint32_t> ComparedTree::ChildrenOf(std::uint32_t node) const
{
    std::vector<std::uint32_t> children;
    for (std::uint32_t child = node + 1; child < m_nodes[node].end; child = m_nodes[child].end)
        children.push_back(child);
    return children;
}

std::uint32_t ComparedTree::ElementNumberOf(std::uint32_t node) const
{
    return m_nodes[m_nodes[node].IsText() ? m_nodes[node].parent : node].elements;
}

std::uint32_t ComparedTree::CountElementsIn(std::uint32_t node) const
{
    return m_nodes[m_nodes[node].end - 1].elements - m_nodes[node].elements;
}

std::string ComparedTree::PathOf(std::uint32_t node, std::uint32_t attribute) const
{
    std::vector<std::string> steps;  // the last one first
    std::size_t length = 0;          // in UTF-16 code units
    const auto show = [&](const char* prefix, std::uint32_t name) {
        const VString text = m_table.ClippedText(name);
        length += text.View().size();
        return prefix + text.toStdString();
    };
    steps.reserve(mostSteps + 1);
    if (attribute != None) {
        steps.push_back(show("/@", attribute));
        length += 2;
    }
    for (; node != None; node = m_nodes[node].parent) {
        const ComparedNode& each = m_nodes[node];
        const std::string position = each.position > 0 ? "[" + std::to_string(each.position) + "]" : std::string();
        std::string step = each.IsText() ? "/text()" : show("/", each.name);
        length += position.size() + (each.IsText() ? step.size() : 1);
        if (steps.size() == mostSteps || length > longestPath) {
            steps.emplace_back("…");
            break;
        }
        steps.push_back(step + position);
    }
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        path += *step;
    return path;
}

SourcePosition ComparedTree::PlaceOf(std::uint32_t node) const
{
    return m_source.MapPosition({m_nodes[node].line, m_nodes[node].column});
}
