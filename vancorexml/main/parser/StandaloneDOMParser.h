// Parsing text into a lightweight tree.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/StandaloneDOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

// Turns XML text into a tree of StandaloneDOMElement and the messages of its errors. The tree
// is always there: an element "Document" whose only child is the document's own root, or what
// was built of it before a fault. Faults in the XML never raise.
//
// Ownership: the caller owns the result. Parses are independent of each other: the parser keeps
// only its configuration.
//
// Threads: one at a time, because the schemas are read by each parse.
//
//     auto [tree, errors] = StandaloneDOMParser().ParseXmlString("<a>text</a>", "example");
class VANCOREXML_API StandaloneDOMParser {
public:
    using Result = std::pair<std::unique_ptr<StandaloneDOMElement>, std::vector<VString>>;

    StandaloneDOMParser();
    ~StandaloneDOMParser();
    StandaloneDOMParser(const StandaloneDOMParser&) = delete;
    StandaloneDOMParser& operator=(const StandaloneDOMParser&) = delete;

    // Every later parse validates against this schema, which is read anew for each. It must not
    // be null, nor its id empty: a parse raises a LogicException for an empty id. Errors in the
    // schema itself are not among the errors of a parse.
    void AddXSDInputSource(std::unique_ptr<InputSource> source);
    void AddXSDResourceId(QtVanResourceId id);
    // Called once after each parse; an empty function removes the handler. The handler may replace or
    // remove itself, start another parse with this parser, or destroy it.
    void SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler);

    // The bytes say themselves what encoding they are in.
    Result ParseXmlBytes(const std::vector<unsigned char>& bytes) const;
    // Throws VIO::Exception when the file cannot be read or decoded.
    Result ParseXmlFile(const VString& fileName) const;
    // White space before the document is skipped. Byte strings are UTF-8 whatever they declare
    // (what is not becomes U+FFFD); null is the empty text.
    Result ParseXmlString(const VString& text, VString id) const;
    Result ParseXmlString(const std::string& utf8, VString id) const;
    Result ParseXmlString(const char* utf8, VString id) const;
    // Text that is white space only is dropped unless `keepWhitespaceText`.
    Result ParseXmlInputSource(InputSource& source, bool keepWhitespaceText) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
