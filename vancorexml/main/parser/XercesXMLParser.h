// The parser of documents.
#pragma once

#include <memory>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AbstractXMLParser.h"
#include "vancorexml/main/parser/XMLExport.h"

// Reads a document with Xerces-C. External entities are refused. A document whose entities expand
// to more than 100,000,000 UTF-16 code units is refused before the first callback; one with more
// than 50,000 references to entities or 8,000,000 default attributes is abandoned there. The same
// limits hold for schemas. A document with long entities is read twice. Validates once a schema was
// loaded; a loaded schema cannot be removed. Loading a schema takes a call stack that grows with the
// depth of its elements.
//
// Ownership: as AbstractXMLParser has it; the caller owns the parser.
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
    static std::unique_ptr<XercesXMLParser> Create(InputSource& input, std::shared_ptr<SAXInterface> handler);
    ~XercesXMLParser() override;

    // Loads the schema from the resource of that name. The name becomes the id of the schema.
    void LoadXSDResource(const VString& resourceName);
    // The ids of the schemas in the order they were loaded. The first two are schemas of the
    // library for the attributes that any document may carry; the first load adds them.
    virtual std::vector<VString> GetLoadedXSDs() const = 0;

protected:
    XercesXMLParser(InputSource& input, std::shared_ptr<SAXInterface> handler);
};
