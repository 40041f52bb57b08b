// The parser of documents.
#pragma once

#include <memory>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AbstractXMLParser.h"
#include "vancorexml/main/parser/XMLExport.h"

// Parses a document with Xerces-C. Refuses external entities. Once a schema is loaded, every parse
// validates; a loaded schema cannot be removed. Loading a schema uses a call stack that grows with the
// depth of its elements. A parse without an error reports no warnings.
//
// Limits: a document whose entities expand to more than 100,000,000 UTF-16 code units, or to more than 1,000,000 with
// tags or declarations, is refused before the first callback. A fatal error ends the parse if the content has more than
// 50,000 references to entities or 3,000,000 default attributes. The same limits hold for schemas. To check the limits,
// the parser may read the document twice.
//
// If memory runs out, an operation throws std::bad_alloc, or a parse records an error. The diagnostic of that error has
// the code DiagnosticCode::OutOfMemory (see ThrowIfOutOfMemory).
//
// Ownership: the caller owns the parser. See AbstractXMLParser for the handler and the input.
//
// Threads: one at a time.
//
//     StringInputSource source("<a/>", "memory", false);
//     auto builder = std::make_shared<Counter>();
//     std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, builder);
//     parser->Parse();
//     if (parser->HasErrors()) Show(parser->GetErrors());
class VANCOREXML_API XercesXMLParser : public AbstractXMLParser {
public:
    static std::unique_ptr<XercesXMLParser> Create(::InputSource& input, std::shared_ptr<SAXInterface> handler);
    ~XercesXMLParser() override;

    // Loads the schema from the resource of that name. The name becomes the id of the schema.
    void LoadXSDResource(const VString& resourceName);
    // Returns the ids of the schemas in the order in which they were loaded. The first two are schemas of
    // the library, for attributes that any document may have; the first load adds them.
    virtual std::vector<VString> GetLoadedXSDs() const = 0;
    // Makes later parses also report what a parser of XML need not report, but what loses or confuses data: a
    // reference to an entity that the document does not declare, as an error (a document type that names an external
    // file could declare the entity there, but that file is never read, so the reference would vanish), and a name
    // that breaks the rules of namespaces, such as a prefix without a declaration, as a warning. Also warns of white
    // space in front of the XML declaration. These warnings are reported without an error too. Initially off.
    virtual void SetEnableReferenceChecks(bool enable) = 0;
    // If disabled, later parses call neither StartElement, EndElement, Characters nor IsDone of the handler. Their
    // errors and warnings stay the same. For code that only looks for errors: the parse is faster. Initially on.
    virtual void SetEnableContent(bool enable) = 0;

protected:
    XercesXMLParser(::InputSource& input, std::shared_ptr<SAXInterface> handler);
};
