// The version a document declares, without a parse.
#pragma once

#include "vancoredata/Nullable.h"
#include "vancoredata/VersionNumber.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Reads the source until the root element's start tag is complete and takes the version from
// that attribute of the tag ("version" when the name is empty). Absent when there is no such
// tag or attribute; ill-formed version text is VersionNumber's affair. What the source throws
// passes through. The source is at its start afterwards in every case. Linear in what is read.
//
// Quotes in a document type declaration count also inside its comments: an apostrophe there
// hides the root tag, and the result is absent.
VANCOREXML_API Nullable<VersionNumber> VersionSniffer(InputSource& source, const VString& attributeName);
