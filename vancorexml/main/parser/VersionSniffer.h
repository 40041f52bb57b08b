// Reads the version that a document declares, without parsing the document.
#pragma once

#include "vancoredata/Nullable.h"
#include "vancoredata/VersionNumber.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Returns the version in the attribute `attributeName` of the document element; the attribute is
// "version" if the name is empty. Returns an absent value if there is no document element or no such
// attribute. VersionNumber defines how ill-formed version text is read. Exceptions of the source
// propagate. Always resets the source to its start. Reads the source up to the end of the start tag
// of the document element; linear in the bytes read.
//
// Limitation: inside a document type declaration, quotes in comments count as quotes. A single
// apostrophe in such a comment hides the document element, and the result is absent.
VANCOREXML_API Nullable<VersionNumber> VersionSniffer(::InputSource& source, const VString& attributeName);
