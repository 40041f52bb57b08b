#include "tests/common/SinkCaptures.h"
#include "tests/parsing/ParsingTestSupport.h"
#include "vancoredata/VResource.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/QtVanResources.h"

namespace {

using testsupport::RecordingHandler;
using testsupport::Repeat;
using Events = std::vector<std::string>;

constexpr char File[] = "vancorexml\\main\\parser\\XercesXMLParser";

// Returns a schema with these declarations. Its tag has `attributes` besides the declaration of xs.
VString SchemaOf(const VString& attributes, const VString& declarations)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " + attributes + ">" + declarations + "</xs:schema>";
}

VString SchemaOf(const VString& declarations)
{
    return SchemaOf("", declarations);
}

// Declares <a> with any number of <n>, each an integer, and an attribute k.
const VString Schema = SchemaOf("<xs:element name='a'><xs:complexType>"
                                "<xs:sequence><xs:element name='n' type='xs:int' minOccurs='0' maxOccurs='unbounded'/>"
                                "</xs:sequence><xs:attribute name='k'/></xs:complexType></xs:element>");

struct XercesSchemaTest : testing::Test {
    std::unique_ptr<XercesXMLParser> Create(const std::string& text)
    {
        source = std::make_unique<Utf8InputSource>(text, "doc.xml", false);
        return XercesXMLParser::Create(*source, handler);
    }

    std::unique_ptr<Utf8InputSource> source;
    std::shared_ptr<RecordingHandler> handler = std::make_shared<RecordingHandler>();
};

TEST_F(XercesSchemaTest, ValidDocumentHasNoErrors)
{
    const auto parser = Create("<a k='1'><n>1</n><n>-2</n></a>");
    parser->LoadXSDString(Schema, "schema.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, (Events{"<a k='1'>", "<n>", "1", "</>", "<n>", "-2", "</>", "</>"}));
}

// The declarations of the schema have no prefixes, so the names must come from the document.
TEST_F(XercesSchemaTest, HandlerGetsTheNamesOfTheDocument)
{
    const auto parser = Create("<x:a xmlns:x='u'>\n<x:b/>t<y:b xmlns:y='u' y:k='1'><y:b/></y:b><b xmlns='u'/></x:a>");
    const VString schema = SchemaOf("targetNamespace='u' xmlns:p='u'",
        "<xs:attribute name='k'/>"
        "<xs:element name='a'><xs:complexType mixed='true'>"
        "<xs:sequence><xs:element ref='p:b' maxOccurs='9'/></xs:sequence>"
        "</xs:complexType></xs:element>"
        "<xs:element name='b'><xs:complexType>"
        "<xs:sequence><xs:element ref='p:b' minOccurs='0'/></xs:sequence>"
        "<xs:attribute ref='p:k'/></xs:complexType></xs:element>");
    parser->LoadXSDString(schema, "schema.xsd");
    const std::string expected = "<x:a xmlns:x='u'>|\n|<x:b>|</>|t|<y:b xmlns:y='u' y:k='1'>|<y:b>|</>|</>|"
                                 "<b xmlns='u'>|</>|</>|";
    for (int round = 0; round < 2; ++round) {
        handler->events.clear();
        parser->Parse();
        EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
        std::string events;
        for (const std::string& event : handler->events)
            events += event + "|";
        EXPECT_EQ(events, expected);
        source->ResetToStart();
    }
}

// A default has only a local name, because the schema knows no prefix. The handler gets only the attribute in the tag.
TEST_F(XercesSchemaTest, DefaultDoesNotRepeatAnAttributeOfTheTag)
{
    const auto parser = Create("<x:a xmlns:x='u' k='1'/>");
    const VString schema = SchemaOf("targetNamespace='u' xmlns:p='u'",
        "<xs:attribute name='k'/>"
        "<xs:element name='a'><xs:complexType>"
        "<xs:attribute name='k'/><xs:attribute ref='p:k' default='d'/>"
        "<xs:attribute name='l' default='e'/></xs:complexType></xs:element>");
    parser->LoadXSDString(schema, "schema.xsd");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, (Events{"<x:a k='1' l='e' xmlns:x='u'>", "</>"}));
}

TEST_F(XercesSchemaTest, DuplicateAttributesAreFatalErrors)
{
    const char* const rows[] = {
        "k='1' k='2'",
        "z='1' z='2'",
        "xmlns:p='u' xmlns:p='u'",
        "xmlns='' xmlns=''",
        "xml:lang='' xml:lang=''",
        "xmlns:p='u' p:z='1' p:z='2'",
    };
    for (const char* const attributes : rows) {
        handler->events.clear();
        const auto parser = Create("<a " + std::string(attributes) + "/>");
        parser->LoadXSDString(Schema, "schema.xsd");
        parser->Parse();
        EXPECT_TRUE(parser->HasFatallyErrored()) << attributes;
        EXPECT_EQ(handler->events, Events{}) << attributes;
    }
}

// The first parse runs without namespaces. Loading a schema enables them.
TEST_F(XercesSchemaTest, PrefixesStayAfterASchemaIsLoaded)
{
    const auto parser = Create("<x:a xmlns:x='u'> <x:b/></x:a>");
    const Events events{"<x:a xmlns:x='u'>", " ", "<x:b>", "</>", "</>"};
    parser->Parse();
    EXPECT_EQ(handler->events, events);
    parser->LoadXSDString(Schema, "schema.xsd");
    for (int round = 0; round < 2; ++round) {
        const auto next = std::make_shared<RecordingHandler>();
        source->ResetToStart();
        parser->Reload(*source, next);
        parser->Parse();
        EXPECT_EQ(next->events, events);
    }
}

TEST_F(XercesSchemaTest, ValidationErrorsDoNotStopTheParse)
{
    const auto parser = Create("<a>\n<n>x</n>\n<m/></a>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    ASSERT_GE(parser->GetErrors().size(), 2u);
    EXPECT_TRUE(parser->GetErrors()[0].startsWith("Error(2,9): "));
    EXPECT_TRUE(parser->GetErrors()[0].endsWith(" (id: doc.xml)"));
    EXPECT_FALSE(parser->HasFatallyErrored());
    EXPECT_EQ(handler->events.back(), "</>");
    EXPECT_EQ(std::count(handler->events.begin(), handler->events.end(), "</>"), 3);
}

TEST_F(XercesSchemaTest, WithoutSchemaNothingIsValidated)
{
    const auto parser = Create("<!DOCTYPE a [<!ELEMENT a EMPTY>]><a><m/></a>");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, FixedSchemasAreLoadedFirst)
{
    const auto parser = Create("<a/>");
    EXPECT_TRUE(parser->GetLoadedXSDs().empty());
    parser->LoadXSDString(Schema, "one.xsd");
    parser->LoadXSDString(SchemaOf("targetNamespace='urn:two'", ""), "two.xsd");
    EXPECT_EQ(parser->GetLoadedXSDs(),
        (std::vector<VString>{"VQRC_FILEFORMAT_XML_XSD", "VQRC_FILEFORMAT_USER_XSD", "one.xsd", "two.xsd"}));
}

TEST_F(XercesSchemaTest, LoadXSDResourceUsesTheNameAsId)
{
    ResourceRegistrationCache::GetInstance().RegisterText("TEST_XSD", Schema);
    const auto parser = Create("<a><m/></a>");
    parser->LoadXSDResource("TEST_XSD");
    ResourceRegistrationCache::GetInstance().UnregisterText("TEST_XSD");
    EXPECT_EQ(parser->GetLoadedXSDs().back(), VString("TEST_XSD"));
    parser->Parse();
    EXPECT_TRUE(parser->HasErrors());
}

TEST_F(XercesSchemaTest, SchemaErrorsAreListedUntilTheNextParse)
{
    const auto parser = Create("<a/>");
    parser->LoadXSDString(SchemaOf("<xs:element name='a' type='missing'/>").replace("</xs:schema>", ""), "bad.xsd");
    ASSERT_TRUE(parser->HasErrors());
    EXPECT_TRUE(parser->GetErrors()[0].contains("(id: bad.xsd)"));
    EXPECT_EQ(parser->GetLoadedXSDs().back(), VString("bad.xsd"));
    const std::vector<VString> whileLoading = parser->GetErrors();
    parser->Parse();
    EXPECT_NE(parser->GetErrors(), whileLoading);
}

TEST_F(XercesSchemaTest, FatalSchemaErrorIsListedLast)
{
    const auto parser = Create("<a/>");
    parser->LoadXSDString("<xs:schema", "bad.xsd");
    ASSERT_TRUE(parser->HasErrors());
    EXPECT_TRUE(parser->GetErrors().back().startsWith("Fatal Error"));
    EXPECT_TRUE(parser->HasFatallyErrored());
}

TEST_F(XercesSchemaTest, SchemaStringsIgnoreTheirDeclaredEncoding)
{
    const auto parser = Create("<a><n>1</n></a>");
    parser->LoadXSDString("<?xml version='1.0' encoding='UTF-16'?>" + Schema, "schema.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, SchemasAreNotSanitized)
{
    const auto parser = Create("<a/>");
    parser->LoadXSDString(SchemaOf(":b='1'", ""), "schema.xsd");
    EXPECT_TRUE(parser->HasErrors());
}

TEST_F(XercesSchemaTest, DocumentsAreSanitizedWithSchemasToo)
{
    const auto parser = Create("<a :b='1'/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    EXPECT_EQ(handler->events, (Events{"<a :b='1'>", "</>"}));
}

TEST_F(XercesSchemaTest, ReloadKeepsTheSchemas)
{
    const auto parser = Create("<a/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
    Utf8InputSource other("<a><m/></a>", "other.xml", false);
    auto second = std::make_shared<RecordingHandler>();
    parser->Reload(other, second);
    parser->Parse();
    EXPECT_TRUE(parser->HasErrors());
    EXPECT_EQ(parser->GetLoadedXSDs().size(), 3u);
    EXPECT_EQ(second->events, (Events{"<a>", "<m>", "</>", "</>"}));
}

TEST_F(XercesSchemaTest, SchemasStayLoadedAfterErrorsAndOtherVersions)
{
    const auto parser = Create("<a/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    for (const char* text :
        {"<a><n>1</n>", "<?xml version='1.1'?><a><n>1</n></a>", "<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a/>"}) {
        SCOPED_TRACE(text);
        Utf8InputSource before(text, "before.xml", false);
        parser->Reload(before, std::make_shared<RecordingHandler>());
        parser->Parse();
        Utf8InputSource valid("<a><n>1</n></a>", "valid.xml", false);
        parser->Reload(valid, std::make_shared<RecordingHandler>());
        parser->Parse();
        EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
        Utf8InputSource invalid("<a><n>x</n></a>", "invalid.xml", false);
        parser->Reload(invalid, std::make_shared<RecordingHandler>());
        parser->Parse();
        ASSERT_EQ(parser->GetErrors().size(), 1u);
        EXPECT_TRUE(parser->GetErrors()[0].startsWith("Error(1,"));
    }
}

TEST_F(XercesSchemaTest, EmptyIdAsserts)
{
    const auto parser = Create("<a/>");
    const auto load = [&] { parser->LoadXSDString(Schema, VString()); };
    testsupport::ExpectLogicException(load, File, 203, "!xsdSource.Id().IsEmpty()", 0xC83A570E);
}

struct PlainSource : InputSource {
    PlainSource() : InputSource("plain") {}
    bool GetNextLine(std::string&) override { return false; }
    bool GetBytes(std::string&, unsigned int) override { return false; }
    void ResetToStart() override {}
    unsigned long long Size() const override { return 0; }
};

TEST_F(XercesSchemaTest, SchemaSourceWithoutXercesViewAsserts)
{
    const auto parser = Create("<a/>");
    PlainSource plain;
    const auto load = [&] { parser->LoadXSDSource(plain); };
    testsupport::ExpectLogicException(load, File, 206, "xercesableSource != nullptr", 0xAB95E4EA);
}

const VString Importing = SchemaOf("xmlns:t='urn:t'",
    "<xs:import namespace='urn:t' schemaLocation='types.xsd'/>"
    "<xs:element name='a' type='t:number'/>");
const VString Imported =
    SchemaOf("targetNamespace='urn:t'", "<xs:simpleType name='number'><xs:restriction base='@TYPE@'/></xs:simpleType>");

TEST_F(XercesSchemaTest, ExtensionResolvesAndRewritesImports)
{
    const testsupport::TemporaryFolder folder;
    handler->schemaPath = folder.Write("found.xsd", Imported.toStdString());
    const auto parser = Create("<a>x</a>");
    parser->LoadXSDString(Importing, "main.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->resolved, Events{"main.xsd|types.xsd"});
    EXPECT_EQ(handler->preprocessed, Events{"types.xsd|" + handler->schemaPath.toStdString()});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors().size(), 1u);
}

TEST_F(XercesSchemaTest, ExtensionResolvesIncludes)
{
    const testsupport::TemporaryFolder folder;
    const VString included = SchemaOf("<xs:simpleType name='number'><xs:restriction base='xs:int'/></xs:simpleType>");
    handler->schemaPath = folder.Write("found.xsd", included.toStdString());
    const auto parser = Create("<a>1</a>");
    parser->LoadXSDString(
        SchemaOf("<xs:include schemaLocation='types.xsd'/><xs:element name='a' type='number'/>"), "main.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, ImportWithoutLocationIsResolvedWithAnEmptySystemId)
{
    const auto parser = Create("<a/>");
    parser->LoadXSDString(SchemaOf("<xs:import namespace='urn:t'/><xs:element name='a'/>"), "main.xsd");
    EXPECT_EQ(handler->resolved, Events{"main.xsd|"});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, EmptyPathSkipsTheImport)
{
    const testsupport::TemporaryFolder folder;
    const auto parser = Create("<a/>");
    parser->LoadXSDString(Importing, "main.xsd");
    EXPECT_EQ(handler->resolved.size(), 1u);
    EXPECT_TRUE(handler->preprocessed.empty());
    EXPECT_TRUE(parser->HasErrors());  // the imported type is missing
}

TEST_F(XercesSchemaTest, ImportFailsWithoutTheExtension)
{
    struct Silent : SAXInterface {
        void StartElement(const VString&, const AttributeMap&) override {}
        void EndElement() override {}
        void Characters(const VString&) override {}
    };
    Utf8InputSource input("<a/>", "doc.xml", false);
    const auto parser = XercesXMLParser::Create(input, std::make_shared<Silent>());
    parser->LoadXSDString(Importing, "main.xsd");
    EXPECT_TRUE(parser->HasErrors());
}

TEST_F(XercesSchemaTest, ReloadReplacesTheResolver)
{
    const testsupport::TemporaryFolder folder;
    const auto parser = Create("<a>1</a>");
    auto second = std::make_shared<RecordingHandler>();
    second->schemaPath = folder.Write("found.xsd", Imported.toStdString());
    parser->Reload(*source, second);
    handler.reset();
    parser->LoadXSDString(Importing, "main.xsd");
    EXPECT_EQ(second->resolved.size(), 1u);
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, MissingImportedFileThrows)
{
    handler->schemaPath = "no such file.xsd";
    const auto parser = Create("<a/>");
    EXPECT_THROW(parser->LoadXSDString(Importing, "main.xsd"), VIO::Exception);
}

TEST_F(XercesSchemaTest, SchemaLocationOfTheDocumentIsIgnored)
{
    const testsupport::TemporaryFolder folder;
    handler->schemaPath = folder.Write("found.xsd", Imported.toStdString());
    const auto parser =
        Create("<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:schemaLocation='urn:t types.xsd'/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    EXPECT_TRUE(handler->resolved.empty());
}

TEST_F(XercesSchemaTest, ExternalDtdSubsetIsAnErrorWhenValidating)
{
    const auto parser = Create("<!DOCTYPE a SYSTEM 'a.dtd'><a/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    ASSERT_TRUE(parser->HasErrors());
    EXPECT_TRUE(parser->GetErrors()[0].contains("a.dtd"));
    EXPECT_TRUE(handler->resolved.empty());
}

TEST_F(XercesSchemaTest, ExternalEntitiesOfASchemaAreRefused)
{
    const testsupport::TemporaryFolder folder;
    const VString file =
        folder.Write("outside.txt", "<xs:element xmlns:xs='http://www.w3.org/2001/XMLSchema' name='b'/>");
    const auto parser = Create("<b/>");
    parser->LoadXSDString(
        "<!DOCTYPE xs:schema [<!ENTITY e SYSTEM '" + file + "'>]>" + SchemaOf("&e;<xs:element name='a'/>"), "main.xsd");
    ASSERT_EQ(parser->GetErrors().size(), 1u);
    EXPECT_TRUE(parser->GetErrors()[0].startsWith("Fatal Error(1,"));
    EXPECT_TRUE(parser->GetErrors()[0].contains("not allowed. '" + file + "' (id: main.xsd)"));
    parser->Parse();
    EXPECT_TRUE(parser->HasErrors());  // the declaration in the file was not loaded
}

TEST_F(XercesSchemaTest, ExternalDtdSubsetOfASchemaIsRefused)
{
    const testsupport::TemporaryFolder folder;
    const VString file = folder.Write("outside.dtd", "<!ENTITY e 'text'>");
    const auto parser = Create("<a/>");
    parser->LoadXSDString("<!DOCTYPE xs:schema SYSTEM '" + file + "'>" + Schema, "main.xsd");
    ASSERT_EQ(parser->GetErrors().size(), 1u);
    EXPECT_TRUE(parser->GetErrors()[0].contains("outside.dtd' (id: main.xsd)"));
    EXPECT_TRUE(parser->HasFatallyErrored());
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, EntityBombAbortsTheLoadingOfASchema)
{
    const VString entities = "<!ENTITY a ''>"
                             "<!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
                             "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>"
                             "<!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'>"
                             "<!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'>"
                             "<!ENTITY f '&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;'>";
    const auto parser = Create("<a/>");
    parser->LoadXSDString("<!DOCTYPE xs:schema [" + entities + "]>" + SchemaOf("&f;"), "bomb.xsd");
    EXPECT_TRUE(parser->HasFatallyErrored());
    const VString expected = "Fatal Error: parser has encountered more than '50000' entity expansions in the "
                             "document; this is the limit imposed by the application (id: bomb.xsd)";
    EXPECT_EQ(parser->GetErrors().back(), expected);
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

const std::string SchemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";

TEST_F(XercesSchemaTest, SchemasWithExcessiveExpansionAreRefused)
{
    std::string levels;
    for (int i = 1; i < 5; ++i)
        levels += "<!ENTITY e" + std::to_string(i) + " '" + Repeat("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    std::string defaults;
    for (int i = 0; i < 3000; ++i)
        defaults += " b" + std::to_string(i) + " CDATA ''";
    const std::pair<std::string, const char*> rows[] = {
        {"<!DOCTYPE xs:schema [<!ENTITY e0 '" + std::string(50000, 'x') + "'>" + levels + "]>" + SchemaStart +
                " id='&e4;'/>",
            "characters of entities"},
        {"<!DOCTYPE xs:schema [<!ENTITY % p '<!--" + std::string(1000000, 'x') + "-->'>" + Repeat("%p;", 120) + "]>" +
                SchemaStart + "/>",
            "characters of entities"},
        {"<!DOCTYPE xs:schema [<!ENTITY e '" + std::string(1000000, 'x') + "'><!ATTLIST xs:schema id CDATA '" +
                Repeat("&e;", 120) + "'>]>" + SchemaStart + "/>",
            "characters of entities"},
        {"<!DOCTYPE xs:schema [<!ATTLIST xs:annotation" + defaults + ">]>" + SchemaStart + ">" +
                Repeat("<xs:annotation/>", 3000) + "</xs:schema>",
            "'3000000' default attributes"},
    };
    for (const auto& [text, message] : rows) {
        const auto parser = Create("<a/>");
        parser->LoadXSDString(VString::fromStdString(text), "bomb.xsd");
        ASSERT_FALSE(parser->GetErrors().empty()) << message;
        EXPECT_TRUE(parser->GetErrors().back().contains(message)) << parser->GetErrors().back();
        EXPECT_TRUE(parser->GetErrors().back().endsWith("(id: bomb.xsd)"));
        EXPECT_TRUE(parser->HasFatallyErrored());
    }
}

TEST_F(XercesSchemaTest, ValidatedDocumentWithExcessiveExpansionIsRefused)
{
    const std::string entity = "<!DOCTYPE a [<!ENTITY e '" + std::string(1000000, 'x') + "'>]>";
    const auto parser = Create(entity + "<a k='" + Repeat("&e;", 120) + "'/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    ASSERT_EQ(parser->GetErrors().size(), 1u);
    EXPECT_TRUE(parser->GetErrors()[0].contains("characters of entities"));
}

TEST_F(XercesSchemaTest, ImportedSchemaWithExcessiveExpansionIsRefused)
{
    const testsupport::TemporaryFolder folder;
    handler->schemaPath = folder.Write("bomb.xsd",
        "<!DOCTYPE xs:schema [<!ENTITY e '" + std::string(1000000, 'x') + "'>]>" + SchemaStart + " id='" +
            Repeat("&e;", 120) + "'/>");
    const auto parser = Create("<a><n>x</n></a>");
    parser->LoadXSDString(Importing, "main.xsd");
    ASSERT_EQ(parser->GetErrors().size(), 1u);
    EXPECT_TRUE(parser->GetErrors()[0].contains("characters of entities"));
    EXPECT_TRUE(parser->GetErrors()[0].endsWith("(id: " + handler->schemaPath + ")"));
}

TEST_F(XercesSchemaTest, ASchemaMayUseEntitiesAndDefaults)
{
    const auto parser = Create("<a k='1'><n>1</n></a>");
    const VString unused = VString::fromStdString("<!ENTITY unused '" + std::string(1000000, 'x') + "'>");
    const VString used = "<!ENTITY id 'i'>"
                         "<!ATTLIST xs:element id CDATA #IMPLIED version CDATA #IMPLIED>"
                         "<!ATTLIST xs:schema id CDATA '&id;'>";
    parser->LoadXSDString("<!DOCTYPE xs:schema [" + unused + used + "]>" + Schema, "schema.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, SchemaCanBeLoadedAfterAFailedImport)
{
    handler->schemaPath = "no such file.xsd";
    const auto parser = Create("<a><n>x</n></a>");
    EXPECT_THROW(parser->LoadXSDString(Importing, "main.xsd"), VIO::Exception);
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    ASSERT_EQ(parser->GetErrors().size(), 1u);
    EXPECT_TRUE(parser->GetErrors()[0].startsWith("Error(1,"));
}

TEST_F(XercesSchemaTest, NamespaceDeclarationsAreAttributesToo)
{
    const auto parser = Create("<a xmlns:x='u' k='1'/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, (Events{"<a k='1' xmlns:x='u'>", "</>"}));
}

TEST_F(XercesSchemaTest, UndeclaredPrefixesAreErrors)
{
    const auto parser = Create("<a x:k='1'/>");
    parser->LoadXSDString(Schema, "schema.xsd");
    parser->Parse();
    ASSERT_TRUE(parser->HasErrors());
    EXPECT_TRUE(parser->GetErrors()[0].contains("prefix 'x'")) << parser->GetErrors()[0];
}

TEST_F(XercesSchemaTest, IdentityConstraintsAreChecked)
{
    const auto parser = Create("<a><n>1</n><n>1</n></a>");
    const VString unique =
        "<xs:unique name='u'><xs:selector xpath='n'/><xs:field xpath='.'/></xs:unique></xs:element></xs:schema>";
    parser->LoadXSDString(Schema.replace("</xs:element></xs:schema>", unique), "schema.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    parser->Parse();
    EXPECT_EQ(parser->GetErrors().size(), 1u);
}

TEST_F(XercesSchemaTest, AmbiguousContentOfASchemaIsAnError)
{
    const auto parser = Create("<a/>");
    const VString schema = SchemaOf("<xs:element name='a'><xs:complexType>"
                                    "<xs:sequence><xs:element name='n' minOccurs='0'/><xs:element name='n'/>"
                                    "</xs:sequence></xs:complexType></xs:element>");
    parser->LoadXSDString(schema, "schema.xsd");
    EXPECT_EQ(parser->GetErrors().size(), 1u);
}

TEST_F(XercesSchemaTest, NamespaceMayBeImportedFromSeveralFiles)
{
    struct Finding : RecordingHandler {
        void ResolveSchemaPath(VString& pathOut, const VString&, const VString& systemId) override
        {
            pathOut = folder.Path(systemId);
        }
        testsupport::TemporaryFolder folder;
    };
    const auto finding = std::make_shared<Finding>();
    for (const char* name : {"one", "two"}) {
        const VString imported = Imported.replace("@TYPE@", "xs:int").replace("number", name);
        finding->folder.Write(VString(name) + ".xsd", imported.toStdString());
    }
    Utf8InputSource input("<a/>", "doc.xml", false);
    const auto parser = XercesXMLParser::Create(input, finding);
    const VString importing = SchemaOf("xmlns:t='urn:t'",
        "<xs:import namespace='urn:t' schemaLocation='one.xsd'/>"
        "<xs:import namespace='urn:t' schemaLocation='two.xsd'/>"
        "<xs:element name='a' type='t:one'/><xs:element name='b' type='t:two'/>");
    parser->LoadXSDString(importing, "main.xsd");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, DocumentsMayHaveAttributesOfTheXmlNamespace)
{
    const VString schema = SchemaOf("<xs:element name='a'><xs:complexType>"
                                    "<xs:anyAttribute namespace='##other' processContents='strict'/>"
                                    "</xs:complexType></xs:element>");
    const auto parser = Create("<a xml:lang='de' xml:space='preserve'/>");
    parser->LoadXSDString(schema, "schema.xsd");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST_F(XercesSchemaTest, RecordsMetricsScopesForItsSteps)
{
    const auto parser = Create("<a/>");
    const testsupport::MetricsCapture metrics;
    parser->LoadXSDString(Schema, "schema.xsd");
    const std::vector<std::string> names = metrics.Names();
    EXPECT_EQ(std::count(names.begin(), names.end(), "XercesXMLParser_LoadXSDSource"), 3);
    EXPECT_EQ(std::count(names.begin(), names.end(), "XercesXMLParser_PrepareParserState"), 1);
}

}  // namespace
