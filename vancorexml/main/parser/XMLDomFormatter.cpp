#include "vancorexml/main/parser/XMLDomFormatter.h"

#include <string_view>
#include <utility>

#include "vancoreplatform/FileReplacement.h"
#include "vancorexml/main/parser/Base64.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"
#include "vancorexml/main/parser/XMLTreeText.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\XMLDomFormatter";
constexpr AssertionSite NothingOpenForAttributes{File, 128, "m_stack.top() != nullptr", 0x5619328D};
constexpr AssertionSite NothingOpenForBinary{File, 136, "m_stack.top() != nullptr", 0xE813A351};
constexpr AssertionSite ElementHasText{File, 139, "!e->HasText()", 0x9C70B807};
constexpr AssertionSite NothingOpenForCloseTag{File, 155, "m_stack.top() != nullptr", 0x5C6709A4};
constexpr AssertionSite AnotherTagIsOpen{File, 158, "e->GetName() == tag", 0x956FC18E};
constexpr AssertionSite NothingOpenForComment{File, 165, "m_stack.top() != nullptr", 0xBA49C527};
constexpr AssertionSite NothingOpenForContent{File, 173, "m_stack.top() != nullptr", 0xCE4F4D17};
constexpr AssertionSite NothingOpenForContentTag{File, 181, "m_stack.top() != nullptr", 0x2AF5921A};
constexpr AssertionSite DocumentIsGone{File, 189, "m_document != nullptr", 0x7C21D94B};  // own code
constexpr AssertionSite NothingOpenForDOMElement{File, 191, "m_stack.top() != nullptr", 0xD26E62DD};
constexpr AssertionSite NothingOpenForHeader{File, 200, "m_stack.top() != nullptr", 0x968B6274};
constexpr AssertionSite NothingOpenForLine{File, 206, "m_stack.top() != nullptr", 0x0F7E4CE7};
constexpr AssertionSite NothingOpenForOpenTag{File, 215, "m_stack.top() != nullptr", 0xE04AB21E};
constexpr AssertionSite NothingOpenForString{File, 225, "m_stack.top() != nullptr", 0x32368D81};
constexpr AssertionSite NothingOpenForTag{File, 233, "m_stack.top() != nullptr", 0xE6086904};

}  // namespace Assertions

// Returns the open element. Raises a LogicException if there is none.
DOMElement& RequireTop(DOMElement* top, const AssertionSite& site)
{
    if (top == nullptr)
        ThrowLogicException(site);
    return *top;
}

DOMElement& AddChild(DOMElement& parent, const VString& tag, const AttributeMap& attributes)
{
    DOMElement& child = parent.AddNewChild(tag, nullptr);
    child.SetAttributes(attributes);
    return child;
}

void Save(const XMLTreeText::Content& content, const VPath& path)
{
    FileReplacement file(path);
    XMLTreeText::WriteUtf8(content, [&file](std::string_view bytes) { file.Write(bytes); });
    file.Commit();
}

}  // namespace

XMLDomFormatter::XMLDomFormatter() : XMLDomFormatter(std::make_unique<DOM>()) {}

XMLDomFormatter::XMLDomFormatter(std::unique_ptr<DOM> document) : m_document(std::move(document))
{
    m_stack.push_back(&m_document->GetRoot());
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
    m_stack.clear();
    return std::move(m_document);
}

void XMLDomFormatter::OutputAttributes(const AttributeMap& attributes)
{
    RequireTop(Top(), Assertions::NothingOpenForAttributes).SetAttributes(attributes);
}

void XMLDomFormatter::OutputDOMElement(const DOMElement& element)
{
    RequireTop(Top(), Assertions::NothingOpenForDOMElement).AppendChild(std::make_unique<DOMElement>(element));
}

void XMLDomFormatter::OutputContent(const VString& text, bool encoded)
{
    RequireTop(Top(), Assertions::NothingOpenForContent).SetText(text, encoded);
}

void XMLDomFormatter::OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content)
{
    AddChild(RequireTop(Top(), Assertions::NothingOpenForContentTag), tag, attributes).SetText(content);
}

void XMLDomFormatter::OutputComment(const VString& text)
{
    RequireTop(Top(), Assertions::NothingOpenForComment);
    m_comments.push_back(text);
}

void XMLDomFormatter::OutputCloseTag(const VString& tag)
{
    const DOMElement& element = RequireTop(Top(), Assertions::NothingOpenForCloseTag);
    if (element.GetName() != tag)
        ThrowLogicException(Assertions::AnotherTagIsOpen);
    m_stack.pop_back();
}

void XMLDomFormatter::OutputOpenTag(const VString& tag, const AttributeMap& attributes)
{
    m_stack.push_back(&AddChild(RequireTop(Top(), Assertions::NothingOpenForOpenTag), tag, attributes));
}

void XMLDomFormatter::OutputTag(const VString& tag, const AttributeMap& attributes)
{
    AddChild(RequireTop(Top(), Assertions::NothingOpenForTag), tag, attributes);
}

void XMLDomFormatter::OutputHeader()
{
    RequireTop(Top(), Assertions::NothingOpenForHeader);
    m_headerRequested = true;
}

void XMLDomFormatter::OutputLine(const VString& text)
{
    DOMElement& element = RequireTop(Top(), Assertions::NothingOpenForLine);
    element.AppendText(text);
    element.AppendText(u"\n");
}

void XMLDomFormatter::OutputString(const VString& text)
{
    RequireTop(Top(), Assertions::NothingOpenForString).AppendText(text);
}

void XMLDomFormatter::OutputBinary(const unsigned char* data, unsigned int length)
{
    DOMElement& element = RequireTop(Top(), Assertions::NothingOpenForBinary);
    if (element.HasText())
        ThrowLogicException(Assertions::ElementHasText);
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
    return XMLTreeText::ToUtf16({document.GetDocumentRoot(), comment, header});
}

VString XMLDomFormatter::RenderAsXMLString(const DOMElement& element, VString* comment, bool header)
{
    return XMLTreeText::ToUtf16({&element, comment, header});
}

std::string XMLDomFormatter::RenderAsXMLBytes(const DOM& document, VString* comment, bool header)
{
    return XMLTreeText::ToUtf8({document.GetDocumentRoot(), comment, header});
}

std::string XMLDomFormatter::RenderAsXMLBytes(const DOMElement& element, VString* comment, bool header)
{
    return XMLTreeText::ToUtf8({&element, comment, header});
}

void XMLDomFormatter::SaveAsXMLFile(const DOM& document, const VPath& path, VString* comment, bool header)
{
    Save({document.GetDocumentRoot(), comment, header}, path);
}

void XMLDomFormatter::SaveAsXMLFile(const DOMElement& element, const VPath& path, VString* comment, bool header)
{
    Save({&element, comment, header}, path);
}

DOM& XMLDomFormatter::Document() const
{
    if (m_document == nullptr)
        ThrowLogicException(Assertions::DocumentIsGone);
    return *m_document;
}
