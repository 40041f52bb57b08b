// Checks documents one after the other.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vanxml/CheckReport.h"
#include "vanxml/ExitStatus.h"
#include "vanxml/SchemaDriver.h"
#include "vanxml/SchemaSelection.h"

class SourceDocument;

// The result of checking a document.
struct CheckedDocument {
    ExitStatus status = ExitStatus::Good;
    std::size_t errors = 0;        // the number of errors of the document
    std::size_t warnings = 0;      // the number of its warnings
    unsigned long long bytes = 0;  // the size of the document
    bool wasChecked = false;       // false if the document or its schema could not be read
    std::vector<CheckMessage> messages;
    std::size_t omitted = 0;  // the number of further messages
    // The schema that could not be used, otherwise empty. If there is such a schema, the messages are about it.
    std::string brokenSchema;
    // A failure that names the document, if its schema cannot be used and programs read the messages.
    std::optional<CheckMessage> failure;

    // Returns the approximate number of bytes that the result owns.
    std::size_t Size() const;
};

// Checks documents. Caches a parser for each schema, so each schema is loaded only once.
//
// Threads: one at a time. Different threads can use different checkers.
class DocumentChecker {
public:
    // The report formats the messages and must outlive the checker. A result has at most `mostMessages` messages.
    DocumentChecker(SchemaOption schema,
        const CheckReport& report,
        std::size_t mostMessages = std::numeric_limits<std::size_t>::max())
        : m_schema(std::move(schema)),
          m_report(report),
          m_mostMessages(mostMessages)
    {}

    // Reports every problem of the document in the result, never as an exception.
    CheckedDocument Check(const VString& name);

private:
    using ExcerptFinder =
        std::function<std::vector<std::optional<SourceExcerpt>>(const std::vector<ParseDiagnostic>& shown)>;

    void CheckSource(SourceDocument& source, CheckedDocument& result);
    // Returns false if the schema cannot be used; the result then contains the errors of the schema.
    bool CheckAgainst(const SchemaReference& schema, SourceDocument& source, CheckedDocument& result);
    void AddSchemaErrors(const std::vector<ParseDiagnostic>& errors, CheckedDocument& result) const;
    // Adds messages for diagnostics of the document and counts them.
    void Add(const std::vector<ParseDiagnostic>& diagnostics, SourceDocument& source, CheckedDocument& result) const;
    void Add(const std::vector<ParseDiagnostic>& diagnostics,
        const VString& name,
        const ExcerptFinder& findExcerpts,
        CheckedDocument& result) const;

    const SchemaOption m_schema;
    const CheckReport& m_report;
    const std::size_t m_mostMessages;
    std::map<SchemaReference, std::unique_ptr<SchemaDriver>> m_drivers;
};
