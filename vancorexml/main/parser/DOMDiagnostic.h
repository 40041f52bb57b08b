// The diagnostics of a document with their elements.
#pragma once

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VError.h"

class DOMElement;

// An error or warning that a document records for one of its elements (see DOMElement::Error and
// DOMElement::Warning).
//
// Ownership: a value, which does not follow later changes of the document. Refers to the element.
struct VANCOREXML_API DOMDiagnostic {
    const ::DOMElement* element = nullptr;                                  // never null
    ParseDiagnostic::Severity severity = ParseDiagnostic::Severity::Error;  // Error or Warning
    VString message;
    VError::ErrorInfo info;
    // False for a warning.
    bool reported = false;
    bool cancel = false;
};

// A fault that the parse of a document found, with the element that it is about.
//
// Ownership: part of its document, which keeps `element` up to date (see DOM::GetParseDiagnostics). In a copy,
// `element` is valid only while the element lives.
struct VANCOREXML_API DOMParseDiagnostic {
    const ::DOMElement* element = nullptr;
    ParseDiagnostic diagnostic;
};
