#include "vancorexml/main/parser/XMLDomFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace {

constexpr char SourceFile[] = "vancorexml\\main\\parser\\XMLDomFormatter";

const AttributeMap NoAttributes;
const AttributeMap SomeAttributes = {{"x", "1"}, {"y", "2"}};

// Makes the protected constructor public.
class TestFormatter : public XMLDomFormatter {
public:
    TestFormatter() = default;
    explicit TestFormatter(std::unique_ptr<DOM> document) : XMLDomFormatter(std::move(document)) {}
};

TEST(XMLDomFormatterTest, StartsWithAnEmptyDocument)
{
    XMLDomFormatter writer;
    EXPECT_EQ(writer.GetRoot().GetName(), VString("Document"));
    EXPECT_EQ(writer.GetDocumentRoot(), nullptr);
    EXPECT_EQ(&writer.GetRoot(), &writer.GetDocument().GetRoot());
}

TEST(XMLDomFormatterTest, IndentsByTwoBlanks)
{
    XMLDomFormatter writer;
    writer.Indent();
    EXPECT_EQ(writer.GetIndent(), VString("  "));
}

TEST(XMLDomFormatterTest, AppendsToAGivenDocument)
{
    auto document = std::make_unique<DOM>();
    DOM* const given = document.get();
    document->GetRoot().AddNewChild("a", nullptr);
    TestFormatter writer(std::move(document));
    writer.OutputTag("b", NoAttributes);
    EXPECT_EQ(&writer.GetDocument(), given);
    ASSERT_EQ(writer.GetRoot().GetChildren().size(), 2u);
    EXPECT_EQ(writer.GetRoot().GetChildren()[1]->GetName(), VString("b"));
}

TEST(XMLDomFormatterTest, GetElementFindsAnElementByName)
{
    XMLDomFormatter writer;
    writer.OutputTag("a", NoAttributes);
    EXPECT_EQ(writer.GetElement("a"), writer.GetDocumentRoot());
    EXPECT_EQ(writer.GetElement("b"), nullptr);
}

TEST(XMLDomFormatterTest, OutputOpenTagMakesTheNextElementAChild)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", SomeAttributes);
    writer.OutputTag("b", NoAttributes);
    const DOMElement* a = writer.GetDocumentRoot();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->GetAttributes(), SomeAttributes);
    ASSERT_EQ(a->GetChildren().size(), 1u);
    EXPECT_EQ(a->GetChildren().front()->GetName(), VString("b"));
    EXPECT_EQ(a->GetDOMManager(), &writer.GetDocument());
}

TEST(XMLDomFormatterTest, OutputTagMakesTheNextElementASibling)
{
    XMLDomFormatter writer;
    writer.OutputTag("a", SomeAttributes);
    writer.OutputTag("b", NoAttributes);
    EXPECT_EQ(writer.GetRoot().GetChildren().size(), 2u);
    EXPECT_EQ(writer.GetDocumentRoot()->GetAttributes(), SomeAttributes);
}

TEST(XMLDomFormatterTest, OutputCloseTagReturnsToTheParent)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputCloseTag("a");
    writer.OutputTag("b", NoAttributes);
    EXPECT_EQ(writer.GetRoot().GetChildren().size(), 2u);
}

TEST(XMLDomFormatterTest, OutputCloseTagWithAnotherNameAssertsAndClosesNothing)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    testsupport::ExpectLogicException(
        [&writer] { writer.OutputCloseTag("b"); }, SourceFile, 158, "e->GetName() == tag", 0x956FC18E);
    writer.OutputTag("c", NoAttributes);
    EXPECT_NE(writer.GetDocumentRoot()->GetChild("c"), nullptr);
}

TEST(XMLDomFormatterTest, OutputAttributesReplacesTheAttributesOfTheOpenElement)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", {{"z", "0"}});
    writer.OutputAttributes(SomeAttributes);
    EXPECT_EQ(writer.GetDocumentRoot()->GetAttributes(), SomeAttributes);
}

TEST(XMLDomFormatterTest, OutputDOMElementAppendsACopy)
{
    DOMElement element("e");
    element.SetText("t");
    element.AddNewChild("f", nullptr);
    XMLDomFormatter writer;
    writer.OutputTag("a", NoAttributes);
    writer.OutputDOMElement(element);
    const DOMElement* copy = writer.GetRoot().GetChildren().back();
    EXPECT_NE(copy, &element);
    EXPECT_EQ(*copy, element);
    EXPECT_EQ(copy->GetParent(), &writer.GetRoot());
}

TEST(XMLDomFormatterTest, OutputDOMElementsAppendsACopyOfEach)
{
    DOMElement element("e");
    element.AddNewChild("f", nullptr);
    element.AddNewChild("g", nullptr);
    XMLDomFormatter writer;
    writer.OutputDOMElements(element.GetChildren());
    ASSERT_EQ(writer.GetRoot().GetChildren().size(), 2u);
    EXPECT_EQ(writer.GetRoot().GetChildren()[1]->GetName(), VString("g"));
}

// Returns the names in the subtree of `element`, such as "a(b c(d))".
std::string NamesOf(const DOMElement& element)
{
    std::string names;
    for (const DOMElement* child : element.GetChildren())
        names += (names.empty() ? "" : " ") + NamesOf(*child);
    return element.GetName().toStdString() + (names.empty() ? "" : "(" + names + ")");
}

TEST(XMLDomFormatterTest, OutputDOMElementsCopiesTheChildrenOfTheOpenElementOnce)
{
    // With 127 children, the list of children is full. Appending the first copy reallocates the list while the
    // operation reads it.
    constexpr std::size_t count = 127;
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    for (std::size_t i = 0; i < count; ++i)
        writer.OutputContentTag("b", NoAttributes, VString::number(i));
    writer.OutputDOMElements(writer.GetDocumentRoot()->GetChildren());
    const auto children = writer.GetDocumentRoot()->GetChildren();
    ASSERT_EQ(children.size(), 2 * count);
    for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(*children[i + count], *children[i]);
}

TEST(XMLDomFormatterTest, OutputDOMElementsCopiesTheChildrenOfAnAncestor)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputTag("b", NoAttributes);
    writer.OutputOpenTag("c", NoAttributes);
    writer.OutputDOMElements(writer.GetDocumentRoot()->GetChildren());
    EXPECT_EQ(NamesOf(*writer.GetDocumentRoot()), "a(b c(b c(b)))");
}

TEST(XMLDomFormatterTest, OutputDOMElementAppendsACopyOfTheOpenElementToItself)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", SomeAttributes);
    writer.OutputTag("b", NoAttributes);
    writer.OutputDOMElement(*writer.GetDocumentRoot());
    EXPECT_EQ(NamesOf(*writer.GetDocumentRoot()), "a(b a(b))");
}

TEST(XMLDomFormatterTest, OutputDOMElementAppendsACopyOfTheDocumentToTheOpenElement)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputOpenTag("b", NoAttributes);
    writer.OutputDOMElement(writer.GetRoot());
    EXPECT_EQ(NamesOf(writer.GetRoot()), "Document(a(b(Document(a(b)))))");
}

// Writes elements tag by tag. XMLDomFormatter itself would copy them.
class TagWriter : public XMLDomFormatter {
public:
    void OutputDOMElement(const DOMElement& element) override { XMLFormatter::OutputDOMElement(element); }
};

TEST(XMLDomFormatterTest, OpenElementCanBeWrittenIntoItselfTagByTag)
{
    TagWriter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputTag("b", NoAttributes);
    writer.OutputTag("c", NoAttributes);
    writer.OutputDOMElement(*writer.GetDocumentRoot());
    EXPECT_EQ(NamesOf(*writer.GetDocumentRoot()), "a(b c a(b c))");
}

TEST(XMLDomFormatterTest, ArgumentsMayReferToTheOpenElement)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", SomeAttributes);
    const DOMElement& a = *writer.GetDocumentRoot();
    writer.OutputString("t");
    writer.OutputContentTag(a.GetName(), a.GetAttributes(), a.GetText());
    writer.OutputAttributes(a.GetAttributes());
    writer.OutputString(a.GetText());
    writer.OutputContent(a.GetText(), false);
    EXPECT_EQ(a.GetText(), VString("tt"));
    EXPECT_EQ(a.GetAttributes(), SomeAttributes);
    EXPECT_EQ(a.GetChildren().front()->GetText(), VString("t"));
    writer.OutputCloseTag(a.GetName());
}

TEST(XMLDomFormatterTest, OutputContentReplacesTheText)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputContent("first", false);
    writer.OutputContent("a < b", false);
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString("a < b"));
    EXPECT_FALSE(writer.GetDocumentRoot()->IsEncoded());
}

TEST(XMLDomFormatterTest, OutputContentMarksEncodedText)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputContent("&amp;", true);
    EXPECT_TRUE(writer.GetDocumentRoot()->IsEncoded());
}

TEST(XMLDomFormatterTest, OutputContentWithoutTheFlagIsNotEncoded)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputContent("<");
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString("<"));
    EXPECT_FALSE(writer.GetDocumentRoot()->IsEncoded());
}

TEST(XMLDomFormatterTest, OutputContentTagMakesAClosedElementWithText)
{
    XMLDomFormatter writer;
    writer.OutputContentTag("a", SomeAttributes, "a < b");
    writer.OutputTag("b", NoAttributes);
    EXPECT_EQ(writer.GetRoot().GetChildren().size(), 2u);
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString("a < b"));
    EXPECT_EQ(writer.GetDocumentRoot()->GetAttributes(), SomeAttributes);
    EXPECT_FALSE(writer.GetDocumentRoot()->IsEncoded());
}

TEST(XMLDomFormatterTest, OutputContentTagWithTheFlagWritesItsTagsAsText)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", {{"z", "0"}});
    writer.OutputContentTag("b", SomeAttributes, "t", true);
    const DOMElement* a = writer.GetDocumentRoot();
    EXPECT_FALSE(a->HasChildren());
    EXPECT_EQ(a->GetAttributes(), SomeAttributes);
    // The operation writes the open tag as text, replaces it by the content, and appends the close tag.
    EXPECT_EQ(a->GetText(), VString("t</b>\n"));
}

TEST(XMLDomFormatterTest, OutputStringAppendsToTheText)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputString("t");
    writer.OutputString("u");
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString("tu"));
}

TEST(XMLDomFormatterTest, OutputLineAppendsALine)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputLine("t");
    writer.OutputLine("u");
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString("t\nu\n"));
}

TEST(XMLDomFormatterTest, OutputBinaryStoresBase64LinesAsEncodedText)
{
    const std::vector<unsigned char> bytes(55, 0);
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.Indent();
    writer.OutputBinary(bytes.data(), 55);
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString::fromStdString("  " + std::string(72, 'A') + "\n  AA==\n"));
    EXPECT_TRUE(writer.GetDocumentRoot()->IsEncoded());
}

TEST(XMLDomFormatterTest, OutputBinaryOfNoBytesMarksTheElementEncoded)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputBinary(nullptr, 0);
    EXPECT_FALSE(writer.GetDocumentRoot()->HasText());
    EXPECT_TRUE(writer.GetDocumentRoot()->IsEncoded());
}

TEST(XMLDomFormatterTest, OutputBinaryAssertsIfTheElementHasText)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputString("t");
    testsupport::ExpectLogicException(
        [&writer] { writer.OutputBinary(nullptr, 0); }, SourceFile, 139, "!e->HasText()", 0x9C70B807);
    EXPECT_EQ(writer.GetDocumentRoot()->GetText(), VString("t"));
}

TEST(XMLDomFormatterTest, OutputCommentDoesNotChangeTheTree)
{
    XMLDomFormatter writer;
    writer.OutputComment("c");
    EXPECT_TRUE(writer.GetRoot().IsEmpty());
}

TEST(XMLDomFormatterTest, OutputHeaderDoesNotChangeTheTree)
{
    XMLDomFormatter writer;
    writer.OutputHeader();
    EXPECT_TRUE(writer.GetRoot().IsEmpty());
}

TEST(XMLDomFormatterTest, IndenterOpensAndClosesAnElement)
{
    XMLDomFormatter writer;
    {
        const XMLFormatter::Indenter indenter(writer, "a", SomeAttributes);
        writer.OutputTag("b", NoAttributes);
    }
    writer.OutputTag("c", NoAttributes);
    EXPECT_EQ(writer.GetIndent(), VString());
    ASSERT_EQ(writer.GetRoot().GetChildren().size(), 2u);
    EXPECT_EQ(writer.GetDocumentRoot()->GetChildren().size(), 1u);
}

struct OperationRow {
    const char* name;
    std::function<void(XMLDomFormatter&)> run;
    std::uint32_t code;
    int line;
};

class XMLDomFormatterClosedTest : public testing::TestWithParam<OperationRow> {
protected:
    void ExpectAssertion(XMLDomFormatter& writer) const
    {
        const OperationRow& row = GetParam();
        const auto run = [&row, &writer] { row.run(writer); };
        testsupport::ExpectLogicException(run, SourceFile, row.line, "m_stack.top() != nullptr", row.code);
    }
};

TEST_P(XMLDomFormatterClosedTest, AssertsAfterTheTopmostElementIsClosed)
{
    XMLDomFormatter writer;
    writer.OutputCloseTag("Document");
    ExpectAssertion(writer);
    EXPECT_TRUE(writer.GetRoot().IsEmpty());
}

TEST_P(XMLDomFormatterClosedTest, AssertsAfterTakeDocument)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    const std::unique_ptr<DOM> document = writer.TakeDocument();
    ExpectAssertion(writer);
    EXPECT_TRUE(document->GetDocumentRoot()->IsEmpty());
}

const OperationRow Operations[] = {
    {"OutputAttributes", [](XMLDomFormatter& w) { w.OutputAttributes(SomeAttributes); }, 0x5619328D, 128},
    {"OutputDOMElement", [](XMLDomFormatter& w) { w.OutputDOMElement(DOMElement("e")); }, 0xD26E62DD, 191},
    {"OutputContent", [](XMLDomFormatter& w) { w.OutputContent("t", false); }, 0xCE4F4D17, 173},
    {"OutputContentWithoutTheFlag", [](XMLDomFormatter& w) { w.OutputContent("t"); }, 0xCE4F4D17, 173},
    {"OutputContentTag", [](XMLDomFormatter& w) { w.OutputContentTag("e", SomeAttributes, "t"); }, 0x2AF5921A, 181},
    {"OutputComment", [](XMLDomFormatter& w) { w.OutputComment("c"); }, 0xBA49C527, 165},
    {"OutputCloseTag", [](XMLDomFormatter& w) { w.OutputCloseTag("Document"); }, 0x5C6709A4, 155},
    {"OutputOpenTag", [](XMLDomFormatter& w) { w.OutputOpenTag("e", SomeAttributes); }, 0xE04AB21E, 215},
    {"OutputTag", [](XMLDomFormatter& w) { w.OutputTag("e", SomeAttributes); }, 0xE6086904, 233},
    {"OutputHeader", [](XMLDomFormatter& w) { w.OutputHeader(); }, 0x968B6274, 200},
    {"OutputLine", [](XMLDomFormatter& w) { w.OutputLine("t"); }, 0x0F7E4CE7, 206},
    {"OutputString", [](XMLDomFormatter& w) { w.OutputString("t"); }, 0x32368D81, 225},
    {"OutputBinary", [](XMLDomFormatter& w) { w.OutputBinary(nullptr, 0); }, 0xE813A351, 136},
};

INSTANTIATE_TEST_SUITE_P(Operations, XMLDomFormatterClosedTest, testing::ValuesIn(Operations), [](const auto& row) {
    return row.param.name;
});

TEST(XMLDomFormatterTest, RejectedCommentAndHeaderAreNotWritten)
{
    XMLDomFormatter writer;
    writer.OutputCloseTag("Document");
    EXPECT_THROW(writer.OutputComment("c"), LogicException);
    EXPECT_THROW(writer.OutputHeader(), LogicException);
    EXPECT_EQ(writer.GetOutput(FormatModeContent), VString());
}

TEST(XMLDomFormatterTest, TakeDocumentReleasesTheDocument)
{
    XMLDomFormatter writer;
    writer.OutputTag("a", NoAttributes);
    DOM* const built = &writer.GetDocument();
    const std::unique_ptr<DOM> document = writer.TakeDocument();
    EXPECT_EQ(document.get(), built);
    EXPECT_EQ(document->GetDocumentRoot()->GetName(), VString("a"));
    EXPECT_EQ(writer.TakeDocument(), nullptr);
}

TEST(XMLDomFormatterTest, AccessorsAssertAfterTakeDocument)
{
    XMLDomFormatter writer;
    writer.TakeDocument();
    testsupport::ExpectLogicException([&writer] { writer.GetDocument(); },
        "vancorexml\\main\\parser\\XMLDomFormatter",
        189,
        "m_document != nullptr",
        0x7C21D94B);
    EXPECT_THROW(writer.GetDocumentRoot(), LogicException);
    EXPECT_THROW(writer.GetRoot(), LogicException);
    EXPECT_THROW(writer.GetElement("a"), LogicException);
    EXPECT_THROW(writer.GetOutput(FormatModeContent), LogicException);
}

}  // namespace
