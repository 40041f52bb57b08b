#include "vancorexml/main/parser/Utf8InputSource.h"

#include <memory>
#include <stdexcept>
#include <string>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/InputSourceResetter.h"
#include "vancorexml/main/parser/XercesBuffer.h"

namespace {

std::string ReadAll(InputSource& source)
{
    std::string bytes;
    source.GetBytes(bytes, 1000000);
    return bytes;
}

TEST(Utf8InputSourceTest, KeepsItsId)
{
    EXPECT_EQ(Utf8InputSource("<a/>", "an id", false).Id(), VString("an id"));
    EXPECT_TRUE(Utf8InputSource("<a/>", VString(), false).Id().IsEmpty());
}

TEST(Utf8InputSourceTest, EmptySourceHasNoBytesAndNoLines)
{
    Utf8InputSource source("", "id", false);
    std::string bytes = "kept";
    EXPECT_FALSE(source.GetBytes(bytes, 10));
    EXPECT_FALSE(source.GetNextLine(bytes));
    EXPECT_EQ(bytes, "kept");
    EXPECT_EQ(source.Size(), 0u);
}

TEST(Utf8InputSourceTest, GetBytesReturnsChunksUpToTheEnd)
{
    Utf8InputSource source("abcde", "id", false);
    std::string bytes;
    EXPECT_TRUE(source.GetBytes(bytes, 3));
    EXPECT_EQ(bytes, "abc");
    EXPECT_TRUE(source.GetBytes(bytes, 3));
    EXPECT_EQ(bytes, "de");
    EXPECT_FALSE(source.GetBytes(bytes, 3));
    EXPECT_EQ(bytes, "de");
}

TEST(Utf8InputSourceTest, GetNextLineKeepsLineEndings)
{
    Utf8InputSource source("one\r\ntwo\n\nlast", "id", false);
    std::string line;
    for (const char* expected : {"one\r\n", "two\n", "\n", "last"}) {
        EXPECT_TRUE(source.GetNextLine(line));
        EXPECT_EQ(line, expected);
    }
    EXPECT_FALSE(source.GetNextLine(line));
    EXPECT_EQ(line, "last");
}

TEST(Utf8InputSourceTest, LinesAndBytesShareThePosition)
{
    Utf8InputSource source("one\ntwo", "id", false);
    std::string text;
    source.GetBytes(text, 2);
    source.GetNextLine(text);
    EXPECT_EQ(text, "e\n");
    source.GetBytes(text, 9);
    EXPECT_EQ(text, "two");
}

TEST(Utf8InputSourceTest, SkipsLeadingWhitespaceAlsoAfterAReset)
{
    StringInputSource source("  \n<a/>", "id", true);
    EXPECT_EQ(ReadAll(source), "<a/>");
    source.ResetToStart();
    EXPECT_EQ(ReadAll(source), "<a/>");
    EXPECT_EQ(source.Size(), 7u);
}

struct WhitespaceRow {
    const char* name;
    std::string text;
    std::string rest;
};

const WhitespaceRow WhitespaceRows[] = {
    {"none", "<a/>", "<a/>"},
    {"tab to carriage return and blank", "\t\n\v\f\r <a/>", "<a/>"},
    {"only white space", " \n ", ""},
    {"no-break space is text", "\xC2\xA0<a/>", "\xC2\xA0<a/>"},
    {"byte 0x85 is text", "\x85<a/>", "\x85<a/>"},
    {"byte order mark is text", "\xEF\xBB\xBF <a/>", "\xEF\xBB\xBF <a/>"},
    {"NUL is text", std::string(" \0<a/>", 6), std::string("\0<a/>", 5)},
};

TEST(Utf8InputSourceTest, LeadingWhitespaceIsAsciiOnly)
{
    for (const WhitespaceRow& row : WhitespaceRows) {
        SCOPED_TRACE(row.name);
        Utf8InputSource source(row.text, "id", true);
        EXPECT_EQ(ReadAll(source), row.rest);
        EXPECT_EQ(source.Size(), row.text.size());
    }
}

TEST(Utf8InputSourceTest, KeepsLeadingWhitespaceUnlessAsked)
{
    Utf8InputSource source("  <a/>", "id", false);
    EXPECT_EQ(ReadAll(source), "  <a/>");
}

TEST(Utf8InputSourceTest, CopiesLvaluesAndMovesRvalues)
{
    std::string bytes(100, 'x');
    Utf8InputSource copy(bytes, "id", false);
    EXPECT_EQ(bytes.size(), 100u);
    const char* const buffer = bytes.data();
    Utf8InputSource taken(std::move(bytes), "id", false);
    EXPECT_EQ(ReadAll(copy), ReadAll(taken));
    EXPECT_NE(bytes.data(), buffer);
}

TEST(StringInputSourceTest, EncodesItsTextAsUtf8)
{
    StringInputSource source("gr\303\266\303\237e", "id", false);
    EXPECT_EQ(source.Size(), 7u);
    EXPECT_EQ(ReadAll(source), "gr\303\266\303\237e");
}

TEST(StringInputSourceTest, FromUtf8DeclaresUtf8)
{
    const auto source = StringInputSource::FromUtf8(" gr\303\266\303\237e", "an id", true);
    EXPECT_EQ(source->Id(), VString("an id"));
    EXPECT_EQ(ReadAll(*source), "gr\303\266\303\237e");
    EXPECT_EQ(VString(source->GetXercesInputSource(ColonProcessingNone).Get().getEncoding()), VString("UTF-8"));
}

TEST(BorrowedInputSourceTest, DoesNotCopyTheBytesOfTheCaller)
{
    const std::string bytes = " <a/>";
    BorrowedInputSource source(bytes, "an id", true);
    EXPECT_EQ(source.Id(), VString("an id"));
    EXPECT_EQ(ReadAll(source), "<a/>");
    EXPECT_EQ(source.Size(), 5u);
    EXPECT_EQ(source.GetXercesInputSource(ColonProcessingSanitize).Bytes().get(), &bytes);
    EXPECT_EQ(source.GetXercesInputSource(ColonProcessingSanitize).View().data(), bytes.data() + 1);
}

TEST(BinaryInputSourceTest, ReturnsTheBytesUnchanged)
{
    const std::vector<unsigned char> bytes{'<', 'a', 0, 0xFF, '>'};
    BinaryInputSource source(bytes, "id", false);
    EXPECT_EQ(source.Size(), 5u);
    EXPECT_EQ(ReadAll(source), std::string("<a\0\xFF>", 5));
}

TEST(BinaryInputSourceTest, SkipsLeadingWhitespaceWhenAsked)
{
    BinaryInputSource source({' ', '\n', '<'}, "id", true);
    EXPECT_EQ(ReadAll(source), "<");
}

// A source whose reset throws.
struct UnresettableSource : Utf8InputSource {
    UnresettableSource() : Utf8InputSource("<a/>", "stuck.xml", false) {}
    void ResetToStart() override { throw 7; }
};

TEST(InputSourceResetterTest, FailedResetIsLogged)
{
    testsupport::LogCapture log;
    UnresettableSource source;
    {
        const InputSourceResetter resetter(source);
    }
    ASSERT_EQ(log.records.size(), 1u);
    EXPECT_EQ(log.records[0].severity, VLog::Warn);
    EXPECT_EQ(log.records[0].message, VString("InputSourceResetter: \"stuck.xml\" could not be reset to its start"));
}

TEST(InputSourceResetterTest, FailedResetDoesNotReplaceAnotherException)
{
    const testsupport::LogCapture log;
    UnresettableSource source;
    EXPECT_THROW(
        {
            const InputSourceResetter resetter(source);
            throw std::runtime_error("first");
        },
        std::runtime_error);
}

TEST(InputSourceResetterTest, DestructorResetsTheSource)
{
    Utf8InputSource source(" <a/>", "id", true);
    {
        const InputSourceResetter resetter(source);
        EXPECT_EQ(ReadAll(source), "<a/>");
    }
    EXPECT_EQ(ReadAll(source), "<a/>");
}

}  // namespace
