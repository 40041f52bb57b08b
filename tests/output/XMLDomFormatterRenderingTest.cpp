#include <gtest/gtest.h>

#include <memory>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

const AttributeMap NoAttributes;
const VString LongMarkup = "a text with <markup> & more, over 32 units";

// Makes the protected Format public.
class TestFormatter : public XMLDomFormatter {
public:
    using XMLDomFormatter::Format;
};

TEST(XMLDomFormatterRenderingTest, GetOutputOfAnEmptyDocumentIsEmpty)
{
    EXPECT_EQ(XMLDomFormatter().GetOutput(FormatModeStrict), VString());
}

TEST(XMLDomFormatterRenderingTest, GetOutputWritesHeaderAndCommentsWithoutAnElement)
{
    XMLDomFormatter writer;
    writer.OutputComment("first");
    writer.OutputHeader();
    writer.OutputComment("second");
    EXPECT_EQ(writer.GetOutput(FormatModeContent),
        VString("<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- first -->\n<!-- second -->\n"));
}

TEST(XMLDomFormatterRenderingTest, GetOutputWritesTheFirstElementOnly)
{
    XMLDomFormatter writer;
    writer.OutputTag("a", NoAttributes);
    writer.OutputTag("b", NoAttributes);
    EXPECT_EQ(writer.GetOutput(FormatModeContent), VString("<a />\n"));
}

TEST(XMLDomFormatterRenderingTest, GetOutputPutsCommentsBeforeTheElement)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputComment("inside");
    writer.OutputCloseTag("a");
    EXPECT_EQ(writer.GetOutput(FormatModeContent), VString("<!-- inside -->\n<a />\n"));
}

TEST(XMLDomFormatterRenderingTest, GetOutputWritesAnUnfinishedTree)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", {{"x", "1"}});
    writer.OutputContentTag("b", NoAttributes, "t");
    EXPECT_EQ(writer.GetOutput(FormatModeContent), VString("<a x='1'>\n  <b>t</b>\n</a>\n"));
}

TEST(XMLDomFormatterRenderingTest, GetOutputUsesTheGivenMode)
{
    XMLDomFormatter writer;
    writer.OutputContentTag("a", NoAttributes, LongMarkup);
    EXPECT_EQ(
        writer.GetOutput(FormatModeStrict), VString("<a>a text with &lt;markup&gt; &amp; more, over 32 units</a>\n"));
    EXPECT_EQ(writer.GetOutput(FormatModeContent),
        VString("<a><![CDATA[a text with <markup> & more, over 32 units]]></a>\n"));
}

TEST(XMLDomFormatterRenderingTest, GetOutputWritesBinaryVerbatim)
{
    XMLDomFormatter writer;
    writer.OutputOpenTag("a", NoAttributes);
    writer.OutputBinary(reinterpret_cast<const unsigned char*>("Man"), 3);
    EXPECT_EQ(writer.GetOutput(FormatModeContent), VString("<a>\nTWFu\n</a>\n"));
}

std::unique_ptr<DOMElement> MixedTree()
{
    auto root = std::make_unique<DOMElement>(u"a");
    DOMElement& b = root->AddNewChild("b", nullptr);
    b.AddNewChild("c", nullptr).SetText("&amp;", true);
    b.AddNewChild("d", nullptr);
    b.SetText("inner");
    root->SetText("outer");
    return root;
}

TEST(XMLDomFormatterRenderingTest, FormatDoesNotIndentMixedTextByTheTargetsIndentation)
{
    XMLStringFormatter target;
    TestFormatter().Format(target, *MixedTree());
    EXPECT_EQ(target.GetOutput(),
        VString("<a>\n"
                "  <b>\n"
                "    <c>\n&amp;\n    </c>\n"
                "    <d />\n"
                "inner  </b>\n"
                "outer</a>\n"));
}

TEST(XMLDomFormatterRenderingTest, FormatIndentsMixedTextByItsOwnIndentation)
{
    TestFormatter writer;
    writer.Indent();
    writer.Indent();
    XMLStringFormatter target("", true);
    writer.Format(target, *MixedTree());
    EXPECT_EQ(target.GetOutput(), VString("<a><b><c>&amp;</c><d />    inner</b>    outer</a>"));
}

// Counts the calls of OutputDOMElement.
class ElementCounter : public XMLStringFormatter {
public:
    void OutputDOMElement(const DOMElement& element) override
    {
        ++count;
        XMLStringFormatter::OutputDOMElement(element);
    }

    int count = 0;
};

TEST(XMLDomFormatterRenderingTest, FormatDoesNotCallOutputDOMElementOfTheTarget)
{
    ElementCounter target;
    TestFormatter().Format(target, *MixedTree());
    EXPECT_EQ(target.count, 0);
    EXPECT_FALSE(target.GetOutput().IsEmpty());
}

TEST(XMLDomFormatterRenderingTest, FormatWritesAMillionLevels)
{
    DOMElement root(u"e");
    DOMElement* last = &root;
    for (int level = 1; level < 1000000; ++level)
        last = &last->AddNewChild(u"e", nullptr);
    XMLStringFormatter target("", true);
    TestFormatter().Format(target, root);
    EXPECT_EQ(target.GetOutput().length(), 999999 * 7 + 5);
}

TEST(XMLDomFormatterRenderingTest, RenderAsXMLStringWritesTheDocumentElementInContentMode)
{
    DOM document;
    document.GetRoot().AddNewChild("a", nullptr).AddNewChild("b", nullptr).SetText(LongMarkup);
    VString comment = "c";
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(document, &comment, true),
        VString("<?xml version='1.0' encoding='utf-8' ?>\n\n"
                "<!-- c -->\n"
                "<a>\n"
                "  <b><![CDATA[a text with <markup> & more, over 32 units]]></b>\n"
                "</a>\n"));
}

TEST(XMLDomFormatterRenderingTest, RenderAsXMLStringOfAnEmptyDocumentIsTheHeader)
{
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOM(), nullptr, true),
        VString("<?xml version='1.0' encoding='utf-8' ?>\n\n"));
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOM(), nullptr, false), VString());
}

TEST(XMLDomFormatterRenderingTest, RenderAsXMLStringWritesAnElement)
{
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(*MixedTree(), nullptr, false),
        VString("<a>\n"
                "  <b>\n"
                "    <c>\n&amp;\n    </c>\n"
                "    <d />\n"
                "    inner  </b>\n"
                "  outer</a>\n"));
}

TEST(XMLDomFormatterRenderingTest, RenderAsXMLStringOfAnElementWritesHeaderAndComment)
{
    VString comment = "c";
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOMElement("a"), &comment, true),
        VString("<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- c -->\n<a />\n"));
}

}  // namespace
