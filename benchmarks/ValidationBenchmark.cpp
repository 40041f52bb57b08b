// Tasks: validate one large and a thousand small documents against the schema of an analysis. The destruction of the
// trees is not timed. The library does this in three ways: "vancorexml" keeps a driver with its schema, "dom-parser"
// keeps a DOMParser, and "new-dom-parser" makes a DOMParser for each document.
#include <benchmark/benchmark.h>

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "benchmarks/Tasks.h"
#include "benchmarks/peers/XercesSession.h"
#include "vancoredata/VResource.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMBuilder.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesTreeParser.h"

namespace {

constexpr const char* const SchemaName = "VQRC_FILEFORMAT_KXA_XSD";

// Generates an analysis with `views` views. No attribute begins with a colon, because bare Xerces-C refuses these.
std::string MakeAnalysis(int views)
{
    std::string text = "<?xml version='1.0' encoding='utf-8' ?>\n"
                       "<analysis version='18.1'>\n"
                       "  <data-sources>\n"
                       "    <data-source name='orders'>\n"
                       "      <connection class='text-file' filename='orders.csv' />\n";
    for (int i = 0; i < 20; ++i) {
        text += "      <column name='Column " + std::to_string(i) + "' caption='Spalte " + std::to_string(i) +
            "' data-type='real' role='measure' />\n";
    }
    text += "    </data-source>\n  </data-sources>\n  <views>\n";
    for (int i = 0; i < views; ++i) {
        text += "    <view name='View " + std::to_string(i) +
            "' data-source='orders' mark='bar'>\n"
            "      <title>Umsatz nach Größe</title>\n"
            "      <rows>[orders].[Column 1]</rows>\n"
            "      <columns>[orders].[Column 2]</columns>\n"
            "      <filter class='quantitative' field='[orders].[Column 3]' min='0' max='100.5' />\n"
            "      <encoding channel='color' field='[orders].[Column 4]' />\n"
            "    </view>\n";
    }
    return text + "  </views>\n</analysis>\n";
}

class ErrorCounter : public xercesc::DefaultHandler {
public:
    void error(const xercesc::SAXParseException&) override { ++errors; }
    void fatalError(const xercesc::SAXParseException&) override { ++errors; }

    int errors = 0;
};

// The result of a validation.
struct Validated {
    virtual ~Validated() = default;
    bool isValid = false;
};

class Validator {
public:
    virtual ~Validator() = default;
    virtual std::unique_ptr<Validated> Validate(const std::string& text) = 0;
};

// Validates with a bare Xerces-C reader that has loaded the schema of an analysis and the schemas that it imports.
class BareValidator : public Validator {
public:
    BareValidator() : m_reader(xercessession::MakeReader())
    {
        m_reader->setErrorHandler(&m_handler);
        m_reader->setContentHandler(&m_handler);
        xercessession::SetSchemaFeatures(*m_reader);
        for (const char* name : {"VQRC_FILEFORMAT_XML_XSD", "VQRC_FILEFORMAT_USER_XSD", SchemaName}) {
            const std::string schema = UTF8StringVResource(VString(name)).GetString().toStdString();
            const xercesc::MemBufInputSource source(
                reinterpret_cast<const XMLByte*>(schema.data()), schema.size(), name, false);
            m_reader->loadGrammar(source, xercesc::Grammar::SchemaGrammarType, true);
        }
    }
    std::unique_ptr<Validated> Validate(const std::string& text) override
    {
        m_handler.errors = 0;
        xercessession::ParseProgressively(*m_reader, text);
        auto result = std::make_unique<Validated>();
        result->isValid = m_handler.errors == 0;
        return result;
    }

private:
    ErrorCounter m_handler;
    std::unique_ptr<xercesc::SAX2XMLReader> m_reader;
};

// Validates with one driver of the library, which loads the schema once and is reloaded for every document.
class DriverValidator : public Validator {
public:
    struct Tree : Validated {
        DOM document;
    };

    std::unique_ptr<Validated> Validate(const std::string& text) override { return ValidateTree(text); }

    std::unique_ptr<Tree> ValidateTree(const std::string& text)
    {
        auto result = std::make_unique<Tree>();
        BorrowedInputSource source(text, "memory", false);
        const auto builder = std::make_shared<DOMBuilder>(result->document, false);
        if (m_driver) {
            m_driver->Reload(source, builder);
        } else {
            m_driver = XercesTreeParser::Create(source, builder);
            m_driver->LoadXSDResource(VString(SchemaName));
        }
        m_driver->Parse();
        result->isValid = !m_driver->HasErrors();
        return result;
    }

private:
    std::unique_ptr<XercesTreeParser> m_driver;
};

// Validates with one DOMParser, which loads the schema into a new driver for every document.
class ParserValidator : public Validator {
public:
    struct Tree : Validated {
        std::unique_ptr<DOM> document;
    };

    ParserValidator() { m_parser.AddXSDResourceId(QtVanResourceId::FileFormatKxaXsd); }
    std::unique_ptr<Validated> Validate(const std::string& text) override
    {
        auto result = std::make_unique<Tree>();
        result->document = m_parser.ParseXmlString(text, "memory");
        result->isValid = !result->document->HasErrors();
        return result;
    }

private:
    DOMParser m_parser;
};

// Validates with a new DOMParser for every document.
class NewParserValidator : public Validator {
public:
    std::unique_ptr<Validated> Validate(const std::string& text) override { return ParserValidator().Validate(text); }
};

// Validates with libxml2. Its schema needs an explicit location for the imported schema.
class LibxmlValidator : public Validator {
public:
    struct Tree : Validated {
        ~Tree() override { xmlFreeDoc(document); }
        xmlDocPtr document = nullptr;
    };

    LibxmlValidator()
    {
        std::string schema = UTF8StringVResource(VString(SchemaName)).GetString().toStdString();
        const std::string import = "<xs:import namespace=\"http://www.w3.org/XML/1998/namespace\"";
        Require(schema.find(import) != std::string::npos, "the import of the schema");
        schema.insert(schema.find(import) + import.size(), " schemaLocation=\"" VANCOREXML_RESOURCES "/xml.xsd\"");
        xmlSchemaParserCtxtPtr parser = xmlSchemaNewMemParserCtxt(schema.data(), static_cast<int>(schema.size()));
        m_schema = xmlSchemaParse(parser);
        xmlSchemaFreeParserCtxt(parser);
        Require(m_schema, "libxml2 takes the schema");
        m_context = xmlSchemaNewValidCtxt(m_schema);
        xmlSchemaSetValidErrors(m_context, Ignore, Ignore, nullptr);
    }
    ~LibxmlValidator() override
    {
        xmlSchemaFreeValidCtxt(m_context);
        xmlSchemaFree(m_schema);
    }
    std::unique_ptr<Validated> Validate(const std::string& text) override
    {
        auto result = std::make_unique<Tree>();
        result->document = xmlReadMemory(text.data(),
            static_cast<int>(text.size()),
            "memory",
            nullptr,
            XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOBLANKS);
        result->isValid = result->document && xmlSchemaValidateDoc(m_context, result->document) == 0;
        return result;
    }

private:
    static void Ignore(void*, const char*, ...) {}

    xmlSchemaPtr m_schema;
    xmlSchemaValidCtxtPtr m_context;
};

// Parses and validates `text`. The tree contains the default attributes of the schema.
std::unique_ptr<DOM> ParseAgainstSchema(const std::string& text)
{
    DOMParser parser;
    parser.AddXSDResourceId(QtVanResourceId::FileFormatKxaXsd);
    return parser.ParseXmlString(text, "memory");
}

std::unique_ptr<DriverValidator::Tree> ParseWithDriver(const std::string& text)
{
    return DriverValidator().ValidateTree(text);
}

void TimeValidation(benchmark::State& state, Validator& validator, const std::string& text, std::size_t count)
{
    std::vector<std::unique_ptr<Validated>> results(count);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        for (std::unique_ptr<Validated>& result : results)
            result = validator.Validate(text);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        for (std::unique_ptr<Validated>& result : results)
            result.reset();
    }
    state.SetBytesProcessed(
        static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.size() * count));
}

}  // namespace

void RegisterValidationTasks(const std::string& only)
{
    const auto large = std::make_shared<std::string>(MakeAnalysis(10000));
    const auto small = std::make_shared<std::string>(MakeAnalysis(3));
    std::string invalid = *small;
    invalid.replace(invalid.find("measure"), 7, "nothing");
    std::vector<std::pair<std::string, std::shared_ptr<Validator>>> validators;
    if (only.empty() || only == "libxml2")
        validators.emplace_back("libxml2", std::make_shared<LibxmlValidator>());
    if (only.empty() || only == "xerces-sax")
        validators.emplace_back("xerces-sax", std::make_shared<BareValidator>());
    if (only.empty() || only == "vancorexml")
        validators.emplace_back("vancorexml", std::make_shared<DriverValidator>());
    if (only.empty() || only == "dom-parser")
        validators.emplace_back("dom-parser", std::make_shared<ParserValidator>());
    if (only.empty() || only == "new-dom-parser")
        validators.emplace_back("new-dom-parser", std::make_shared<NewParserValidator>());
    for (const auto& [name, validator] : validators) {
        Require(validator->Validate(*large)->isValid && validator->Validate(*small)->isValid,
            name + " finds the analysis valid");
        Require(!validator->Validate(invalid)->isValid, name + " finds the fault");
        const std::unique_ptr<Validated> result = validator->Validate(*small);
        if (const auto* tree = dynamic_cast<const DriverValidator::Tree*>(result.get()))
            Require(tree->document == *ParseAgainstSchema(*small), "the tree of the driver");
        if (const auto* tree = dynamic_cast<const ParserValidator::Tree*>(result.get()))
            Require(*tree->document == ParseWithDriver(*small)->document, "the tree of " + name);
        benchmark::RegisterBenchmark(("validate/large.kxa/" + name).c_str(),
            [=, v = validator](benchmark::State& state) { TimeValidation(state, *v, *large, 1); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("validate/1000-small.kxa/" + name).c_str(),
            [=, v = validator](benchmark::State& state) { TimeValidation(state, *v, *small, 1000); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}
