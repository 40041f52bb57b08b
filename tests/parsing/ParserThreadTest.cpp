// Parsers, formatters, editors and retargeters that work on eight threads at once. Run these tests under the thread
// sanitizer.
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/NameRoles.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"
#include "vancorexml/main/parser/XSDResources.h"

namespace {

constexpr std::size_t ThreadCount = 8;

using Answers = std::vector<std::string>;

// Returns the tree, the messages and the diagnostics of a document as text.
std::string Describe(const DOMParser& parser, const DOM& document)
{
    std::string text = testsupport::TreeText(document);
    for (const VString& error : document.GetErrors())
        text += "\n" + error.toStdString();
    for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
        text += "\n" + std::to_string(diagnostic.start.line) + ":" + std::to_string(diagnostic.start.column) + " " +
            diagnostic.path.toStdString() + " " + diagnostic.message.toStdString() + " (" +
            diagnostic.suggestion.toStdString() + ")";
    }
    return text;
}

// Calls `work` with the numbers from 0 to 7 on eight threads, which start together. Expects that `work` returns the
// same answers when it is called later on one thread only. Thus the threads also race for all one-time initialisations.
void ExpectSameAnswersOnEightThreads(const std::function<Answers(std::size_t)>& work)
{
    std::latch start(ThreadCount);
    std::vector<Answers> answers(ThreadCount);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < ThreadCount; ++thread) {
        threads.emplace_back([&, thread] {
            start.arrive_and_wait();
            answers[thread] = work(thread);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t thread = 0; thread < ThreadCount; ++thread) {
        EXPECT_FALSE(answers[thread].empty());
        EXPECT_EQ(answers[thread], work(thread)) << "thread " << thread;
    }
}

// Documents with and without faults.
const char* const Documents[] = {
    "<a :b='1' c='2'>x<d/>y</a>",
    "<!DOCTYPE a [<!ENTITY e 'text'><!ATTLIST a b CDATA 'default'>]><a>&e;<![CDATA[<c>]]></a>",
    "<?xml version='1.1'?><a xmlns:p='urn:p'><p:b p:c='d'/></a>",
    "<a><b></a>",
    "<a>&undeclared;</a>",
    "<!DOCTYPE a [<!ENTITY e SYSTEM 'file'>]><a>&e;</a>",
    "<a b='1' b='2'/>",
    "<p:a/>",
    "<a>\xff</a>",
    "<?xml version='1.0' encoding='unknown'?><a/>",
};

// Parses all documents, beginning with another one on each thread.
Answers ParseDocuments(std::size_t thread)
{
    Answers answers;
    DOMParser parser;
    for (std::size_t i = 0; i < std::size(Documents); ++i) {
        const auto document = parser.ParseXmlString(Documents[(i + thread) % std::size(Documents)], "id");
        answers.push_back(Describe(parser, *document));
    }
    return answers;
}

// A built-in type of XML Schema with a text that it allows and one that it refuses.
struct TypeRow {
    const char* name;
    const char* valid;
    const char* invalid;
};

constexpr TypeRow Types[] = {
    {"boolean", "true", "yes"},
    {"decimal", "1.5", "1,5"},
    {"float", "1e3", "one"},
    {"double", "INF", "inf"},
    {"integer", "-12", "1.5"},
    {"nonPositiveInteger", "0", "1"},
    {"negativeInteger", "-1", "0"},
    {"long", "1", "9223372036854775808"},
    {"int", "1", "eight"},
    {"short", "1", "40000"},
    {"byte", "1", "128"},
    {"nonNegativeInteger", "0", "-1"},
    {"unsignedLong", "1", "-1"},
    {"unsignedInt", "1", "4294967296"},
    {"unsignedShort", "1", "65536"},
    {"unsignedByte", "1", "256"},
    {"positiveInteger", "1", "0"},
    {"duration", "P1D", "1 day"},
    {"dateTime", "2020-02-29T12:00:00", "2021-02-29T12:00:00"},
    {"time", "12:00:00", "12:00"},
    {"date", "2020-02-29", "29.02.2020"},
    {"gYearMonth", "2020-02", "2020"},
    {"gYear", "2020", "20"},
    {"gMonthDay", "--02-29", "02-29"},
    {"gDay", "---29", "29"},
    {"gMonth", "--02", "2"},
    {"hexBinary", "0aFF", "0xF"},
    {"base64Binary", "YWJj", "YWJj!"},
    {"anyURI", "urn:a", ":a"},
    {"language", "en-US", "english language"},
    {"Name", "a:b", "1a"},
    {"NCName", "ab", "a:b"},
    {"NMTOKEN", "1a", "a b"},
    {"NMTOKENS", "a b", "a,b"},
};

std::string SchemaOfAllTypes()
{
    std::string schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                         "<xs:element name='types'><xs:complexType><xs:sequence maxOccurs='unbounded'>";
    for (const TypeRow& type : Types)
        schema += std::string("<xs:element name='") + type.name + "' type='xs:" + type.name + "'/>";
    return schema + "</xs:sequence></xs:complexType></xs:element></xs:schema>";
}

std::string DocumentOfAllTypes(const char* TypeRow::*text)
{
    std::string document = "<types>";
    for (const TypeRow& type : Types)
        document += std::string("<") + type.name + ">" + type.*text + "</" + type.name + ">";
    return document + "</types>";
}

// All parsers share the built-in types of Xerces. Every other thread has no schema.
Answers UseBuiltInTypes(std::size_t thread)
{
    DOMParser parser;
    if (thread % 2 == 0)
        parser.AddXSDInputSource(std::make_unique<StringInputSource>(SchemaOfAllTypes().c_str(), "types.xsd", false));
    Answers answers;
    for (const auto text : {&TypeRow::valid, &TypeRow::invalid, &TypeRow::valid}) {
        const auto document = parser.ParseXmlString(DocumentOfAllTypes(text), "id");
        const bool isInvalid = thread % 2 == 0 && text == &TypeRow::invalid;
        EXPECT_EQ(parser.GetDiagnostics().size(), isInvalid ? std::size(Types) : 0u);
        answers.push_back(Describe(parser, *document));
    }
    return answers;
}

// Loads an embedded schema on every other thread, in another version on each.
Answers ValidateAgainstEmbeddedSchemas(std::size_t thread)
{
    DOMParser parser;
    const std::vector<VersionNumber> versions = XSDResources::GetSchemaVersions(XmlFileTypeKXC);
    const VersionNumber& version = versions[thread / 2 % versions.size()];
    if (thread % 2 == 0)
        parser.AddXSDInputSource(XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXC, version));
    Answers answers;
    for (const char* const attributes : {"", " pool-size='eight'", " no-such='attribute'"}) {
        const std::string text =
            "<data-connection" + std::string(attributes) + " version='" + version.GetAsString().toStdString() + "'/>";
        answers.push_back(Describe(parser, *parser.ParseXmlString(text, "id")));
    }
    return answers;
}

// Each parse uses the schemas that a parse on any thread has compiled.
Answers ValidateWithNewParsers(std::size_t thread)
{
    Answers answers;
    for (std::size_t i = 0; i < 20; ++i) {
        DOMParser parser;
        const std::string id = (i + thread) % 3 == 0 ? "three.xsd" : "types.xsd";
        parser.AddXSDInputSource(
            std::make_unique<StringInputSource>(SchemaOfAllTypes().c_str(), VString::fromStdString(id), false));
        const auto text = i % 2 == 0 ? &TypeRow::valid : &TypeRow::invalid;
        answers.push_back(Describe(parser, *parser.ParseXmlString(DocumentOfAllTypes(text), "id")));
    }
    return answers;
}

std::string ParseIntoALightTree(const std::string& text)
{
    const StandaloneDOMParser::Result result = StandaloneDOMParser().ParseXmlString(text, "id");
    return result.first->GetName().toStdString() + std::to_string(result.second.size());
}

}  // namespace

TEST(ParserThreadTest, EightParsersGiveTheAnswersOfASingleOne)
{
    ExpectSameAnswersOnEightThreads(ParseDocuments);
}

TEST(ParserThreadTest, EightParsersShareTheBuiltInTypes)
{
    ExpectSameAnswersOnEightThreads(UseBuiltInTypes);
}

TEST(ParserThreadTest, EightThreadsPassCompiledSchemasOn)
{
    ExpectSameAnswersOnEightThreads(ValidateWithNewParsers);
}

TEST(ParserThreadTest, EightParsersUseEmbeddedSchemas)
{
    ExpectSameAnswersOnEightThreads(ValidateAgainstEmbeddedSchemas);
}

// The roles and the tables are shared.
TEST(ParserThreadTest, EightThreadsFormatEditAndRetargetTexts)
{
    const NameRoles roles(*XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXC, XSDResources::GetCurrentVersion()));
    DOM tables;
    tables.AddDataConnectionRename("old", "new");
    ExpectSameAnswersOnEightThreads([&](std::size_t thread) {
        Answers answers;
        for (int i = 0; i < 4; ++i) {
            const std::string text =
                "<data-connection name='old' version='18.1'><b c='" + std::to_string(thread) + "'/></data-connection>";
            answers.push_back(XMLSourceFormatter().Format(text, "id").value_or("no result"));
            XMLSourceEditor editor(text, "id");
            ElementChange change;
            change.setAttributes = {{"c", "new"}};
            editor.Change("//b", change);
            const std::optional<EditedText> edited = editor.Edit();
            answers.push_back(edited ? edited->text : "no result");
            const std::optional<EditedText> renamed = XMLSourceRetargeter(roles, tables).Retarget(text, "id");
            answers.push_back(renamed ? renamed->text : "no result");
            answers.push_back(ParseIntoALightTree(text));
        }
        return answers;
    });
}
