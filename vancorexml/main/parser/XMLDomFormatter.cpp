#include "vancorexml/main/parser/XMLDomFormatter.h"

#include <cstdint>
#include <utility>

#include "vancorexml/main/parser/Base64.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"
#include "vansys/LogicException.h"

namespace {

[[noreturn]] void FailAssertion(const char* expression, std::uint32_t code, int line)
{
    ThrowLogicException("vancorexml\\main\\parser\\XMLDomFormatter", line, expression, MakeLogicError(code));
}

// Returns the open element. Raises a LogicException if there is none.
DOMElement& RequireTop(DOMElement* top, std::uint32_t code, int line)
{
    if (top == nullptr)
        FailAssertion("m_stack.top() != nullptr", code, line);
    return *top;
}

DOMElement& AddChild(DOMElement& parent, const VString& tag, const AttributeMap& attributes)
{
    DOMElement& child = parent.AddNewChild(tag, nullptr);
    child.SetAttributes(attributes);
    return child;
}

template <typename Source>
VString Render(const Source& source, VString* comment, bool header)
{
    XMLStringFormatter writer;
    writer.SetFormatMode(FormatModeContent);
    XMLFormatter::FormatDOM(writer, source, comment, header);
    return writer.GetOutput();
}

}  // namespace

XMLDomFormatter::XMLDomFormatter() : XMLDomFormatter(std::make_unique<DOM>()) {}

XMLDomFormatter::XMLDomFormatter(std::unique_ptr<DOM> document) : m_document(std::move(document))
{
    m_stack.push(&m_document->GetRoot());
}

XMLDomFormatter::~XMLDomFormatter() = default;

DOM& XMLDomFormatter::GetDocument()
{
    return Document();
}

DOMElement* XMLDomFormatter::GetDocumentRoot()
{
    return Document().GetDocumentRoot();
}

DOMElement& XMLDomFormatter::GetRoot()
{
    return Document().GetRoot();
}

DOMElement* XMLDomFormatter::GetElement(const VString& name) const
{
    return Document().GetElement(name);
}

std::unique_ptr<DOM> XMLDomFormatter::TakeDocument()
{
    m_stack = {};
    return std::move(m_document);
}

void XMLDomFormatter::OutputAttributes(const AttributeMap& attributes)
{
    RequireTop(Top(), 0x5619328D, 128).SetAttributes(attributes);
}

void XMLDomFormatter::OutputDOMElement(const DOMElement& element)
{
    RequireTop(Top(), 0xD26E62DD, 191).AppendChild(std::make_unique<DOMElement>(element));
}

void XMLDomFormatter::OutputContent(const VString& text, bool encoded)
{
    RequireTop(Top(), 0xCE4F4D17, 173).SetText(text, encoded);
}

void XMLDomFormatter::OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content)
{
    AddChild(RequireTop(Top(), 0x2AF5921A, 181), tag, attributes).SetText(content);
}

void XMLDomFormatter::OutputComment(const VString& text)
{
    RequireTop(Top(), 0xBA49C527, 165);
    m_comments.push_back(text);
}

void XMLDomFormatter::OutputCloseTag(const VString& tag)
{
    const DOMElement& element = RequireTop(Top(), 0x5C6709A4, 155);
    if (element.GetName() != tag)
        FailAssertion("e->GetName() == tag", 0x956FC18E, 158);
    m_stack.pop();
}

void XMLDomFormatter::OutputOpenTag(const VString& tag, const AttributeMap& attributes)
{
    m_stack.push(&AddChild(RequireTop(Top(), 0xE04AB21E, 215), tag, attributes));
}

void XMLDomFormatter::OutputTag(const VString& tag, const AttributeMap& attributes)
{
    AddChild(RequireTop(Top(), 0xE6086904, 233), tag, attributes);
}

void XMLDomFormatter::OutputHeader()
{
    RequireTop(Top(), 0x968B6274, 200);
    m_headerRequested = true;
}

void XMLDomFormatter::OutputLine(const VString& text)
{
    DOMElement& element = RequireTop(Top(), 0x0F7E4CE7, 206);
    element.AppendText(text);
    element.AppendText(u"\n");
}

void XMLDomFormatter::OutputString(const VString& text)
{
    RequireTop(Top(), 0x32368D81, 225).AppendText(text);
}

void XMLDomFormatter::OutputBinary(const unsigned char* data, unsigned int length)
{
    DOMElement& element = RequireTop(Top(), 0xE813A351, 136);
    if (element.HasText())
        FailAssertion("!e->HasText()", 0x9C70B807, 139);
    std::vector<VString> lines;
    Base64Encode(data, length, lines, true);
    for (const VString& line : lines) {
        element.AppendText(GetIndent());
        element.AppendText(line);
        element.AppendText(u"\n");
    }
    element.SetEncoded(true);
}

VString XMLDomFormatter::GetOutput(FormatMode mode) const
{
    const DOM& document = Document();
    XMLStringFormatter writer;
    writer.SetFormatMode(mode);
    if (m_headerRequested)
        writer.OutputHeader();
    for (const VString& comment : m_comments)
        writer.OutputComment(comment);
    if (const DOMElement* root = document.GetDocumentRoot())
        Format(writer, *root);
    return writer.GetOutput();
}

void XMLDomFormatter::Format(XMLFormatter& target, const DOMElement& element) const
{
    WriteTree(target, element, *this);
}

VString XMLDomFormatter::RenderAsXMLString(const DOM& document, VString* comment, bool header)
{
    return Render(document, comment, header);
}

VString XMLDomFormatter::RenderAsXMLString(const DOMElement& element, VString* comment, bool header)
{
    return Render(element, comment, header);
}

DOM& XMLDomFormatter::Document() const
{
    if (m_document == nullptr)
        FailAssertion("m_document != nullptr", 0x7C21D94B, __LINE__);
    return *m_document;
}
