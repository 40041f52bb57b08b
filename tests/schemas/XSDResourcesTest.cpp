#include "vancorexml/main/parser/XSDResources.h"

#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vancoredata/VResource.h"
#include "vancorexml/main/parser/DOMException.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XSDResourceResolver.h"

namespace {

VersionNumber Version(const char* text)
{
    return VersionNumber(text, u'.', u'-', 0);
}

struct NameRow {
    const char* name;
    XmlFileType type;
    const char* version;
    const char* resource;
    bool isListed;
};

class NameRows : public testing::TestWithParam<NameRow> {};

}  // namespace

TEST_P(NameRows, FindsTheNameAndTheResource)
{
    const NameRow& row = GetParam();
    EXPECT_EQ(XSDResources::GetVersionedXsdResourceName(row.type, Version(row.version)), VString(row.resource));
    EXPECT_EQ(XSDResources::IsThereAnXSDResource(row.type, Version(row.version)), row.isListed);
    const auto source = XSDResources::GetVersionedXsdInputSource(row.type, Version(row.version));
    ASSERT_EQ(source != nullptr, *row.resource != '\0');
    if (!source)
        return;
    EXPECT_EQ(source->Id(), VString(row.resource));
    EXPECT_GT(source->Size(), 100u);
}

const NameRow ResourceNames[] = {
    {"KxaCurrent", XmlFileTypeKXA, "18.1", "VQRC_FILEFORMAT_KXA_XSD", true},
    {"KxbCurrent", XmlFileTypeKXB, "18.1", "VQRC_FILEFORMAT_KXB_XSD", true},
    {"KxcCurrent", XmlFileTypeKXC, "18.1", "VQRC_FILEFORMAT_KXC_XSD", true},
    {"KxdCurrent", XmlFileTypeKXD, "18.1", "VQRC_FILEFORMAT_KXD_XSD", true},
    {"KxeCurrent", XmlFileTypeKXE, "18.1", "VQRC_FILEFORMAT_KXE_XSD", true},
    {"KxfCurrent", XmlFileTypeKXF, "18.1", "VQRC_FILEFORMAT_KXF_XSD", true},
    {"CurrentWithATrailingZero", XmlFileTypeKXA, "18.1.0", "VQRC_FILEFORMAT_KXA_XSD", true},
    {"CurrentWithASuffix", XmlFileTypeKXA, "18.1-beta", "VQRC_FILEFORMAT_KXA_XSD", true},
    {"PatchOfTheCurrentIsListedButHasNoResource", XmlFileTypeKXA, "18.1.3", "", true},
    {"KxaOlder", XmlFileTypeKXA, "10.2", "VQRC_FILEFORMAT_KXA_XSD_10_2", true},
    {"KxbOlder", XmlFileTypeKXB, "10.3", "VQRC_FILEFORMAT_KXB_XSD_10_3", true},
    {"KxcOlder", XmlFileTypeKXC, "10.4", "VQRC_FILEFORMAT_KXC_XSD_10_4", true},
    {"KxdOlder", XmlFileTypeKXD, "10.5", "VQRC_FILEFORMAT_KXD_XSD_10_5", true},
    {"PatchOfAnOlderVersion", XmlFileTypeKXA, "10.5.2", "VQRC_FILEFORMAT_KXA_XSD_10_5", true},
    {"NotListed", XmlFileTypeKXA, "9.0", "", false},
    {"OlderKxeIsListedButHasNoResource", XmlFileTypeKXE, "10.2", "", true},
    {"OlderKxfIsListedButHasNoResource", XmlFileTypeKXF, "9.0", "", true},
    {"TypeNone", XmlFileTypeNone, "18.1", "", false},
    {"TypePreferences", XmlFileTypePreferences, "18.1", "", false},
    {"TypeManifest", XmlFileTypeManifest, "10.5", "", false},
    {"UnknownType", static_cast<XmlFileType>(9), "18.1", "", false},
};

INSTANTIATE_TEST_SUITE_P(
    XSDResourcesTest, NameRows, testing::ValuesIn(ResourceNames), [](const auto& row) { return row.param.name; });

TEST(XSDResourcesTest, EveryListedVersionOfAVersionedTypeHasASchema)
{
    for (const XmlFileType type : {XmlFileTypeKXA, XmlFileTypeKXB, XmlFileTypeKXC, XmlFileTypeKXD}) {
        for (const char* version : {"10.2", "10.3", "10.4", "10.5", "18.1"}) {
            EXPECT_TRUE(XSDResources::IsThereAnXSDResource(type, Version(version))) << type << " " << version;
            EXPECT_NE(XSDResources::GetVersionedXsdInputSource(type, Version(version)), nullptr)
                << type << " " << version;
        }
    }
}

TEST(XSDResourcesTest, GetSchemaVersionsListsTheVersionsOldestFirst)
{
    const auto texts = [](XmlFileType type) {
        std::vector<std::string> versions;
        for (const VersionNumber& version : XSDResources::GetSchemaVersions(type))
            versions.push_back(version.GetAsString().toStdString());
        return versions;
    };
    EXPECT_THAT(texts(XmlFileTypeKXA), testing::ElementsAre("10.2", "10.3", "10.4", "10.5", "18.1"));
    EXPECT_THAT(texts(XmlFileTypeKXE), testing::ElementsAre("18.1"));
    EXPECT_THAT(texts(XmlFileTypeManifest), testing::IsEmpty());
}

TEST(XSDResourcesTest, TypesHaveFixedValues)
{
    EXPECT_EQ(XmlFileTypeKXA, 1);
    EXPECT_EQ(XmlFileTypeKXB, 2);
    EXPECT_EQ(XmlFileTypeKXC, 3);
    EXPECT_EQ(XmlFileTypeKXD, 4);
    EXPECT_EQ(XmlFileTypeKXE, 5);
    EXPECT_EQ(XmlFileTypeKXF, 8);
}

TEST(XSDResourcesTest, OlderVersionIsLoggedAndTheCurrentOneIsNot)
{
    testsupport::LogCapture log;
    XSDResources::GetVersionedXsdResourceName(XmlFileTypeKXA, Version("18.1"));
    EXPECT_TRUE(log.records.empty());
    XSDResources::GetVersionedXsdResourceName(XmlFileTypeKXA, Version("10.3.7"));
    ASSERT_EQ(log.records.size(), 1u);
    EXPECT_EQ(log.records[0].severity, VLog::Debug);
    EXPECT_EQ(log.records[0].message, VString("XSD Resource version '10.3.7' != Current version '18.1'"));
}

TEST(XSDResourcesTest, ApplicationMayRegisterItsOwnSchema)
{
    ResourceRegistrationCache::GetInstance().RegisterText("VQRC_FILEFORMAT_KXA_XSD_9_0", "<schema/>");
    EXPECT_EQ(XSDResources::GetVersionedXsdResourceName(XmlFileTypeKXA, Version("9.0")),
        VString("VQRC_FILEFORMAT_KXA_XSD_9_0"));
    EXPECT_FALSE(XSDResources::IsThereAnXSDResource(XmlFileTypeKXA, Version("9.0")));
    ResourceRegistrationCache::GetInstance().UnregisterText("VQRC_FILEFORMAT_KXA_XSD_9_0");
}

TEST(XSDResourcesTest, VersionOfTheDocumentSelectsTheSchemaAndTheSourceIsReset)
{
    Utf8InputSource document("<analysis version='10.4' format='10.2'/>", "document", false);
    EXPECT_EQ(XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypeKXA, document, VString())->Id(),
        VString("VQRC_FILEFORMAT_KXA_XSD_10_4"));
    EXPECT_EQ(XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypeKXA, document, "format")->Id(),
        VString("VQRC_FILEFORMAT_KXA_XSD_10_2"));
    EXPECT_EQ(
        XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypePreferences, document, VString()), nullptr);
    std::string bytes;
    ASSERT_TRUE(document.GetBytes(bytes, 9));
    EXPECT_EQ(bytes, "<analysis");
}

TEST(XSDResourcesTest, DocumentWithoutAVersionThrowsAndTheSourceIsReset)
{
    Utf8InputSource document("<analysis/>", "document", false);
    try {
        XSDResources::GetVersionedXsdInputSourceForDocument(XmlFileTypeKXA, document, VString());
        ADD_FAILURE() << "nothing was thrown";
    } catch (const DOMException& exception) {
        EXPECT_EQ(exception.GetMessage(), VString("Version attribute missing."));
        EXPECT_EQ(exception.GetErrorInfo().GetCode(), 0xCA8DC404u);
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("DOMException_MissingVersionAttribute_0xCA8DC404"));
        EXPECT_EQ(static_cast<int>(exception.GetErrorInfo().GetSource()), 1);
        EXPECT_EQ(static_cast<int>(exception.GetErrorInfo().GetStatus()), 2);
    }
    std::string bytes;
    ASSERT_TRUE(document.GetBytes(bytes, 9));
    EXPECT_EQ(bytes, "<analysis");
}

TEST(XSDResourceResolverTest, ExistingResourceResolves)
{
    EXPECT_NO_THROW(XSDResourceResolver::CheckResolves("VQRC_FILEFORMAT_KXA_XSD"));
}

TEST(XSDResourceResolverTest, MissingResourceRaises)
{
    const char* const file = "vancorexml\\main\\parser\\XSDResourceResolver";
    const auto check = [] { XSDResourceResolver::CheckResolves("VQRC_NONE"); };
    testsupport::ExpectLogicException(check, file, 67, "Resource 'VQRC_NONE' did not resolve.", 0xABCA807E);
}
