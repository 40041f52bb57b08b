// An error or a warning of a parse as data.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// A fault that a parser recorded, with its position in the source as it was given: the white
// space that the parser skipped counts, and nothing that was rewritten for it does. The texts of
// Parser::GetErrors() have the position in the text that the scanner read.
//
// Ownership: a value.
//
//     for (const ParseDiagnostic& diagnostic : parser->GetDiagnostics())
//         Mark(diagnostic.sourceId, diagnostic.line, diagnostic.column, diagnostic.message);
struct VANCOREXML_API ParseDiagnostic {
    enum class Severity {
        Warning,
        Error,
        FatalError,  // it ended the parse
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
    VString sourceId;  // of the document or schema, as InputSource::Id() has it; empty if unknown
    // From 1, columns in UTF-16 code units; 0 if unknown. The position just behind what the
    // parser had read when it noticed the fault.
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    VString entity;  // the name of the refused external entity; empty for all other faults

    // The text of Parser::GetErrors() or Parser::GetWarnings(), with the position of this object.
    VString GetText() const;

    friend bool operator==(const ParseDiagnostic&, const ParseDiagnostic&) = default;
};
