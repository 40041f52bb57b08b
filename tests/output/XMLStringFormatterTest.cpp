#include "vancorexml/main/parser/XMLStringFormatter.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include <QString>

namespace {

// As long as a string can be; its memory is never touched.
VString LongestText()
{
    return VString(QString(VString::MaxLength, Qt::Uninitialized));
}

TEST(XMLStringFormatterTest, StartsEmpty)
{
    EXPECT_EQ(XMLStringFormatter().GetOutput(), VString());
}

TEST(XMLStringFormatterTest, DefaultsToTwoBlanksAndLines)
{
    XMLStringFormatter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", AttributeMap());
        writer.OutputTag("b", AttributeMap());
    }
    EXPECT_EQ(writer.GetOutput(), VString("<a>\n  <b />\n</a>\n"));
}

TEST(XMLStringFormatterTest, TakesUnitAndSingleLine)
{
    XMLStringFormatter writer("\t", true);
    {
        const XMLFormatter::Indenter indenter(writer, "a", AttributeMap());
        writer.OutputTag("b", AttributeMap());
    }
    EXPECT_EQ(writer.GetOutput(), VString("<a>\t<b /></a>"));
}

TEST(XMLStringFormatterTest, GetOutputKeepsWhatWasWritten)
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

TEST(XMLStringFormatterTest, CopiesWriteOnByThemselves)
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

TEST(XMLStringFormatterTest, OwnOutputCanBeWrittenAgain)
{
    XMLStringFormatter writer;
    writer.OutputString("ab");
    for (int round = 0; round < 3; ++round)
        writer.OutputString(writer.GetOutput());
    EXPECT_EQ(writer.GetOutput(), VString("abababababababab"));
}

TEST(XMLStringFormatterTest, WritingLaterTextLeavesTheCallersStringUnchanged)
{
    const VString text = "abc";
    XMLStringFormatter writer;
    writer.OutputString(text);
    writer.OutputString("d");
    EXPECT_EQ(text, VString("abc"));
}

TEST(XMLStringFormatterTest, TooMuchTextThrows)
{
    XMLStringFormatter writer;
    writer.OutputString(LongestText());
    EXPECT_THROW(writer.OutputString("x"), std::length_error);
}

TEST(XMLStringFormatterTest, TooMuchTextStaysAFailure)
{
    XMLStringFormatter writer;
    writer.OutputString("x");
    EXPECT_THROW(writer.OutputString(LongestText()), std::length_error);
    EXPECT_THROW(writer.OutputString("y"), std::length_error);
    EXPECT_THROW(writer.GetOutput(), std::length_error);
}

// Writes nothing to open an element, so that a shared text can fill the buffer.
class CloseTagWriter : public XMLStringFormatter {
public:
    void OutputOpenTag(const VString&, const AttributeMap&) override {}
};

TEST(XMLStringFormatterTest, TextCutInASwallowedCloseTagIsNotGivenOut)
{
    CloseTagWriter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", AttributeMap());
        writer.OutputString(LongestText());
    }
    EXPECT_THROW(writer.GetOutput(), std::length_error);
}

}  // namespace
