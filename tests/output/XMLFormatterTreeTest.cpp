#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "tests/output/RecordingWriter.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/XMLFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

using outputtest::JoinCalls;
using outputtest::RecordingTreeWriter;
using outputtest::RecordingWriter;
using testing::ElementsAre;
using testing::Not;

constexpr int DeepLevels = 1000000;

std::unique_ptr<DOMElement> DeepTree()
{
    auto root = std::make_unique<DOMElement>(u"e");
    DOMElement* last = root.get();
    for (int level = 1; level < DeepLevels; ++level)
        last = &last->AddNewChild(u"e", nullptr);
    return root;
}

// Each level is "<e>" and "</e>", except for the innermost, which is "<e />".
constexpr std::size_t DeepTextLength = (DeepLevels - 1) * std::size_t(3 + 4) + 5;

// Returns the element a with an attribute, a text and three children: b is empty, c has a text, and d has an
// encoded text and a child e, which has an encoded text too.
std::unique_ptr<DOMElement> SmallTree()
{
    auto root = std::make_unique<DOMElement>(u"a");
    root->SetAttribute("x", "1");
    root->AddNewChild("b", nullptr);
    root->AddNewChild("c", nullptr).SetText("<");
    DOMElement& d = root->AddNewChild("d", nullptr);
    d.AddNewChild("e", nullptr).SetText("<f />", true);
    d.SetText("&amp;", true);
    root->SetText("t & u");
    return root;
}

template <typename Writer>
VString Write(const DOMElement& element)
{
    Writer writer;
    writer.OutputDOMElement(element);
    return writer.GetOutput();
}

TEST(XMLFormatterTreeTest, EmptyElementIsWrittenByOutputTag)
{
    RecordingTreeWriter writer;
    writer.OutputDOMElement(DOMElement("a"));
    EXPECT_THAT(std::vector<std::string>(writer.calls.begin(), writer.calls.begin() + 3),
        ElementsAre("OutputDOMElement(a)", "OutputTag(a)", "emit()"));
}

TEST(XMLFormatterTreeTest, TextIsWrittenByOutputContentTagWithEncoding)
{
    DOMElement element("a");
    element.SetText("t");
    RecordingTreeWriter writer;
    writer.OutputDOMElement(element);
    EXPECT_THAT(std::vector<std::string>(writer.calls.begin(), writer.calls.begin() + 3),
        ElementsAre("OutputDOMElement(a)", "OutputContentTag encode(a)", "GetIndent"));
}

TEST(XMLFormatterTreeTest, EncodedTextIsWrittenByOutputContentTagVerbatim)
{
    DOMElement element("a");
    element.SetText("&amp;", true);
    RecordingTreeWriter writer;
    writer.OutputDOMElement(element);
    EXPECT_THAT(std::vector<std::string>(writer.calls.begin(), writer.calls.begin() + 3),
        ElementsAre("OutputDOMElement(a)", "OutputContentTag verbatim(a)", "GetIndent"));
}

TEST(XMLFormatterTreeTest, ChildrenAreWrittenBeforeTheText)
{
    EXPECT_EQ(Write<XMLStringFormatter>(*SmallTree()),
        VString("<a x='1'>\n"
                "  <b />\n"
                "  <c>&lt;</c>\n"
                "  <d>\n"
                "    <e>\n<f />\n    </e>\n"
                "    \n&amp;\n      </d>\n"
                "  t &amp; u</a>\n"));
}

TEST(XMLFormatterTreeTest, ElementWithChildrenIsWrittenByOpenTagChildrenTextAndCloseTag)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    element.SetText("t");
    RecordingTreeWriter writer("", true);
    writer.OutputDOMElement(element);
    EXPECT_EQ(JoinCalls(writer.calls),
        "OutputDOMElement(a), "
        "OutputOpenTag(a), emit(), emit(<), emit(a), OutputAttributes(0), OutputLine(>), emit(>), Indent, "
        "OutputDOMElement(b), "
        "OutputTag(b), emit(), emit(<), emit(b), OutputAttributes(0), OutputLine( />), emit( />), "
        "GetIndent, emit(), OutputContent escaped(t), emit(t), "
        "Undent, OutputCloseTag(a), emit(), emit(</), emit(a), OutputLine(>), emit(>)");
}

TEST(XMLFormatterTreeTest, OutputDOMElementsWritesElementsInOrder)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    element.AddNewChild("c", nullptr);
    RecordingTreeWriter writer("", true);
    writer.OutputDOMElements(element.GetChildren());
    EXPECT_EQ(JoinCalls(writer.calls),
        "OutputDOMElements(2), "
        "OutputDOMElement(b), "
        "OutputTag(b), emit(), emit(<), emit(b), OutputAttributes(0), OutputLine( />), emit( />), "
        "OutputDOMElement(c), "
        "OutputTag(c), emit(), emit(<), emit(c), OutputAttributes(0), OutputLine( />), emit( />)");
}

std::vector<std::string> WithoutElementCalls(std::vector<std::string> calls)
{
    std::erase_if(calls, [](const std::string& call) { return call.starts_with("OutputDOMElement("); });
    return calls;
}

TEST(XMLFormatterTreeTest, IterativeWalkMakesTheSameCallsAsRecursion)
{
    const auto tree = SmallTree();
    RecordingWriter walking;
    walking.OutputDOMElement(*tree);
    RecordingTreeWriter recursing;
    recursing.OutputDOMElement(*tree);
    EXPECT_THAT(recursing.calls, Not(testing::SizeIs(walking.calls.size())));
    EXPECT_EQ(WithoutElementCalls(recursing.calls), walking.calls);
}

// Returns the calls of a writer. Its OutputString throws at call number `call`, and at all later calls unless `once` is
// set.
template <typename Writer>
std::vector<std::string> CallsUntilFailure(std::size_t call, bool once, bool& thrown)
{
    Writer writer;
    if (once)
        writer.FailOnce(call);
    else
        writer.FailFrom(call);
    thrown = false;
    try {
        writer.OutputDOMElement(*SmallTree());
    } catch (const std::runtime_error&) {
        thrown = true;
    }
    EXPECT_EQ(static_cast<const XMLFormatter&>(writer).GetIndent(), VString());
    return WithoutElementCalls(writer.calls);
}

class XMLFormatterTreeFailureTest : public testing::TestWithParam<bool> {};

TEST_P(XMLFormatterTreeFailureTest, SinkFailureClosesTheSameElementsAsRecursion)
{
    RecordingWriter whole;
    whole.OutputDOMElement(*SmallTree());
    for (std::size_t call = 0; call <= whole.pieces.size(); ++call) {
        bool thrown = false;
        bool thrownRecursing = false;
        const auto calls = CallsUntilFailure<RecordingWriter>(call, GetParam(), thrown);
        const auto callsRecursing = CallsUntilFailure<RecordingTreeWriter>(call, GetParam(), thrownRecursing);
        ASSERT_EQ(calls, callsRecursing) << "failing at " << call;
        ASSERT_EQ(thrown, thrownRecursing) << "failing at " << call;
    }
}

INSTANTIATE_TEST_SUITE_P(Failures, XMLFormatterTreeFailureTest, testing::Bool(), [](const auto& row) {
    return row.param ? "Once" : "FromThenOn";
});

TEST(XMLFormatterTreeTest, FailureClosesTheInnermostElementFirst)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr).AddNewChild("c", nullptr);
    RecordingWriter writer("", true);
    writer.FailOnce(8);  // the empty indentation of c
    EXPECT_THROW(writer.OutputDOMElement(element), std::runtime_error);
    const auto failed = std::find(writer.calls.begin(), writer.calls.end(), "OutputTag(c)");
    ASSERT_NE(failed, writer.calls.end());
    EXPECT_EQ(JoinCalls(std::vector<std::string>(failed, writer.calls.end())),
        "OutputTag(c), emit(), "
        "Undent, OutputCloseTag(b), emit(), emit(</), emit(b), OutputLine(>), emit(>), "
        "Undent, OutputCloseTag(a), emit(), emit(</), emit(a), OutputLine(>), emit(>)");
}

TEST(XMLFormatterTreeTest, FailureInACloseTagIsSwallowedAndTheWalkContinues)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr).AddNewChild("c", nullptr);
    element.AddNewChild("d", nullptr);
    RecordingWriter writer("", true);
    writer.FailOnce(12);  // the empty indentation of </b>
    writer.OutputDOMElement(element);
    // <a>, <b> and <c /> have 12 pieces, one piece fails, and <d /> and </a> have 4 pieces each.
    EXPECT_EQ(writer.pieces.size(), 12u + 1 + 4 + 4);
}

// Overrides OutputString, but not OutputDOMElement.
class UpperWriter : public XMLStringFormatter {
public:
    void OutputString(const VString& text) override
    {
        XMLStringFormatter::OutputString(VString(text.ToQString().toUpper()));
    }
};

TEST(XMLFormatterTreeTest, OverrideOfOutputStringReceivesTheWholeTree)
{
    const auto tree = SmallTree();
    EXPECT_EQ(Write<UpperWriter>(*tree), VString(Write<XMLStringFormatter>(*tree).ToQString().toUpper()));
}

// Writes brackets around every element.
class BracketWriter : public XMLStringFormatter {
public:
    BracketWriter() : XMLStringFormatter("", true) {}

    void OutputDOMElement(const DOMElement& element) override
    {
        OutputString("[");
        XMLStringFormatter::OutputDOMElement(element);
        OutputString("]");
    }
};

TEST(XMLFormatterTreeTest, OverrideOfOutputDOMElementWrapsEachChild)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr).AddNewChild("c", nullptr);
    element.AddNewChild("d", nullptr);
    EXPECT_EQ(Write<BracketWriter>(element), VString("[<a>[<b>[<c />]</b>][<d />]</a>]"));
}

// Inherits the override of OutputDOMElement.
class InheritingWriter : public BracketWriter {
public:
    void OutputString(const VString& text) override
    {
        BracketWriter::OutputString(VString(text.ToQString().toUpper()));
    }
};

TEST(XMLFormatterTreeTest, InheritedOverrideWrapsEachChild)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr).AddNewChild("c", nullptr);
    EXPECT_EQ(Write<InheritingWriter>(element), VString("[<A>[<B>[<C />]</B>]</A>]"));
}

class OtherBase {
public:
    virtual ~OtherBase() = default;
    int number = 1;
};

// Has XMLStringFormatter as its second base class, at another address than the whole object.
class SecondBaseWriter : public OtherBase, public XMLStringFormatter {
public:
    SecondBaseWriter() : XMLStringFormatter("", true) {}

    void OutputDOMElement(const DOMElement& element) override
    {
        OutputString("(");
        XMLStringFormatter::OutputDOMElement(element);
        OutputString(")");
    }
};

TEST(XMLFormatterTreeTest, OverrideInAClassWithTwoBasesWrapsEachChild)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    EXPECT_EQ(Write<SecondBaseWriter>(element), VString("(<a>(<b />)</a>)"));
}

// Skips elements with the attribute "hidden".
class FilteringWriter : public XMLStringFormatter {
public:
    FilteringWriter() : XMLStringFormatter("", true) {}

    void OutputDOMElement(const DOMElement& element) override
    {
        if (!element.HasAttribute("hidden"))
            XMLStringFormatter::OutputDOMElement(element);
    }
};

TEST(XMLFormatterTreeTest, OverrideCanSkipAChild)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr).SetAttribute("hidden", "1");
    element.AddNewChild("c", nullptr);
    EXPECT_EQ(Write<FilteringWriter>(element), VString("<a><c /></a>"));
}

// Calls OutputDOMElement while OutputTag is running.
class NestingWriter : public XMLStringFormatter {
public:
    NestingWriter() : XMLStringFormatter("", true) {}

    void OutputTag(const VString& tag, const AttributeMap& attributes) override
    {
        XMLStringFormatter::OutputTag(tag, attributes);
        if (tag != VString("b"))
            return;
        DOMElement inner("i");
        inner.AddNewChild("j", nullptr);
        OutputDOMElement(inner);
    }
};

TEST(XMLFormatterTreeTest, WalkMayStartInsideAnotherWalk)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    element.AddNewChild("c", nullptr);
    EXPECT_EQ(Write<NestingWriter>(element), VString("<a><b /><i><j /></i><c /></a>"));
}

TEST(XMLFormatterTreeTest, MillionLevelsAreWrittenToAString)
{
    XMLStringFormatter writer("", true);
    writer.OutputDOMElement(*DeepTree());
    EXPECT_EQ(static_cast<std::size_t>(writer.GetOutput().length()), DeepTextLength);
    EXPECT_TRUE(writer.GetOutput().endsWith("</e></e>"));
}

// Overrides only OutputString of XMLFormatter.
class CountingWriter : public XMLFormatter {
public:
    CountingWriter() : XMLFormatter("", true) {}

    void OutputString(const VString& text) override { units += static_cast<std::size_t>(text.length()); }

    std::size_t units = 0;
};

TEST(XMLFormatterTreeTest, MillionLevelsAreWrittenToAnotherSink)
{
    CountingWriter writer;
    writer.OutputDOMElement(*DeepTree());
    EXPECT_EQ(writer.units, DeepTextLength);
}

// Overrides only OutputString of XMLStringFormatter.
class CountingStringWriter : public XMLStringFormatter {
public:
    CountingStringWriter() : XMLStringFormatter("", true) {}

    void OutputString(const VString& text) override { units += static_cast<std::size_t>(text.length()); }

    std::size_t units = 0;
};

TEST(XMLFormatterTreeTest, MillionLevelsAreWrittenToAnOverriddenStringSink)
{
    CountingStringWriter writer;
    writer.OutputDOMElement(*DeepTree());
    EXPECT_EQ(writer.units, DeepTextLength);
}

// Throws at the first piece of the innermost element and at every later one.
class LimitedWriter : public CountingWriter {
public:
    void OutputString(const VString&) override
    {
        if (++pieces > 4 * (DeepLevels - 1))
            throw std::length_error("full");
    }

    int pieces = 0;
};

TEST(XMLFormatterTreeTest, FailureBelowAMillionLevelsClosesAllElements)
{
    LimitedWriter writer;
    EXPECT_THROW(writer.OutputDOMElement(*DeepTree()), std::length_error);
    // Each open element tries to write the first piece of its close tag.
    EXPECT_EQ(writer.pieces, 4 * (DeepLevels - 1) + 1 + (DeepLevels - 1));
}

struct DocumentRow {
    const char* name;
    const char* comment;
    bool header;
    const char* expected;
};

class XMLFormatterDocumentTest : public testing::TestWithParam<DocumentRow> {
protected:
    template <typename Node>
    VString Format(const Node& node) const
    {
        XMLStringFormatter writer("", true);
        VString comment = GetParam().comment;
        XMLFormatter::FormatDOM(writer, node, GetParam().comment != nullptr ? &comment : nullptr, GetParam().header);
        return writer.GetOutput();
    }
};

TEST_P(XMLFormatterDocumentTest, FormatDOMOfADocumentWritesItsDocumentElement)
{
    DOM document;
    document.GetRoot().AddNewChild("a", nullptr);
    EXPECT_EQ(Format(document), VString(GetParam().expected) + VString("<a />"));
}

TEST_P(XMLFormatterDocumentTest, FormatDOMOfAnEmptyDocumentWritesHeaderAndComment)
{
    EXPECT_EQ(Format(DOM()), VString(GetParam().expected));
}

TEST_P(XMLFormatterDocumentTest, FormatDOMOfAnElementWritesTheElement)
{
    EXPECT_EQ(Format(DOMElement("a")), VString(GetParam().expected) + VString("<a />"));
}

const DocumentRow DocumentRows[] = {
    {"NeitherHeaderNorComment", nullptr, false, ""},
    {"Header", nullptr, true, "<?xml version='1.0' encoding='utf-8' ?>"},
    {"Comment", "c--d", false, "<!-- c-&45;d -->"},
    {"EmptyComment", "", false, "<!--  -->"},
    {"HeaderAndComment", "c", true, "<?xml version='1.0' encoding='utf-8' ?><!-- c -->"},
};

INSTANTIATE_TEST_SUITE_P(
    Rows, XMLFormatterDocumentTest, testing::ValuesIn(DocumentRows), [](const auto& row) { return row.param.name; });

TEST(XMLFormatterTreeTest, FormatDOMCallsTheVirtualOperations)
{
    RecordingTreeWriter writer("", true);
    VString comment = "c";
    XMLFormatter::FormatDOM(writer, DOMElement("a"), &comment, true);
    EXPECT_THAT(writer.calls, testing::IsSupersetOf({"OutputHeader", "OutputComment(c)", "OutputDOMElement(a)"}));
}

}  // namespace
