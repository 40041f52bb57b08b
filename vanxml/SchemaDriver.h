// A parser that keeps its schema.
#pragma once

#include <memory>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vanxml/SchemaSelection.h"

// Checks documents, one after the other, against one schema that is compiled once. Without a
// schema, checks only that they are well-formed. A schema file may import and include others by
// paths relative to its own folder.
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

    // The errors of the schema itself, and an error for each schema that it imports or includes
    // but that was not found. A schema with errors must not be used for a check.
    const std::vector<VString>& SchemaErrors() const noexcept { return m_schemaErrors; }

    // The errors of the document, in the order they were met.
    std::vector<VString> Check(InputSource& document);

private:
    class Handler;

    void Load(const SchemaReference& schema);

    std::shared_ptr<Handler> m_handler;
    std::unique_ptr<InputSource> m_nothing;  // the empty input that the parser is created with
    std::unique_ptr<class XercesXMLParser> m_parser;
    std::vector<VString> m_schemaErrors;
};
