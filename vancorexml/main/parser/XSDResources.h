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
// version. Of an older version only major and minor count; the current one is 18.1 (and 18.1.0)
// alone. Raises a LogicException when the current schema of a
// type that has schemas is missing.
VANCOREXML_API VString GetVersionedXsdResourceName(XmlFileType type, const VersionNumber& version);

// Whether the type has a schema in that version, by the list of versions and without a look
// at the resources: true for KXE and KXF in every version, also where there is no resource.
VANCOREXML_API bool IsThereAnXSDResource(XmlFileType type, const VersionNumber& version);

// The schema, its resource name as its id; null when there is none.
VANCOREXML_API std::unique_ptr<InputSource> GetVersionedXsdInputSource(XmlFileType type, const VersionNumber& version);

// The schema for the version that the document declares in that attribute of its root element
// ("version" when the name is empty). Throws DOMException
// (DOMException_MissingVersionAttribute) when it declares none, and what reading the document
// throws. The document is at its start afterwards.
VANCOREXML_API std::unique_ptr<InputSource> GetVersionedXsdInputSourceForDocument(XmlFileType type, InputSource& document, const VString& attributeName);

}  // namespace XSDResources
