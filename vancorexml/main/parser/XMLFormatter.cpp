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
#include "vancoreplatform/StaticObject.h"
#include "vancorexml/main/parser/Base64.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementChildren.h"
#include "vancorexml/main/parser/XMLEscaping.h"

namespace {

struct Texts {
    VString prefixOpen = u"<";
    VString prefixClose = u"</";
    VString suffixOpenClose = u">";
    VString suffixEmpty = u" />";
    VString commentOpen = u"<!--";
    VString commentClose = u"-->";
    VString header = u"<?xml version='1.0' encoding='utf-8' ?>";
    VString yes = u"true";
    VString no = u"false";
};

void WriteLeaf(XMLFormatter& target, const DOMElement& element)
{
    if (!element.HasText())
        target.OutputTag(element.GetName(), element.GetAttributes());
    else
        target.OutputContentTag(element.GetName(), element.GetAttributes(), element.GetText(), !element.IsEncoded());
}

void WriteTextBesideChildren(XMLFormatter& target, const DOMElement& element, const XMLFormatter& textIndent)
{
    if (!element.HasText())
        return;
    target.OutputString(textIndent.GetIndent());
    target.OutputContent(element.GetText(), element.IsEncoded());
}

// An open element that has children.
class OpenElement {
public:
    OpenElement(XMLFormatter& target, const DOMElement& element)
        : m_element(element),
          m_count(element.GetChildren().size()),
          m_indenter(target, element.GetName(), element.GetAttributes())
    {}

    const DOMElement& Element() const noexcept { return m_element; }
    // Returns the next child, or null. Ignores children that are added while the element is written;
    // otherwise writing an element into itself would never end.
    const DOMElement* NextChild()
    {
        const DOMElementConstChildren children = m_element.GetChildren();
        return m_next < std::min(m_count, children.size()) ? children[m_next++] : nullptr;
    }
    void Restart() noexcept { m_next = 0; }

private:
    const DOMElement& m_element;
    std::size_t m_count;
    std::size_t m_next = 0;
    XMLFormatter::Indenter m_indenter;
};

// The open elements of a walk. An exception that ends the walk closes them from the inside out.
class OpenElements {
public:
    ~OpenElements()
    {
        while (!IsEmpty())
            Pop();
    }

    bool IsEmpty() const noexcept { return m_elements.empty(); }
    OpenElement& Innermost() noexcept { return m_elements.back(); }
    void Push(XMLFormatter& target, const DOMElement& element) { m_elements.emplace_back(target, element); }
    void Pop() { m_elements.pop_back(); }

private:
    std::deque<OpenElement> m_elements;
};

// Writes the children of `top` with their subtrees.
void WriteChildren(XMLFormatter& target, OpenElement& top, const XMLFormatter& textIndent)
{
    OpenElements open;
    for (;;) {
        OpenElement& parent = open.IsEmpty() ? top : open.Innermost();
        const DOMElement* const child = parent.NextChild();
        if (child == nullptr) {
            if (open.IsEmpty())
                return;
            WriteTextBesideChildren(target, parent.Element(), textIndent);
            open.Pop();
        } else if (child->HasChildren()) {
            open.Push(target, *child);
        } else {
            WriteLeaf(target, *child);
        }
    }
}

VString FormatAttribute(const AttributeMap::value_type& attribute)
{
    const std::u16string_view name = attribute.first.View();
    const VString value = XMLFormatter::EncodeAttributeString(attribute.second);
    const std::size_t length = name.size() + value.View().size() + 4;
    if (length > static_cast<std::size_t>(VString::MaxLength))
        throw std::length_error("XMLFormatter: the attribute is too long");
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
    if (header)
        formatter.OutputHeader();
    if (comment != nullptr)
        formatter.OutputComment(*comment);
    if (node != nullptr)
        formatter.OutputDOMElement(*node);
}

}  // namespace

const VString& XMLFormatter::prefixOpen = GetStaticObject<Texts>().prefixOpen;
const VString& XMLFormatter::prefixClose = GetStaticObject<Texts>().prefixClose;
const VString& XMLFormatter::suffixOpenClose = GetStaticObject<Texts>().suffixOpenClose;
const VString& XMLFormatter::suffixEmpty = GetStaticObject<Texts>().suffixEmpty;
const VString& XMLFormatter::commentOpen = GetStaticObject<Texts>().commentOpen;
const VString& XMLFormatter::commentClose = GetStaticObject<Texts>().commentClose;

XMLFormatterBase::~XMLFormatterBase() = default;

void XMLFormatterBase::OutputDOMElement(const DOMElement& element)
{
    static_cast<XMLFormatter*>(this)->WriteElement(element);
}

bool XMLFormatterOverride::OutputThroughOverride(const DOMElement& element)
{
    m_hasOverride = true;
    OutputDOMElement(element);
    return m_hasOverride;
}

void XMLFormatterOverride::OutputDOMElement(const DOMElement&)
{
    m_hasOverride = false;
}

XMLFormatter::Indenter::Indenter(XMLFormatter& formatter, const VString& tag, const AttributeMap& attributes)
    : m_formatter(formatter),
      m_tag(tag)
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
        // A destructor must not throw: the scope may end because of another exception.
    }
}

XMLFormatter::XMLFormatter(const VString& indentUnit, bool singleLine)
    : m_indentUnit(indentUnit),
      m_lineTerminator(singleLine ? VString() : VString(u"\n"))
{}

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
        for (const AttributeMap::value_type& attribute : attributes)
            OutputString(FormatAttribute(attribute));
        return;
    }
    std::vector<const AttributeMap::value_type*> sorted;
    sorted.reserve(attributes.size());
    for (const AttributeMap::value_type& attribute : attributes)
        sorted.push_back(&attribute);
    std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return *a < *b; });
    for (const AttributeMap::value_type* attribute : sorted)
        OutputString(FormatAttribute(*attribute));
}

void XMLFormatter::WriteElement(const DOMElement& element)
{
    if (!element.HasChildren()) {
        WriteLeaf(*this, element);
        return;
    }
    OpenElement open(*this, element);
    if (OutputThroughOverride(*open.NextChild())) {
        while (const DOMElement* child = open.NextChild())
            OutputDOMElement(*child);
    } else {
        open.Restart();
        WriteChildren(*this, open, *this);
    }
    WriteTextBesideChildren(*this, element, *this);
}

void XMLFormatter::WriteTree(XMLFormatter& target, const DOMElement& element, const XMLFormatter& textIndent)
{
    if (!element.HasChildren()) {
        WriteLeaf(target, element);
        return;
    }
    OpenElement open(target, element);
    WriteChildren(target, open, textIndent);
    WriteTextBesideChildren(target, element, textIndent);
}

void XMLFormatter::OutputDOMElements(const DOMElementChildren& elements)
{
    std::vector<const DOMElement*> all;
    all.reserve(elements.size());
    for (const DOMElement* element : elements)
        all.push_back(element);
    for (const DOMElement* element : all)
        OutputDOMElement(*element);
}

void XMLFormatter::OutputContent(const VString& text, bool verbatim)
{
    if (!verbatim) {
        OutputString(m_formatMode == FormatModeStrict ? EncodeAttributeString(text) : EncodeContentString(text));
        return;
    }
    const bool multiLine = !m_lineTerminator.IsEmpty();
    if (multiLine && !text.startsWith(m_lineTerminator))
        OutputString(m_lineTerminator);
    OutputString(text);
    if (multiLine && !text.endsWith(m_lineTerminator))
        OutputString(m_lineTerminator);
    OutputString(GetIndent());
}

void XMLFormatter::OutputContent(const VString& text)
{
    OutputContent(text, false);
}

void XMLFormatter::OutputContentTag(
    const VString& tag, const AttributeMap& attributes, const VString& content, bool encode)
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
    OutputString(GetIndent());
    OutputString(commentOpen);
    OutputString(XMLEscaping::EncodeComment(text));
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
    OutputLine(GetStaticObject<Texts>().header);
    OutputLine(VString());
}

void XMLFormatter::OutputLine(const VString& text)
{
    OutputString(text);
    if (!m_lineTerminator.IsEmpty())
        OutputString(m_lineTerminator);
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
    if (!XMLEscaping::IsLongContent(text))
        return XMLEscaping::EncodeWithTable(text, XMLEscaping::AttributeTable());
    if (text.contains(u'<'))
        return XMLEscaping::EncodeAsCData(text);
    return XMLEscaping::EncodeWithTable(text, XMLEscaping::ContentTable());
}

VString XMLFormatter::FormatBooleanAttribute(bool value)
{
    return value ? GetStaticObject<Texts>().yes : GetStaticObject<Texts>().no;
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
