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

// How XMLFormatter::OutputContent escapes.
enum FormatMode : std::int32_t {
    FormatModeStrict = 0,   // as attribute values are
    FormatModeContent = 1,  // long text with markup becomes a CDATA section
};

// The first operations of XMLFormatter. OutputDOMElement is declared here and again in
// XMLFormatterOverride. XMLFormatter itself must not declare it: that would override both and
// hide whether a derived class overrides it.
class VANCOREXML_API XMLFormatterBase {
public:
    virtual ~XMLFormatterBase();
    virtual void Indent() = 0;
    virtual void Undent() = 0;
    virtual const VString& GetIndent() const = 0;
    virtual void Flush() = 0;
    virtual void OutputAttributes(const AttributeMap& attributes) = 0;
    virtual void OutputDOMElement(const DOMElement& element);

private:
    friend class XMLFormatter;
    XMLFormatterBase() = default;
};

// Tells a writer whether a derived class overrides OutputDOMElement. An override also replaces
// the operation below, because it has the same signature; so this one runs only without one.
class VANCOREXML_API XMLFormatterOverride {
protected:
    XMLFormatterOverride() = default;
    ~XMLFormatterOverride() = default;

    // Writes the element through the override and returns true; false when there is none.
    bool OutputThroughOverride(const DOMElement& element);

private:
    virtual void OutputDOMElement(const DOMElement& element);

    bool m_hasOverride = true;
};

// A streaming writer: turns open tags, attributes, content, close tags, comments, binary
// blobs and whole elements into text, and hands each piece to OutputString, which a derived
// class defines. It does not check that tags are balanced or that names are well-formed.
//
// The operations call each other virtually, so a derived class that overrides one of them
// also changes the operations that use it.
//
// Ownership and lifetime: keeps none of its arguments. Exceptions from OutputString propagate,
// except out of ~Indenter, which swallows them.
//
// Threads: one writer belongs to one thread at a time; the static operations may be called
// from any.
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
    // An element that is open while this lives: writes its open tag and indents; at the end
    // of the scope undents and writes the close tag. The writer must outlive it. The
    // destructor swallows what the writer throws.
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

    static const VString prefixOpen;       // "<"
    static const VString prefixClose;      // "</"
    static const VString suffixOpenClose;  // ">"
    static const VString suffixEmpty;      // " />"
    static const VString commentOpen;      // "<!--"
    static const VString commentClose;     // "-->"

    // `indentUnit` is written once for each level. With `singleLine` nothing is written as
    // a line's end.
    explicit XMLFormatter(const VString& indentUnit = VString(u"  "), bool singleLine = false);
    ~XMLFormatter() override;

    void Indent() override;
    void Undent() override;
    // The current indentation; valid until the next Indent or Undent.
    const VString& GetIndent() const override;
    void Flush() override;
    // Each with a blank before it, sorted by name, the value escaped between apostrophes.
    void OutputAttributes(const AttributeMap& attributes) override;
    // The element and its subtree; the text of an element that has children comes after
    // them. A derived class that overrides this operation gets each child through its
    // override, so it may bracket, replace or leave out any element; then the call stack
    // grows with the depth of the tree. Without an override it does not.
    using XMLFormatterBase::OutputDOMElement;
    // Each of the elements that the view shows when the call begins, through OutputDOMElement:
    // a writer that builds a tree may append to the element whose children they are.
    virtual void OutputDOMElements(const DOMElementChildren& elements);
    // `verbatim` text is written without escaping, on lines of its own, and followed by the
    // indentation; other text is escaped and nothing is added.
    virtual void OutputContent(const VString& text, bool verbatim);
    virtual void OutputContent(const VString& text);
    // An element with content on one line. Without `encode` the content is verbatim.
    virtual void OutputContentTag(
        const VString& tag, const AttributeMap& attributes, const VString& content, bool encode);
    virtual void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content);
    // A blank is added on both sides, and each "--" becomes "-&45;".
    virtual void OutputComment(const VString& text);
    virtual void OutputCloseTag(const VString& tag);
    virtual void OutputOpenTag(const VString& tag, const AttributeMap& attributes);
    // An element without content.
    virtual void OutputTag(const VString& tag, const AttributeMap& attributes);
    // The XML declaration, which names UTF-8, and an empty line.
    virtual void OutputHeader();
    virtual void OutputLine(const VString& text);
    // Receives all that is written, piece by piece.
    virtual void OutputString(const VString& text) = 0;
    // `length` bytes as Base64, on indented lines of 72 characters.
    virtual void OutputBinary(const unsigned char* data, unsigned int length);

    // Any mode but FormatModeStrict acts as FormatModeContent.
    void SetFormatMode(FormatMode mode) noexcept { m_formatMode = mode; }

    // The text escaped for an attribute value; the same shared string when nothing is to be
    // escaped. A unit that XML does not allow becomes a backslash, "x", its hexadecimal
    // number and ";". Throws std::length_error when the result is too long for a VString.
    static VString EncodeAttributeString(const VString& text);
    // The text escaped for content: below 32 units as an attribute value; from there on a
    // CDATA section when it contains "<", else escaped with tabs and line feeds kept.
    static VString EncodeContentString(const VString& text);

    static VString FormatBooleanAttribute(bool value);
    // 17 significant digits: reading it gives the same value again.
    static VString FormatDoubleAttribute(double value);
    // 6 significant digits.
    static VString FormatFloatAttribute(float value);
    static VString FormatInt64Attribute(std::int64_t value);
    static VString FormatIntegerAttribute(std::int32_t value);
    static VString FormatUInt32Attribute(std::uint32_t value);
    static VString FormatQualifiedNameAttribute(const QualifiedName& name);
    static VString FormatDataValueAttribute(const DataValue& value);

    // Writes the declaration when `header`, the comment when there is one, and the document
    // element when there is one, or `element`.
    static void FormatDOM(XMLFormatter& formatter, const DOM& document, VString* comment, bool header);
    static void FormatDOM(XMLFormatter& formatter, const DOMElement& element, VString* comment, bool header);

protected:
    // Writes to `target` what OutputDOMElement writes without an override. The text of an
    // element that has children is indented by the indentation of `textIndent`.
    static void WriteTree(XMLFormatter& target, const DOMElement& element, const XMLFormatter& textIndent);

private:
    friend class XMLFormatterBase;

    // Implements OutputDOMElement for writers that do not override it.
    void WriteElement(const DOMElement& element);

    VString m_indent;
    FormatMode m_formatMode = FormatModeStrict;
    // Fixed after construction.
    VString m_indentUnit;
    VString m_lineTerminator;
};
