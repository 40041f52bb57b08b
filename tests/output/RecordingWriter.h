// Writers that record the calls made to them.
#pragma once

#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLFormatter.h"

namespace outputtest {

// Records each virtual call except OutputDOMElement and OutputDOMElements, then calls the base class. A call of
// OutputString is recorded as "emit(text)". After FailOnce(n), call n of OutputString throws. After FailFrom(n), call n
// and all later calls throw. Calls are counted from 0.
class RecordingWriter : public XMLFormatter {
public:
    using XMLFormatter::XMLFormatter;

    void FailOnce(std::size_t call) { m_firstFailure = m_lastFailure = call; }
    void FailFrom(std::size_t call) { m_firstFailure = call; }

    void Indent() override
    {
        Record("Indent");
        XMLFormatter::Indent();
    }
    void Undent() override
    {
        Record("Undent");
        XMLFormatter::Undent();
    }
    const VString& GetIndent() const override
    {
        Record("GetIndent");
        return XMLFormatter::GetIndent();
    }
    void Flush() override
    {
        Record("Flush");
        XMLFormatter::Flush();
    }
    void OutputAttributes(const AttributeMap& attributes) override
    {
        Record("OutputAttributes", std::to_string(attributes.size()));
        XMLFormatter::OutputAttributes(attributes);
    }
    void OutputContent(const VString& text, bool verbatim) override
    {
        Record(verbatim ? "OutputContent verbatim" : "OutputContent escaped", text);
        XMLFormatter::OutputContent(text, verbatim);
    }
    void OutputContent(const VString& text) override
    {
        Record("OutputContent", text);
        XMLFormatter::OutputContent(text);
    }
    void OutputContentTag(
        const VString& tag, const AttributeMap& attributes, const VString& content, bool encode) override
    {
        Record(encode ? "OutputContentTag encode" : "OutputContentTag verbatim", tag);
        XMLFormatter::OutputContentTag(tag, attributes, content, encode);
    }
    void OutputContentTag(const VString& tag, const AttributeMap& attributes, const VString& content) override
    {
        Record("OutputContentTag", tag);
        XMLFormatter::OutputContentTag(tag, attributes, content);
    }
    void OutputComment(const VString& text) override
    {
        Record("OutputComment", text);
        XMLFormatter::OutputComment(text);
    }
    void OutputCloseTag(const VString& tag) override
    {
        Record("OutputCloseTag", tag);
        XMLFormatter::OutputCloseTag(tag);
    }
    void OutputOpenTag(const VString& tag, const AttributeMap& attributes) override
    {
        Record("OutputOpenTag", tag);
        XMLFormatter::OutputOpenTag(tag, attributes);
    }
    void OutputTag(const VString& tag, const AttributeMap& attributes) override
    {
        Record("OutputTag", tag);
        XMLFormatter::OutputTag(tag, attributes);
    }
    void OutputHeader() override
    {
        Record("OutputHeader");
        XMLFormatter::OutputHeader();
    }
    void OutputLine(const VString& text) override
    {
        Record("OutputLine", text);
        XMLFormatter::OutputLine(text);
    }
    void OutputBinary(const unsigned char* data, unsigned int length) override
    {
        Record("OutputBinary", std::to_string(length));
        XMLFormatter::OutputBinary(data, length);
    }
    void OutputString(const VString& text) override
    {
        Record("emit", text);
        pieces.push_back(text.toStdString());
        const std::size_t call = m_emitted++;
        if (call >= m_firstFailure && call <= m_lastFailure)
            throw std::runtime_error("the sink is full");
    }

    // The calls in order, each as "name" or "name(detail)".
    mutable std::vector<std::string> calls;
    // The texts passed to OutputString.
    std::vector<std::string> pieces;

protected:
    void Record(const std::string& name) const { calls.push_back(name); }
    void Record(const std::string& name, const std::string& detail) const
    {
        calls.push_back(name + "(" + detail + ")");
    }
    void Record(const std::string& name, const VString& detail) const { Record(name, detail.toStdString()); }

private:
    static constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

    std::size_t m_emitted = 0;
    std::size_t m_firstFailure = Never;
    std::size_t m_lastFailure = Never;
};

// Also records OutputDOMElement and OutputDOMElements. Because OutputDOMElement is overridden, the base class calls
// it for each child.
class RecordingTreeWriter : public RecordingWriter {
public:
    using RecordingWriter::RecordingWriter;

    void OutputDOMElement(const DOMElement& element) override
    {
        Record("OutputDOMElement", element.GetName());
        XMLFormatter::OutputDOMElement(element);
    }
    void OutputDOMElements(const DOMElementChildren& elements) override
    {
        Record("OutputDOMElements", std::to_string(elements.size()));
        RecordingWriter::OutputDOMElements(elements);
    }
};

// Returns the calls as one text, separated by ", ".
inline std::string JoinCalls(const std::vector<std::string>& calls)
{
    std::string text;
    for (const std::string& call : calls)
        text += (text.empty() ? "" : ", ") + call;
    return text;
}

}  // namespace outputtest
