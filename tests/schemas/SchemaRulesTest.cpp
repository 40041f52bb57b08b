// Rules of the schemas that the samples do not cover.
#include <algorithm>
#include <ctime>
#include <limits>
#include <list>
#include <memory>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XSDResources.h"

namespace {

VersionNumber Version(const char* text)
{
    return VersionNumber(text, u'.', u'-', 0);
}

std::list<VString> Validate(XmlFileType type, const char* version, const std::string& text)
{
    DOMParser parser;
    parser.AddXSDInputSource(XSDResources::GetVersionedXsdInputSource(type, Version(version)));
    return parser.ParseXmlString(VString::fromStdString(text), "document")->GetErrors();
}

std::string AnalysisWithZones(const char* version, const std::string& zones)
{
    return std::string("<analysis version='") + version +
        "'><data-sources><data-source name='d'><connection class='server'/></data-source></data-sources>"
        "<views><view name='v' data-source='d'><rows/><columns/></view></views>"
        "<dashboards><dashboard name='b'><size width='1' height='1'/>" +
        zones + "</dashboard></dashboards></analysis>";
}

std::string ZoneStart(int id, const std::string& view)
{
    return "<zone id='" + std::to_string(id) + "' x='0' y='0' w='1' h='1' view='" + view + "'>";
}

// Returns `levels` nested zones. `innermost` is the start tag of the innermost zone.
std::string NestedZones(int levels, const std::string& innermost)
{
    std::string zones;
    for (int i = 1; i < levels; ++i)
        zones += ZoneStart(i, "v");
    zones += innermost;
    for (int i = 1; i <= levels; ++i)
        zones += "</zone>";
    return zones;
}

// Returns the CPU time of the fastest of three validations, because other programs can only slow a run down.
double SecondsToValidate(const std::string& text)
{
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < 3; ++i) {
        const std::clock_t start = std::clock();
        EXPECT_THAT(Validate(XmlFileTypeKXA, "18.1", text), testing::IsEmpty());
        least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return least;
}

const char* const Versions[] = {"10.2", "10.3", "10.4", "10.5", "18.1"};

// A document that the schemas of the versions `first` to `last` accept. A name that must be unique within one owner
// also occurs under a second owner.
struct Document {
    XmlFileType type;
    const char* first;
    const char* last;
    std::string text;
};

const std::string Columns =
    "<column name='c1' data-type='real' role='measure'><alias key='k1' value='x'/><alias key='k2' value='x'/></column>"
    "<column name='c2' data-type='real' role='measure'><alias key='k1' value='x'/></column>";
const std::string Options = "<option name='o1' value='x'/><option name='o2' value='x'/>";
const std::string Sources =
    "<data-sources><data-source name='d'><connection class='server'/></data-source></data-sources>";
const std::string Views = "<views><view name='v1' data-source='d'><rows/><columns/></view>"
                          "<view name='v2' data-source='d'><rows/><columns/></view></views>";

const Document Analysis{
    XmlFileTypeKXA,
    "10.2",
    "18.1",
    "<analysis version='VERSION' xml:lang='de' xml:space='preserve'><data-sources>"
    "<data-source name='d1'><connection class='server' port='65535'>" +
        Options + "</connection>" + Columns +
        "</data-source>"
        "<data-source name='d2'><connection class='server'>" +
        Options + "</connection>" + Columns +
        "</data-source></data-sources>"
        "<views><view name='v' data-source='d1'><rows/><columns/><filter class='categorical' field='f'/>"
        "<encoding channel='size' field='e'/></view></views>"
        "<dashboards>"
        "<dashboard name='b1'><size width='1' height='1'/><zone id='1' x='0' y='0' w='1' h='1'>"
        "<zone id='2' x='0' y='0' w='1' h='1' view='v'/></zone></dashboard>"
        "<dashboard name='b2'><size width='1' height='1'/><zone id='1' x='0' y='0' w='1' h='1'/></dashboard>"
        "</dashboards></analysis>",
};

const Document AnalysisWithRepository{
    XmlFileTypeKXA,
    "10.2",
    "10.5",
    "<analysis version='VERSION'><repository path='p'/>" + Sources + Views + "</analysis>",
};

const Document AnalysisWithMaps{
    XmlFileTypeKXA,
    "10.3",
    "18.1",
    "<analysis version='VERSION'>" + Sources +
        "<map-sources><map-source name='m1'/><map-source name='m2'/></map-sources>" + Views + "</analysis>",
};

const Document AnalysisWithThumbnails{
    XmlFileTypeKXA,
    "10.5",
    "18.1",
    "<analysis version='VERSION'>" + Sources + Views +
        "<thumbnails><thumbnail view='v1' width='1' height='1'/>"
        "<thumbnail view='v2' width='1' height='1'/></thumbnails></analysis>",
};

const Document AnalysisWithParameters{
    XmlFileTypeKXA,
    "18.1",
    "18.1",
    "<analysis version='VERSION'><parameters><parameter name='p1' data-type='real' value='1'/>"
    "<parameter name='p2' data-type='real' value='1'/></parameters>" +
        Sources + Views + "</analysis>",
};

const Document AnalysisWithExtension{
    XmlFileTypeKXA,
    "18.1",
    "18.1",
    "<analysis version='VERSION'>" + Sources + Views +
        "<dashboards><dashboard name='b'><size width='1' height='1'/><zone id='1' x='0' y='0' w='1' h='1'/>"
        "<extension id='e' url='u'/></dashboard></dashboards></analysis>",
};

const Document AnalysisWithHiddenColumn{
    XmlFileTypeKXA,
    "10.2",
    "10.4",
    "<analysis version='VERSION'><data-sources><data-source name='d'><connection class='server'/>"
    "<column name='c1' data-type='real' role='measure' hidden='yes'/>"
    "<column name='c2' data-type='real' role='measure' hidden='false'/></data-source></data-sources>" +
        Views + "</analysis>",
};

const Document DataSource{
    XmlFileTypeKXB,
    "10.2",
    "18.1",
    "<data-source version='VERSION' name='d' xml:lang='de'>"
    "<connection class='server' port='1'>" +
        Options +
        "</connection>"
        "<connection class='server'>" +
        Options + "</connection>" + Columns +
        "<folder name='f1'><field name='c1'/><field name='c2'/></folder><folder name='f2'><field name='c1'/></folder>"
        "<file path='p1' size='1'/><file path='p2'/></data-source>",
};

const Document DataSourceWithHiddenColumn{
    XmlFileTypeKXB,
    "10.2",
    "10.4",
    "<data-source version='VERSION' name='d'><connection class='server'/>"
    "<column name='c' data-type='real' role='measure' hidden='no'/></data-source>",
};

const Document DataConnection{
    XmlFileTypeKXC,
    "10.2",
    "18.1",
    "<data-connection version='VERSION' name='d' xml:lang='de'><connection class='server' port='1'>" + Options +
        "</connection></data-connection>",
};

const Document DataConnectionWithDriver{
    XmlFileTypeKXC,
    "10.5",
    "18.1",
    "<data-connection version='VERSION' name='d'><connection class='server'/>"
    "<driver name='n' minimum-version='3.1.0-rc'/></data-connection>",
};

const Document MapSource{
    XmlFileTypeKXD,
    "10.2",
    "18.1",
    "<map-source version='VERSION' name='m' xml:lang='de'><server url='u'/><layer name='l1'/><layer name='l2'/>"
    "<default-layer name='l1'/><default-layer name='l2'/></map-source>",
};

const Document MapSourceWithVisibleLayer{
    XmlFileTypeKXD,
    "10.2",
    "10.3",
    "<map-source version='VERSION' name='m'><server url='u'/><layer name='l' visible='yes'/></map-source>",
};

const Document Captions{
    XmlFileTypeKXE,
    "18.1",
    "18.1",
    "<captions version='VERSION' xml:lang='de'><source path='p'/>"
    "<caption kind='field' name='c1'><text xml:lang='de'>a</text><text xml:lang='fr'>a</text></caption>"
    "<caption kind='field' name='c2'><text xml:lang='de'>a</text></caption></captions>",
};

const Document Fields{
    XmlFileTypeKXF,
    "18.1",
    "18.1",
    "<fields version='VERSION' xml:lang='de'><field name='f' data-type='real' role='measure'/></fields>",
};

const char* const DuplicateError = "declares duplicate identity constraint unique values";
const char* const EmptyError = "value ''";
const char* const MissingError = "key for element 'analysis' not found";
const char* const LangError = "Lang' is not declared";

// A row replaces `part` by `wrong`. The document must then be invalid in each of its versions, with a message that
// contains `error`.
struct RuleRow {
    const char* name;
    const Document& document;
    const char* part;
    const char* wrong;
    const char* error;
};

class RuleRows : public testing::TestWithParam<RuleRow> {};

std::string Replaced(std::string text, const std::string& part, const std::string& replacement)
{
    const std::size_t position = text.find(part);
    EXPECT_NE(position, std::string::npos) << part;
    return position == std::string::npos ? text : text.replace(position, part.size(), replacement);
}

}  // namespace

TEST(SchemaRulesTest, ZonesAreCheckedDownToSixteenLevels)
{
    for (const char* version : Versions) {
        for (int levels = 2; levels <= 17; ++levels) {
            const std::size_t expected = levels <= 16 ? 1 : 0;
            for (const std::string& wrong : {ZoneStart(levels, "missing"), ZoneStart(1, "v")}) {
                const std::string text = AnalysisWithZones(version, NestedZones(levels, wrong));
                EXPECT_EQ(Validate(XmlFileTypeKXA, version, text).size(), expected) << version << wrong;
            }
        }
    }
}

TEST(SchemaRulesTest, NestedZonesValidateInLinearTime)
{
    // Nested zones take 4 times as long as flat ones. With a selector of all descendants, they took 160 times as long.
    std::string flatZones;
    for (int i = 1; i <= 16000; ++i)
        flatZones += ZoneStart(i, "v") + "</zone>";
    const double flat = SecondsToValidate(AnalysisWithZones("18.1", flatZones));
    const std::string nested = NestedZones(16000, ZoneStart(16000, "v"));
    EXPECT_LT(SecondsToValidate(AnalysisWithZones("18.1", nested)), 20 * flat);
}

TEST_P(RuleRows, BrokenRuleIsAnError)
{
    const RuleRow& row = GetParam();
    for (const char* version : Versions) {
        if (Version(version) < Version(row.document.first) || Version(row.document.last) < Version(version))
            continue;
        const std::string text = Replaced(row.document.text, "VERSION", version);
        EXPECT_THAT(Validate(row.document.type, version, text), testing::IsEmpty()) << version;
        const std::list<VString> errors = Validate(row.document.type, version, Replaced(text, row.part, row.wrong));
        ASSERT_FALSE(errors.empty()) << version;
        EXPECT_TRUE(errors.front().contains(row.error)) << version << ": " << errors.front();
    }
}

const RuleRow Rules[] = {
    {"DuplicateColumnInADataSource", Analysis, "name='c2'", "name='c1'", DuplicateError},
    {"DuplicateAliasKeyInAnAnalysis", Analysis, "key='k2'", "key='k1'", DuplicateError},
    {"DuplicateOptionInAnAnalysis", Analysis, "name='o2'", "name='o1'", DuplicateError},
    {"DuplicateDashboard", Analysis, "name='b2'", "name='b1'", DuplicateError},
    {"DuplicateZoneInADashboard", Analysis, "id='2'", "id='01'", DuplicateError},
    {"UnknownViewOfAZone", Analysis, "view='v'", "view='w'", MissingError},
    {"UnknownDataSourceOfAView", Analysis, "data-source='d1'", "data-source='d3'", MissingError},
    {"DuplicateMapSource", AnalysisWithMaps, "name='m2'", "name='m1'", DuplicateError},
    {"DuplicateThumbnailOfAView", AnalysisWithThumbnails, "view='v2'", "view='v1'", DuplicateError},
    {"DuplicateParameter", AnalysisWithParameters, "name='p2'", "name='p1'", DuplicateError},
    {"DuplicateFolder", DataSource, "name='f2'", "name='f1'", DuplicateError},
    {"DuplicateFieldInAFolder", DataSource, "field name='c2'", "field name='c1'", DuplicateError},
    {"DuplicateFilePath", DataSource, "path='p2'", "path='p1'", DuplicateError},
    {"DuplicateAliasKeyInADataSource", DataSource, "key='k2'", "key='k1'", DuplicateError},
    {"DuplicateOptionInADataSource", DataSource, "name='o2'", "name='o1'", DuplicateError},
    {"DuplicateOptionInADataConnection", DataConnection, "name='o2'", "name='o1'", DuplicateError},
    {"DuplicateDefaultLayer", MapSource, "default-layer name='l2'", "default-layer name='l1'", DuplicateError},
    {"DuplicateTextLanguageInACaption", Captions, "xml:lang='fr'", "xml:lang='de'", DuplicateError},

    {"EmptyFieldOfAFilter", Analysis, "field='f'", "field=''", EmptyError},
    {"EmptyFieldOfAnEncoding", Analysis, "field='e'", "field=''", EmptyError},
    {"EmptyPathOfARepository", AnalysisWithRepository, "path='p'", "path=''", EmptyError},
    {"EmptyPathOfAFile", DataSource, "path='p1'", "path=''", EmptyError},
    {"EmptySourcePathOfCaptions", Captions, "path='p'", "path=''", EmptyError},
    {"EmptyUrlOfAnExtension", AnalysisWithExtension, "url='u'", "url=''", EmptyError},
    {"BlankUrlOfAServer", MapSource, "url='u'", "url=' '", EmptyError},
    {"MalformedMinimumVersion", DataConnectionWithDriver, "3.1.0-rc", "newest", "value 'newest'"},
    {"UnknownHiddenValueInAnAnalysis", AnalysisWithHiddenColumn, "'yes'", "'perhaps'", "value 'perhaps'"},
    {"EmptyHiddenValueInADataSource", DataSourceWithHiddenColumn, "'no'", "''", EmptyError},
    {"UnknownVisibleValue", MapSourceWithVisibleLayer, "'yes'", "'perhaps'", "value 'perhaps'"},
    {"TooLargePortInAnAnalysis", Analysis, "port='65535'", "port='65536'", "value '65536'"},
    {"NonNumericPortInADataSource", DataSource, "port='1'", "port='http'", "value 'http'"},
    {"EmptyPortInADataConnection", DataConnection, "port='1'", "port=''", EmptyError},
    {"NonNumericSizeOfAFile", DataSource, "size='1'", "size='1 MB'", "value '1 MB'"},

    {"MisspelledXmlLangOfAnAnalysis", Analysis, "xml:lang", "xml:Lang", LangError},
    {"UnknownXmlSpaceOfAnAnalysis", Analysis, "'preserve'", "'keep'", "value 'keep'"},
    {"MisspelledXmlLangOfADataSource", DataSource, "xml:lang", "xml:Lang", LangError},
    {"MisspelledXmlLangOfADataConnection", DataConnection, "xml:lang", "xml:Lang", LangError},
    {"MisspelledXmlLangOfAMapSource", MapSource, "xml:lang", "xml:Lang", LangError},
    {"MisspelledXmlLangOfCaptions", Captions, "xml:lang", "xml:Lang", LangError},
    {"MisspelledXmlLangOfFields", Fields, "xml:lang", "xml:Lang", LangError},
    {"AttributeOfAnUnknownNamespace", Analysis, "xml:lang", "xmlns:a='urn:a' a:lang", "lang' is not declared"},
};

INSTANTIATE_TEST_SUITE_P(
    SchemaRulesTest, RuleRows, testing::ValuesIn(Rules), [](const auto& row) { return row.param.name; });

// Versions that documents may declare. Most of them have no schema.
const char* const DeclaredVersions[] = {
    "18.1",
    "18.1.0",
    "18.1.0.0",
    "18.1-beta",
    "18.1.0-rc.2",
    "018.01",
    "18.1.3",
    "18.1.0.1",
    "18.10",
    "18",
    "18.2",
    "10.5",
    "10.5-beta",
    "10.5.0",
    "10.5.2",
    "10.5.2.7-beta",
    "10.05",
    "10.50",
    "10.1",
    "10",
    "10.2.18.1",
    "10.3.1",
    "10.4-18.1",
};

TEST(SchemaRulesTest, SchemaAcceptsExactlyTheVersionsThatSelectIt)
{
    for (const Document* document : {&Analysis, &DataSource, &DataConnection, &MapSource, &Captions, &Fields}) {
        for (const char* schema : Versions) {
            const VString name = XSDResources::GetVersionedXsdResourceName(document->type, Version(schema));
            if (name.IsEmpty())
                continue;
            for (const char* version : DeclaredVersions) {
                const VString chosen = XSDResources::GetVersionedXsdResourceName(document->type, Version(version));
                const std::string text = Replaced(document->text, "VERSION", version);
                const bool isValid = Validate(document->type, schema, text).empty();
                EXPECT_EQ(isValid, chosen == name) << version << " against " << name;
            }
        }
    }
}

TEST(SchemaRulesTest, MinimumVersionOfAConnectorMustBeAVersion)
{
    const std::string manifest =
        "<connector-plugin class='c' name='n' plugin-version='1.0.0' min-product-version='VERSION'>"
        "<vendor-information><company/><support-link/></vendor-information></connector-plugin>";
    DOMParser parser;
    parser.AddXSDResourceId(QtVanResourceId::FileFormatConnectorPluginManifestXsd);
    const auto isValid = [&](const char* version) {
        const VString text = VString::fromStdString(Replaced(manifest, "VERSION", version));
        return !parser.ParseXmlString(text, "manifest")->HasErrors();
    };
    for (const char* version : {"18.1", "18", "18.1.0-beta"})
        EXPECT_TRUE(isValid(version)) << version;
    for (const char* version : {"", "newest", "18.x"})
        EXPECT_FALSE(isValid(version)) << version;
}

TEST(SchemaRulesTest, SchemaMayReferToTheSpecialXmlAttributes)
{
    const VString schema(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
        "<xs:import namespace='http://www.w3.org/XML/1998/namespace'/>"
        "<xs:element name='a'><xs:complexType><xs:attributeGroup ref='xml:specialAttrs'/></xs:complexType></xs:element>"
        "</xs:schema>");
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(schema, "schema", false));
    const VString text("<a xml:lang='de' xml:space='default' xml:base='b' xml:id='i'/>");
    EXPECT_THAT(parser.ParseXmlString(text, "document")->GetErrors(), testing::IsEmpty());
    EXPECT_TRUE(parser.ParseXmlString("<a xml:Lang='de'/>", "document")->HasErrors());
}
