#include "vancorexml/main/parser/ExtensionXmlTokens.h"

namespace ExtensionXmlTokens {

const char16_t* const tagManifest = u"manifest";
const char16_t* const tagDashboardExtension = u"dashboard-extension";
const char16_t* const tagDefaultLocale = u"default-locale";
const char16_t* const tagName = u"name";
const char16_t* const tagDescription = u"description";
const char16_t* const tagMinApiVersion = u"min-api-version";
const char16_t* const tagSourceLocation = u"source-location";
const char16_t* const tagUrl = u"url";
const char16_t* const tagIcon = u"icon";
const char16_t* const tagResources = u"resources";
const char16_t* const tagResource = u"resource";
const char16_t* const tagText = u"text";
const char16_t* const tagAuthor = u"author";
const char16_t* const tagRecentExtension = u"recent-extension";
const char16_t* const tagPermissions = u"permissions";
const char16_t* const tagPermission = u"permission";
const char16_t* const tagContextMenu = u"context-menu";
const char16_t* const tagConfigureContextMenuItem = u"configure-context-menu-item";
const char16_t* const attrManifestVersion = u"manifest-version";
const char16_t* const attrExtensionVersion = u"extension-version";
const char16_t* const attrId = u"id";
const char16_t* const attrLocale = u"locale";
const char16_t* const attrResourceId = u"resource-id";
const char16_t* const attrName = u"name";
const char16_t* const attrEmail = u"email";
const char16_t* const attrOrganization = u"organization";
const char16_t* const attrWebsite = u"website";
const char16_t* const attrFilename = u"filename";
const char16_t* const attrLastAccessTime = u"last-access-time";

}  // namespace ExtensionXmlTokens
