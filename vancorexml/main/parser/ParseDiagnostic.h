// An error or a warning of a parse as data.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DiagnosticCode.h"
#include "vancorexml/main/parser/SourcePosition.h"
#include "vancorexml/main/parser/XMLExport.h"

// A fault in a document or schema, with all that the parser knows about it. Its positions are those in the source as
// given: they count the white space that the parser skipped, but not the text that the colon sanitizer inserted. In
// contrast, the messages of Parser::GetErrors() contain the position in the text that Xerces reads.
//
// Ownership: a value.
//
//     for (const ParseDiagnostic& diagnostic : parser->GetDiagnostics())
//         Mark(diagnostic.sourceId, diagnostic.start, diagnostic.end, diagnostic.message);
struct VANCOREXML_API ParseDiagnostic {
    enum class Severity {
        Warning,
        Error,
        FatalError,  // an error that ended the parse
    };
    // Another place that belongs to the fault, such as the start tag of the element that is not closed.
    struct Related {
        VString message;  // a clause that " on line 7" or " here" completes, such as "element 'a' was opened"
        SourcePosition start;

        friend bool operator==(const Related&, const Related&) = default;
    };

    Severity severity = Severity::Error;
    DiagnosticCode code = DiagnosticCode::Other;
    // A sentence without its place, its severity and a full stop, such as "element 'ordr' is not allowed here; did
    // you mean 'order'?". Begins with a lower-case letter, unless its first word is a name.
    VString message;
    VString sourceId;  // InputSource::Id() of the document or schema; empty if unknown
    // The faulty part of the source, from its first character to behind its last. The positions are equal if the fault
    // has no extent, and `end` is unknown if only the place is known. A fault of a whole element has the name in its
    // start tag.
    SourcePosition start;
    SourcePosition end;

    // The fields that follow are empty if the fault has no such part.

    // The path of the element that the fault is about, such as "/orders/order[2]/item[1]". Each name below the first
    // has its position among the siblings of the same name.
    VString path;
    // The number of this element in document order. The document element has the number 1; 0 if there is no element.
    std::size_t element = 0;
    VString attribute;  // the name as the document writes it
    VString value;      // of the attribute or element
    // The names of the elements or attributes, or the values, that are allowed in place of the faulty one. May be
    // limited to the first 100.
    std::vector<VString> allowed;
    VString expected;    // the allowed values in words, such as "a whole number, at least 1"
    VString suggestion;  // the name or value that the document probably means; not always among `allowed`
    std::optional<Related> related;

    friend bool operator==(const ParseDiagnostic&, const ParseDiagnostic&) = default;
};

// Throws std::bad_alloc if one of the diagnostics has the code OutOfMemory. Call it after a parse whose errors should
// be faults of the document only.
VANCOREXML_API void ThrowIfOutOfMemory(const std::vector<ParseDiagnostic>& diagnostics);
