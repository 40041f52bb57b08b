// The parser of the library's own builders.
#pragma once

#include <memory>
#include <vector>

#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

// A XercesXMLParser that calls a TreeBuilder instead of a SAXInterface. DOMParser and StandaloneDOMParser use it, so
// they need no header of Xerces.
//
// Ownership: the caller owns the parser. The parser shares the builder. The builder must not be null when a document
// is parsed or a schema is loaded.
//
// Threads: one at a time.
class VANCOREXML_API XercesTreeParser : public XercesXMLParser {
public:
    static std::unique_ptr<XercesTreeParser> Create(InputSource& input, std::shared_ptr<TreeBuilder> builder);
    ~XercesTreeParser() override;

    using XercesXMLParser::Reload;
    // Replaces the input and the builder. Loaded schemas stay loaded.
    virtual void Reload(InputSource& input, std::shared_ptr<TreeBuilder> builder) = 0;
    // Loads all the schemas, as LoadXSDSource would load one after the other, into a parser without schemas. If an
    // earlier parser has compiled the same schemas without a message, this parser uses the result (see SchemaCache).
    // The builder must not find further schemas. The sources are read from their start.
    virtual void LoadSchemas(const std::vector<std::unique_ptr<InputSource>>& schemas) = 0;

protected:
    using XercesXMLParser::XercesXMLParser;
};
