// The schemas of the document types, by version.
#pragma once

#include <memory>

#include "vancoredata/VersionNumber.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XmlFileType.h"

// Callable from any thread.
//
//     DOMParser parser;
//     if (auto schema = XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypeKXA, source, VString()))
//         parser.AddXSDInputSource(std::move(schema));
namespace XSDResources {

// The version whose schemas carry a plain name: 18.1.
VANCOREXML_API const VersionNumber& GetCurrentVersion();

// The name of the schema's resource; empty when there is no schema for the type in that
// version. For older versions only the major and minor numbers are compared; the current version
// is matched only by 18.1 and 18.1.0. Raises a LogicException when a type has schemas but its
// current schema is missing.
VANCOREXML_API VString GetVersionedXsdResourceName(XmlFileType type, const VersionNumber& version);

// Whether the type has a schema in that version. Looks only at the list of versions, not at the
// resources: true for KXE and KXF in every version, even when there is no resource.
VANCOREXML_API bool IsThereAnXSDResource(XmlFileType type, const VersionNumber& version);

// The schema, its resource name as its id; null when there is none.
VANCOREXML_API std::unique_ptr<InputSource> GetVersionedXsdInputSource(XmlFileType type, const VersionNumber& version);

// The schema for the version that the document declares in that attribute of its root element
// ("version" when the name is empty). Throws DOMException
// (DOMException_MissingVersionAttribute) when it declares none; exceptions from reading the
// document propagate. The document is reset to its start.
VANCOREXML_API std::unique_ptr<InputSource> GetVersionedXsdInputSourceForDocument(
    XmlFileType type, InputSource& document, const VString& attributeName);

}  // namespace XSDResources
