// The schemas of the document types, by version.
#pragma once

#include <memory>
#include <vector>

#include "vancoredata/VersionNumber.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XmlFileType.h"

// Threads: any thread may call the operations.
//
//     DOMParser parser;
//     if (auto schema = XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypeKXA, source, VString()))
//         parser.AddXSDInputSource(std::move(schema));
namespace XSDResources {

// Returns the newest version, 18.1. Its schemas have no version in their names.
VANCOREXML_API const VersionNumber& GetCurrentVersion();

// Returns the resource name of the schema, or an empty text if the type has no schema in that version.
// An older version is identified by its major and minor numbers, so 10.5.3 selects the schema of 10.5. The
// current version is identified by all its numbers: 18.1 and 18.1.0 select its schema, 18.1.1 does not.
// Raises a LogicException if the current version of a type with schemas is requested, but its resource is
// missing.
VANCOREXML_API VString GetVersionedXsdResourceName(XmlFileType type, const VersionNumber& version);

// True if the type has a schema in that version. Does not check whether the resource exists. For KXA to
// KXD, compares only the major and minor numbers with the list of versions, so 18.1.1 has the result of 18.1.
// For KXE and KXF, ignores the version and always returns true.
VANCOREXML_API bool IsThereAnXSDResource(XmlFileType type, const VersionNumber& version);

// Returns the versions in which the type has a schema among the resources, oldest first; none for a type
// without schemas. Raises a LogicException like GetVersionedXsdResourceName.
VANCOREXML_API std::vector<VersionNumber> GetSchemaVersions(XmlFileType type);

// Returns the schema, with its resource name as its id, or null if there is none.
VANCOREXML_API std::unique_ptr<::InputSource> GetVersionedXsdInputSource(
    XmlFileType type, const VersionNumber& version);

// Returns the schema for the version in the attribute `attributeName` of the document element; the
// attribute is "version" if the name is empty. Throws DOMException (DOMException_MissingVersionAttribute)
// if the document declares no version. Exceptions from reading the document propagate. Resets the
// document to its start.
VANCOREXML_API std::unique_ptr<::InputSource> GetVersionedXsdInputSourceForDocument(
    XmlFileType type, ::InputSource& document, const VString& attributeName);

}  // namespace XSDResources
