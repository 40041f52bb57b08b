// Reads files while system calls fail and come short, and while the files change. FailingCalls.cpp replaces the calls
// of the system.
#include <cerrno>

#include "tests/common/FailingCall.h"
#include "tests/parsing/ParsingTestSupport.h"
#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/InputSourceUtils.h"

namespace {

using testing::ElementsAre;
using testsupport::TemporaryFolder;

// Limits every read to a few bytes while it lives.
class ShortReads {
public:
    explicit ShortReads(const char* mostBytes) { setenv("MOST_BYTES", mostBytes, 1); }
    ~ShortReads() { unsetenv("MOST_BYTES"); }
    ShortReads(const ShortReads&) = delete;
    ShortReads& operator=(const ShortReads&) = delete;
};

class ReadFaultTest : public testing::Test {
protected:
    static std::string Document()
    {
        std::string text = "<a>\n";
        for (int i = 0; i < 100; ++i)
            text += "<b>text " + std::to_string(i) + " \xC3\xA4</b>\n";
        return text + "</a>\n";
    }
    std::string Reason(int error) const
    {
        return "Cannot read \"" + file.toStdString() + "\": " + std::strerror(error);
    }
    // Calls `read` while the read with each number fails, until none fails. Expects that each failure throws its
    // reason. Returns the number of failures.
    int FailEachRead(const std::function<void()>& read) const
    {
        const ShortReads few("200");
        for (int after = 0;; ++after) {
            VFile(file).OpenForReading();  // begins a new count
            try {
                const Failing failing({"read", after, EIO});
                read();
                return after;
            } catch (const VIO::Exception& exception) {
                EXPECT_EQ(exception.what(), Reason(EIO)) << after;
            }
        }
    }

    TemporaryFolder folder;
    const std::string text = Document();
    const VString file = folder.Write("a.xml", text);
};

TEST_F(ReadFaultTest, EachFailingReadOfAWholeFileThrowsTheReasonOfTheSystem)
{
    EXPECT_GT(FailEachRead([&] { VFile::LoadTextFile(file, true); }), 5);
    EXPECT_GT(FailEachRead([&] { VFile::LoadTextFileAsUtf8(file, true); }), 5);
    EXPECT_GT(FailEachRead([&] { VFile::LoadXmlFile(file); }), 5);
    EXPECT_GT(FailEachRead([&] { InputSourceUtils::InputSourceFromFileName(file, true); }), 5);
}

TEST_F(ReadFaultTest, EachFailingReadOfADocumentThrowsAndTheParserStaysUsable)
{
    DOMParser parser;
    EXPECT_GT(FailEachRead([&] { parser.ParseXmlFile(file); }), 5);
    EXPECT_EQ(testsupport::TreeText(*parser.ParseXmlString("<c/>", "id")), "<c></c>");
}

TEST_F(ReadFaultTest, EachFailingReadOfASchemaThrows)
{
    Utf8InputSource document("<a/>", "id", false);
    const int failures = FailEachRead([&] {
        const auto parser = XercesXMLParser::Create(document, std::make_shared<testsupport::RecordingHandler>());
        parser->LoadXSDFile(file);
    });
    EXPECT_GT(failures, 5);
}

TEST_F(ReadFaultTest, ShortAndInterruptedReadsGiveTheWholeFile)
{
    for (const char* mostBytes : {"1", "2", "3", "1000"}) {
        const ShortReads few(mostBytes);
        EXPECT_EQ(VFile::LoadTextFileAsUtf8(file, true), text) << mostBytes;
        const Failing interrupted({"read", 1, EINTR});
        EXPECT_EQ(VFile::LoadTextFileAsUtf8(file, true), text) << mostBytes;
        FileInputSource source(file);
        const XercesInputSource view = source.GetXercesInputSource(ColonProcessingSanitize);
        EXPECT_EQ(*view.Bytes(), text) << mostBytes;
    }
}

// The parser reads such a source itself, so it reports the failure as an error.
TEST_F(ReadFaultTest, FailingReadDuringAParseIsAnErrorWhoseDiagnosticTellsTheReason)
{
    FileInputSource source(file);
    DOMParser parser;
    for (const int after : {0, 1}) {
        VFile::LoadTextFile(file, true);  // begins a new count
        source.ResetToStart();
        const Failing failing({"read", after, EIO});
        const auto document = parser.ParseXmlInputSource(source, false);
        EXPECT_EQ(testsupport::Errors(*document), std::vector<VString>{"Unexpected exception"});
        ASSERT_EQ(parser.GetDiagnostics().size(), 1u);
        EXPECT_EQ(parser.GetDiagnostics()[0].message.toStdString(), Reason(EIO));
    }
    source.ResetToStart();
    EXPECT_FALSE(parser.ParseXmlInputSource(source, false)->HasErrors());
}

TEST_F(ReadFaultTest, FileThatShrinksOrGrowsBetweenReadsIsReadToItsNewEnd)
{
    QFile writer(file.ToQString());
    FileInputSource source(file);
    source.SetReadSize(10);
    std::string bytes;
    ASSERT_TRUE(source.GetBytes(bytes, 10));
    ASSERT_TRUE(writer.resize(5));
    EXPECT_FALSE(source.GetBytes(bytes, 10));
    folder.Write("a.xml", text + "<!-- more -->");
    ASSERT_TRUE(source.GetBytes(bytes, 1000000));
    EXPECT_EQ(bytes, text.substr(10) + "<!-- more -->");
    source.ResetToStart();
    ASSERT_TRUE(writer.resize(0));
    EXPECT_FALSE(source.GetBytes(bytes, 1000000));
    EXPECT_EQ(source.Size(), 0u);
}

// Cuts the file off when the parse has begun.
class TruncatingHandler : public testsupport::RecordingHandler {
public:
    explicit TruncatingHandler(const VString& file) : m_file(file) {}
    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        QFile(m_file.ToQString()).resize(0);
        RecordingHandler::StartElement(name, attributes);
    }

private:
    VString m_file;
};

// The second reading of a document with errors uses the bytes of the first one.
TEST_F(ReadFaultTest, FileThatChangesDuringAParseHasTheDiagnosticsOfItsOldBytes)
{
    const auto diagnosticsWith = [&](const std::shared_ptr<SAXInterface>& handler) {
        folder.Write("a.xml", "<a>\n <b>\n</a>");
        FileInputSource source(file);
        const auto parser = XercesXMLParser::Create(source, handler);
        parser->Parse();
        return parser->GetDiagnostics();
    };
    const std::vector<ParseDiagnostic> expected = diagnosticsWith(std::make_shared<testsupport::RecordingHandler>());
    ASSERT_EQ(expected.size(), 1u);
    EXPECT_EQ(diagnosticsWith(std::make_shared<TruncatingHandler>(file)), expected);
    EXPECT_EQ(TemporaryFolder::Read(file), "");
}

}  // namespace
