// Validation against the schema of an analysis, and of a thousand small documents with the
// destruction of their trees.
#include <benchmark/benchmark.h>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include <chrono>
#include <memory>
#include <vector>

#include "benchmarks/Tasks.h"
#include "benchmarks/peers/XercesSession.h"
#include "vancoredata/VResource.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMBuilder.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

constexpr const char* const SchemaName = "VQRC_FILEFORMAT_KXA_XSD";

// An analysis of that many views, without attributes that begin with a colon, so that a bare
// parser takes it too.
std::string MakeAnalysis(int views)
{
    std::string text = "<?xml version='1.0' encoding='utf-8' ?>\n<analysis version='18.1'>\n  <data-sources>\n    <data-source name='orders'>\n      <connection class='text-file' filename='orders.csv' />\n";
    for (int i = 0; i < 20; ++i) text += "      <column name='Column " + std::to_string(i) + "' caption='Spalte " + std::to_string(i) + "' data-type='real' role='measure' />\n";
    text += "    </data-source>\n  </data-sources>\n  <views>\n";
    for (int i = 0; i < views; ++i)
        text += "    <view name='View " + std::to_string(i) + "' data-source='orders' mark='bar'>\n      <title>Umsatz nach Größe</title>\n      <rows>[orders].[Column 1]</rows>\n      <columns>[orders].[Column 2]</columns>\n      <filter class='quantitative' field='[orders].[Column 3]' min='0' max='100.5' />\n      <encoding channel='color' field='[orders].[Column 4]' />\n    </view>\n";
    return text + "  </views>\n</analysis>\n";
}

class ErrorCounter : public xercesc::DefaultHandler {
public:
    void error(const xercesc::SAXParseException&) override { ++errors; }
    void fatalError(const xercesc::SAXParseException&) override { ++errors; }

    int errors = 0;
};

// A reader that has the fixed schemas and that of an analysis.
class BareValidator {
public:
    BareValidator() : m_reader(xercessession::MakeReader())
    {
        m_reader->setErrorHandler(&m_handler);
        m_reader->setContentHandler(&m_handler);
        xercessession::SetSchemaFeatures(*m_reader);
        for (const char* name : {"VQRC_FILEFORMAT_XML_XSD", "VQRC_FILEFORMAT_USER_XSD", SchemaName}) {
            const std::string schema = UTF8StringVResource(VString(name)).GetString().toStdString();
            const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(schema.data()), schema.size(), name, false);
            m_reader->loadGrammar(source, xercesc::Grammar::SchemaGrammarType, true);
        }
    }
    int CountErrors(const std::string& text)
    {
        m_handler.errors = 0;
        xercessession::ParseProgressively(*m_reader, text);
        return m_handler.errors;
    }

private:
    ErrorCounter m_handler;
    std::unique_ptr<xercesc::SAX2XMLReader> m_reader;
};

// The library's driver with the schema, reloaded for every document.
class DriverValidator {
public:
    std::unique_ptr<DOM> Parse(const std::string& text)
    {
        auto document = std::make_unique<DOM>();
        BorrowedInputSource source(text, "memory", false);
        const auto builder = std::make_shared<DOMBuilder>(*document, false);
        if (m_driver) {
            m_driver->Reload(source, builder);
        } else {
            m_driver = XercesXMLParser::Create(source, builder);
            m_driver->LoadXSDResource(VString(SchemaName));
        }
        m_driver->Parse();
        Require(!m_driver->HasErrors(), "the analysis is valid");
        return document;
    }

private:
    std::unique_ptr<XercesXMLParser> m_driver;
};

}  // namespace

void RegisterValidationTasks()
{
    const auto large = std::make_shared<std::string>(MakeAnalysis(10000));
    const auto small = std::make_shared<std::string>(MakeAnalysis(3));
    const auto bare = std::make_shared<BareValidator>();
    const auto driver = std::make_shared<DriverValidator>();
    std::string invalid = *small;
    invalid.replace(invalid.find("measure"), 7, "nothing");
    Require(bare->CountErrors(*large) == 0 && bare->CountErrors(*small) == 0 && bare->CountErrors(invalid) > 0, "the bare validator");

    // Without the destruction of the tree, as a parse is timed too.
    benchmark::RegisterBenchmark("validate/large.kxa/vancorexml", [large, driver](benchmark::State& state) {
        for (auto _ : state) {
            const auto start = std::chrono::steady_clock::now();
            const std::unique_ptr<DOM> document = driver->Parse(*large);
            state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(large->size()));
    })->UseManualTime()->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("validate/large.kxa/xerces-sax", [large, bare](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(bare->CountErrors(*large));
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(large->size()));
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("validate-small/1000/vancorexml", [small, driver](benchmark::State& state) {
        for (auto _ : state)
            for (int i = 0; i < 1000; ++i) benchmark::DoNotOptimize(driver->Parse(*small));
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("validate-small/1000/xerces-sax", [small, bare](benchmark::State& state) {
        for (auto _ : state)
            for (int i = 0; i < 1000; ++i) benchmark::DoNotOptimize(bare->CountErrors(*small));
    })->Unit(benchmark::kMillisecond);
}
