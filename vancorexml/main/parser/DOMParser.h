// Parsing text into a document.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/XMLExport.h"

// The size and the id of a parsed source.
struct DOMParserStatistics {
    unsigned long long sourceSize = 0;  // in bytes
    VString sourceId;
};

// Parses XML text into a DOM. A parse always returns a document. Faults in the XML are recorded as
// errors of the document, at DOM::GetRoot(), and the tree contains the elements built before the
// fault. A parse does not depend on earlier parses.
//
// If memory runs out, a parse throws std::bad_alloc or records an error. The diagnostic of that error has the code
// DiagnosticCode::OutOfMemory (see ThrowIfOutOfMemory). The parser then works as before.
//
// Ownership: the caller owns the documents. Parsers are costly to create, so use one for several
// documents.
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

    // Sets whether elements record the positions just behind their start and end tags. The positions count
    // in the text that Xerces reads. This text lacks the white space that the parser skips in front of the
    // document, and contains the text that the parser inserts for attribute names beginning with a colon.
    // Initially off.
    void SetEnableLineNumbersOnElements(bool enable);
    bool GetEnableLineNumbersOnElements() const;
    // Sets the flag of each later document (see DOM). Initially off.
    void SetRestrictExternalPaths(bool restrict);
    bool GetRestrictExternalPaths() const;
    // The handler is called once after each parse; an empty function removes it. The handler may replace or
    // remove itself, start another parse with this parser, or destroy it.
    void SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler);

    // These add a schema against which every later parse validates. Each parse reads the source again, but compiles
    // schemas only if their ids and texts are new. The library keeps up to 16 MB of compiled schemas, also after the
    // parser is destroyed, until it is unloaded. The source must not be null. If the
    // id of the source is empty, or the resource is unknown, every later parse raises a LogicException.
    void AddXSDInputSource(std::unique_ptr<::InputSource> source);
    void AddXSDResourceId(QtVanResourceId id);

    // The operations that receive an rvalue leave it empty.

    // The byte order mark or the XML declaration determines the encoding. Without both, it is UTF-16 if the first
    // characters show it (see FindUnmarkedUtf16 in FileEncoding.h), and otherwise UTF-8.
    std::unique_ptr<DOM> ParseXmlBytes(const std::vector<unsigned char>& bytes);
    std::unique_ptr<DOM> ParseXmlBytes(std::vector<unsigned char>&& bytes);
    // `id` names the text in messages. White space before the document is skipped. A byte string is
    // decoded like the bytes of ParseXmlBytes. A null pointer is parsed as an empty text.
    std::unique_ptr<DOM> ParseXmlString(const std::string& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(std::string&& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(const VString& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(VString&& text, const VString& id);
    std::unique_ptr<DOM> ParseXmlString(const char* text, const VString& id);
    // Throws VIO::Exception if the file cannot be read, and VIO::DecodingException, which derives from it, if the file
    // has bytes that are no characters in its encoding; the message contains the line and the column of the first one.
    // (ParseXmlBytes records such bytes as an error with their place instead, and also an unknown name of an encoding.)
    // A file of 1 GiB or more is read during the parse and must be UTF-8. If reading such a file fails during the
    // parse, the exception is recorded as an error. If it fails earlier, when the first bytes are read for metrics, the
    // exception propagates (see ParseXmlInputSource).
    std::unique_ptr<DOM> ParseXmlFile(const VString& fileName);
    // Drops text that is white space only, unless `keepBlankText`. If the product collects metrics,
    // this operation records the first bytes of the source before the parse. It reads them with GetBytes,
    // whose exceptions propagate. For example, a FileInputSource that is not UTF-8 throws VantoraException.
    std::unique_ptr<DOM> ParseXmlInputSource(::InputSource& source, bool keepBlankText);

    // Returns the errors and warnings of the last parse as data: first those of the schemas, then those of the document
    // in the order of their places. One mistake has one diagnostic, although it may have several messages in
    // DOM::GetErrors(). Of the faults of syntax, a parser finds only the first. The result contains warnings of the
    // document only if it also contains errors of the document. Positions are those in the original source (see
    // ParseDiagnostic). Valid until the next parse. A parse that throws leaves the result unchanged.
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
