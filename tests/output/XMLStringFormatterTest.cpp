#include "vancorexml/main/parser/XMLStringFormatter.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include <QString>

namespace {

// Returns a text of the maximum length. Nothing writes to its memory, so the system does not provide it.
VString LongestText()
{
    return VString(QString(VString::MaxLength, Qt::Uninitialized));
}

TEST(XMLStringFormatterTest, StartsEmpty)
{
    EXPECT_EQ(XMLStringFormatter().GetOutput(), VString());
}

TEST(XMLStringFormatterTest, DefaultsToLinesIndentedByTwoBlanks)
{
    XMLStringFormatter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", AttributeMap());
        writer.OutputTag("b", AttributeMap());
    }
    EXPECT_EQ(writer.GetOutput(), VString("<a>\n  <b />\n</a>\n"));
}

TEST(XMLStringFormatterTest, UsesTheGivenIndentationAndSingleLineMode)
{
    XMLStringFormatter writer("\t", true);
    {
        const XMLFormatter::Indenter indenter(writer, "a", AttributeMap());
        writer.OutputTag("b", AttributeMap());
    }
    EXPECT_EQ(writer.GetOutput(), VString("<a>\t<b /></a>"));
}

TEST(XMLStringFormatterTest, GetOutputDoesNotClearTheOutput)
{
    XMLStringFormatter writer;
    writer.OutputString("a");
    EXPECT_EQ(writer.GetOutput(), VString("a"));
    writer.OutputString("b");
    EXPECT_EQ(writer.GetOutput(), VString("ab"));
}

TEST(XMLStringFormatterTest, GetOutputIsACopy)
{
    XMLStringFormatter writer;
    writer.OutputString("a");
    const VString before = writer.GetOutput();
    writer.OutputString("b");
    EXPECT_EQ(before, VString("a"));
}

TEST(XMLStringFormatterTest, CopiesWriteIndependently)
{
    XMLStringFormatter writer;
    writer.OutputString("abc");
    writer.OutputString("d");
    XMLStringFormatter copy(writer);
    writer.OutputString("x");
    copy.OutputString("y");
    EXPECT_EQ(writer.GetOutput(), VString("abcdx"));
    EXPECT_EQ(copy.GetOutput(), VString("abcdy"));
}

TEST(XMLStringFormatterTest, OutputCanBeWrittenToItself)
{
    XMLStringFormatter writer;
    writer.OutputString("ab");
    for (int round = 0; round < 3; ++round)
        writer.OutputString(writer.GetOutput());
    EXPECT_EQ(writer.GetOutput(), VString("abababababababab"));
}

TEST(XMLStringFormatterTest, LaterOutputLeavesTheCallersStringUnchanged)
{
    const VString text = "abc";
    XMLStringFormatter writer;
    writer.OutputString(text);
    writer.OutputString("d");
    EXPECT_EQ(text, VString("abc"));
}

TEST(XMLStringFormatterTest, OutputLongerThanAStringThrows)
{
    XMLStringFormatter writer;
    writer.OutputString(LongestText());
    EXPECT_THROW(writer.OutputString("x"), std::length_error);
}

TEST(XMLStringFormatterTest, EveryCallThrowsAfterTooLongText)
{
    XMLStringFormatter writer;
    writer.OutputString("x");
    EXPECT_THROW(writer.OutputString(LongestText()), std::length_error);
    EXPECT_THROW(writer.OutputString("y"), std::length_error);
    EXPECT_THROW(writer.GetOutput(), std::length_error);
}

// Writes no open tags, so that a text of the maximum length fits.
class CloseTagWriter : public XMLStringFormatter {
public:
    void OutputOpenTag(const VString&, const AttributeMap&) override {}
};

TEST(XMLStringFormatterTest, GetOutputThrowsAfterASwallowedFailureOfACloseTag)
{
    CloseTagWriter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", AttributeMap());
        writer.OutputString(LongestText());
    }
    EXPECT_THROW(writer.GetOutput(), std::length_error);
}

}  // namespace
