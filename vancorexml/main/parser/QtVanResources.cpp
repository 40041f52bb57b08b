#include "vancorexml/main/parser/QtVanResources.h"

#include <algorithm>
#include <iterator>

#include "vancoredata/VResource.h"
#include "vancoreplatform/ProcessEnd.h"

// A function of Qt that no header declares.
bool qUnregisterResourceData(
    int version, const unsigned char* tree, const unsigned char* names, const unsigned char* data);

// The destructor of the embedded files calls this instead of Qt's function, which locks a mutex. While Windows ends a
// process, a stopped thread may hold that mutex. On other systems, Qt would lose its entry for the files.
bool UnregisterEmbeddedFiles(
    int version, const unsigned char* tree, const unsigned char* names, const unsigned char* data)
{
#if defined(_WIN32)
    if (IsProcessEnding())
        return true;
#endif
    return qUnregisterResourceData(version, tree, names, data);
}

namespace {

struct Row {
    QtVanResourceId id;
    const char16_t* alias;
};

// Sorted by number, for a binary search.
constexpr Row Catalogue[] = {
    {QtVanResourceId::FileFormatKxbXsd10_3, u"VQRC_FILEFORMAT_KXB_XSD_10_3"},
    {QtVanResourceId::FileFormatConnectorPluginManifestXsd, u"VQRC_FILEFORMAT_CONNECTOR_PLUGIN_MANIFEST_XSD"},
    {QtVanResourceId::FileFormatKxcXsd10_3, u"VQRC_FILEFORMAT_KXC_XSD_10_3"},
    {QtVanResourceId::FileFormatKxaXsd, u"VQRC_FILEFORMAT_KXA_XSD"},
    {QtVanResourceId::FileFormatKxdXsd10_3, u"VQRC_FILEFORMAT_KXD_XSD_10_3"},
    {QtVanResourceId::FileFormatKxbXsd, u"VQRC_FILEFORMAT_KXB_XSD"},
    {QtVanResourceId::FileFormatOauthConfigXsd, u"VQRC_FILEFORMAT_OAUTH_CONFIG_XSD"},
    {QtVanResourceId::FileFormatKxcXsd, u"VQRC_FILEFORMAT_KXC_XSD"},
    {QtVanResourceId::FileFormatDynamicConnectorsXsd, u"VQRC_FILEFORMAT_DYNAMIC_CONNECTORS_XSD"},
    {QtVanResourceId::FileFormatKxdXsd, u"VQRC_FILEFORMAT_KXD_XSD"},
    {QtVanResourceId::FileFormatKxeXsd, u"VQRC_FILEFORMAT_KXE_XSD"},
    {QtVanResourceId::FileFormatKxaXsd10_2, u"VQRC_FILEFORMAT_KXA_XSD_10_2"},
    {QtVanResourceId::FileFormatUserXsd, u"VQRC_FILEFORMAT_USER_XSD"},
    {QtVanResourceId::FileFormatKxbXsd10_5, u"VQRC_FILEFORMAT_KXB_XSD_10_5"},
    {QtVanResourceId::FileFormatKxaXsd10_4, u"VQRC_FILEFORMAT_KXA_XSD_10_4"},
    {QtVanResourceId::FileFormatKxdXsd10_5, u"VQRC_FILEFORMAT_KXD_XSD_10_5"},
    {QtVanResourceId::FileFormatKxcXsd10_4, u"VQRC_FILEFORMAT_KXC_XSD_10_4"},
    {QtVanResourceId::FileFormatXmlXsd, u"VQRC_FILEFORMAT_XML_XSD"},
    {QtVanResourceId::FileFormatConnectorPluginResourcesXsd, u"VQRC_FILEFORMAT_CONNECTOR_PLUGIN_RESOURCES_XSD"},
    {QtVanResourceId::FileFormatKxdXsd10_2, u"VQRC_FILEFORMAT_KXD_XSD_10_2"},
    {QtVanResourceId::FileFormatKxaXsd10_3, u"VQRC_FILEFORMAT_KXA_XSD_10_3"},
    {QtVanResourceId::FileFormatKxdXsd10_4, u"VQRC_FILEFORMAT_KXD_XSD_10_4"},
    {QtVanResourceId::FileFormatKxbXsd10_2, u"VQRC_FILEFORMAT_KXB_XSD_10_2"},
    {QtVanResourceId::FileFormatKxcXsd10_2, u"VQRC_FILEFORMAT_KXC_XSD_10_2"},
    {QtVanResourceId::FileFormatKxfXsd, u"VQRC_FILEFORMAT_KXF_XSD"},
    {QtVanResourceId::FileFormatKxbXsd10_4, u"VQRC_FILEFORMAT_KXB_XSD_10_4"},
    {QtVanResourceId::FileFormatXhtmlDtd, u"VQRC_FILEFORMAT_XHTML_DTD"},
    {QtVanResourceId::FileFormatKxaXsd10_5, u"VQRC_FILEFORMAT_KXA_XSD_10_5"},
    {QtVanResourceId::FileFormatKxcXsd10_5, u"VQRC_FILEFORMAT_KXC_XSD_10_5"},
};

constexpr bool IsAscending()
{
    for (std::size_t i = 1; i < std::size(Catalogue); ++i) {
        if (Catalogue[i - 1].id >= Catalogue[i].id)
            return false;
    }
    return true;
}
static_assert(IsAscending());

// Registers the resources while the library is loaded.
class FolderRegistration {
public:
    FolderRegistration() { ResourceRegistrationCache::GetInstance().AddFolder(":/vancorexml"); }
    ~FolderRegistration()
    {
        if (!IsProcessEnding())
            ResourceRegistrationCache::GetInstance().RemoveFolder(":/vancorexml");
    }
    FolderRegistration(const FolderRegistration&) = delete;
    FolderRegistration& operator=(const FolderRegistration&) = delete;
};
const FolderRegistration registration;
[[maybe_unused]] const bool isEndWatched = (WatchProcessEnd(), true);

}  // namespace

VString LookupResourceAlias(QtVanResourceId id)
{
    const Row* const row = std::lower_bound(
        std::begin(Catalogue), std::end(Catalogue), id, [](const Row& candidate, QtVanResourceId wanted) {
            return candidate.id < wanted;
        });
    return row != std::end(Catalogue) && row->id == id ? VString(row->alias) : VString();
}

VString LookupResource(QtVanResourceId id)
{
    return LookupResource(id, VString());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): part of the public interface.
VString LookupResource(QtVanResourceId id, VString qualifier)
{
    return ResourceRegistrationCache::GetInstance().GetResourcePath(LookupResourceAlias(id), qualifier);
}

VString LookupDefaultQtVanRes(QtVanResourceId id)
{
    return LookupResource(id);
}
