// The names in an extension manifest.
#pragma once

#include "vancorexml/main/parser/XMLExport.h"

// Names of elements (tag...) and attributes (attr...), as UTF-16.
namespace ExtensionXmlTokens {

extern VANCOREXML_API const char16_t* const tagManifest;
extern VANCOREXML_API const char16_t* const tagDashboardExtension;
extern VANCOREXML_API const char16_t* const tagDefaultLocale;
extern VANCOREXML_API const char16_t* const tagName;
extern VANCOREXML_API const char16_t* const tagDescription;
extern VANCOREXML_API const char16_t* const tagMinApiVersion;
extern VANCOREXML_API const char16_t* const tagSourceLocation;
extern VANCOREXML_API const char16_t* const tagUrl;
extern VANCOREXML_API const char16_t* const tagIcon;
extern VANCOREXML_API const char16_t* const tagResources;
extern VANCOREXML_API const char16_t* const tagResource;
extern VANCOREXML_API const char16_t* const tagText;
extern VANCOREXML_API const char16_t* const tagAuthor;
extern VANCOREXML_API const char16_t* const tagRecentExtension;
extern VANCOREXML_API const char16_t* const tagPermissions;
extern VANCOREXML_API const char16_t* const tagPermission;
extern VANCOREXML_API const char16_t* const tagContextMenu;
extern VANCOREXML_API const char16_t* const tagConfigureContextMenuItem;
extern VANCOREXML_API const char16_t* const attrManifestVersion;
extern VANCOREXML_API const char16_t* const attrExtensionVersion;
extern VANCOREXML_API const char16_t* const attrId;
extern VANCOREXML_API const char16_t* const attrLocale;
extern VANCOREXML_API const char16_t* const attrResourceId;
extern VANCOREXML_API const char16_t* const attrName;
extern VANCOREXML_API const char16_t* const attrEmail;
extern VANCOREXML_API const char16_t* const attrOrganization;
extern VANCOREXML_API const char16_t* const attrWebsite;
extern VANCOREXML_API const char16_t* const attrFilename;
extern VANCOREXML_API const char16_t* const attrLastAccessTime;

}  // namespace ExtensionXmlTokens
