// The writer into a document.
#pragma once

#include <memory>
#include <stack>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XMLFormatter.h"

class DOM;
class DOMElement;

// Builds a document from the calls that would write one, so code that writes through an
// XMLFormatter can also build a tree. Comments and the header are kept beside the tree. The
// class also renders documents and elements as text.
//
// Every writing operation acts on the innermost open element, and OutputCloseTag closes it. Once
// the topmost element is closed or the document is taken, every writing operation raises a
// LogicException.
//
// The OutputContentTag overload with `encode` is not overridden and would write its tags as
// text into the open element. Use the overload without the flag.
//
// OutputDOMElement and OutputDOMElements copy elements of any document, the one being built
// included. A derived class that writes elements tag by tag instead, through XMLFormatter's
// OutputDOMElement, must not write an ancestor of the open element: the copy would contain
// itself.
//
// Ownership and lifetime: owns the document until TakeDocument.
//
// Threads: one writer belongs to one thread at a time; rendering from any.
//
//     XMLDomFormatter writer;
//     OutputTuple(writer, tuple);
//     std::unique_ptr<DOM> document = writer.TakeDocument();
class VANCOREXML_API XMLDomFormatter : public XMLFormatter {
public:
    XMLDomFormatter();
    ~XMLDomFormatter() override;

    // GetDocument, GetDocumentRoot, GetRoot, GetElement and GetOutput raise a LogicException after TakeDocument.
    DOM& GetDocument();
    // Null while nothing was written.
    DOMElement* GetDocumentRoot();
    DOMElement& GetRoot();
    // The first element of that name, null when there is none. Linear.
    DOMElement* GetElement(const VString& name) const;
    // Releases the document. No element is open afterwards.
    std::unique_ptr<DOM> TakeDocument();

    // Replaces the attributes of the open element.
    void OutputAttributes(const AttributeMap& attributes) override;
    // Appends a copy. Linear.
    void OutputDOMElement(const DOMElement& element) override;
    using XMLFormatter::OutputContent;
    // Replaces the text of the open element.
    void OutputContent(const VString& text, bool encoded) override;
    using XMLFormatter::OutputContentTag;
    void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content) override;
    void OutputComment(const VString& text) override;
    // Raises a LogicException, and closes nothing, when the open element is not named `tag`.
    void OutputCloseTag(const VString& tag) override;
    void OutputOpenTag(const VString& tag, const AttributeMap& attributes) override;
    void OutputTag(const VString& tag, const AttributeMap& attributes) override;
    void OutputHeader() override;
    // These two append to the text of the open element.
    void OutputLine(const VString& text) override;
    void OutputString(const VString& text) override;
    // The open element's text becomes Base64, marked encoded. Raises a LogicException when
    // it has a text.
    void OutputBinary(const unsigned char* data, unsigned int length) override;

    // The document as text, with the header when one was requested and the comments before
    // the element. Throws std::length_error when the text is too long.
    VString GetOutput(FormatMode mode) const;

    // The text of a document or an element, as FormatDOM writes it in FormatModeContent.
    // Throws std::length_error when the text is too long.
    static VString RenderAsXMLString(const DOM& document, VString* comment, bool header);
    static VString RenderAsXMLString(const DOMElement& element, VString* comment, bool header);

protected:
    // Continues that document, which must not be null.
    explicit XMLDomFormatter(std::unique_ptr<DOM> document);

    // As XMLFormatter::OutputDOMElement on `target`, but that text beside children is
    // indented by this writer's own indentation.
    void Format(XMLFormatter& target, const DOMElement& element) const;

private:
    // Null when the last element is closed.
    DOMElement* Top() const { return m_stack.empty() ? nullptr : m_stack.top(); }
    DOM& Document() const;

    std::stack<DOMElement*> m_stack;
    std::unique_ptr<DOM> m_document;
    std::vector<VString> m_comments;
    bool m_headerRequested = false;
};
