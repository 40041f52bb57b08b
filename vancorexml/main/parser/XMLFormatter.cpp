#include "vancorexml/main/parser/XMLFormatter.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <QString>

#include "vancoredata/DataValue.h"
#include "vancoredata/QualifiedName.h"
#include "vancorexml/main/parser/Base64.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementChildren.h"
#include "vancorexml/main/parser/XMLEscaping.h"

const VString XMLFormatter::prefixOpen(u"<");
const VString XMLFormatter::prefixClose(u"</");
const VString XMLFormatter::suffixOpenClose(u">");
const VString XMLFormatter::suffixEmpty(u" />");
const VString XMLFormatter::commentOpen(u"<!--");
const VString XMLFormatter::commentClose(u"-->");

namespace {

// The shortest content that keeps its tabs and line feeds, or becomes a CDATA section.
constexpr int LongContent = 32;

const VString TrueText(u"true");
const VString FalseText(u"false");

void WriteLeaf(XMLFormatter& target, const DOMElement& element)
{
    if (!element.HasText()) target.OutputTag(element.GetName(), element.GetAttributes());
    else target.OutputContentTag(element.GetName(), element.GetAttributes(), element.GetText(), !element.IsEncoded());
}

void WriteTextBesideChildren(XMLFormatter& target, const DOMElement& element, const XMLFormatter& textIndent)
{
    if (!element.HasText()) return;
    target.OutputString(textIndent.GetIndent());
    target.OutputContent(element.GetText(), element.IsEncoded());
}

// The elements that are open during a walk, each closed when it is popped; what is open
// when an exception ends the walk is closed from the inside out.
class OpenElements {
public:
    explicit OpenElements(XMLFormatter& target) : m_target(target) {}
    ~OpenElements()
    {
        while (!m_levels.empty()) m_levels.pop_back();
    }
    OpenElements(const OpenElements&) = delete;
    OpenElements& operator=(const OpenElements&) = delete;

    bool IsEmpty() const noexcept { return m_levels.empty(); }
    const DOMElement& Top() const noexcept { return m_levels.back().element; }
    void Push(const DOMElement& element) { m_levels.emplace_back(m_target, element); }
    void Pop() { m_levels.pop_back(); }
    // The next child of the top element, null behind the last.
    const DOMElement* NextChild()
    {
        Level& level = m_levels.back();
        const DOMElementChildren children = level.element.GetChildren();
        return level.next < children.size() ? children[level.next++] : nullptr;
    }

private:
    struct Level {
        Level(XMLFormatter& target, const DOMElement& opened) : element(opened), indenter(target, opened.GetName(), opened.GetAttributes()) {}

        const DOMElement& element;
        std::size_t next = 0;
        XMLFormatter::Indenter indenter;
    };

    XMLFormatter& m_target;
    std::deque<Level> m_levels;
};

VString FormatAttribute(const AttributeMap::value_type& attribute)
{
    const std::u16string_view name = attribute.first.View();
    const VString value = XMLFormatter::EncodeAttributeString(attribute.second);
    const std::size_t length = name.size() + value.View().size() + 4;
    if (length > static_cast<std::size_t>(VString::MaxLength)) throw std::length_error("XMLFormatter: the attribute is too long");
    QString result(static_cast<int>(length), Qt::Uninitialized);
    auto* out = reinterpret_cast<char16_t*>(result.data());
    *out++ = u' ';
    out = std::copy(name.begin(), name.end(), out);
    *out++ = u'=';
    *out++ = u'\'';
    out = std::copy(value.begin(), value.end(), out);
    *out = u'\'';
    return VString(std::move(result));
}

template <typename Node>
void FormatNode(XMLFormatter& formatter, const Node* node, const VString* comment, bool header)
{
    if (header) formatter.OutputHeader();
    if (comment != nullptr) formatter.OutputComment(*comment);
    if (node != nullptr) formatter.OutputDOMElement(*node);
}

}  // namespace

XMLFormatter::Indenter::Indenter(XMLFormatter& formatter, const VString& tag, const AttributeMap& attributes) : m_formatter(formatter), m_tag(tag)
{
    m_formatter.OutputOpenTag(tag, attributes);
    m_formatter.Indent();
}

XMLFormatter::Indenter::~Indenter()
{
    try {
        m_formatter.Undent();
        m_formatter.OutputCloseTag(m_tag);
    } catch (...) {
        // The scope may end because of another exception; this one has no way out.
    }
}

XMLFormatter::XMLFormatter(const VString& indentUnit, bool singleLine) : m_indentUnit(indentUnit), m_lineTerminator(singleLine ? VString() : VString(u"\n")) {}

XMLFormatter::~XMLFormatter() = default;

void XMLFormatter::Indent()
{
    m_indent += m_indentUnit;
}

void XMLFormatter::Undent()
{
    m_indent = m_indent.left(std::max(0, m_indent.length() - m_indentUnit.length()));
}

const VString& XMLFormatter::GetIndent() const
{
    return m_indent;
}

void XMLFormatter::Flush() {}

void XMLFormatter::OutputAttributes(const AttributeMap& attributes)
{
    if (attributes.size() < 2) {
        for (const AttributeMap::value_type& attribute : attributes) OutputString(FormatAttribute(attribute));
        return;
    }
    std::vector<const AttributeMap::value_type*> sorted;
    sorted.reserve(attributes.size());
    for (const AttributeMap::value_type& attribute : attributes) sorted.push_back(&attribute);
    std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return *a < *b; });
    for (const AttributeMap::value_type* attribute : sorted) OutputString(FormatAttribute(*attribute));
}

void XMLFormatter::OutputDOMElement(const DOMElement& element)
{
    if (!element.HasChildren()) {
        WriteLeaf(*this, element);
        return;
    }
    const Indenter indenter(*this, element.GetName(), element.GetAttributes());
    for (const DOMElement* child : element.GetChildren()) OutputDOMElement(*child);
    WriteTextBesideChildren(*this, element, *this);
}

void XMLFormatter::WriteTree(XMLFormatter& target, const DOMElement& element, const XMLFormatter& textIndent)
{
    if (!element.HasChildren()) {
        WriteLeaf(target, element);
        return;
    }
    OpenElements open(target);
    open.Push(element);
    while (!open.IsEmpty()) {
        const DOMElement* child = open.NextChild();
        if (child == nullptr) {
            WriteTextBesideChildren(target, open.Top(), textIndent);
            open.Pop();
        } else if (child->HasChildren()) {
            open.Push(*child);
        } else {
            WriteLeaf(target, *child);
        }
    }
}

void XMLFormatter::OutputDOMElements(const DOMElementChildren& elements)
{
    for (const DOMElement* element : elements) OutputDOMElement(*element);
}

void XMLFormatter::OutputContent(const VString& text, bool verbatim)
{
    if (!verbatim) {
        OutputString(m_formatMode == FormatModeStrict ? EncodeAttributeString(text) : EncodeContentString(text));
        return;
    }
    const bool multiLine = !m_lineTerminator.IsEmpty();
    if (multiLine && !text.startsWith(m_lineTerminator)) OutputString(m_lineTerminator);
    OutputString(text);
    if (multiLine && !text.endsWith(m_lineTerminator)) OutputString(m_lineTerminator);
    OutputString(GetIndent());
}

void XMLFormatter::OutputContent(const VString& text)
{
    OutputContent(text, false);
}

void XMLFormatter::OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content, bool encode)
{
    OutputString(GetIndent());
    OutputString(prefixOpen);
    OutputString(tag);
    OutputAttributes(attributes);
    OutputString(suffixOpenClose);
    OutputContent(content, !encode);
    OutputString(prefixClose);
    OutputString(tag);
    OutputLine(suffixOpenClose);
}

void XMLFormatter::OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content)
{
    OutputContentTag(tag, attributes, content, true);
}

void XMLFormatter::OutputComment(const VString& text)
{
    static const VString blank(u" ");
    static const VString hyphens(u"--");
    // Not a character reference: inside a comment there are none, it only breaks the pair.
    static const VString brokenHyphens(u"-&45;");

    OutputString(GetIndent());
    OutputString(commentOpen);
    OutputString((blank + text + blank).replace(hyphens, brokenHyphens));
    OutputLine(commentClose);
}

void XMLFormatter::OutputCloseTag(const VString& tag)
{
    OutputString(m_indent);
    OutputString(prefixClose);
    OutputString(tag);
    OutputLine(suffixOpenClose);
}

void XMLFormatter::OutputOpenTag(const VString& tag, const AttributeMap& attributes)
{
    OutputString(m_indent);
    OutputString(prefixOpen);
    OutputString(tag);
    OutputAttributes(attributes);
    OutputLine(suffixOpenClose);
}

void XMLFormatter::OutputTag(const VString& tag, const AttributeMap& attributes)
{
    OutputString(m_indent);
    OutputString(prefixOpen);
    OutputString(tag);
    OutputAttributes(attributes);
    OutputLine(suffixEmpty);
}

void XMLFormatter::OutputHeader()
{
    static const VString declaration(u"<?xml version='1.0' encoding='utf-8' ?>");
    OutputLine(declaration);
    OutputLine(VString());
}

void XMLFormatter::OutputLine(const VString& text)
{
    OutputString(text);
    if (!m_lineTerminator.IsEmpty()) OutputString(m_lineTerminator);
}

void XMLFormatter::OutputBinary(const unsigned char* data, unsigned int length)
{
    std::vector<VString> lines;
    Base64Encode(data, length, lines, true);
    for (const VString& line : lines) {
        OutputString(m_indent);
        OutputLine(line);
    }
}

VString XMLFormatter::EncodeAttributeString(const VString& text)
{
    return XMLEscaping::EncodeWithTable(text, XMLEscaping::AttributeTable());
}

VString XMLFormatter::EncodeContentString(const VString& text)
{
    if (text.length() < LongContent) return XMLEscaping::EncodeWithTable(text, XMLEscaping::AttributeTable());
    if (text.contains(u'<')) return XMLEscaping::EncodeAsCData(text);
    return XMLEscaping::EncodeWithTable(text, XMLEscaping::ContentTable());
}

VString XMLFormatter::FormatBooleanAttribute(bool value)
{
    return value ? TrueText : FalseText;
}

VString XMLFormatter::FormatDoubleAttribute(double value)
{
    return VString::number(value, 17);
}

VString XMLFormatter::FormatFloatAttribute(float value)
{
    return VString::number(static_cast<double>(value), 6);
}

VString XMLFormatter::FormatInt64Attribute(std::int64_t value)
{
    return VString::number(value);
}

VString XMLFormatter::FormatIntegerAttribute(std::int32_t value)
{
    return VString::number(value);
}

VString XMLFormatter::FormatUInt32Attribute(std::uint32_t value)
{
    return VString::number(value);
}

VString XMLFormatter::FormatQualifiedNameAttribute(const QualifiedName& name)
{
    return name.GetFullValue();
}

VString XMLFormatter::FormatDataValueAttribute(const DataValue& value)
{
    return DataValueFormatter::Format(value, DataValueFormatter::FormatOptions());
}

void XMLFormatter::FormatDOM(XMLFormatter& formatter, const DOM& document, VString* comment, bool header)
{
    FormatNode(formatter, document.GetDocumentRoot(), comment, header);
}

void XMLFormatter::FormatDOM(XMLFormatter& formatter, const DOMElement& element, VString* comment, bool header)
{
    FormatNode(formatter, &element, comment, header);
}
