// Checks documents one after the other.
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
    std::size_t errors = 0;   // the number of errors of the document
    bool wasChecked = false;  // false if the document or its schema could not be read
    std::string lines;        // for standard error
    // The schema that could not be used, otherwise empty. If there is such a schema, `lines` contains its errors.
    std::string brokenSchema;

    // Returns the number of bytes that the result owns.
    std::size_t Size() const { return lines.size(); }
};

// Checks documents. Caches a parser for each schema, so each schema is loaded only once.
//
// Threads: one at a time. Different threads can use different checkers.
class DocumentChecker {
public:
    // If `schema` is empty, each document is checked against the schema for its own type and version.
    explicit DocumentChecker(std::optional<SchemaReference> schema) : m_schema(std::move(schema)) {}

    // Reports every problem of the document in the result, never as an exception.
    CheckedDocument Check(const VString& name);

private:
    void CheckSource(SourceDocument& source, CheckedDocument& result);
    // Returns false if the schema cannot be used; the result then contains the errors of the schema.
    bool CheckAgainst(const SchemaReference& schema, SourceDocument& source, CheckedDocument& result);

    const std::optional<SchemaReference> m_schema;
    std::map<SchemaReference, std::unique_ptr<SchemaDriver>> m_drivers;
};
