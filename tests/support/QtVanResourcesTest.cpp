#include "vancorexml/main/parser/QtVanResources.h"

#include "tests/common/TestSupport.h"
#include "vancoredata/VResource.h"

namespace {

struct AliasRow {
    QtVanResourceId id;
    const char* alias;
};

const AliasRow Rows[] = {
    {QtVanResourceId::FileFormatConnectorPluginManifestXsd, "VQRC_FILEFORMAT_CONNECTOR_PLUGIN_MANIFEST_XSD"},
    {QtVanResourceId::FileFormatConnectorPluginResourcesXsd, "VQRC_FILEFORMAT_CONNECTOR_PLUGIN_RESOURCES_XSD"},
    {QtVanResourceId::FileFormatDynamicConnectorsXsd, "VQRC_FILEFORMAT_DYNAMIC_CONNECTORS_XSD"},
    {QtVanResourceId::FileFormatKxaXsd, "VQRC_FILEFORMAT_KXA_XSD"},
    {QtVanResourceId::FileFormatKxaXsd10_2, "VQRC_FILEFORMAT_KXA_XSD_10_2"},
    {QtVanResourceId::FileFormatKxaXsd10_3, "VQRC_FILEFORMAT_KXA_XSD_10_3"},
    {QtVanResourceId::FileFormatKxaXsd10_4, "VQRC_FILEFORMAT_KXA_XSD_10_4"},
    {QtVanResourceId::FileFormatKxaXsd10_5, "VQRC_FILEFORMAT_KXA_XSD_10_5"},
    {QtVanResourceId::FileFormatKxbXsd, "VQRC_FILEFORMAT_KXB_XSD"},
    {QtVanResourceId::FileFormatKxbXsd10_2, "VQRC_FILEFORMAT_KXB_XSD_10_2"},
    {QtVanResourceId::FileFormatKxbXsd10_3, "VQRC_FILEFORMAT_KXB_XSD_10_3"},
    {QtVanResourceId::FileFormatKxbXsd10_4, "VQRC_FILEFORMAT_KXB_XSD_10_4"},
    {QtVanResourceId::FileFormatKxbXsd10_5, "VQRC_FILEFORMAT_KXB_XSD_10_5"},
    {QtVanResourceId::FileFormatKxcXsd, "VQRC_FILEFORMAT_KXC_XSD"},
    {QtVanResourceId::FileFormatKxcXsd10_2, "VQRC_FILEFORMAT_KXC_XSD_10_2"},
    {QtVanResourceId::FileFormatKxcXsd10_3, "VQRC_FILEFORMAT_KXC_XSD_10_3"},
    {QtVanResourceId::FileFormatKxcXsd10_4, "VQRC_FILEFORMAT_KXC_XSD_10_4"},
    {QtVanResourceId::FileFormatKxcXsd10_5, "VQRC_FILEFORMAT_KXC_XSD_10_5"},
    {QtVanResourceId::FileFormatKxdXsd, "VQRC_FILEFORMAT_KXD_XSD"},
    {QtVanResourceId::FileFormatKxdXsd10_2, "VQRC_FILEFORMAT_KXD_XSD_10_2"},
    {QtVanResourceId::FileFormatKxdXsd10_3, "VQRC_FILEFORMAT_KXD_XSD_10_3"},
    {QtVanResourceId::FileFormatKxdXsd10_4, "VQRC_FILEFORMAT_KXD_XSD_10_4"},
    {QtVanResourceId::FileFormatKxdXsd10_5, "VQRC_FILEFORMAT_KXD_XSD_10_5"},
    {QtVanResourceId::FileFormatKxeXsd, "VQRC_FILEFORMAT_KXE_XSD"},
    {QtVanResourceId::FileFormatKxfXsd, "VQRC_FILEFORMAT_KXF_XSD"},
    {QtVanResourceId::FileFormatOauthConfigXsd, "VQRC_FILEFORMAT_OAUTH_CONFIG_XSD"},
    {QtVanResourceId::FileFormatUserXsd, "VQRC_FILEFORMAT_USER_XSD"},
    {QtVanResourceId::FileFormatXhtmlDtd, "VQRC_FILEFORMAT_XHTML_DTD"},
    {QtVanResourceId::FileFormatXmlXsd, "VQRC_FILEFORMAT_XML_XSD"},
};

}  // namespace

TEST(QtVanResourcesTest, EveryIdHasItsAlias)
{
    for (const AliasRow& row : Rows)
        EXPECT_EQ(LookupResourceAlias(row.id), VString(row.alias));
}

TEST(QtVanResourcesTest, FixedIdsHaveTheirAliases)
{
    EXPECT_EQ(LookupResourceAlias(QtVanResourceId{0x8B50C6EA}), VString("VQRC_FILEFORMAT_XML_XSD"));
    EXPECT_EQ(LookupResourceAlias(QtVanResourceId{0x63CABD5B}), VString("VQRC_FILEFORMAT_USER_XSD"));
}

TEST(QtVanResourcesTest, EveryResourceExistsAndHasText)
{
    for (const AliasRow& row : Rows) {
        const UTF8StringVResource resource(LookupResource(row.id));
        EXPECT_TRUE(resource.isValid()) << row.alias;
        EXPECT_FALSE(resource.GetString().IsEmpty()) << row.alias;
    }
}

TEST(QtVanResourcesTest, PathWithoutAQualifierIsTheAlias)
{
    EXPECT_EQ(LookupResource(QtVanResourceId::FileFormatKxaXsd), VString("VQRC_FILEFORMAT_KXA_XSD"));
    EXPECT_EQ(LookupResource(QtVanResourceId::FileFormatKxaXsd, VString()), VString("VQRC_FILEFORMAT_KXA_XSD"));
    EXPECT_EQ(LookupDefaultQtVanRes(QtVanResourceId::FileFormatKxaXsd), VString("VQRC_FILEFORMAT_KXA_XSD"));
}

TEST(QtVanResourcesTest, QualifierIsPassedToTheRegistry)
{
    EXPECT_EQ(LookupResource(QtVanResourceId::FileFormatKxaXsd, "dark"),
        ResourceRegistrationCache::GetInstance().GetResourcePath("VQRC_FILEFORMAT_KXA_XSD", "dark"));
}

TEST(QtVanResourcesTest, UnknownIdHasNoAliasAndNoResource)
{
    for (const std::uint32_t number : {0u, 1u, 0x8B50C6E9u, 0x8B50C6EBu, 0xFFFFFFFFu}) {
        const QtVanResourceId id{number};
        const VString emptyPath = ResourceRegistrationCache::GetInstance().GetResourcePath(VString(), VString());
        EXPECT_TRUE(LookupResourceAlias(id).IsEmpty()) << number;
        EXPECT_EQ(LookupResource(id), emptyPath) << number;
        EXPECT_FALSE(VResource(LookupResource(id)).isValid()) << number;
    }
}
