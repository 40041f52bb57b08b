#include "vancorexml/main/parser/FileInputSource.h"

#include "tests/parsing/ParsingTestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/InputSourceUtils.h"

namespace {

struct FileInputSourceTest : testing::Test {
    VString Write(const std::string& bytes) const { return folder.Write("a.xml", bytes); }

    testsupport::TemporaryFolder folder;
};

std::string ReadAll(InputSource& source)
{
    std::string all;
    std::string bytes;
    while (source.GetBytes(bytes, 7))
        all += bytes;
    return all;
}

TEST_F(FileInputSourceTest, IdIsTheFileName)
{
    const VString file = Write("<a/>");
    const FileInputSource source(file);
    EXPECT_EQ(source.Id(), file);
    EXPECT_EQ(source.Size(), 4u);
    EXPECT_EQ(source.GetReadSize(), 2048u);
}

TEST_F(FileInputSourceTest, MissingFileIsLoggedAndThrows)
{
    testsupport::LogCapture log;
    const VString file = folder.Path("missing.xml");
    try {
        FileInputSource source(file);
        FAIL() << "opened a missing file";
    } catch (const VIO::Exception& exception) {
        ASSERT_EQ(log.records.size(), 1u);
        EXPECT_EQ(log.records[0].severity, VLog::Warn);
        EXPECT_EQ(log.records[0].message,
            VString("FileInputSource::FileInputSource( \"") + file + "\" ) error: " + exception.GetMessage());
    }
}

TEST_F(FileInputSourceTest, DirectoryThrows)
{
    const testsupport::LogCapture log;
    EXPECT_THROW(FileInputSource source(folder.Path("")), VIO::Exception);
}

TEST_F(FileInputSourceTest, EmptyFileHasNoBytesAndNoLines)
{
    FileInputSource source(Write(""));
    std::string bytes = "kept";
    EXPECT_FALSE(source.GetBytes(bytes, 10));
    EXPECT_FALSE(source.GetNextLine(bytes));
    EXPECT_EQ(bytes, "kept");
}

TEST_F(FileInputSourceTest, GetBytesJoinsChunks)
{
    FileInputSource source(Write("abcdefghij"));
    source.SetReadSize(3);
    std::string bytes;
    EXPECT_TRUE(source.GetBytes(bytes, 7));
    EXPECT_EQ(bytes, "abcdefg");
    EXPECT_TRUE(source.GetBytes(bytes, 7));
    EXPECT_EQ(bytes, "hij");
    EXPECT_FALSE(source.GetBytes(bytes, 7));
    EXPECT_EQ(bytes, "hij");
}

TEST_F(FileInputSourceTest, GetNextLineJoinsTheChunksOfALine)
{
    FileInputSource source(Write("first line\nsecond\nlast"));
    source.SetReadSize(4);
    std::string line;
    for (const char* expected : {"first line\n", "second\n", "last"}) {
        EXPECT_TRUE(source.GetNextLine(line));
        EXPECT_EQ(line, expected);
    }
    EXPECT_FALSE(source.GetNextLine(line));
    EXPECT_EQ(line, "last");
}

TEST_F(FileInputSourceTest, GetNextLineNormalizesLineEndings)
{
    FileInputSource source(Write("one\r\ntwo\rthree\nfour\r"));
    source.SetReadSize(4);  // the first chunk ends between a carriage return and its line feed
    std::string line;
    for (const char* expected : {"one\n", "two\nthree\n", "four\n"}) {
        EXPECT_TRUE(source.GetNextLine(line));
        EXPECT_EQ(line, expected);
    }
}

TEST_F(FileInputSourceTest, NewReadSizeAppliesToTheNextChunk)
{
    FileInputSource source(Write("abcdefghij"));
    source.SetReadSize(2);
    std::string bytes;
    source.GetBytes(bytes, 1);
    source.SetReadSize(100);
    EXPECT_EQ(source.GetReadSize(), 100u);
    EXPECT_EQ(ReadAll(source), "bcdefghij");
}

TEST_F(FileInputSourceTest, ReadSizeOfZeroAsserts)
{
    FileInputSource source(Write("abc"));
    testsupport::ExpectLogicException(
        [&source] { source.SetReadSize(0); }, "vancorexml\\main\\parser\\FileInputSource", 41, "size != 0", 0x2BE7C041);
    EXPECT_EQ(source.GetReadSize(), 2048u);
    EXPECT_EQ(ReadAll(source), "abc");
}

TEST_F(FileInputSourceTest, ResetReturnsToTheStart)
{
    FileInputSource source(Write("abcdef"));
    source.SetReadSize(4);
    std::string bytes;
    source.GetBytes(bytes, 3);
    source.ResetToStart();
    EXPECT_EQ(ReadAll(source), "abcdef");
}

void ExpectInvalidEncoding(const std::function<void()>& read)
{
    try {
        read();
        ADD_FAILURE() << "accepted the encoding";
    } catch (const VantoraException& exception) {
        EXPECT_EQ(exception.GetMessage(), VString("The XML file is in an unsupported encoding."));
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("VantoraException_InvalidEncoding_0xE19C2DF8"));
        EXPECT_EQ(exception.GetErrorInfo().GetCode(), 0xE19C2DF8u);
    }
}

TEST_F(FileInputSourceTest, EncodingErrorIsInTheLanguageOfTheSession)
{
    const testsupport::Session session("de_DE");
    FileInputSource source(Write("<a>\xE4</a>"));
    std::string bytes;
    try {
        source.GetBytes(bytes, 3);
        FAIL() << "accepted the encoding";
    } catch (const VantoraException& exception) {
        EXPECT_EQ(exception.GetMessage(), VString("Die Codierung der XML-Datei wird nicht unterst\xC3\xBCtzt."));
    }
}

#ifdef __linux__
TEST_F(FileInputSourceTest, FailedReadLeavesTheOutputUnchanged)
{
    FileInputSource source("/proc/self/mem");  // can be opened, but not read from its start
    for (int round = 0; round < 2; ++round) {
        std::string bytes = "kept";
        EXPECT_THROW(source.GetBytes(bytes, 3), VIO::Exception);
        EXPECT_EQ(bytes, "kept");
    }
}
#endif

TEST_F(FileInputSourceTest, EveryReadRefusesOtherEncodings)
{
    FileInputSource source(Write("<a>\xE4</a>"));
    std::string bytes = "kept";
    ExpectInvalidEncoding([&] { source.GetBytes(bytes, 3); });
    ExpectInvalidEncoding([&] { source.GetNextLine(bytes); });
    EXPECT_EQ(bytes, "kept");
}

TEST_F(FileInputSourceTest, ResetKeepsTheEncodingError)
{
    FileInputSource source(Write("<a>\xE4</a>"));
    std::string bytes;
    ExpectInvalidEncoding([&] { source.GetBytes(bytes, 3); });
    source.ResetToStart();
    source.SetReadSize(3);  // these three bytes alone are valid
    ExpectInvalidEncoding([&] { source.GetBytes(bytes, 3); });
}

TEST_F(FileInputSourceTest, ChecksTheEncodingOfTheFirstChunkOnly)
{
    FileInputSource source(Write("abc\xE4"));
    source.SetReadSize(3);
    EXPECT_EQ(ReadAll(source), "abc\xE4");
}

TEST_F(FileInputSourceTest, CharacterSplitBetweenChunksIsAccepted)
{
    FileInputSource source(Write("ab\xC3\xA4"));
    source.SetReadSize(3);
    EXPECT_EQ(ReadAll(source), "ab\xC3\xA4");
}

TEST_F(FileInputSourceTest, XercesReadsTheRestOfTheFile)
{
    FileInputSource source(Write("..<a/>"));
    std::string bytes;
    source.GetBytes(bytes, 2);
    const XercesInputSource view = source.GetXercesInputSource(ColonProcessingSanitize);
    EXPECT_EQ(*view.Bytes(), "<a/>");
}

TEST_F(FileInputSourceTest, XercesReadsALongFileAsAWhole)
{
    const std::string text = "<a>" + std::string(0x100000 * 2 + 5, 'x') + "</a>";
    FileInputSource source(Write(text));
    EXPECT_EQ(*source.GetXercesInputSource(ColonProcessingNone).Bytes(), text);
}

TEST_F(FileInputSourceTest, IgnoresTheDeclaredEncoding)
{
    FileInputSource source(Write("<?xml version='1.0' encoding='iso-8859-1'?><a>\xC3\xA4</a>"));
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_EQ(handler->events, (std::vector<std::string>{"<a>", "\xC3\xA4", "</>"}));
    EXPECT_TRUE(parser->GetErrors().empty());
}

TEST_F(FileInputSourceTest, ByteOrderMarkIsNotText)
{
    FileInputSource source(Write("\xEF\xBB\xBF<?xml version='1.0'?><a/>"));
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, (std::vector<std::string>{"<a>", "</>"}));
}

struct InputSourceUtilsTest : FileInputSourceTest {
    // Writes a file of `size` bytes whose first byte is invalid in UTF-8.
    VString WriteLarge(qint64 size) const
    {
        const VString path = Write("\xFF");
        QFile file(path.ToQString());
        EXPECT_TRUE(file.resize(size));
        return path;
    }
};

TEST_F(InputSourceUtilsTest, ReadsAndDecodesAFile)
{
    const VString file = Write("<?xml version='1.0' encoding='iso-8859-1'?><a>\xE4</a>");
    const auto source = InputSourceUtils::InputSourceFromFileName(file, true);
    ASSERT_NE(dynamic_cast<StringInputSource*>(source.get()), nullptr);
    EXPECT_EQ(source->Id(), file);
    EXPECT_THAT(ReadAll(*source), testing::EndsWith("<a>\xC3\xA4</a>"));
}

TEST_F(InputSourceUtilsTest, SkipsLeadingWhitespaceWhenAsked)
{
    const auto source = InputSourceUtils::InputSourceFromFileName(Write(" \n<a/>"), true);
    EXPECT_EQ(ReadAll(*source), "<a/>");
}

TEST_F(InputSourceUtilsTest, KeepsLeadingWhitespaceUnlessAsked)
{
    const auto source = InputSourceUtils::InputSourceFromFileName(Write(" <a/>"), false);
    EXPECT_EQ(ReadAll(*source), " <a/>");
}

TEST_F(InputSourceUtilsTest, FileOfOneGibibyteIsReadInChunks)
{
    const auto source = InputSourceUtils::InputSourceFromFileName(WriteLarge(0x40000000), true);
    EXPECT_NE(dynamic_cast<FileInputSource*>(source.get()), nullptr);
    EXPECT_EQ(source->Size(), 0x40000000u);
}

TEST_F(InputSourceUtilsTest, SmallerFileIsDecodedAsAWhole)
{
    // The exception shows that the function decoded the file.
    EXPECT_THROW(InputSourceUtils::InputSourceFromFileName(WriteLarge(0x3FFFFFFF), true), VIO::Exception);
}

TEST_F(InputSourceUtilsTest, MissingFileThrows)
{
    EXPECT_THROW(InputSourceUtils::InputSourceFromFileName(folder.Path("missing.xml"), true), VIO::Exception);
}

}  // namespace
