// Parsing text into a lightweight tree.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/StandaloneDOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

// Parses XML text into a tree of StandaloneDOMElement and a list of error messages. A parse always
// returns a tree: an element "Document" whose only child is the document element, or the part of
// it that was built before a fault. Faults in the XML never raise an exception.
//
// Ownership: the caller owns the result. A parse does not depend on earlier parses.
//
// Threads: one at a time, because each parse reads the schema sources.
//
//     auto [tree, errors] = StandaloneDOMParser().ParseXmlString("<a>text</a>", "example");
class VANCOREXML_API StandaloneDOMParser {
public:
    // The tree and the messages of the errors. A structured binding has these two parts.
    struct Result : std::pair<std::unique_ptr<StandaloneDOMElement>, std::vector<VString>> {
        using pair::pair;

        // The errors and warnings as data: first those of the schemas, then those of the document (see
        // Parser::GetDiagnostics). Unlike the messages, contains warnings and the faults of schemas.
        std::vector<ParseDiagnostic> diagnostics;
    };

    StandaloneDOMParser();
    ~StandaloneDOMParser();
    StandaloneDOMParser(const StandaloneDOMParser&) = delete;
    StandaloneDOMParser& operator=(const StandaloneDOMParser&) = delete;

    // These add a schema against which every later parse validates. Each parse reads the schema again,
    // but compiles it only if its id and text are new (see DOMParser).
    // The source must not be null. If the id of the source is empty, or the resource is unknown, every
    // later parse raises a LogicException. Errors in the schema itself are not among the error messages of a
    // parse, only among its diagnostics.
    void AddXSDInputSource(std::unique_ptr<::InputSource> source);
    void AddXSDResourceId(QtVanResourceId id);
    // The handler is called once after each parse; an empty function removes it. The handler may
    // replace or remove itself, start another parse with this parser, or destroy it.
    void SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler);

    // Decodes the bytes like DOMParser::ParseXmlBytes.
    Result ParseXmlBytes(const std::vector<unsigned char>& bytes) const;
    // Throws VIO::Exception if the file cannot be read or decoded. A file of 1 GiB or more is read during the
    // parse and must be UTF-8. An exception from reading it is then recorded as an error.
    Result ParseXmlFile(const VString& fileName) const;
    // White space before the document is skipped. Byte strings are decoded as UTF-8, even if they declare
    // another encoding; invalid bytes become U+FFFD. A null pointer is parsed as an empty text.
    Result ParseXmlString(const VString& text, VString id) const;
    Result ParseXmlString(const std::string& utf8, VString id) const;
    Result ParseXmlString(const char* utf8, VString id) const;
    // Drops text that is white space only, unless `keepWhitespaceText`.
    Result ParseXmlInputSource(::InputSource& source, bool keepWhitespaceText) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// These make Result a pair for structured bindings.
template <>
struct std::tuple_size<StandaloneDOMParser::Result> : std::integral_constant<std::size_t, 2> {};
template <std::size_t I>
struct std::tuple_element<I, StandaloneDOMParser::Result>
    : std::tuple_element<I, std::pair<std::unique_ptr<StandaloneDOMElement>, std::vector<VString>>> {};
