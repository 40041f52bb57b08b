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
    bool isThere;
};

class NameRows : public testing::TestWithParam<NameRow> {};

}  // namespace

TEST_P(NameRows, ResourceNameAndPresence)
{
    const NameRow& row = GetParam();
    EXPECT_EQ(XSDResources::GetVersionedXsdResourceName(row.type, Version(row.version)), VString(row.resource));
    EXPECT_EQ(XSDResources::IsThereAnXSDResource(row.type, Version(row.version)), row.isThere);
    const auto source = XSDResources::GetVersionedXsdInputSource(row.type, Version(row.version));
    ASSERT_EQ(source != nullptr, *row.resource != '\0');
    if (!source)
        return;
    EXPECT_EQ(source->Id(), VString(row.resource));
    EXPECT_GT(source->Size(), 100u);
}

INSTANTIATE_TEST_SUITE_P(XSDResourcesTest,
    NameRows,
    testing::Values(NameRow{"KxaCurrent", XmlFileTypeKXA, "18.1", "VQRC_FILEFORMAT_KXA_XSD", true},
        NameRow{"KxbCurrent", XmlFileTypeKXB, "18.1", "VQRC_FILEFORMAT_KXB_XSD", true},
        NameRow{"KxcCurrent", XmlFileTypeKXC, "18.1", "VQRC_FILEFORMAT_KXC_XSD", true},
        NameRow{"KxdCurrent", XmlFileTypeKXD, "18.1", "VQRC_FILEFORMAT_KXD_XSD", true},
        NameRow{"KxeCurrent", XmlFileTypeKXE, "18.1", "VQRC_FILEFORMAT_KXE_XSD", true},
        NameRow{"KxfCurrent", XmlFileTypeKXF, "18.1", "VQRC_FILEFORMAT_KXF_XSD", true},
        NameRow{"CurrentWithAZero", XmlFileTypeKXA, "18.1.0", "VQRC_FILEFORMAT_KXA_XSD", true},
        NameRow{"CurrentWithASuffix", XmlFileTypeKXA, "18.1-beta", "VQRC_FILEFORMAT_KXA_XSD", true},
        NameRow{"PatchOfTheCurrentIsListedButHasNone", XmlFileTypeKXA, "18.1.3", "", true},
        NameRow{"KxaOlder", XmlFileTypeKXA, "10.2", "VQRC_FILEFORMAT_KXA_XSD_10_2", true},
        NameRow{"KxbOlder", XmlFileTypeKXB, "10.3", "VQRC_FILEFORMAT_KXB_XSD_10_3", true},
        NameRow{"KxcOlder", XmlFileTypeKXC, "10.4", "VQRC_FILEFORMAT_KXC_XSD_10_4", true},
        NameRow{"KxdOlder", XmlFileTypeKXD, "10.5", "VQRC_FILEFORMAT_KXD_XSD_10_5", true},
        NameRow{"PatchOfAnOlder", XmlFileTypeKXA, "10.5.2", "VQRC_FILEFORMAT_KXA_XSD_10_5", true},
        NameRow{"NotListed", XmlFileTypeKXA, "9.0", "", false},
        NameRow{"KxeOlderIsThereButHasNone", XmlFileTypeKXE, "10.2", "", true},
        NameRow{"KxfOlderIsThereButHasNone", XmlFileTypeKXF, "9.0", "", true},
        NameRow{"TypeZero", XmlFileTypeNone, "18.1", "", false},
        NameRow{"TypeSix", XmlFileTypePreferences, "18.1", "", false},
        NameRow{"TypeSeven", XmlFileTypeManifest, "10.5", "", false},
        NameRow{"UnknownType", static_cast<XmlFileType>(9), "18.1", "", false}),
    [](const auto& row) { return row.param.name; });

TEST(XSDResourcesTest, EveryListedVersionOfTheFourTypesHasASchema)
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

TEST(XSDResourcesTest, TypesHaveTheirValues)
{
    EXPECT_EQ(XmlFileTypeKXA, 1);
    EXPECT_EQ(XmlFileTypeKXB, 2);
    EXPECT_EQ(XmlFileTypeKXC, 3);
    EXPECT_EQ(XmlFileTypeKXD, 4);
    EXPECT_EQ(XmlFileTypeKXE, 5);
    EXPECT_EQ(XmlFileTypeKXF, 8);
}

TEST(XSDResourcesTest, AnOlderVersionIsLoggedAndTheCurrentIsNot)
{
    testsupport::LogCapture log;
    XSDResources::GetVersionedXsdResourceName(XmlFileTypeKXA, Version("18.1"));
    EXPECT_TRUE(log.records.empty());
    XSDResources::GetVersionedXsdResourceName(XmlFileTypeKXA, Version("10.3.7"));
    ASSERT_EQ(log.records.size(), 1u);
    EXPECT_EQ(log.records[0].severity, VLog::Debug);
    EXPECT_EQ(log.records[0].message, VString("XSD Resource version '10.3.7' != Current version '18.1'"));
}

TEST(XSDResourcesTest, AnApplicationMayRegisterASchemaOfItsOwn)
{
    ResourceRegistrationCache::GetInstance().RegisterText("VQRC_FILEFORMAT_KXA_XSD_9_0", "<schema/>");
    EXPECT_EQ(XSDResources::GetVersionedXsdResourceName(XmlFileTypeKXA, Version("9.0")),
        VString("VQRC_FILEFORMAT_KXA_XSD_9_0"));
    EXPECT_FALSE(XSDResources::IsThereAnXSDResource(XmlFileTypeKXA, Version("9.0")));
    ResourceRegistrationCache::GetInstance().UnregisterText("VQRC_FILEFORMAT_KXA_XSD_9_0");
}

TEST(XSDResourcesTest, TheDocumentsOwnVersionChoosesAndTheDocumentIsAtItsStart)
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

TEST(XSDResourcesTest, ADocumentWithoutAVersionThrowsAndIsAtItsStart)
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

TEST(XSDResourceResolverTest, AResourceThatIsThereResolves)
{
    EXPECT_NO_THROW(XSDResourceResolver::CheckResolves("VQRC_FILEFORMAT_KXA_XSD"));
}

TEST(XSDResourceResolverTest, AMissingOneRaises)
{
    testsupport::ExpectLogicException([] { XSDResourceResolver::CheckResolves("VQRC_NONE"); },
        "vancorexml\\main\\parser\\XSDResourceResolver",
        67,
        "Resource 'VQRC_NONE' did not resolve.",
        0xABCA807E);
}
