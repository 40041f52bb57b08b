// The writer into a document.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XMLFormatter.h"

class DOM;
class DOMElement;
class VPath;

// A writer that builds a document instead of text, so code that writes through an XMLFormatter can
// also build a tree. Comments and the header are stored beside the tree. The class also renders
// documents and elements as text.
//
// Every writing operation acts on the innermost open element, which OutputCloseTag closes. After the
// topmost element was closed or the document was taken, every writing operation raises a
// LogicException.
//
// The OutputContentTag overload with `encode` is not overridden and would write its tags as
// text into the open element. Use the overload without the flag.
//
// OutputDOMElement and OutputDOMElements append copies of elements, which may belong to the document
// being built. A derived class that instead writes elements tag by tag, with XMLFormatter's
// OutputDOMElement, must not write an ancestor of the open element: the copy would contain itself.
//
// Ownership and lifetime: owns the document until TakeDocument.
//
// Threads: one writer belongs to one thread at a time. Any thread may call the static operations.
//
//     XMLDomFormatter writer;
//     OutputTuple(writer, tuple);
//     std::unique_ptr<DOM> document = writer.TakeDocument();
class VANCOREXML_API XMLDomFormatter : public ::XMLFormatter {
public:
    XMLDomFormatter();
    ~XMLDomFormatter() override;

    // The next four operations and GetOutput raise a LogicException after TakeDocument.
    DOM& GetDocument();
    // Returns null until an element is written.
    ::DOMElement* GetDocumentRoot();
    ::DOMElement& GetRoot();
    // Returns the first element named `name`, or null. Linear.
    ::DOMElement* GetElement(const VString& name) const;
    // Releases the document. Afterwards no element is open, and another call returns null.
    std::unique_ptr<DOM> TakeDocument();

    // Replaces the attributes of the open element.
    void OutputAttributes(const AttributeMap& attributes) override;
    // Appends a copy of the element. Linear.
    void OutputDOMElement(const ::DOMElement& element) override;
    using XMLFormatter::OutputContent;
    // Replaces the text of the open element.
    void OutputContent(const VString& text, bool encoded) override;
    using XMLFormatter::OutputContentTag;
    void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content) override;
    void OutputComment(const VString& text) override;
    // Raises a LogicException, and closes nothing, if the open element is not named `tag`.
    void OutputCloseTag(const VString& tag) override;
    void OutputOpenTag(const VString& tag, const AttributeMap& attributes) override;
    void OutputTag(const VString& tag, const AttributeMap& attributes) override;
    void OutputHeader() override;
    // These two append to the text of the open element.
    void OutputLine(const VString& text) override;
    void OutputString(const VString& text) override;
    // Sets the text of the open element to Base64, marked as encoded. Raises a LogicException if the
    // element already has a text.
    void OutputBinary(const unsigned char* data, unsigned int length) override;

    // Returns the document as text: the header if OutputHeader was called, the comments, and the
    // document element (if there is one). Throws std::length_error if the text is too long for a VString.
    VString GetOutput(FormatMode mode) const;

    // These return the text that FormatDOM writes in FormatModeContent. They throw std::length_error
    // if the text is too long for a VString.
    static VString RenderAsXMLString(const DOM& document, VString* comment, bool header);
    static VString RenderAsXMLString(const ::DOMElement& element, VString* comment, bool header);

    // These return the same text as UTF-8, without a byte order mark. They take less time and memory than a conversion
    // of the VString, and the text may be longer. An unpaired surrogate that is not escaped becomes U+FFFD.
    static std::string RenderAsXMLBytes(const DOM& document, VString* comment, bool header);
    static std::string RenderAsXMLBytes(const ::DOMElement& element, VString* comment, bool header);

    // These write the bytes of RenderAsXMLBytes to a file. The text has no limit of length. They replace an existing
    // file as FileReplacement does: if a step fails, they throw VIO::Exception with the reason of the system, the old
    // file is unchanged, and no temporary file remains. Other hard links to the old file keep its content. Linear.
    // Memory: a fixed size, plus a few words for each level of the tree and each attribute of an element.
    static void SaveAsXMLFile(const DOM& document, const VPath& path, VString* comment, bool header);
    static void SaveAsXMLFile(const ::DOMElement& element, const VPath& path, VString* comment, bool header);

protected:
    // Continues to build `document`, which must not be null.
    explicit XMLDomFormatter(std::unique_ptr<DOM> document);

    // Writes the element to `target` as XMLFormatter::OutputDOMElement does, but the text of an
    // element that has children gets the indentation of this writer.
    void Format(XMLFormatter& target, const ::DOMElement& element) const;

private:
    // Returns the open element, or null if all are closed.
    ::DOMElement* Top() const { return m_stack.empty() ? nullptr : m_stack.back(); }
    DOM& Document() const;

    std::vector<::DOMElement*> m_stack;
    std::unique_ptr<DOM> m_document;
    std::vector<VString> m_comments;
    bool m_headerRequested = false;
};
