// Helpers of the parsing tests: handlers, functions that parse byte strings, and documents with nested entities.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <boost/any.hpp>

#include "tests/common/TestSupport.h"
#include "vancoredata/VLocale.h"
#include "vancoreplatform/CoreThreadContext.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace testsupport {

// Records the events in order: a start tag as "<name a='1' b='2'>" with the attributes sorted by name, an end tag as
// "</>", and a text without change.
class RecordingHandler : public SAXInterfaceExtension {
public:
    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        std::vector<std::string> parts;
        for (const auto& [attribute, value] : attributes)
            parts.push_back(" " + attribute.toStdString() + "='" + value.toStdString() + "'");
        std::sort(parts.begin(), parts.end());
        std::string event = "<" + name.toStdString();
        for (const std::string& part : parts)
            event += part;
        events.push_back(event + ">");
    }
    void EndElement() override { events.push_back("</>"); }
    void Characters(const VString& text) override { events.push_back(text.toStdString()); }
    bool IsDone() override { return doneAfter > 0 && events.size() >= doneAfter; }
    void ResolveSchemaPath(VString& pathOut, const VString& baseUri, const VString& systemId) override
    {
        resolved.push_back(baseUri.toStdString() + "|" + systemId.toStdString());
        pathOut = schemaPath;
    }
    VString PreprocessSchemaText(const VString& systemId, const VString& text, const VString& path) override
    {
        preprocessed.push_back(systemId.toStdString() + "|" + path.toStdString());
        return text.replace("@TYPE@", "xs:int");
    }

    std::vector<std::string> events;
    std::size_t doneAfter = 0;  // IsDone() is true after this number of events; 0 for never
    VString schemaPath;         // the result of every ResolveSchemaPath
    std::vector<std::string> resolved;
    std::vector<std::string> preprocessed;
};

// Adds up the lengths of all texts and attribute values, in UTF-16 code units.
class MeasuringHandler : public SAXInterface {
public:
    void StartElement(const VString&, const AttributeMap& attributes) override
    {
        for (const auto& [name, value] : attributes)
            length += static_cast<std::size_t>(value.length());
    }
    void EndElement() override {}
    void Characters(const VString& text) override { length += static_cast<std::size_t>(text.length()); }

    std::size_t length = 0;
};

// A handler that throws at the first end tag.
template <typename Exception>
class ThrowingHandler : public RecordingHandler {
public:
    explicit ThrowingHandler(Exception exception) : m_exception(std::move(exception)) {}
    void EndElement() override { throw m_exception; }

private:
    Exception m_exception;
};

// Puts this thread into a session in this language while the object lives.
class Session {
public:
    explicit Session(const char* language)
    {
        CoreThreadContext::HasSessionId = [] { return true; };
        CoreThreadContext::SetGenericObject("locale", std::make_shared<VLocale>(VString(language)));
    }
    ~Session()
    {
        CoreThreadContext::HasSessionId = [] { return false; };
        CoreThreadContext::SetGenericObject("locale", boost::any());
    }
};

// The events and messages of a parse.
struct ParseResult {
    std::vector<std::string> events;
    std::vector<VString> errors;
    std::vector<VString> warnings;
    bool fatal = false;

    friend bool operator==(const ParseResult&, const ParseResult&) = default;
};

inline ParseResult ParseBytes(const std::string& bytes, const VString& id = "id")
{
    Utf8InputSource source(bytes, id, false);
    auto handler = std::make_shared<RecordingHandler>();
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    return {handler->events, parser->GetErrors(), parser->GetWarnings(), parser->HasFatallyErrored()};
}

inline std::vector<VString> Errors(const DOM& document)
{
    const std::list<VString> errors = document.GetErrors();
    return {errors.begin(), errors.end()};
}

// Returns the tree below the root as text, such as "<a b='1'>text<c></c></a>". The text of an element precedes its
// children.
inline std::string TreeText(const DOMElement& element)
{
    std::string text;
    for (const DOMElement* child : element.GetChildren()) {
        RecordingHandler tag;
        tag.StartElement(child->GetName(), child->GetAttributes());
        text += tag.events[0] + child->GetText().toStdString() + TreeText(*child) + "</" +
            child->GetName().toStdString() + ">";
    }
    return text;
}

inline std::string TreeText(const DOM& document)
{
    return TreeText(document.GetRoot());
}

inline std::string Repeat(const std::string& piece, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += piece;
    return text;
}

// Returns a document with `levels` nested parameter entities. The first one is `leaf`. Each further one refers `fan`
// times to the one before. The document uses the last one, which takes 1 + fan + fan * fan + ... expansions.
inline std::string ParameterEntityBomb(int levels, int fan, const std::string& leaf)
{
    std::string text = "<!DOCTYPE r [\n<!ENTITY % e0 \"" + leaf + "\">\n";
    for (int level = 1; level < levels; ++level) {
        text += "<!ENTITY % e" + std::to_string(level) + " \"";
        for (int i = 0; i < fan; ++i)
            text += "&#37;e" + std::to_string(level - 1) + ";";
        text += "\">\n";
    }
    return text + "%e" + std::to_string(levels - 1) + ";\n]>\n<r/>";
}

// Returns a document like that of ParameterEntityBomb, but with general entities that its content uses.
inline std::string GeneralEntityBomb(int levels, int fan)
{
    std::string text = "<!DOCTYPE r [\n<!ENTITY e0 \"x\">\n";
    for (int level = 1; level < levels; ++level) {
        text += "<!ENTITY e" + std::to_string(level) + " \"";
        for (int i = 0; i < fan; ++i)
            text += "&e" + std::to_string(level - 1) + ";";
        text += "\">\n";
    }
    return text + "]>\n<r>&e" + std::to_string(levels - 1) + ";</r>";
}

// Returns `ascii` as little-endian UTF-16 with a byte order mark.
inline std::string Utf16(const std::string& ascii)
{
    std::string bytes = "\xFF\xFE";
    for (const char unit : ascii) {
        bytes += unit;
        bytes += '\0';
    }
    return bytes;
}

}  // namespace testsupport
