// Checking one document after the other.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "vancoreplatform/VString.h"
#include "vanxml/ExitStatus.h"
#include "vanxml/SchemaDriver.h"
#include "vanxml/SchemaSelection.h"

class SourceDocument;

// The result of checking a document.
struct CheckedDocument {
    ExitStatus status = ExitStatus::Good;
    std::size_t errors = 0;    // of the document
    bool wasChecked = false;   // it could be read, and its schema used
    std::string lines;         // for standard error
    std::string brokenSchema;  // the schema that could not be used; its errors are the lines
};

// Checks documents and keeps, for each schema it has met, the parser that has it loaded.
//
// Threads: one at a time; several checkers may work side by side.
class DocumentChecker {
public:
    // Without a schema, each document is checked against the schema for its own type and version.
    explicit DocumentChecker(std::optional<SchemaReference> schema) : m_schema(std::move(schema)) {}

    // Never throws for anything about the document.
    CheckedDocument Check(const VString& name);

private:
    void CheckSource(SourceDocument& source, CheckedDocument& result);
    // Returns false when the schema cannot be used; the result then contains the errors of the schema.
    bool CheckAgainst(const SchemaReference& schema, SourceDocument& source, CheckedDocument& result);

    const std::optional<SchemaReference> m_schema;
    std::map<SchemaReference, std::unique_ptr<SchemaDriver>> m_drivers;
};
