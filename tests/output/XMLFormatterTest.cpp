#include "vancorexml/main/parser/XMLFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/output/RecordingWriter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

using outputtest::JoinCalls;
using outputtest::RecordingTreeWriter;
using outputtest::RecordingWriter;
using testing::ElementsAre;
using testing::IsEmpty;

const AttributeMap NoAttributes;

TEST(XMLFormatterTest, ConstantsHoldTheMarkup)
{
    EXPECT_EQ(XMLFormatter::prefixOpen, VString("<"));
    EXPECT_EQ(XMLFormatter::prefixClose, VString("</"));
    EXPECT_EQ(XMLFormatter::suffixOpenClose, VString(">"));
    EXPECT_EQ(XMLFormatter::suffixEmpty, VString(" />"));
    EXPECT_EQ(XMLFormatter::commentOpen, VString("<!--"));
    EXPECT_EQ(XMLFormatter::commentClose, VString("-->"));
}

TEST(XMLFormatterTest, FormatModesHaveFixedValuesAndSize)
{
    EXPECT_EQ(FormatModeStrict, 0);
    EXPECT_EQ(FormatModeContent, 1);
    EXPECT_EQ(sizeof(FormatMode), 4u);
}

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)
// Returns the index of an operation in the virtual table. The first two slots belong to the destructor.
template <typename Operation>
std::size_t SlotOf(Operation operation)
{
    std::array<std::ptrdiff_t, 2> parts;
    static_assert(sizeof operation == sizeof parts);
    std::memcpy(parts.data(), &operation, sizeof parts);
    return static_cast<std::size_t>(parts[0] - 1) / sizeof(void*);
}

TEST(XMLFormatterTest, VirtualOperationsKeepTheirSlots)
{
    using F = XMLFormatter;
    const std::vector<std::size_t> slots = {SlotOf(&F::Indent),
        SlotOf(&F::Undent),
        SlotOf(&F::GetIndent),
        SlotOf(&F::Flush),
        SlotOf(&F::OutputAttributes),
        SlotOf(&F::OutputDOMElement),
        SlotOf(&F::OutputDOMElements),
        SlotOf(static_cast<void (F::*)(const VString&, bool)>(&F::OutputContent)),
        SlotOf(static_cast<void (F::*)(const VString&)>(&F::OutputContent)),
        SlotOf(
            static_cast<void (F::*)(const VString&, const AttributeMap&, const VString&, bool)>(&F::OutputContentTag)),
        SlotOf(static_cast<void (F::*)(const VString&, const AttributeMap&, const VString&)>(&F::OutputContentTag)),
        SlotOf(&F::OutputComment),
        SlotOf(&F::OutputCloseTag),
        SlotOf(&F::OutputOpenTag),
        SlotOf(&F::OutputTag),
        SlotOf(&F::OutputHeader),
        SlotOf(&F::OutputLine),
        SlotOf(&F::OutputString),
        SlotOf(&F::OutputBinary),
        SlotOf(&XMLStringFormatter::GetOutput)};
    EXPECT_THAT(slots, ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21));
}
#endif

TEST(XMLFormatterTest, StartsWithoutIndentation)
{
    EXPECT_EQ(RecordingWriter().GetIndent(), VString());
}

TEST(XMLFormatterTest, DefaultIndentationIsTwoBlanks)
{
    RecordingWriter writer;
    writer.Indent();
    EXPECT_EQ(writer.GetIndent(), VString("  "));
}

TEST(XMLFormatterTest, IndentAddsAndUndentRemovesOneUnit)
{
    RecordingWriter writer("\t.", false);
    writer.Indent();
    writer.Indent();
    EXPECT_EQ(writer.GetIndent(), VString("\t.\t."));
    writer.Undent();
    EXPECT_EQ(writer.GetIndent(), VString("\t."));
}

TEST(XMLFormatterTest, UndentWithoutIndentationDoesNothing)
{
    RecordingWriter writer;
    writer.Undent();
    EXPECT_EQ(writer.GetIndent(), VString());
}

TEST(XMLFormatterTest, FlushWritesNothing)
{
    RecordingWriter writer;
    writer.Flush();
    EXPECT_THAT(writer.pieces, IsEmpty());
}

TEST(XMLFormatterTest, OutputLineAddsALineFeed)
{
    RecordingWriter writer;
    writer.OutputLine("x");
    EXPECT_THAT(writer.calls, ElementsAre("OutputLine(x)", "emit(x)", "emit(\n)"));
}

TEST(XMLFormatterTest, OutputLineOfASingleLineWriterAddsNoLineFeed)
{
    RecordingWriter writer("  ", true);
    writer.OutputLine("x");
    EXPECT_THAT(writer.calls, ElementsAre("OutputLine(x)", "emit(x)"));
}

TEST(XMLFormatterTest, OutputHeaderWritesTheDeclarationAndAnEmptyLine)
{
    RecordingWriter writer;
    writer.OutputHeader();
    EXPECT_THAT(writer.calls,
        ElementsAre("OutputHeader",
            "OutputLine(<?xml version='1.0' encoding='utf-8' ?>)",
            "emit(<?xml version='1.0' encoding='utf-8' ?>)",
            "emit(\n)",
            "OutputLine()",
            "emit()",
            "emit(\n)"));
}

TEST(XMLFormatterTest, OutputHeaderOfASingleLineWriterWritesNoEmptyLine)
{
    XMLStringFormatter writer("  ", true);
    writer.OutputHeader();
    EXPECT_EQ(writer.GetOutput(), VString("<?xml version='1.0' encoding='utf-8' ?>"));
}

TEST(XMLFormatterTest, OutputOpenTagCallsOutputAttributesAndOutputLine)
{
    RecordingWriter writer;
    writer.Indent();
    writer.calls.clear();
    writer.OutputOpenTag("a", {{"y", "2"}, {"x", "1"}});
    EXPECT_EQ(JoinCalls(writer.calls),
        "OutputOpenTag(a), emit(  ), emit(<), emit(a), "
        "OutputAttributes(2), emit( x='1'), emit( y='2'), OutputLine(>), emit(>), emit(\n)");
}

TEST(XMLFormatterTest, OutputTagEndsWithABlankAndASlash)
{
    RecordingWriter writer;
    writer.OutputTag("a", NoAttributes);
    EXPECT_EQ(JoinCalls(writer.calls),
        "OutputTag(a), emit(), emit(<), emit(a), OutputAttributes(0), OutputLine( />), emit( />), emit(\n)");
}

TEST(XMLFormatterTest, OutputCloseTagCallsOutputLine)
{
    RecordingWriter writer;
    writer.Indent();
    writer.calls.clear();
    writer.OutputCloseTag("a");
    EXPECT_THAT(writer.calls,
        ElementsAre("OutputCloseTag(a)", "emit(  )", "emit(</)", "emit(a)", "OutputLine(>)", "emit(>)", "emit(\n)"));
}

TEST(XMLFormatterTest, OutputAttributesOfAnEmptyMapEmitsNothing)
{
    RecordingWriter writer;
    writer.OutputAttributes(NoAttributes);
    EXPECT_THAT(writer.pieces, IsEmpty());
}

TEST(XMLFormatterTest, OutputAttributesEmitsEachEscapedAttributeAsOnePiece)
{
    RecordingWriter writer;
    writer.OutputAttributes({{"a", "it's\n\t\r\"<&>"}});
    EXPECT_THAT(writer.pieces, ElementsAre(" a='it&apos;s&#10;&#9;&#13;&quot;&lt;&amp;&gt;'"));
}

TEST(XMLFormatterTest, OutputAttributesSortsByCodeUnitsOfTheName)
{
    AttributeMap attributes;
    std::vector<std::string> expected;
    for (int i = 99; i >= 10; --i)
        attributes.insert_or_assign(VString::number(i), "v");
    for (int i = 10; i <= 99; ++i)
        expected.push_back(" " + std::to_string(i) + "='v'");
    for (const char* name : {"ä", "a", "Z"})
        attributes.insert_or_assign(name, "v");
    for (const char* name : {"Z", "a", "ä"})
        expected.push_back(" " + std::string(name) + "='v'");
    RecordingWriter writer;
    writer.OutputAttributes(attributes);
    EXPECT_EQ(writer.pieces, expected);
}

TEST(XMLFormatterTest, OutputContentEscapesTextByDefault)
{
    RecordingWriter writer;
    writer.OutputContent("a<b");
    EXPECT_THAT(writer.calls, ElementsAre("OutputContent(a<b)", "OutputContent escaped(a<b)", "emit(a&lt;b)"));
}

const VString LongText = "a text with <markup> that is long enough\n";

TEST(XMLFormatterTest, StrictModeEscapesContentLikeAttributes)
{
    RecordingWriter writer;
    writer.OutputContent(LongText, false);
    EXPECT_THAT(writer.pieces, ElementsAre("a text with &lt;markup&gt; that is long enough&#10;"));
}

class XMLFormatterModeTest : public testing::TestWithParam<int> {};

TEST_P(XMLFormatterModeTest, LongMarkupIsWrittenAsCData)
{
    RecordingWriter writer;
    writer.SetFormatMode(static_cast<FormatMode>(GetParam()));
    writer.OutputContent(LongText, false);
    EXPECT_THAT(writer.pieces, ElementsAre("<![CDATA[a text with <markup> that is long enough\n]]>"));
}

INSTANTIATE_TEST_SUITE_P(NonZeroModes, XMLFormatterModeTest, testing::Values(1, 2, -1), [](const auto& row) {
    return row.param < 0 ? "Negative" : "Number" + std::to_string(row.param);
});

TEST(XMLFormatterTest, FormatModeCanBeReset)
{
    RecordingWriter writer;
    writer.SetFormatMode(FormatModeContent);
    writer.SetFormatMode(FormatModeStrict);
    writer.OutputContent(LongText, false);
    EXPECT_THAT(writer.pieces, ElementsAre("a text with &lt;markup&gt; that is long enough&#10;"));
}

struct VerbatimRow {
    const char* name;
    const char* text;
    bool singleLine;
    std::vector<std::string> calls;
};

class XMLFormatterVerbatimTest : public testing::TestWithParam<VerbatimRow> {};

TEST_P(XMLFormatterVerbatimTest, VerbatimTextHasItsOwnLinesBeforeTheIndentation)
{
    RecordingWriter writer("  ", GetParam().singleLine);
    writer.Indent();
    writer.calls.clear();
    writer.OutputContent(GetParam().text, true);
    writer.calls.erase(writer.calls.begin());
    EXPECT_EQ(writer.calls, GetParam().calls);
}

const VerbatimRow VerbatimRows[] = {
    {"WithoutLineFeeds", "<&'>", false, {"emit(\n)", "emit(<&'>)", "emit(\n)", "GetIndent", "emit(  )"}},
    {"StartsWithALineFeed", "\nx", false, {"emit(\nx)", "emit(\n)", "GetIndent", "emit(  )"}},
    {"EndsWithALineFeed", "x\n", false, {"emit(\n)", "emit(x\n)", "GetIndent", "emit(  )"}},
    {"OneLineFeed", "\n", false, {"emit(\n)", "GetIndent", "emit(  )"}},
    {"Empty", "", false, {"emit(\n)", "emit()", "emit(\n)", "GetIndent", "emit(  )"}},
    {"SingleLine", "x", true, {"emit(x)", "GetIndent", "emit(  )"}},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLFormatterVerbatimTest, testing::ValuesIn(VerbatimRows), [](const auto& row) { return row.param.name; });

TEST(XMLFormatterTest, OutputContentTagCallsOutputAttributesOutputContentAndOutputLine)
{
    RecordingWriter writer;
    writer.OutputContentTag("a", {{"x", "1"}}, "<", true);
    EXPECT_EQ(JoinCalls(writer.calls),
        "OutputContentTag encode(a), GetIndent, emit(), emit(<), emit(a), "
        "OutputAttributes(1), emit( x='1'), emit(>), "
        "OutputContent escaped(<), emit(&lt;), emit(</), emit(a), OutputLine(>), emit(>), emit(\n)");
}

TEST(XMLFormatterTest, OutputContentTagWithoutEncodeIsVerbatim)
{
    XMLStringFormatter writer;
    writer.Indent();
    writer.OutputContentTag("a", NoAttributes, "<b />", false);
    EXPECT_EQ(writer.GetOutput(), VString("  <a>\n<b />\n  </a>\n"));
}

TEST(XMLFormatterTest, ThreeArgumentOutputContentTagEncodes)
{
    RecordingWriter writer;
    writer.OutputContentTag("a", NoAttributes, "x");
    EXPECT_THAT(std::vector<std::string>(writer.calls.begin(), writer.calls.begin() + 3),
        ElementsAre("OutputContentTag(a)", "OutputContentTag encode(a)", "GetIndent"));
}

TEST(XMLFormatterTest, OutputCommentCallsGetIndentAndOutputLine)
{
    RecordingWriter writer;
    writer.Indent();
    writer.calls.clear();
    writer.OutputComment("a--b");
    EXPECT_EQ(JoinCalls(writer.calls),
        "OutputComment(a--b), GetIndent, emit(  ), emit(<!--), emit( a-&45;b ), "
        "OutputLine(-->), emit(-->), emit(\n)");
}

struct CommentRow {
    const char* name;
    const char* text;
    const char* written;
};

class XMLFormatterCommentTest : public testing::TestWithParam<CommentRow> {};

TEST_P(XMLFormatterCommentTest, PairsOfHyphensAreBroken)
{
    XMLStringFormatter writer;
    writer.OutputComment(GetParam().text);
    EXPECT_EQ(writer.GetOutput(), VString(GetParam().written));
}

const CommentRow CommentRows[] = {
    {"Empty", "", "<!--  -->\n"},
    {"Pair", "a--b", "<!-- a-&45;b -->\n"},
    {"TwoPairs", "--a--", "<!-- -&45;a-&45; -->\n"},
    {"ThreeHyphens", "---", "<!-- -&45;- -->\n"},
    {"FourHyphens", "----", "<!-- -&45;-&45; -->\n"},
    {"LastHyphen", "a-", "<!-- a- -->\n"},
    {"NothingElseIsEscaped", "<&\n", "<!-- <&\n -->\n"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLFormatterCommentTest, testing::ValuesIn(CommentRows), [](const auto& row) { return row.param.name; });

TEST(XMLFormatterTest, OutputBinaryWritesIndentedLinesOfBase64)
{
    RecordingWriter writer;
    writer.Indent();
    writer.calls.clear();
    const std::vector<unsigned char> bytes(55, 0);
    writer.OutputBinary(bytes.data(), 55);
    const std::string full(72, 'A');
    EXPECT_THAT(writer.calls,
        ElementsAre("OutputBinary(55)",
            "emit(  )",
            "OutputLine(" + full + ")",
            "emit(" + full + ")",
            "emit(\n)",
            "emit(  )",
            "OutputLine(AA==)",
            "emit(AA==)",
            "emit(\n)"));
}

TEST(XMLFormatterTest, OutputBinaryOfNoBytesWritesNothing)
{
    RecordingWriter writer;
    writer.OutputBinary(nullptr, 0);
    EXPECT_THAT(writer.pieces, IsEmpty());
}

TEST(XMLFormatterTest, IndenterOpensAndIndentsThenUndentsAndCloses)
{
    RecordingWriter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", {{"x", "1"}});
        EXPECT_THAT(writer.calls, testing::Contains("OutputOpenTag(a)"));
        EXPECT_EQ(writer.calls.back(), "Indent");
        writer.calls.clear();
    }
    EXPECT_EQ(JoinCalls(writer.calls),
        "Undent, OutputCloseTag(a), emit(), emit(</), emit(a), OutputLine(>), emit(>), emit(\n)");
}

TEST(XMLFormatterTest, IndenterKeepsACopyOfTheTag)
{
    XMLStringFormatter writer("", true);
    {
        VString tag = "a";
        const XMLFormatter::Indenter indenter(writer, tag, NoAttributes);
        tag = "b";
    }
    EXPECT_EQ(writer.GetOutput(), VString("<a></a>"));
}

TEST(XMLFormatterTest, IndenterSwallowsExceptionsOfTheCloseTag)
{
    RecordingWriter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", NoAttributes);
        writer.FailFrom(0);
    }
    EXPECT_EQ(writer.calls.back(), "emit()");
}

TEST(XMLFormatterTest, IndenterPropagatesExceptionsOfTheOpenTag)
{
    RecordingWriter writer;
    writer.FailOnce(1);
    EXPECT_THROW(XMLFormatter::Indenter(writer, "a", NoAttributes), std::runtime_error);
    EXPECT_EQ(writer.calls.back(), "emit(<)");
}

TEST(XMLFormatterTest, OperationsPropagateExceptionsOfTheSink)
{
    RecordingWriter writer;
    writer.FailOnce(2);
    EXPECT_THROW(writer.OutputTag("a", NoAttributes), std::runtime_error);
    EXPECT_EQ(writer.calls.back(), "emit(a)");
}

}  // namespace
