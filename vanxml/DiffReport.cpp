#include "vanxml/DiffReport.h"

#include "vanxml/ErrorLines.h"
#include "vanxml/JsonText.h"

namespace {

using Kind = TreeDifference::Kind;
constexpr std::uint32_t None = TreeDifference::None;

const char* NameOf(Kind kind)
{
    switch (kind) {
    case Kind::Changed: return "changed";
    case Kind::Removed: return "removed";
    case Kind::Added: return "added";
    case Kind::Moved: return "moved";
    }
    return "";
}

std::string Quote(const VString& value)
{
    return "\"" + EscapeControlCharacters(value.toStdString()) + "\"";
}

// Tells how many elements are inside an element.
std::string DescribeSize(std::uint32_t elements)
{
    if (elements == 0)
        return std::string();
    return " with " + std::to_string(elements) + (elements == 1 ? " element" : " elements");
}

}  // namespace

std::string DiffReport::Format(const TreeDifference& difference) const
{
    const bool isElement = difference.attribute == None && difference.valueA == None && difference.valueB == None;
    std::string text = m_style.Paint(TextStyle::Part::Place, NameOf(difference.kind)) + " ";
    if (difference.a != None)
        text += EscapeControlCharacters(m_a.PathOf(difference.a, difference.attribute));
    if (difference.kind == Kind::Moved)
        text += " to ";
    if (difference.a == None || difference.kind == Kind::Moved)
        text += EscapeControlCharacters(m_b.PathOf(difference.b, difference.attribute));
    if (isElement)
        text += DescribeSize(difference.elements);
    text += "\n";
    const auto detail = [&](const ComparedNode& node, std::uint32_t value, TextStyle::Part part) {
        if (difference.kind == Kind::Moved)
            return ": child " + std::to_string(node.child);
        return value == None ? std::string() : ": " + m_style.Paint(part, Quote(m_table.ClippedText(value)));
    };
    if (difference.a != None && (isElement || difference.valueA != None))
        text +=
            FormatPlace(m_a, difference.a, detail(m_a.Node(difference.a), difference.valueA, TextStyle::Part::Removed));
    if (difference.b != None && (isElement || difference.valueB != None))
        text +=
            FormatPlace(m_b, difference.b, detail(m_b.Node(difference.b), difference.valueB, TextStyle::Part::Added));
    return text;
}

std::string DiffReport::FormatPlace(const ComparedTree& tree, std::uint32_t node, const std::string& detail) const
{
    const SourcePosition place = tree.PlaceOf(node);
    return "    " + EscapeControlCharacters(tree.Name().toStdString()) + ":" + std::to_string(place.line) + ":" +
        std::to_string(place.column) + detail + "\n";
}

std::string DiffReport::FormatJson(const TreeDifference& difference) const
{
    const bool isText = difference.valueA != None || difference.valueB != None;
    std::string json = "{\"type\":\"" + std::string(NameOf(difference.kind)) + "\",\"what\":\"";
    json += difference.attribute != None ? "attribute" : isText ? "text" : "element";
    json += '"';
    AppendSide(json, "a", m_a, difference.a, difference.valueA, difference);
    AppendSide(json, "b", m_b, difference.b, difference.valueB, difference);
    return json + "}\n";
}

void DiffReport::AppendSide(std::string& json,
    const char* side,
    const ComparedTree& tree,
    std::uint32_t node,
    std::uint32_t value,
    const TreeDifference& difference) const
{
    const bool isMissing = node == None || (difference.attribute != None && value == None);
    if (isMissing)
        return;
    const SourcePosition place = tree.PlaceOf(node);
    json += ",\"" + std::string(side) + "\":{\"file\":";
    AppendJsonString(json, tree.Name().toStdString());
    json += ",\"line\":" + std::to_string(place.line) + ",\"column\":" + std::to_string(place.column);
    json += ",\"element\":" + std::to_string(tree.ElementNumberOf(node));
    const bool isElement = difference.attribute == None && !tree.Node(node).IsText();
    if (isElement)
        json += ",\"child\":" + std::to_string(tree.Node(node).child);
    if (!tree.Node(node).IsText()) {
        const std::uint32_t name = difference.attribute != None ? difference.attribute : tree.Node(node).name;
        json += ",\"name\":";
        AppendJsonString(json, m_table.Text(name).toStdString());
    }
    json += ",\"path\":";
    AppendJsonString(json, tree.PathOf(node, difference.attribute));
    if (value != None) {
        json += ",\"value\":";
        AppendJsonString(json, m_table.Text(value).toStdString());
    }
    json += '}';
}
