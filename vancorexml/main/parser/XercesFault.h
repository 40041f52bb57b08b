// A message of Xerces with its code, its place and its parameters.
#pragma once

#include <vector>

#include <xercesc/framework/XMLErrorReporter.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DiagnosticCode.h"
#include "vancorexml/main/parser/SourcePosition.h"

// A message of Xerces.
struct XercesFault {
    unsigned int code = 0;     // of XMLValid if isValidity, of XMLExcepts if isOfValue, otherwise of XMLErrs
    bool isValidity = false;   // the document does not fit its schema
    bool isOfValue = false;    // a value does not have its type
    bool isOfReading = false;  // the bytes cannot be read
    xercesc::XMLErrorReporter::ErrTypes type = xercesc::XMLErrorReporter::ErrType_Error;
    VString text;
    std::vector<VString> parameters;
    SourcePosition position;  // where Xerces noticed the fault, in the source as given
};

// Returns the code of the diagnostic for a fault.
DiagnosticCode CodeOf(const XercesFault& fault) noexcept;

// True if the fault is about the children of an element or its end.
bool IsContentFault(const XercesFault& fault) noexcept;
// True if the fault is about text among elements.
bool IsTextFault(const XercesFault& fault) noexcept;
// True for the codes of keys, references and ids.
bool IsAboutKeys(DiagnosticCode code) noexcept;
