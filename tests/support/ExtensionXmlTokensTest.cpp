#include "vancorexml/main/parser/ExtensionXmlTokens.h"

#include "tests/common/TestSupport.h"

namespace {

struct TokenRow {
    const char16_t* token;
    const char* value;
};

}  // namespace

TEST(ExtensionXmlTokensTest, EveryConstantHasItsValue)
{
    const TokenRow rows[] = {
        {ExtensionXmlTokens::tagManifest, "manifest"},
        {ExtensionXmlTokens::tagDashboardExtension, "dashboard-extension"},
        {ExtensionXmlTokens::tagDefaultLocale, "default-locale"},
        {ExtensionXmlTokens::tagName, "name"},
        {ExtensionXmlTokens::tagDescription, "description"},
        {ExtensionXmlTokens::tagMinApiVersion, "min-api-version"},
        {ExtensionXmlTokens::tagSourceLocation, "source-location"},
        {ExtensionXmlTokens::tagUrl, "url"},
        {ExtensionXmlTokens::tagIcon, "icon"},
        {ExtensionXmlTokens::tagResources, "resources"},
        {ExtensionXmlTokens::tagResource, "resource"},
        {ExtensionXmlTokens::tagText, "text"},
        {ExtensionXmlTokens::tagAuthor, "author"},
        {ExtensionXmlTokens::tagRecentExtension, "recent-extension"},
        {ExtensionXmlTokens::tagPermissions, "permissions"},
        {ExtensionXmlTokens::tagPermission, "permission"},
        {ExtensionXmlTokens::tagContextMenu, "context-menu"},
        {ExtensionXmlTokens::tagConfigureContextMenuItem, "configure-context-menu-item"},
        {ExtensionXmlTokens::attrManifestVersion, "manifest-version"},
        {ExtensionXmlTokens::attrExtensionVersion, "extension-version"},
        {ExtensionXmlTokens::attrId, "id"},
        {ExtensionXmlTokens::attrLocale, "locale"},
        {ExtensionXmlTokens::attrResourceId, "resource-id"},
        {ExtensionXmlTokens::attrName, "name"},
        {ExtensionXmlTokens::attrEmail, "email"},
        {ExtensionXmlTokens::attrOrganization, "organization"},
        {ExtensionXmlTokens::attrWebsite, "website"},
        {ExtensionXmlTokens::attrFilename, "filename"},
        {ExtensionXmlTokens::attrLastAccessTime, "last-access-time"},
    };
    EXPECT_EQ(std::size(rows), 29u);
    for (const TokenRow& row : rows)
        EXPECT_EQ(VString(row.token), VString(row.value));
}
