// Parses while allocations fail. A parse must throw std::bad_alloc, record an error, or succeed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/validators/datatype/DatatypeValidatorFactory.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include "tests/common/TestSupport.h"
#include "tests/faults/FailedAllocations.h"
#include "vancoreplatform/Export.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/KeyValues.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/SchemaCache.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XercesPlatform.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

// The leak search of the address sanitizer calls this. It must ignore the blocks that `Row::mostLost` allows.
extern "C" VANCORE_EXPORT const char* __lsan_default_suppressions()
{
    return "leak:ICULCPTranscoder::transcode\n";
}

namespace {

struct Row {
    const char* name;
    std::string text;
    // Some exceptions of Xerces have up to three parameters. If Xerces has no memory for one of them, it loses the
    // others. They do not belong to the reader, because an exception may outlive it.
    std::size_t mostLost = 0;
};

std::string ListOfNames(int count)
{
    std::string names = "n0";
    for (int i = 1; i < count; ++i)
        names += ",n" + std::to_string(i);
    return names;
}

const Row Rows[] = {
    {"Tree", "<a b='c' d=''>text<e/>more<f g='h'>&lt;</f></a>"},
    {"WrongEndTag", "<a><b></a>"},
    {"DocumentType", "<!DOCTYPE a [<!ENTITY e '<b/>'><!ELEMENT a (b, c?)><!ATTLIST a b CDATA 'd'>]><a>&e;</a>"},
    // Xerces allocates memory to destroy a content model. SECURITY.md names this length.
    {"LongContentModel", "<!DOCTYPE a [<!ELEMENT a (" + ListOfNames(800) + ")>]><a/>"},
    {"NestedContentModel", "<!DOCTYPE a [<!ELEMENT a ((#PCDATA))>]><a/>"},
    {"ParameterEntity", "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"f\">'>%p;]><a>&e;</a>"},
    {"ExternalEntity", "<!DOCTYPE a [<!ENTITY e SYSTEM 'file'>]><a>&e;</a>"},
    {"Latin1", "<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xE4'>\xF6</a>"},
    {"UnknownEncoding", "<?xml version='1.0' encoding='none'?><a/>", 3},
    {"BadUtf8", "<a>\xC3</a>", 3},
    {"Version11", "<?xml version='1.1'?><a>\xC2\x85</a>"},
    {"ColonAttribute", "<a :b='c' x:y='z'/>"},
    {"Empty", "", 3},
};

const char Schema[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
    <xs:element name="a"><xs:complexType><xs:sequence><xs:element name="b" type="xs:int" maxOccurs="9"/></xs:sequence>
    <xs:attribute name="c"><xs:simpleType><xs:restriction base="xs:string"><xs:pattern value="[a-z]+"/></xs:restriction>
    </xs:simpleType></xs:attribute></xs:complexType></xs:element></xs:schema>)";

// The outcome of a parse.
struct Outcome {
    std::unique_ptr<DOM> document;
    bool isOutOfMemory = false;
};

bool HasOutOfMemory(const std::vector<ParseDiagnostic>& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(), [](const ParseDiagnostic& diagnostic) {
        return diagnostic.code == DiagnosticCode::OutOfMemory;
    });
}

Outcome Parse(DOMParser& parser, const std::vector<unsigned char>& bytes)
{
    Outcome outcome{parser.ParseXmlBytes(bytes)};
    outcome.isOutOfMemory = HasOutOfMemory(parser.GetDiagnostics()) && outcome.document->HasErrors();
    return outcome;
}

// Describes the tree and the errors of a document.
std::string Describe(const Outcome& outcome)
{
    const DOM& document = *outcome.document;
    std::string text = document.GetDocumentRoot()
        ? XMLDomFormatter::RenderAsXMLString(*document.GetDocumentRoot(), nullptr, false).toStdString()
        : "no element";
    for (const VString& error : document.GetErrors())
        text += error.toStdString() + "\n";
    return text;
}

std::vector<unsigned char> BytesOf(const std::string& text)
{
    return std::vector<unsigned char>(text.begin(), text.end());
}

class ParsingFaultTest : public FaultTest {};

TEST_P(ParsingFaultTest, ParseFailsCleanly)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned char> bytes = BytesOf(row.text);
        const auto run = [&bytes] {
            DOMParser parser;
            return Parse(parser, bytes);
        };
        const std::string expected = Describe(run());
        const auto check = [&](const Outcome& outcome, bool hasFailed) {
            if (!hasFailed || !outcome.isOutOfMemory) {
                EXPECT_EQ(Describe(outcome), expected);
            }
        };
        FailEachAllocation(run, check, row.mostLost);
    }
}

std::unique_ptr<DOMParser> MakeValidatingParser()
{
    auto parser = std::make_unique<DOMParser>();
    parser->AddXSDInputSource(std::make_unique<BinaryInputSource>(BytesOf(Schema), VString("schema"), false));
    return parser;
}

TEST_P(ParsingFaultTest, ValidationFailsCleanly)
{
    for (const char* const text : {"<a c='x'><b>1</b></a>", "<a c='1'><b>x</b><d/></a>"}) {
        SCOPED_TRACE(text);
        const std::vector<unsigned char> bytes = BytesOf(text);
        const std::string expected = Describe(Parse(*MakeValidatingParser(), bytes));
        const auto check = [&](const Outcome& outcome, bool hasFailed) {
            if (!hasFailed || !outcome.isOutOfMemory) {
                EXPECT_EQ(Describe(outcome), expected);
            }
        };
        // Each parse compiles the schema, and the cache keeps no memory, even if the parse throws.
        const auto parse = [&] {
            struct Clear {
                Clear() { SchemaCache::Clear(); }
                ~Clear() { SchemaCache::Clear(); }
            };
            const Clear clear;
            return Parse(*MakeValidatingParser(), bytes);
        };
        FailEachAllocation(parse, check);
    }
}

// A parser that had too little memory must be as good as a new one.
TEST_P(ParsingFaultTest, ParserWorksAfterAFault)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned char> bytes = BytesOf(row.text);
        DOMParser parser;
        const std::string expected = Describe(Parse(parser, bytes));
        for (long number = 0;; number = NextNumber(number)) {
            AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
            try {
                Parse(parser, bytes);
            } catch (const std::bad_alloc&) {  // allowed
            }
            const bool hasFailed = AllocationFaults::End();
            ASSERT_EQ(Describe(Parse(parser, bytes)), expected) << "after " << number << " allocations";
            if (!hasFailed)
                break;
        }
    }
}

// Counts the elements of a document.
class Listener final : public SAXInterface {
public:
    void StartElement(const VString&, const AttributeMap&) override { ++count; }
    void EndElement() override {}
    void Characters(const VString&) override {}

    int count = 0;
};

// The failure may be the last step of the loading, when the schema is compiled already.
TEST_P(ParsingFaultTest, AnotherSchemaIsLoadedAfterAFault)
{
    const std::vector<unsigned char> document = BytesOf("<other>text</other>");
    const std::vector<unsigned char> other =
        BytesOf("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='other' type='xs:string'/>"
                "</xs:schema>");
    // With the address sanitizer, all numbers would take too long.
    for (long number = 0;; number = HasAddressSanitizer ? NextNumber(number) : number + 1) {
        BinaryInputSource source(document, VString("document"), false);
        const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, std::make_shared<Listener>());
        BinaryInputSource schema(BytesOf(Schema), VString("schema"), false);
        AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
        try {
            parser->LoadXSDSource(schema);
        } catch (const std::bad_alloc&) {  // allowed
        }
        const bool hasFailed = AllocationFaults::End();
        parser->ClearErrorsAndWarnings();
        BinaryInputSource otherSchema(other, VString("other"), false);
        parser->LoadXSDSource(otherSchema);
        parser->Parse();
        ASSERT_EQ(parser->GetErrors(), std::vector<VString>()) << "after " << number << " allocations";
        if (!hasFailed)
            break;
    }
}

// A parser takes compiled schemas from the cache and gives them back.
TEST_P(ParsingFaultTest, CachedSchemasStayUsableAfterAFault)
{
    for (const char* const text : {"<a c='x'><b>1</b></a>", "<a c='1'><b>x</b><d/></a>"}) {
        const std::vector<unsigned char> bytes = BytesOf(text);
        const std::string expected = Describe(Parse(*MakeValidatingParser(), bytes));
        for (long number = 0;; number = NextNumber(number)) {
            AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
            try {
                Parse(*MakeValidatingParser(), bytes);
            } catch (const std::bad_alloc&) {  // allowed
            }
            const bool hasFailed = AllocationFaults::End();
            ASSERT_EQ(Describe(Parse(*MakeValidatingParser(), bytes)), expected)
                << "after " << number << " allocations";
            if (!hasFailed)
                break;
        }
    }
    SchemaCache::Clear();
}

// The tool keeps one parser with a schema for many documents.
TEST_P(ParsingFaultTest, ValidatingParserWorksAfterAFault)
{
    StringInputSource nothing(VString(), VString(), false);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(nothing, std::make_shared<Listener>());
    BinaryInputSource schema(BytesOf(Schema), VString("schema"), false);
    parser->LoadXSDSource(schema);
    parser->SetEnableReferenceChecks(true);
    const auto parse = [&parser, &nothing](const std::vector<unsigned char>& bytes) {
        BinaryInputSource source(bytes, VString("document"), false);
        parser->Reload(source, std::make_shared<Listener>());
        parser->Parse();
        std::vector<VString> errors = parser->GetErrors();
        parser->Reload(nothing, nullptr);
        parser->ClearErrorsAndWarnings();
        return errors;
    };
    for (const char* const text : {"<a c='x'><b>1</b></a>", "<a c='1'><b>x</b><d/></a>"}) {
        const std::vector<unsigned char> bytes = BytesOf(text);
        const std::vector<VString> expected = parse(bytes);
        for (long number = 0;; number = NextNumber(number)) {
            AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
            try {
                parse(bytes);
            } catch (const std::bad_alloc&) {  // allowed
            }
            const bool hasFailed = AllocationFaults::End();
            parser->ClearErrorsAndWarnings();
            ASSERT_EQ(parse(bytes), expected) << text << " after " << number << " allocations";
            if (!hasFailed)
                break;
        }
    }
}

// Only the second reading of the document finds this error.
TEST_P(ParsingFaultTest, ReferenceChecksFailCleanly)
{
    const auto run = [] {
        BinaryInputSource source(BytesOf("<!DOCTYPE a SYSTEM 'x'><a>&e;</a>"), VString("document"), false);
        const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, std::make_shared<Listener>());
        parser->SetEnableReferenceChecks(true);
        parser->Parse();
        return std::pair(parser->GetErrors().size(), HasOutOfMemory(parser->GetDiagnostics()));
    };
    ASSERT_EQ(run().first, 1u);
    FailEachAllocation(run, [](const auto& result, bool hasFailed) {
        EXPECT_TRUE(result.first == 1 || (hasFailed && result.second)) << result.first << " errors";
    });
}

// Finds the schema that another one includes.
class Includer final : public SAXInterfaceExtension {
public:
    explicit Includer(const VString& included) : m_included(included) {}

    void StartElement(const VString&, const AttributeMap&) override {}
    void EndElement() override {}
    void Characters(const VString&) override {}
    void ResolveSchemaPath(VString& path, const VString&, const VString&) override { path = m_included; }
    VString PreprocessSchemaText(const VString&, const VString& text, const VString&) override { return text; }

private:
    VString m_included;
};

const char IncludedSchema[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
    <xs:complexType name="B"><xs:attribute name="c" type="xs:decimal"/></xs:complexType></xs:schema>)";

const char IncludingSchema[] = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
    <xs:include schemaLocation="included.xsd"/>
    <xs:element name="a"><xs:complexType><xs:sequence><xs:element name="b" type="B" maxOccurs="9"/></xs:sequence>
    </xs:complexType>
    <xs:unique name="u"><xs:selector xpath="b"/><xs:field xpath="@c"/></xs:unique></xs:element></xs:schema>)";

TEST_P(ParsingFaultTest, ValidationWithAnIncludedSchemaFailsCleanly)
{
    const testsupport::TemporaryFolder folder;
    const VString included = folder.Write("included.xsd", IncludedSchema);
    const auto run = [&included] {
        BinaryInputSource source(BytesOf("<a><b c='1'/><b c='1.0'/></a>"), VString("document"), false);
        const std::unique_ptr<XercesXMLParser> parser =
            XercesXMLParser::Create(source, std::make_shared<Includer>(included));
        BinaryInputSource schema(BytesOf(IncludingSchema), VString("schema"), false);
        parser->LoadXSDSource(schema);
        std::vector<VString> errors = parser->GetErrors();
        bool isOutOfMemory = HasOutOfMemory(parser->GetDiagnostics());
        parser->Parse();
        errors.insert(errors.end(), parser->GetErrors().begin(), parser->GetErrors().end());
        isOutOfMemory = isOutOfMemory || HasOutOfMemory(parser->GetDiagnostics());
        return std::pair(errors, isOutOfMemory);
    };
    const std::vector<VString> expected = run().first;
    ASSERT_EQ(expected.size(), 1u);
    FailEachAllocation(run, [&expected](const auto& result, bool hasFailed) {
        EXPECT_TRUE(result.first == expected || (hasFailed && result.second)) << result.first.size() << " errors";
    });
}

TEST_P(ParsingFaultTest, CanonicalValueOfAKeyFailsCleanly)
{
    const XercesInitializer xerces;
    const xercesc::DatatypeValidator* const decimal =
        xercesc::DatatypeValidatorFactory().getDatatypeValidator(xercesc::SchemaSymbols::fgDT_DECIMAL);
    const std::u16string text = u"12345678901.50";
    const auto run = [&text, decimal] { return KeyValues::Canonicalise(text, decimal); };
    // Xerces treats lack of memory as a value that is not a number.
    FailEachAllocation(run, [&text](const std::u16string& value, bool hasFailed) {
        EXPECT_TRUE(value == u"12345678901.5" || (hasFailed && value == text));
    });
}

TEST_P(ParsingFaultTest, SchemaCanBeLoadedAgainAfterAFault)
{
    const std::vector<unsigned char> bytes = BytesOf("<a c='1'><b>x</b><d/></a>");
    for (long number = 0;; number = NextNumber(number)) {
        BinaryInputSource source(bytes, VString("document"), false);
        const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, std::make_shared<Listener>());
        const auto load = [&parser] {
            BinaryInputSource schema(BytesOf(Schema), VString("schema"), false);
            parser->LoadXSDSource(schema);
        };
        bool hasLoaded = false;
        AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
        try {
            load();
            hasLoaded = true;
        } catch (const std::bad_alloc&) {  // allowed
        }
        const bool hasFailed = AllocationFaults::End();
        parser->ClearErrorsAndWarnings();
        if (!hasLoaded)
            load();
        EXPECT_FALSE(parser->HasErrors()) << "after " << number << " allocations";
        // Two of them are the library's.
        EXPECT_EQ(parser->GetLoadedXSDs().size(), 3u) << "after " << number << " allocations";
        parser->Parse();
        ASSERT_EQ(parser->GetErrors().size(), 4u) << "after " << number << " allocations";
        if (!hasFailed)
            break;
    }
}

TEST_P(ParsingFaultTest, StandaloneParseFailsCleanly)
{
    for (const Row& row : Rows) {
        SCOPED_TRACE(row.name);
        const std::vector<unsigned char> bytes = BytesOf(row.text);
        const StandaloneDOMParser::Result expected = StandaloneDOMParser().ParseXmlBytes(bytes);
        const auto run = [&] { return StandaloneDOMParser().ParseXmlBytes(bytes); };
        const auto check = [&](const StandaloneDOMParser::Result& result, bool hasFailed) {
            if (hasFailed && !result.second.empty() && HasOutOfMemory(result.diagnostics))
                return;
            ASSERT_EQ(result.first != nullptr, expected.first != nullptr);
            EXPECT_TRUE(!result.first || *result.first == *expected.first);
            EXPECT_EQ(result.second, expected.second);
        };
        FailEachAllocation(run, check, row.mostLost);
    }
}

INSTANTIATE_FAULT_TEST(ParsingFaultTest);

}  // namespace
