// The parser of the library's own builders.
#pragma once

#include <memory>

#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

// A XercesXMLParser for a TreeBuilder in place of a SAXInterface. DOMParser and StandaloneDOMParser use it, without
// including Xerces.
//
// Ownership: shares the builder, which may be null while nothing is parsed or loaded; the caller owns the parser.
//
// Threads: one at a time.
class VANCOREXML_API XercesTreeParser : public XercesXMLParser {
public:
    static std::unique_ptr<XercesTreeParser> Create(InputSource& input, std::shared_ptr<TreeBuilder> builder);
    ~XercesTreeParser() override;

    using XercesXMLParser::Reload;
    // Another document for another builder; schemas that were loaded stay.
    virtual void Reload(InputSource& input, std::shared_ptr<TreeBuilder> builder) = 0;

protected:
    using XercesXMLParser::XercesXMLParser;
};
