// A parser with its schema.
#pragma once

#include <memory>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vanxml/SchemaSelection.h"

// Checks documents against one schema, which it compiles once. Without a schema, it only checks that
// documents are well-formed. A schema file may import and include others by paths relative to its own
// folder.
//
// Ownership: owns the parser. Refers to a document only during Check.
//
// Threads: one at a time.
class SchemaDriver {
public:
    // Loads the schema. SchemaErrors then returns the errors of the schema.
    explicit SchemaDriver(const SchemaReference& schema);
    ~SchemaDriver();
    SchemaDriver(const SchemaDriver&) = delete;
    SchemaDriver& operator=(const SchemaDriver&) = delete;

    // Returns one error for each broken schema, with the code BadSchema, and one for each imported or included schema
    // that was not found, with the code MissingSchema. Their sourceId is the schema that the error is in. If there are
    // errors, Check must not be called.
    const std::vector<ParseDiagnostic>& SchemaErrors() const noexcept { return m_schemaErrors; }

    // Returns the errors and warnings of the document in the order in which they were found. Valid until
    // the next check.
    const std::vector<ParseDiagnostic>& Check(InputSource& document);

private:
    class Handler;

    void Load(const SchemaReference& schema);
    void LoadFile(const VString& file);
    // Records errors. Of the errors in one schema, records the first one with the number of the others.
    void AddErrors(const VString& schema, const std::vector<ParseDiagnostic>& diagnostics);
    void AddError(const VString& schema, const VString& message);

    std::shared_ptr<Handler> m_handler;
    std::unique_ptr<InputSource> m_nothing;  // the empty input that the parser is created with
    std::unique_ptr<class XercesXMLParser> m_parser;
    std::vector<ParseDiagnostic> m_schemaErrors;
};
