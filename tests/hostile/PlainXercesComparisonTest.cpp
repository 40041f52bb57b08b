// Compares the library with a bare reader of Xerces on cut and changed documents. Both must find an error, or both must
// read the same tree. The library refuses a few documents that Xerces accepts; enum Refusal lists the reasons.
//
// With VANCOREXML_HOSTILE=full in the environment, the tests compare all prefixes and more documents. That takes
// minutes. With a sanitizer, they compare fewer.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#if defined(__linux__)
#  include <sys/resource.h>
#endif

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/StandaloneDOMElement.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

namespace {

using xercesc::XMLUni;

struct Element {
    std::size_t depth = 0;
    std::u16string name;
    std::map<std::u16string, std::u16string> attributes;
    std::u16string text;

    friend bool operator==(const Element&, const Element&) = default;
};

struct Outcome {
    VString error;  // the first one; empty for a well-formed document
    std::vector<Element> elements;
};

// Thrown by the bare reader at an external entity, which it must not read.
struct ExternalEntityFound {};

// Records the elements and the first error.
class PlainHandler final : public xercesc::DefaultHandler {
public:
    Outcome outcome;

    void startElement(const XMLCh* const,
        const XMLCh* const,
        const XMLCh* const qname,
        const xercesc::Attributes& attributes) override
    {
        Element element{m_open.size(), qname, {}, {}};
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i)
            element.attributes.emplace(attributes.getQName(i), attributes.getValue(i));
        m_open.push_back(outcome.elements.size());
        outcome.elements.push_back(std::move(element));
    }
    void endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const) override { m_open.pop_back(); }
    void characters(const XMLCh* const text, const XMLSize_t length) override
    {
        if (!m_open.empty())
            outcome.elements[m_open.back()].text.append(text, length);
    }
    void ignorableWhitespace(const XMLCh* const text, const XMLSize_t length) override { characters(text, length); }
    void externalEntityDecl(const XMLCh* const, const XMLCh* const, const XMLCh* const) override
    {
        throw ExternalEntityFound();
    }
    xercesc::InputSource* resolveEntity(const XMLCh* const, const XMLCh* const) override
    {
        throw ExternalEntityFound();
    }
    void error(const xercesc::SAXParseException& fault) override { fatalError(fault); }
    void fatalError(const xercesc::SAXParseException& fault) override
    {
        outcome.error = VFormatString("Fatal Error(%1,%2): %3 (id: id)")
                            .arg(std::uint64_t{fault.getLineNumber()})
                            .arg(std::uint64_t{fault.getColumnNumber()})
                            .arg(VString(fault.getMessage()));
        throw fault;
    }

private:
    std::vector<std::size_t> m_open;  // the indexes of the open elements
};

// Frees what a reader leaves behind: Xerces leaks memory at some faults in a document type.
class ReaderMemory final : public xercesc::MemoryManager {
public:
    ~ReaderMemory() override
    {
        for (void* const block : m_blocks)
            ::operator delete(block);
    }
    void* allocate(XMLSize_t size) override { return *m_blocks.insert(::operator new(size)).first; }
    void deallocate(void* block) override
    {
        m_blocks.erase(block);
        ::operator delete(block);
    }
    // Exceptions may outlive this object.
    xercesc::MemoryManager* getExceptionMemoryManager() override { return xercesc::XMLPlatformUtils::fgMemoryManager; }

private:
    std::unordered_set<void*> m_blocks;
};

const VString ExternalEntity = "external entity";

Outcome ParseWithXerces(const std::string& bytes)
{
    PlainHandler handler;
    xercesc::SecurityManager limits;
    ReaderMemory memory;
    const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader(&memory));
    reader->setContentHandler(&handler);
    reader->setErrorHandler(&handler);
    reader->setDeclarationHandler(&handler);
    reader->setEntityResolver(&handler);
    reader->setProperty(XMLUni::fgXercesSecurityManager, &limits);
    reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
    reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
    reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(), u"id");
    xercesc::XMLPScanToken token;
    try {
        // Step by step, as the library does: Xerces reports a few faults of the first line in another form otherwise.
        bool hasMore = reader->parseFirst(source, token);
        while (hasMore)
            hasMore = reader->parseNext(token);
    } catch (const xercesc::SAXParseException&) {
        // The handler has recorded the error.
    } catch (const xercesc::XMLException& exception) {
        handler.outcome.error = exception.getMessage();
    } catch (const ExternalEntityFound&) {
        handler.outcome.error = ExternalEntity;
    }
    return std::move(handler.outcome);
}

const DOMElement* PointerTo(const DOMElement* element)
{
    return element;
}

const StandaloneDOMElement* PointerTo(const StandaloneDOMElement& element)
{
    return &element;
}

VString TextOf(const DOMElement& element)
{
    return element.GetText();
}

VString TextOf(const StandaloneDOMElement& element)
{
    return element.GetAllText();
}

// Returns the elements of a tree of DOMElement or StandaloneDOMElement.
template <typename TreeElement>
std::vector<Element> ElementsOf(const TreeElement* root)
{
    std::vector<Element> elements;
    std::vector<std::pair<const TreeElement*, std::size_t>> open;
    if (root)
        open.push_back({root, 0});
    while (!open.empty()) {
        const auto [element, depth] = open.back();
        open.pop_back();
        Element record{depth, std::u16string(element->GetName().View()), {}, std::u16string(TextOf(*element).View())};
        for (const auto& [name, value] : element->GetAttributes())
            record.attributes.emplace(name.View(), value.View());
        elements.push_back(std::move(record));
        const auto& children = element->GetChildren();
        for (std::size_t i = children.size(); i > 0; --i)
            open.push_back({PointerTo(children[i - 1]), depth + 1});
    }
    return elements;
}

Outcome ParseWithLibrary(DOMParser& parser, const std::string& bytes)
{
    Utf8InputSource source(bytes, "id", false);
    const std::unique_ptr<DOM> document = parser.ParseXmlInputSource(source, true);
    Outcome outcome;
    if (document->HasErrors())
        outcome.error = document->GetErrors().front();
    outcome.elements = ElementsOf(static_cast<const DOM&>(*document).GetDocumentRoot());
    return outcome;
}

Outcome ParseLightweight(const std::string& bytes)
{
    Utf8InputSource source(bytes, "id", false);
    const StandaloneDOMParser::Result result = StandaloneDOMParser().ParseXmlInputSource(source, true);
    const auto& [tree, errors] = result;
    Outcome outcome;
    if (!errors.empty())
        outcome.error = errors.front();
    if (!tree->GetChildren().empty())
        outcome.elements = ElementsOf(PointerTo(tree->GetChildren().front()));
    return outcome;
}

std::string Describe(const Element& element)
{
    std::string text = VString(element.name.c_str()).toStdString();
    for (const auto& [name, value] : element.attributes) {
        text += " " + VString(name.c_str()).toStdString() + "='";
        text += VString(value.c_str()).toStdString() + "'";
    }
    return "<" + text + ">" + VString(element.text.c_str()).toStdString();
}

std::string DescribeDifference(const std::vector<Element>& library, const std::vector<Element>& plain)
{
    if (library.size() != plain.size())
        return std::to_string(library.size()) + " elements instead of " + std::to_string(plain.size());
    const auto [ours, theirs] = std::mismatch(library.begin(), library.end(), plain.begin());
    return "\n  library: " + Describe(*ours) + "\n  Xerces:  " + Describe(*theirs);
}

// Why the library refuses a document that Xerces accepts, or words its error in another way.
enum Refusal {
    External,       // the document declares an external entity
    Nul,            // it contains a NUL: behind the root element, Xerces takes it for the end
    IncompleteEnd,  // its last character is incomplete, and Xerces drops it
    ColonName,      // it has names that begin with a colon: the library rewrites them, so positions of errors differ
    InvalidByte,    // Xerces reports the place where it began to decode the next block: see HasSameInvalidByte
    RefusalCount
};
constexpr std::array<const char*, RefusalCount> RefusalNames = {"external entities refused",
    "NULs refused",
    "incomplete ends refused",
    "errors in documents with colon names",
    "invalid bytes at other places"};

// Returns the peak of the memory of the process in MB, or 0 if it is not known.
long PeakMegabytes()
{
#if defined(__linux__)
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
#else
    return 0;
#endif
}

// Compares the outcomes of many documents.
class Comparison {
public:
    ~Comparison()
    {
        // Without a sanitizer, the peak is 60 MB.
        EXPECT_LT(PeakMegabytes(), 1000);
        std::cout << m_count << " documents: " << m_trees << " equal trees, " << m_errors << " equal errors";
        for (std::size_t i = 0; i < RefusalCount; ++i) {
            if (m_refusals[i] != 0)
                std::cout << ", " << m_refusals[i] << " " << RefusalNames[i];
        }
        std::cout << "\n";
    }

    // Compares the outcomes for one document. Every other document becomes a lightweight tree. Returns false after ten
    // differences.
    bool Add(const std::string& bytes, const std::string& origin)
    {
        ++m_count;
        const double start = testsupport::CpuSeconds();
        const Outcome library = m_count % 2 == 0 ? ParseLightweight(bytes) : ParseWithLibrary(m_parser, bytes);
        const double seconds = testsupport::CpuSeconds() - start;
        if (seconds > 5)
            ADD_FAILURE() << origin << ": " << seconds << " seconds";
        const Outcome plain = ParseWithXerces(bytes);
        if (const Refusal refusal = FindRefusal(bytes, library, plain); refusal != RefusalCount) {
            ++m_refusals[refusal];
        } else if (library.error != plain.error) {
            ADD_FAILURE() << origin << "\n  library: " << library.error << "\n  Xerces:  " << plain.error;
            ++m_differences;
        } else if (library.error.IsEmpty() && library.elements != plain.elements) {
            ADD_FAILURE() << origin << ": " << DescribeDifference(library.elements, plain.elements);
            ++m_differences;
        } else {
            ++(library.error.IsEmpty() ? m_trees : m_errors);
        }
        return m_differences < 10;
    }

    std::size_t CountTrees() const { return m_trees; }
    std::size_t CountErrors() const { return m_errors; }

private:
    static Refusal FindRefusal(const std::string& bytes, const Outcome& library, const Outcome& plain)
    {
        if (plain.error == ExternalEntity && library.error.startsWith("XML External <!ENTITY> definitions"))
            return External;
        if (library.error.contains("invalid character 0x0 ") && bytes.find('\0') != std::string::npos)
            return Nul;
        if (library.error.contains("invalid bytes at the end of the document") && plain.error.IsEmpty())
            return IncompleteEnd;
        if (!library.error.IsEmpty() && !plain.error.IsEmpty() && library.error == ErrorOfRewritten(bytes))
            return ColonName;
        if (HasSameInvalidByte(library.error, plain.error))
            return InvalidByte;
        return RefusalCount;
    }

    // The first block that the library gives to Xerces is a few bytes shorter (see XercesReader.cpp). So the places
    // where blocks end differ, but not the messages.
    static bool HasSameInvalidByte(const VString& library, const VString& plain)
    {
        const auto messageOf = [](const VString& error) {
            const std::string text = error.toStdString();
            return text.substr(std::min(text.find(": "), text.size()));
        };
        return library != plain && plain.contains("): invalid byte '") && messageOf(library) == messageOf(plain);
    }

    // Returns the error for a document whose colon names are rewritten, or an empty text if it has none.
    static VString ErrorOfRewritten(const std::string& bytes)
    {
        const auto text = std::make_shared<std::string>(bytes);
        try {
            const auto rewritten = XercesColonSanitizer::Sanitize(text);
            return rewritten == text ? VString() : ParseWithXerces(*rewritten).error.replace("IllegalColon:", ":");
        } catch (const LogicException&) {
            return "Unexpected exception";  // the document has no element
        }
    }

    DOMParser m_parser;
    std::size_t m_count = 0;
    std::size_t m_trees = 0;
    std::size_t m_errors = 0;
    std::size_t m_differences = 0;
    std::array<std::size_t, RefusalCount> m_refusals{};
};

// How many documents the tests compare.
struct Amounts {
    std::size_t samplePrefixes;   // altogether; all of the small samples, and some of each large sample
    std::size_t realPrefixes;     // of each document
    std::size_t longestPrefixes;  // of the longest document, of which every prefix would take days
    int changes;
};

Amounts GetAmounts()
{
    constexpr auto All = static_cast<std::size_t>(-1);
    const char* const mode = std::getenv("VANCOREXML_HOSTILE");
    if (mode && std::string(mode) == "full")
        return {All, All, 500, 100000};
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return {3000, 10, 2, 2000};
#else
    return {20000, 100, 10, 20000};
#endif
}

struct Document {
    std::string name;
    std::string bytes;
};

Document Read(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return {path.toStdString(), file.readAll().toStdString()};
}

// Returns the samples, the smallest first.
std::vector<Document> Samples()
{
    std::vector<Document> documents;
    QDirIterator files(
        QStringLiteral(SAMPLES_FOLDER), {QStringLiteral("*.kx?")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        documents.push_back(Read(files.next()));
    std::sort(documents.begin(), documents.end(), [](const Document& a, const Document& b) {
        return std::pair(a.bytes.size(), a.name) < std::pair(b.bytes.size(), b.name);
    });
    return documents;
}

// Returns 200 documents of installed packages, or nothing if they are not installed. Takes them at equal distances from
// the list of all documents of up to 6 KB, and in addition the longest one.
std::vector<Document> RealDocuments()
{
    constexpr std::size_t MostDocuments = 200;
    constexpr qint64 Largest = 6000;
    QStringList small;
    QString longest;
    qint64 longestSize = 0;
    for (const char* folder : {"/usr/share/xml/docbook", "/usr/share/mime", "/usr/share/X11/xkb"}) {
        QDirIterator files(QString::fromLatin1(folder),
            {QStringLiteral("*.xml"), QStringLiteral("*.xsl"), QStringLiteral("*.svg")},
            QDir::Files | QDir::NoSymLinks,
            QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            const qint64 size = files.fileInfo().size();
            if (size <= Largest)
                small.append(path);
            if (size > longestSize) {
                longest = path;
                longestSize = size;
            }
        }
    }
    if (static_cast<std::size_t>(small.size()) < MostDocuments)
        return {};
    small.sort();
    std::vector<Document> documents;
    for (std::size_t i = 0; i + 1 < MostDocuments; ++i)
        documents.push_back(
            Read(small[static_cast<int>(i * static_cast<std::size_t>(small.size()) / (MostDocuments - 1))]));
    documents.push_back(Read(longest));
    return documents;
}

// Compares `count` prefixes at equal distances, and the whole document.
bool ComparePrefixes(Comparison& comparison, const Document& document, std::size_t count)
{
    const std::size_t size = document.bytes.size();
    count = std::min(count, size);
    for (std::size_t i = 0; i <= count; ++i) {
        const std::size_t length = count == 0 ? size : i * size / count;
        if (!comparison.Add(document.bytes.substr(0, length), document.name + " up to byte " + std::to_string(length)))
            return false;
    }
    return true;
}

TEST(PlainXercesComparisonTest, PrefixesOfTheSamplesHaveTheOutcomeOfXerces)
{
    Comparison comparison;
    std::size_t rest = GetAmounts().samplePrefixes;
    for (const Document& sample : Samples()) {
        const std::size_t count = std::max<std::size_t>(std::min(rest, sample.bytes.size()), 20);
        rest -= std::min(rest, count);
        if (!ComparePrefixes(comparison, sample, count))
            return;
    }
    EXPECT_GT(comparison.CountTrees(), 40u);
    EXPECT_GT(comparison.CountErrors(), 900u);
}

TEST(PlainXercesComparisonTest, PrefixesOfRealDocumentsHaveTheOutcomeOfXerces)
{
    const std::vector<Document> documents = RealDocuments();
    if (documents.empty())
        GTEST_SKIP() << "scripts/test installs the packages with the documents";
    Comparison comparison;
    const Amounts amounts = GetAmounts();
    for (const Document& document : documents) {
        const bool isLongest = &document == &documents.back();
        if (!ComparePrefixes(comparison, document, isLongest ? amounts.longestPrefixes : amounts.realPrefixes))
            return;
    }
    EXPECT_GT(comparison.CountTrees(), 150u);
}

TEST(PlainXercesComparisonTest, DocumentsWithOneChangedByteHaveTheOutcomeOfXerces)
{
    std::vector<Document> documents = Samples();
    for (Document& document : RealDocuments())
        documents.push_back(std::move(document));
    const std::string replacements = "<>&;'\"=/!?:-[]%#x0 \n\r\t\x01\x7F\x80\xBF\xC3\xED\xF4\xFF";
    std::mt19937 random(15);
    Comparison comparison;
    for (int i = GetAmounts().changes; i > 0; --i) {
        const Document& document = documents[random() % documents.size()];
        if (document.bytes.size() > 100000 && random() % 10 != 0)
            continue;
        std::string bytes = document.bytes;
        const std::size_t position = random() % bytes.size();
        // One third each: a character that has a meaning in XML or is ill-formed, one changed bit, any byte.
        const auto old = static_cast<unsigned char>(bytes[position]);
        const auto kind = random() % 3;
        const auto any = random();
        if (kind == 0)
            bytes[position] = replacements[any % replacements.size()];
        else
            bytes[position] = static_cast<char>(kind == 1 ? old ^ 1u << any % 8 : any % 256);
        if (!comparison.Add(bytes, document.name + " with a change at byte " + std::to_string(position)))
            return;
    }
    EXPECT_GT(comparison.CountTrees(), 100u);
    EXPECT_GT(comparison.CountErrors(), 100u);
}

}  // namespace
