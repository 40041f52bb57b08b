// A parser that keeps its schema.
#pragma once

#include <memory>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vanxml/SchemaSelection.h"

// Checks documents, one after the other, against one schema that is compiled once; without a
// schema, for being well-formed. A schema file may import and include others by their place
// relative to its own.
//
// Ownership: owns the parser; documents are only used during Check.
//
// Threads: one at a time, any one.
class SchemaDriver {
public:
    explicit SchemaDriver(const SchemaReference& schema);
    ~SchemaDriver();
    SchemaDriver(const SchemaDriver&) = delete;
    SchemaDriver& operator=(const SchemaDriver&) = delete;

    // Why the schema cannot be used: its own errors, and what it imports or includes and was
    // not found. Nothing is checked against such a schema.
    const std::vector<VString>& SchemaErrors() const noexcept { return m_schemaErrors; }

    // The errors of the document, in the order they were met.
    std::vector<VString> Check(InputSource& document);

private:
    class Handler;

    void Load(const SchemaReference& schema);

    std::shared_ptr<Handler> m_handler;
    std::unique_ptr<InputSource> m_nothing;   // what the parser is made over
    std::unique_ptr<class XercesXMLParser> m_parser;
    std::vector<VString> m_schemaErrors;
};
