// The version a document declares, without a parse.
#pragma once

#include "vancoredata/Nullable.h"
#include "vancoredata/VersionNumber.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Reads the source until the root element's start tag is complete and takes the version from
// that attribute of the tag ("version" when the name is empty). Absent when there is no such
// tag or attribute. VersionNumber decides how to read ill-formed version text. Exceptions of the
// source propagate. The source is reset to its start in every case. Linear in the bytes read.
//
// Quotes in a document type declaration also count inside its comments: an apostrophe there
// hides the root tag, and the result is absent.
VANCOREXML_API Nullable<VersionNumber> VersionSniffer(InputSource& source, const VString& attributeName);
