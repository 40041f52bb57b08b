// Parses each document many times. The memory in use must not grow, whatever faults the documents have.
//
// Two environment variables make the test run longer: VANCOREXML_FLAT_HEAP_RUNS is the number of parses of each
// document, and VANCOREXML_FLAT_HEAP_FOLDERS lists more folders with documents, separated by ":" (";" on Windows).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/common/TestMemory.h"
#include "vancorexml/main/parser/AddressSanitizer.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

namespace fs = std::filesystem;

// Returns the number of parses of a document of that size. Large documents get few, so that the test stays short. The
// address sanitizer makes the test ten times slower.
int CountRuns(std::size_t size)
{
    if (const char* const runs = std::getenv("VANCOREXML_FLAT_HEAP_RUNS"))
        return std::max(1, std::atoi(runs));
    return HasAddressSanitizer || size > 10'000 ? 1 : 10;
}

std::vector<fs::path> FindFolders()
{
    std::vector<fs::path> folders = {
        SOURCE_FOLDER "/samples", SOURCE_FOLDER "/tests/messages/cases", SOURCE_FOLDER "/fuzz/corpus"};
    const char* const more = std::getenv("VANCOREXML_FLAT_HEAP_FOLDERS");
    constexpr char Separator = fs::path::preferred_separator == '/' ? ':' : ';';
    std::string folder;
    for (const char* next = more; next && *next != 0; ++next) {
        if (*next != Separator)
            folder += *next;
        if ((*next == Separator || next[1] == 0) && !folder.empty())
            folders.emplace_back(std::exchange(folder, std::string()));
    }
    return folders;
}

struct Document {
    std::string name;
    std::vector<unsigned char> bytes;
};

std::vector<Document> ReadDocuments(const std::vector<fs::path>& folders)
{
    std::vector<Document> documents;
    for (const fs::path& folder : folders) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            if (!entry.is_regular_file() || entry.path().extension() == ".expected")
                continue;
            std::ifstream file(entry.path(), std::ios::binary);
            documents.push_back({entry.path().generic_string(),
                std::vector<unsigned char>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>())});
        }
    }
    return documents;
}

// Calls `parse` with each document, first so often that all caches are filled, and then many times.
template <typename Parse>
void ExpectFlatHeap(const std::vector<Document>& documents, Parse parse)
{
    // The address sanitizer would need several minutes for all documents.
    const std::size_t step = HasAddressSanitizer ? 25 : 1;
    for (std::size_t number = 0; number < documents.size(); number += step) {
        const Document& document = documents[number];
        for (int i = 0; i < 2; ++i)
            parse(document);
        const int runs = CountRuns(document.bytes.size());
        const LiveMemory before = CountLiveMemory();
        for (int i = 0; i < runs; ++i)
            parse(document);
        const LiveMemory after = CountLiveMemory();
        EXPECT_EQ(after.blocks, before.blocks) << document.name;
        EXPECT_EQ(after.mallocBlocks, before.mallocBlocks) << document.name;
        EXPECT_EQ(after.bytes, before.bytes) << document.name;
    }
}

TEST(FlatHeapTest, DOMParserKeepsNothingOfADocument)
{
    const std::vector<Document> documents = ReadDocuments(FindFolders());
    EXPECT_GT(documents.size(), 350u);
    DOMParser parser;
    ExpectFlatHeap(documents, [&parser](const Document& document) { parser.ParseXmlBytes(document.bytes); });
}

// Ignores the content of a document.
class Listener final : public SAXInterface {
public:
    void StartElement(const VString&, const AttributeMap&) override {}
    void EndElement() override {}
    void Characters(const VString&) override {}
};

// The tool checks its documents in this way.
TEST(FlatHeapTest, ValidatingParserKeepsNothingOfADocument)
{
    StringInputSource nothing(VString(), VString(), false);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(nothing, std::make_shared<Listener>());
    parser->LoadXSDResource(LookupResource(QtVanResourceId::FileFormatKxaXsd));
    parser->SetEnableReferenceChecks(true);
    ExpectFlatHeap(ReadDocuments(FindFolders()), [&](const Document& document) {
        BinaryInputSource source(document.bytes, VString(), false);
        parser->Reload(source, std::make_shared<Listener>());
        parser->Parse();
        parser->Reload(nothing, nullptr);
        parser->ClearErrorsAndWarnings();
    });
}

// The seeds consist of a schema and documents, separated by form feeds. Some schemas are faulty.
TEST(FlatHeapTest, DestroyedParsersKeepTheirSchemaOnlyOnce)
{
    const std::vector<Document> seeds = ReadDocuments({SOURCE_FOLDER "/fuzz/corpus/Schema"});
    EXPECT_GT(seeds.size(), 10u);
    ExpectFlatHeap(seeds, [](const Document& seed) {
        std::istringstream parts(std::string(seed.bytes.begin(), seed.bytes.end()));
        std::string part;
        std::getline(parts, part, '\f');
        DOMParser parser;
        parser.AddXSDInputSource(std::make_unique<StringInputSource>(VString::fromStdString(part), "schema", false));
        while (std::getline(parts, part, '\f'))
            parser.ParseXmlString(part, "document");
    });
}

// A parser with schemas serves as long as its process. It must not collect the names of all documents.
TEST(FlatHeapTest, ValidatingParserForgetsTheNamesOfDocuments)
{
    StringInputSource nothing(VString(), VString(), false);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(nothing, std::make_shared<Listener>());
    parser->LoadXSDResource(LookupResource(QtVanResourceId::FileFormatKxaXsd));
    const auto parse = [&](int number) {
        const std::string name = std::string(10'000, 'n') + std::to_string(number);
        const std::string text =
            "<!DOCTYPE " + name + " [<!ENTITY " + name + " ''>]><" + name + " xmlns='" + name + "' " + name + "=''/>";
        StringInputSource source(VString::fromStdString(text), VString(), false);
        parser->Reload(source, std::make_shared<Listener>());
        parser->Parse();
        EXPECT_TRUE(parser->HasErrors());
        parser->Reload(nothing, nullptr);
        parser->ClearErrorsAndWarnings();
    };
    parse(0);
    const std::size_t before = CountLiveMemory().bytes;
    for (int i = 1; i <= 20; ++i)
        parse(i);
    EXPECT_LT(CountLiveMemory().bytes, before + 10'000);
}

}  // namespace
