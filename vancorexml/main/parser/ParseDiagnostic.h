// An error or a warning of a parse as data.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// A fault that a parser recorded. Its position is the one in the source as given: it counts the white
// space that the parser skipped, but not the text that the colon sanitizer inserted. In contrast, the
// messages of Parser::GetErrors() contain the position in the text that Xerces reads.
//
// Ownership: a value.
//
//     for (const ParseDiagnostic& diagnostic : parser->GetDiagnostics())
//         Mark(diagnostic.sourceId, diagnostic.line, diagnostic.column, diagnostic.message);
struct VANCOREXML_API ParseDiagnostic {
    enum class Severity {
        Warning,
        Error,
        FatalError,  // an error that ended the parse
    };
    // How GetText() joins the parts.
    enum class Layout {
        Message,         // the message alone
        Fault,           // "Error(3,7): message (id: source)"
        ExternalEntity,  // "message(3,7) 'entity'"
    };

    Severity severity = Severity::Error;
    Layout layout = Layout::Message;
    VString message;   // without severity, position and source
    VString sourceId;  // InputSource::Id() of the document or schema; empty if unknown
    // The position behind the last character that the parser had read when it detected the fault. Lines and
    // columns count from 1, columns in UTF-16 code units; 0 if unknown.
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    VString entity;  // the name of the refused external entity; empty for all other faults

    // Returns the message in the form of Parser::GetErrors() and Parser::GetWarnings(), with the position of
    // this object.
    VString GetText() const;

    friend bool operator==(const ParseDiagnostic&, const ParseDiagnostic&) = default;
};
