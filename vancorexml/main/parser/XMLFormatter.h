// The writer of XML text.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/XMLExport.h"

class DataValue;
class DOM;
class DOMElement;
class DOMElementChildren;
class QualifiedName;
class XMLFormatter;

// The ways in which XMLFormatter::OutputContent escapes text.
enum FormatMode : std::int32_t {
    FormatModeStrict = 0,   // like an attribute value
    FormatModeContent = 1,  // long text with markup becomes a CDATA section
};

// Declares the operations that come first in the virtual table of XMLFormatter. Both this class and
// XMLFormatterOverride declare OutputDOMElement. XMLFormatter must not declare it: such a declaration
// would override both, and XMLFormatterOverride could not detect the override of a derived class.
class VANCOREXML_API XMLFormatterBase {
public:
    virtual ~XMLFormatterBase();
    virtual void Indent() = 0;
    virtual void Undent() = 0;
    virtual const VString& GetIndent() const = 0;
    virtual void Flush() = 0;
    virtual void OutputAttributes(const AttributeMap& attributes) = 0;
    virtual void OutputDOMElement(const ::DOMElement& element);

private:
    friend class ::XMLFormatter;
    XMLFormatterBase() = default;
};

// Detects whether a class derived from XMLFormatter overrides OutputDOMElement. An override also
// replaces the private OutputDOMElement of this class, which has the same signature. So the private one
// runs only if there is no override.
class VANCOREXML_API XMLFormatterOverride {
protected:
    XMLFormatterOverride() = default;
    ~XMLFormatterOverride() = default;

    // Writes the element through the override and returns true. Returns false if there is none.
    bool OutputThroughOverride(const ::DOMElement& element);

private:
    virtual void OutputDOMElement(const ::DOMElement& element);

    bool m_hasOverride = true;
};

// A streaming writer. It converts tags, attributes, content, comments, binary data and whole
// elements to text and passes each piece to OutputString, which a derived class defines. It does
// not check that tags are balanced or that names are well-formed.
//
// The operations call each other virtually, so an override of one operation also affects the
// operations that call it.
//
// Ownership and lifetime: keeps no references to its arguments.
//
// Errors: exceptions from OutputString propagate, except out of ~Indenter, which swallows them.
//
// Threads: one writer belongs to one thread at a time. Any thread may call the static operations.
//
//     XMLStringFormatter writer;
//     writer.OutputHeader();
//     {
//         XMLFormatter::Indenter book(writer, "book", {{"lang", "de"}});
//         writer.OutputContentTag("title", AttributeMap(), "Salz & Sand");
//     }
//     VString text = writer.GetOutput();
class VANCOREXML_API XMLFormatter : public XMLFormatterBase, private XMLFormatterOverride {
public:
    // A scope guard for an element: the constructor writes the open tag and indents, the destructor
    // undents and writes the close tag. The writer must outlive it. The destructor swallows
    // exceptions of the writer.
    class VANCOREXML_API Indenter {
    public:
        Indenter(XMLFormatter& formatter, const VString& tag, const AttributeMap& attributes);
        ~Indenter();
        Indenter(const Indenter&) = delete;
        Indenter& operator=(const Indenter&) = delete;

    private:
        XMLFormatter& m_formatter;
        VString m_tag;
    };

    static const VString& prefixOpen;       // "<"
    static const VString& prefixClose;      // "</"
    static const VString& suffixOpenClose;  // ">"
    static const VString& suffixEmpty;      // " />"
    static const VString& commentOpen;      // "<!--"
    static const VString& commentClose;     // "-->"

    // `indentUnit` is written once for each level. If `singleLine`, no line ends are written.
    explicit XMLFormatter(const VString& indentUnit = VString(u"  "), bool singleLine = false);
    ~XMLFormatter() override;

    void Indent() override;
    void Undent() override;
    // Returns the current indentation. The reference is valid until the next Indent or Undent.
    const VString& GetIndent() const override;
    void Flush() override;
    // Writes the attributes sorted by name: for each a blank, the name, "=" and the escaped value
    // between apostrophes.
    void OutputAttributes(const AttributeMap& attributes) override;
    // Writes the element and its subtree. Writes the children of an element before its text. If a
    // derived class overrides this operation, the override is called for each child as well, so it
    // can bracket, replace or omit any element, and the call stack grows with the depth of the tree.
    // Without an override, the call stack does not grow.
    using XMLFormatterBase::OutputDOMElement;
    // Calls OutputDOMElement for each element that the view contains at the time of the call. So a
    // writer that builds a tree may append to the element to which the view belongs.
    virtual void OutputDOMElements(const DOMElementChildren& elements);
    // Escapes the text and writes it. If `verbatim`, writes a line end, the unescaped text, a line end and
    // the indentation. Omits a line end with which the text already begins or ends.
    virtual void OutputContent(const VString& text, bool verbatim);
    virtual void OutputContent(const VString& text);
    // Writes an element with content. If `encode`, escapes the content and writes it directly between the
    // tags. Otherwise writes the content as OutputContent does with `verbatim`. The overload without `encode`
    // escapes.
    virtual void OutputContentTag(
        const VString& tag, const AttributeMap& attributes, const VString& content, bool encode);
    virtual void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content);
    // Writes a comment with a blank on both sides of the text. Each "--" in the text becomes "-&45;".
    virtual void OutputComment(const VString& text);
    virtual void OutputCloseTag(const VString& tag);
    virtual void OutputOpenTag(const VString& tag, const AttributeMap& attributes);
    // Writes an element without content.
    virtual void OutputTag(const VString& tag, const AttributeMap& attributes);
    // Writes the XML declaration, which declares UTF-8, and an empty line.
    virtual void OutputHeader();
    virtual void OutputLine(const VString& text);
    // Receives the output in pieces.
    virtual void OutputString(const VString& text) = 0;
    // Writes `length` bytes as Base64 on indented lines of 72 characters.
    virtual void OutputBinary(const unsigned char* data, unsigned int length);

    // Every mode except FormatModeStrict acts like FormatModeContent.
    void SetFormatMode(FormatMode mode) noexcept { m_formatMode = mode; }

    // Escapes the text for an attribute value. Returns the same shared string if there is nothing to
    // escape. A code unit that XML does not allow becomes a backslash, "x", its hexadecimal number
    // and ";". Throws std::length_error if the result is too long for a VString.
    static VString EncodeAttributeString(const VString& text);
    // Escapes the text for content. Text of fewer than 32 UTF-16 code units is escaped like an
    // attribute value. Longer text becomes a CDATA section if it contains "<"; otherwise it is
    // escaped except for tabs and line feeds.
    static VString EncodeContentString(const VString& text);

    static VString FormatBooleanAttribute(bool value);
    // Writes 17 significant digits, so parsing the result gives the same value.
    static VString FormatDoubleAttribute(double value);
    // Writes 6 significant digits.
    static VString FormatFloatAttribute(float value);
    static VString FormatInt64Attribute(std::int64_t value);
    static VString FormatIntegerAttribute(std::int32_t value);
    static VString FormatUInt32Attribute(std::uint32_t value);
    static VString FormatQualifiedNameAttribute(const QualifiedName& name);
    static VString FormatDataValueAttribute(const DataValue& value);

    // These write the declaration if `header`, the comment if it is not null, and the document
    // element (if there is one) or `element`.
    static void FormatDOM(XMLFormatter& formatter, const DOM& document, VString* comment, bool header);
    static void FormatDOM(XMLFormatter& formatter, const ::DOMElement& element, VString* comment, bool header);

protected:
    // Writes the element to `target` as OutputDOMElement does without an override. The text of an
    // element that has children gets the indentation of `textIndent`.
    static void WriteTree(XMLFormatter& target, const ::DOMElement& element, const XMLFormatter& textIndent);

private:
    friend class XMLFormatterBase;

    // Implements OutputDOMElement for writers that do not override it.
    void WriteElement(const ::DOMElement& element);

    VString m_indent;
    FormatMode m_formatMode = FormatModeStrict;
    // Fixed after construction.
    VString m_indentUnit;
    VString m_lineTerminator;
};
