// Lookup of the product's resources by number.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// The numbers of the product's resources that the library needs. They are hashes, so they form no range.
enum class QtVanResourceId : std::uint32_t {
    FileFormatConnectorPluginManifestXsd = 0x0C4E5A17,
    FileFormatConnectorPluginResourcesXsd = 0x9B317D26,
    FileFormatDynamicConnectorsXsd = 0x47A9E0C3,
    FileFormatKxaXsd = 0x1E83B5F9,
    FileFormatKxaXsd10_2 = 0x5D20C76A,
    FileFormatKxaXsd10_3 = 0xA6F14E08,
    FileFormatKxaXsd10_4 = 0x73C8921D,
    FileFormatKxaXsd10_5 = 0xE90B3D54,
    FileFormatKxbXsd = 0x2A5FC681,
    FileFormatKxbXsd10_2 = 0xB8D4107E,
    FileFormatKxbXsd10_3 = 0x04E97FA2,
    FileFormatKxbXsd10_4 = 0xD16A83CB,
    FileFormatKxbXsd10_5 = 0x6F3E2590,
    FileFormatKxcXsd = 0x39C0D84B,
    FileFormatKxcXsd10_2 = 0xC7751EA4,
    FileFormatKxcXsd10_3 = 0x10FB96D7,
    FileFormatKxcXsd10_4 = 0x85A24C3E,
    FileFormatKxcXsd10_5 = 0xFA0967B1,
    FileFormatKxdXsd = 0x4D96E205,
    FileFormatKxdXsd10_2 = 0x9E13A87C,
    FileFormatKxdXsd10_3 = 0x22D87BF0,
    FileFormatKxdXsd10_4 = 0xB35F0469,
    FileFormatKxdXsd10_5 = 0x78E1CD32,
    FileFormatKxeXsd = 0x56B43F9D,
    FileFormatKxfXsd = 0xCE78105A,
    FileFormatOauthConfigXsd = 0x31AD6BE8,
    FileFormatUserXsd = 0x63CABD5B,
    FileFormatXhtmlDtd = 0xDF50928C,
    FileFormatXmlXsd = 0x8B50C6EA,
};

// Returns the registered name of the resource, such as "VQRC_FILEFORMAT_XML_XSD", or an empty text if
// the number is not in the catalogue. Logarithmic.
VANCOREXML_API VString LookupResourceAlias(QtVanResourceId id);
// Returns the path with which VResource opens the resource.
VANCOREXML_API VString LookupResource(QtVanResourceId id);
VANCOREXML_API VString LookupResource(QtVanResourceId id, VString qualifier);
// The same as LookupResource(id).
VANCOREXML_API VString LookupDefaultQtVanRes(QtVanResourceId id);
