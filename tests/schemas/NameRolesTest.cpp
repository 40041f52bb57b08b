#include "vancorexml/main/parser/NameRoles.h"

#include <map>
#include <memory>
#include <set>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XSDResources.h"

namespace {

const std::map<NameRole, std::string> RoleNames = {
    {NameRole::None, "none"},
    {NameRole::DataSource, "data source"},
    {NameRole::DataConnection, "data connection"},
    {NameRole::MapSource, "map source"},
    {NameRole::Caption, "caption"},
    {NameRole::FieldName, "field name"},
    {NameRole::FilePath, "file path"},
    {NameRole::Formula, "formula"},
};

std::unique_ptr<NameRoles> RolesOf(const std::string& schema)
{
    StringInputSource source(VString::fromStdString(schema), "schema", false);
    return std::make_unique<NameRoles>(source);
}

// Returns the schema with these global declarations.
std::string Schema(const std::string& declarations)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
           "<xs:simpleType name='n'><xs:annotation><xs:documentation>x</xs:documentation>"
           "<xs:appinfo source='http://vancorexml.invalid/xml/name-role'> data source </xs:appinfo></xs:annotation>"
           "<xs:restriction base='xs:token'/></xs:simpleType>" +
        declarations + "</xs:schema>";
}

// Collects "path role" for each attribute and text of a document that has a role.
void CollectUses(
    const DOMElement& element, const NameRoles::ElementType& type, const std::string& path, std::set<std::string>& uses)
{
    for (const auto& [name, value] : element.GetAttributes()) {
        const NameUse use = NameRoles::GetAttributeUse(type, name, element.GetAttributes());
        if (use.role != NameRole::None)
            uses.insert(path + "/@" + name.toStdString() + " " + RoleNames.at(use.role));
    }
    const NameUse text = NameRoles::GetTextUse(type, element.GetAttributes());
    if (text.role != NameRole::None)
        uses.insert(path + " " + RoleNames.at(text.role));
    for (const DOMElement* child : element.GetChildren()) {
        const NameRoles::ElementType* childType = NameRoles::FindChild(type, child->GetName());
        ASSERT_TRUE(childType) << path << "/" << child->GetName();
        CollectUses(*child, *childType, path + "/" + child->GetName().toStdString(), uses);
    }
}

std::unique_ptr<DOM> ParseSample(const std::string& file)
{
    return DOMParser().ParseXmlFile(VString::fromStdString(std::string(SAMPLES_FOLDER "/") + file));
}

// Returns the roles in the schema of the version that the document declares.
std::unique_ptr<NameRoles> RolesOf(const DOMElement& root, XmlFileType type)
{
    const VersionNumber version(root.GetAttribute("version"), u'.', u'-', 0);
    return std::make_unique<NameRoles>(*XSDResources::GetVersionedXsdInputSource(type, version));
}

std::set<std::string> UsesInSample(const std::string& file, XmlFileType type)
{
    const std::unique_ptr<DOM> document = ParseSample(file);
    const DOMElement& root = *document->GetDocumentRoot();
    const auto roles = RolesOf(root, type);
    std::set<std::string> uses;
    const NameRoles::ElementType* rootType = roles->FindDocumentElement(root.GetName());
    EXPECT_TRUE(rootType);
    if (rootType)
        CollectUses(root, *rootType, root.GetName().toStdString(), uses);
    return uses;
}

struct SampleRow {
    const char* name;
    XmlFileType type;
    std::vector<std::string> files;
    std::vector<std::string> uses;  // in all files
};

void PrintTo(const SampleRow& row, std::ostream* out)
{
    *out << row.name;
}

class NameRolesSampleTest : public testing::TestWithParam<SampleRow> {};

TEST_P(NameRolesSampleTest, FindsTheUsesOfNamesInEveryVersion)
{
    for (const std::string& file : GetParam().files)
        EXPECT_THAT(UsesInSample(file, GetParam().type), testing::UnorderedElementsAreArray(GetParam().uses)) << file;
}

const std::vector<std::string> analysisUses = {
    "analysis/data-sources/data-source/@caption caption",
    "analysis/data-sources/data-source/@name data source",
    "analysis/data-sources/data-source/column/@caption caption",
    "analysis/data-sources/data-source/column/@name field name",
    "analysis/data-sources/data-source/column/calculation/@formula formula",
    "analysis/data-sources/data-source/connection/@filename file path",
    "analysis/views/view/@data-source data source",
    "analysis/views/view/columns formula",
    "analysis/views/view/encoding/@field field name",
    "analysis/views/view/filter/@field field name",
    "analysis/views/view/rows formula",
};

std::vector<std::string> With(std::vector<std::string> uses, const std::vector<std::string>& more)
{
    uses.insert(uses.end(), more.begin(), more.end());
    return uses;
}

const std::string mapSourceUse = "analysis/map-sources/map-source/@name map source";

const SampleRow sampleRows[] = {
    {"Analysis10_2", XmlFileTypeKXA, {"sales-10-2.kxa"}, analysisUses},
    {"Analysis10_3To10_5",
        XmlFileTypeKXA,
        {"sales-10-3.kxa", "sales-10-4.kxa", "sales-10-5.kxa"},
        With(analysisUses, {mapSourceUse})},
    {"Analysis18_1",
        XmlFileTypeKXA,
        {"sales.kxa"},
        With(analysisUses, {mapSourceUse, "analysis/parameters/parameter/@caption caption"})},
    {"DataSource",
        XmlFileTypeKXB,
        {"orders-10-2.kxb", "orders-10-3.kxb", "orders-10-4.kxb", "orders-10-5.kxb", "orders.kxb"},
        {
            "data-source/@caption caption",
            "data-source/@name data source",
            "data-source/column/@caption caption",
            "data-source/column/@name field name",
            "data-source/column/calculation/@formula formula",
            "data-source/connection/@filename file path",
            "data-source/file/@path file path",
            "data-source/folder/field/@name field name",
        }},
    {"DataConnection10_2To10_4",
        XmlFileTypeKXC,
        {"sales-server-10-2.kxc", "sales-server-10-3.kxc", "sales-server-10-4.kxc"},
        {
            "data-connection/@caption caption",
            "data-connection/@name data connection",
            "data-connection/driver file path",
        }},
    {"DataConnection10_5To18_1",
        XmlFileTypeKXC,
        {"sales-server-10-5.kxc", "sales-server.kxc"},
        {
            "data-connection/@caption caption",
            "data-connection/@name data connection",
            "data-connection/connection/option/@value file path",
        }},
    {"MapSource10_2",
        XmlFileTypeKXD,
        {"base-map-10-2.kxd"},
        {"map-source/@name map source", "map-source/layer/@caption caption"}},
    {"MapSource10_3To18_1",
        XmlFileTypeKXD,
        {"base-map-10-3.kxd", "base-map-10-4.kxd", "base-map-10-5.kxd", "base-map.kxd"},
        {
            "map-source/@cache-folder file path",
            "map-source/@name map source",
            "map-source/layer/@caption caption",
        }},
    {"CaptionList",
        XmlFileTypeKXE,
        {"captions.kxe"},
        {
            "captions/caption/@name field name",
            "captions/caption/text caption",
            "captions/source/@path file path",
        }},
    {"FieldCatalogue",
        XmlFileTypeKXF,
        {"catalogue.kxf"},
        {
            "fields/field/@caption caption",
            "fields/field/@name field name",
            "fields/field/replaces/@name field name",
            "fields/owner/@document file path",
        }},
};

INSTANTIATE_TEST_SUITE_P(Samples, NameRolesSampleTest, testing::ValuesIn(sampleRows), [](const auto& row) {
    return std::string(row.param.name);
});

// Finds the values and texts without a role that contain a backslash or a bracket.
void CollectOverlooked(const DOMElement& element, const NameRoles::ElementType& type, std::set<std::string>& overlooked)
{
    const auto collect = [&](const NameUse& use, const VString& value, const VString& name) {
        if (use.role == NameRole::None && (value.contains(u'\\') || value.contains(u'[')))
            overlooked.insert(element.GetName().toStdString() + " " + name.toStdString());
    };
    for (const auto& [name, value] : element.GetAttributes())
        collect(NameRoles::GetAttributeUse(type, name, element.GetAttributes()), value, name);
    collect(NameRoles::GetTextUse(type, element.GetAttributes()), element.GetText(), "text");
    for (const DOMElement* child : element.GetChildren()) {
        const NameRoles::ElementType* childType = NameRoles::FindChild(type, child->GetName());
        ASSERT_TRUE(childType) << child->GetName();
        CollectOverlooked(*child, *childType, overlooked);
    }
}

TEST(NameRolesTest, ValuesThatLookLikePathsOrFieldsHaveARole)
{
    std::set<std::string> overlooked;
    for (const SampleRow& row : sampleRows) {
        for (const std::string& file : row.files) {
            const auto document = ParseSample(file);
            const DOMElement& root = *document->GetDocumentRoot();
            const auto roles = RolesOf(root, row.type);
            CollectOverlooked(root, *roles->FindDocumentElement(root.GetName()), overlooked);
        }
    }
    EXPECT_THAT(overlooked, testing::IsEmpty());
}

NameUse UseOfCaption(const VString& kind)
{
    const NameRoles roles(*XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXE, XSDResources::GetCurrentVersion()));
    const NameRoles::ElementType* caption = NameRoles::FindChild(*roles.FindDocumentElement("captions"), "caption");
    return NameRoles::GetAttributeUse(*caption, "name", {{"kind", kind}, {"name", "x"}});
}

TEST(NameRolesTest, RoleDependsOnAnotherAttribute)
{
    EXPECT_EQ(UseOfCaption("field").role, NameRole::FieldName);
    EXPECT_EQ(UseOfCaption(" data-source ").role, NameRole::DataSource);
    EXPECT_EQ(UseOfCaption("view").role, NameRole::None);
}

TEST(NameRolesTest, WhiteSpaceOfTokensIsCollapsed)
{
    const auto roles = RolesOf(Schema("<xs:element name='e'><xs:complexType>"
                                      "<xs:attribute name='a' type='n'/></xs:complexType></xs:element>"));
    EXPECT_TRUE(NameRoles::GetAttributeUse(*roles->FindDocumentElement("e"), "a", {}).isCollapsed);
    const NameRoles source(
        *XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXB, XSDResources::GetCurrentVersion()));
    const NameRoles::ElementType* dataSource = source.FindDocumentElement("data-source");
    EXPECT_FALSE(NameRoles::GetAttributeUse(*dataSource, "caption", {}).isCollapsed);
    EXPECT_TRUE(NameRoles::GetAttributeUse(*dataSource, "name", {}).isCollapsed);
}

struct InheritanceRow {
    const char* name;
    const char* declarations;  // of an element "e" with an attribute "a"
    NameRole role;
};

void PrintTo(const InheritanceRow& row, std::ostream* out)
{
    *out << row.name;
}

class NameRolesInheritanceTest : public testing::TestWithParam<InheritanceRow> {};

TEST_P(NameRolesInheritanceTest, FindsTheRoleOfTheAttribute)
{
    const auto roles = RolesOf(Schema(GetParam().declarations));
    const NameRoles::ElementType* type = roles->FindDocumentElement("e");
    ASSERT_TRUE(type);
    EXPECT_EQ(NameRoles::GetAttributeUse(*type, "a", {}).role, GetParam().role);
}

const InheritanceRow inheritanceRows[] = {
    {"NamedType",
        "<xs:element name='e' type='t'/><xs:complexType name='t'><xs:attribute name='a' type='n'/></xs:complexType>",
        NameRole::DataSource},
    {"AnonymousRestriction",
        "<xs:element name='e'><xs:complexType><xs:attribute name='a'><xs:simpleType><xs:restriction base='n'>"
        "<xs:maxLength value='9'/></xs:restriction></xs:simpleType></xs:attribute></xs:complexType></xs:element>",
        NameRole::DataSource},
    {"NestedRestriction",
        "<xs:element name='e'><xs:complexType><xs:attribute name='a'><xs:simpleType><xs:restriction><xs:simpleType>"
        "<xs:restriction base='n'/></xs:simpleType></xs:restriction></xs:simpleType></xs:attribute></xs:complexType>"
        "</xs:element>",
        NameRole::DataSource},
    {"OwnMarkBeforeInheritedMark",
        "<xs:element name='e'><xs:complexType><xs:attribute name='a'><xs:simpleType><xs:annotation>"
        "<xs:appinfo source='http://vancorexml.invalid/xml/name-role'>caption</xs:appinfo></xs:annotation>"
        "<xs:restriction base='n'/></xs:simpleType></xs:attribute></xs:complexType></xs:element>",
        NameRole::Caption},
    {"AttributeGroup",
        "<xs:element name='e'><xs:complexType><xs:attributeGroup ref='g'/></xs:complexType></xs:element>"
        "<xs:attributeGroup name='g'><xs:attribute name='a' type='n'/></xs:attributeGroup>",
        NameRole::DataSource},
    {"ExtendedComplexType",
        "<xs:element name='e'><xs:complexType><xs:complexContent><xs:extension base='b'/></xs:complexContent>"
        "</xs:complexType></xs:element><xs:complexType name='b'><xs:attribute name='a' type='n'/></xs:complexType>",
        NameRole::DataSource},
    {"OtherAnnotation",
        "<xs:element name='e'><xs:complexType><xs:attribute name='a'><xs:simpleType><xs:annotation>"
        "<xs:appinfo source='other'>caption</xs:appinfo></xs:annotation>"
        "<xs:restriction base='xs:string'/></xs:simpleType></xs:attribute></xs:complexType></xs:element>",
        NameRole::None},
    {"List",
        "<xs:element name='e'><xs:complexType><xs:attribute name='a'><xs:simpleType><xs:list itemType='n'/>"
        "</xs:simpleType></xs:attribute></xs:complexType></xs:element>",
        NameRole::None},
    {"UndeclaredAttribute", "<xs:element name='e'><xs:complexType/></xs:element>", NameRole::None},
    {"AttributeOfAnotherNamespace",
        "<xs:element name='e'><xs:complexType><xs:attribute ref='xml:lang'/></xs:complexType></xs:element>",
        NameRole::None},
};

INSTANTIATE_TEST_SUITE_P(Rows, NameRolesInheritanceTest, testing::ValuesIn(inheritanceRows), [](const auto& row) {
    return std::string(row.param.name);
});

struct RefusedRow {
    const char* name;
    const char* declarations;
    const char* message;  // a part of it
};

void PrintTo(const RefusedRow& row, std::ostream* out)
{
    *out << row.name;
}

class NameRolesRefusalTest : public testing::TestWithParam<RefusedRow> {};

TEST_P(NameRolesRefusalTest, Throws)
{
    try {
        RolesOf(Schema(GetParam().declarations));
        ADD_FAILURE() << "no exception";
    } catch (const VantoraException& exception) {
        EXPECT_THAT(exception.GetMessage().toStdString(), testing::HasSubstr(GetParam().message));
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("VantoraException_UnreadableNameRoles_0x5C1E7A94"));
    }
}

const RefusedRow refusedRows[] = {
    {"NotWellFormed", "<xs:element>", "element"},
    {"Include", "<xs:include schemaLocation='x'/>", "xs:include"},
    {"Group", "<xs:group name='g'/>", "xs:group"},
    {"GroupReference",
        "<xs:element name='e'><xs:complexType><xs:group ref='g'/></xs:complexType></xs:element>",
        "xs:group"},
    {"ElementReference",
        "<xs:element name='e'><xs:complexType><xs:sequence><xs:element ref='e'/></xs:sequence></xs:complexType>"
        "</xs:element>",
        "xs:element"},
    {"SubstitutionGroup", "<xs:element name='e' substitutionGroup='f' type='n'/>", "xs:element"},
    {"UndeclaredType",
        "<xs:element name='e'><xs:complexType><xs:attribute name='a' type='t'/></xs:complexType></xs:element>",
        "\"t\""},
    {"UnknownRole",
        "<xs:element name='e'><xs:simpleType><xs:annotation>"
        "<xs:appinfo source='http://vancorexml.invalid/xml/name-role'>colour</xs:appinfo></xs:annotation>"
        "<xs:restriction base='n'/></xs:simpleType></xs:element>",
        "\"colour\""},
    {"IncompleteCondition",
        "<xs:element name='e'><xs:simpleType><xs:annotation>"
        "<xs:appinfo source='http://vancorexml.invalid/xml/name-role'>caption if kind</xs:appinfo></xs:annotation>"
        "<xs:restriction base='n'/></xs:simpleType></xs:element>",
        "\"caption if kind\""},
};

INSTANTIATE_TEST_SUITE_P(Rows, NameRolesRefusalTest, testing::ValuesIn(refusedRows), [](const auto& row) {
    return std::string(row.param.name);
});

TEST(NameRolesTest, ElementMayContainItsOwnType)
{
    const auto roles = RolesOf(
        Schema("<xs:element name='e' type='t'/><xs:complexType name='t'><xs:sequence><xs:element name='e' type='t'/>"
               "</xs:sequence></xs:complexType>"));
    const NameRoles::ElementType* type = roles->FindDocumentElement("e");
    ASSERT_TRUE(type);
    EXPECT_EQ(NameRoles::FindChild(*type, "e"), type);
    EXPECT_EQ(NameRoles::FindChild(*type, "f"), nullptr);
    EXPECT_EQ(roles->FindDocumentElement("f"), nullptr);
}

TEST(NameRolesTest, EverySchemaOfALibraryTypeCanBeRead)
{
    for (int type = 0; type <= 8; ++type) {
        for (const VersionNumber& version : XSDResources::GetSchemaVersions(static_cast<XmlFileType>(type))) {
            const auto schema = XSDResources::GetVersionedXsdInputSource(static_cast<XmlFileType>(type), version);
            EXPECT_NO_THROW(NameRoles{*schema}) << schema->Id();
        }
    }
}

}  // namespace
