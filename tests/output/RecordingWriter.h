// Writers that note what is called on them.
#pragma once

#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLFormatter.h"

namespace outputtest {

// Records each virtual call, except for the ones that write whole elements, and then calls the base.
// Can fail when its sink is called for the nth time, or from then on.
class RecordingWriter : public XMLFormatter {
public:
    using XMLFormatter::XMLFormatter;

    void FailOnce(std::size_t call) { m_firstFailure = m_lastFailure = call; }
    void FailFrom(std::size_t call) { m_firstFailure = call; }

    void Indent() override
    {
        Note("Indent");
        XMLFormatter::Indent();
    }
    void Undent() override
    {
        Note("Undent");
        XMLFormatter::Undent();
    }
    const VString& GetIndent() const override
    {
        Note("GetIndent");
        return XMLFormatter::GetIndent();
    }
    void Flush() override
    {
        Note("Flush");
        XMLFormatter::Flush();
    }
    void OutputAttributes(const AttributeMap& attributes) override
    {
        Note("OutputAttributes", std::to_string(attributes.size()));
        XMLFormatter::OutputAttributes(attributes);
    }
    void OutputContent(const VString& text, bool verbatim) override
    {
        Note(verbatim ? "OutputContent verbatim" : "OutputContent escaped", text);
        XMLFormatter::OutputContent(text, verbatim);
    }
    void OutputContent(const VString& text) override
    {
        Note("OutputContent", text);
        XMLFormatter::OutputContent(text);
    }
    void OutputContentTag(
        const VString& tag, const AttributeMap& attributes, const VString& content, bool encode) override
    {
        Note(encode ? "OutputContentTag encode" : "OutputContentTag verbatim", tag);
        XMLFormatter::OutputContentTag(tag, attributes, content, encode);
    }
    void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content) override
    {
        Note("OutputContentTag", tag);
        XMLFormatter::OutputContentTag(tag, attributes, content);
    }
    void OutputComment(const VString& text) override
    {
        Note("OutputComment", text);
        XMLFormatter::OutputComment(text);
    }
    void OutputCloseTag(const VString& tag) override
    {
        Note("OutputCloseTag", tag);
        XMLFormatter::OutputCloseTag(tag);
    }
    void OutputOpenTag(const VString& tag, const AttributeMap& attributes) override
    {
        Note("OutputOpenTag", tag);
        XMLFormatter::OutputOpenTag(tag, attributes);
    }
    void OutputTag(const VString& tag, const AttributeMap& attributes) override
    {
        Note("OutputTag", tag);
        XMLFormatter::OutputTag(tag, attributes);
    }
    void OutputHeader() override
    {
        Note("OutputHeader");
        XMLFormatter::OutputHeader();
    }
    void OutputLine(const VString& text) override
    {
        Note("OutputLine", text);
        XMLFormatter::OutputLine(text);
    }
    void OutputBinary(const unsigned char* data, unsigned int length) override
    {
        Note("OutputBinary", std::to_string(length));
        XMLFormatter::OutputBinary(data, length);
    }
    void OutputString(const VString& text) override
    {
        Note("emit", text);
        pieces.push_back(text.toStdString());
        const std::size_t call = m_emitted++;
        if (call >= m_firstFailure && call <= m_lastFailure)
            throw std::runtime_error("the sink is full");
    }

    // Each call as its name and what tells it apart, in order.
    mutable std::vector<std::string> calls;
    // The texts passed to OutputString.
    std::vector<std::string> pieces;

protected:
    void Note(const std::string& name) const { calls.push_back(name); }
    void Note(const std::string& name, const std::string& detail) const { calls.push_back(name + "(" + detail + ")"); }
    void Note(const std::string& name, const VString& detail) const { Note(name, detail.toStdString()); }

private:
    static constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

    std::size_t m_emitted = 0;
    std::size_t m_firstFailure = Never;
    std::size_t m_lastFailure = Never;
};

// Notes those that write whole elements too; each child comes through the call.
class RecordingTreeWriter : public RecordingWriter {
public:
    using RecordingWriter::RecordingWriter;

    void OutputDOMElement(const DOMElement& element) override
    {
        Note("OutputDOMElement", element.GetName());
        XMLFormatter::OutputDOMElement(element);
    }
    void OutputDOMElements(const DOMElementChildren& elements) override
    {
        Note("OutputDOMElements", std::to_string(elements.size()));
        RecordingWriter::OutputDOMElements(elements);
    }
};

}  // namespace outputtest
