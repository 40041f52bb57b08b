// Parsing text into a document.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/XMLExport.h"

// The size and the id of a parsed source.
struct DOMParserStatistics {
    unsigned long long sourceSize = 0;  // in bytes
    VString sourceId;
};

// Turns XML text into a DOM. A parse always returns a document: faults in the XML are the
// errors of the document (of DOM::GetRoot()), and what was built before the fault is in the tree. A parse
// never depends on those before it.
//
// Ownership: the caller owns the documents. The parser keeps what is costly to make and is
// worth keeping for several parses.
//
// Threads: one at a time, and each parse begins and ends on one thread.
//
//     DOMParser parser;
//     std::unique_ptr<DOM> document = parser.ParseXmlFile("book.xml");
//     if (document->HasErrors()) Show(document->GetConcatenatedErrors());
class VANCOREXML_API DOMParser {
public:
    DOMParser();
    ~DOMParser();
    DOMParser(const DOMParser&) = delete;
    DOMParser& operator=(const DOMParser&) = delete;

    // Elements get the positions just behind their start and end tags, counted in the text that
    // is parsed: without skipped white space, with the declaration that a name beginning with a
    // colon calls for. Off at first.
    void SetEnableLineNumbersOnElements(bool enable);
    bool GetEnableLineNumbersOnElements() const;
    // Passed on to each document, for the code that loads the files it refers to. Off at first.
    void SetRestrictExternalPaths(bool restrict);
    bool GetRestrictExternalPaths() const;
    // Called once after each parse; an empty function removes the handler. The handler may replace or
    // remove itself, start another parse with this parser, or destroy it.
    void SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler);

    // Every later parse validates against this schema, which is not null. Its id must not be
    // empty, and the id of a resource must be known: the next parse raises a LogicException
    // otherwise.
    void AddXSDInputSource(std::unique_ptr<InputSource> source);
    void AddXSDResourceId(QtVanResourceId id);

    // Each operation with an rvalue leaves it empty.

    // The bytes say themselves what encoding they are in.
    std::unique_ptr<DOM> ParseXmlBytes(const std::vector<unsigned char>& bytes);
    std::unique_ptr<DOM> ParseXmlBytes(std::vector<unsigned char>&& bytes);
    // `id` names the text in messages. White space before the document is skipped. Byte
    // strings say themselves what encoding they are in; null is the empty text.
    std::unique_ptr<DOM> ParseXmlString(const std::string& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(std::string&& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(const VString& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(VString&& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(const char* text, const VString& id);
    // Throws VIO::Exception when the file cannot be read or decoded.
    std::unique_ptr<DOM> ParseXmlFile(const VString& fileName);
    // Text that is white space only is dropped unless `keepBlankText`. While metrics are
    // collected, a source that is not UTF-8 throws what its GetBytes throws.
    std::unique_ptr<DOM> ParseXmlInputSource(InputSource& source, bool keepBlankText);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
