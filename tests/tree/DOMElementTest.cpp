#include "vancorexml/main/parser/DOMElement.h"

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

// Expects that `run` throws a DOMException with this message, code and key, and that its status blames the caller.
void ExpectMissing(const std::function<void()>& run, const char* message, std::uint32_t code, const char* key)
{
    try {
        run();
    } catch (const DOMException& exception) {
        EXPECT_EQ(exception.GetMessage(), VString(message));
        EXPECT_EQ(exception.GetErrorInfo().GetCode(), code);
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString(key));
        EXPECT_EQ(static_cast<int>(exception.GetErrorInfo().GetSource()), 1);
        EXPECT_EQ(static_cast<int>(exception.GetErrorInfo().GetStatus()), 2);
        return;
    }
    ADD_FAILURE() << "no DOMException";
}

struct BoolRow {
    const char* name;
    const char* text;
    bool result;
    bool value;
};

}  // namespace

TEST(DOMElementTest, StartsWithANameOnly)
{
    const VString name("a");
    for (const DOMElement& element : {DOMElement(name), DOMElement(VString("a"))}) {
        EXPECT_EQ(element.GetName(), name);
        EXPECT_EQ(element.GetDOMManager(), nullptr);
        EXPECT_EQ(element.GetParent(), nullptr);
        EXPECT_TRUE(element.IsRootNode());
        EXPECT_TRUE(element.IsEmpty());
        EXPECT_FALSE(element.HasText());
        EXPECT_FALSE(element.HasAttributes());
        EXPECT_FALSE(element.HasChildren());
        EXPECT_FALSE(element.IsEncoded());
        EXPECT_EQ(element.GetStartLine() + element.GetStartColumn() + element.GetEndLine() + element.GetEndColumn(), 0);
    }
}

TEST(DOMElementTest, NameCanBeReplaced)
{
    DOMElement element("a");
    element.SetName("b");
    EXPECT_EQ(element.GetName(), VString("b"));
}

TEST(DOMElementTest, LocationsAreStored)
{
    DOMElement element("a");
    element.SetElementStartLocation(1, 2);
    element.SetElementEndLocation(3, 4);
    EXPECT_EQ(element.GetStartLine(), 1);
    EXPECT_EQ(element.GetStartColumn(), 2);
    EXPECT_EQ(element.GetEndLine(), 3);
    EXPECT_EQ(element.GetEndColumn(), 4);
}

TEST(DOMElementTest, SetTextReplacesTextAndFlag)
{
    DOMElement element("a");
    element.SetText("x", true);
    EXPECT_TRUE(element.HasText());
    EXPECT_TRUE(element.IsEncoded());
    element.SetText("y");
    EXPECT_EQ(element.GetText(), VString("y"));
    EXPECT_FALSE(element.IsEncoded());
    element.SetEncoded(true);
    EXPECT_TRUE(element.IsEncoded());
}

TEST(DOMElementTest, AppendingEncodedTextToANewElementLeavesItPlain)
{
    DOMElement element("a");
    element.AppendText("x", true);
    EXPECT_FALSE(element.IsEncoded());
}

TEST(DOMElementTest, TextIsEncodedWhileEveryPieceIsEncoded)
{
    DOMElement element("a");
    element.SetText("x", true);
    element.AppendText("y", true);
    EXPECT_TRUE(element.IsEncoded());
    element.AppendText("z");
    EXPECT_FALSE(element.IsEncoded());
    EXPECT_EQ(element.GetText(), VString("xyz"));
}

TEST(DOMElementTest, AppendsItsOwnText)
{
    DOMElement element("a");
    element.SetText("xy");
    element.AppendText(element.GetText());
    EXPECT_EQ(element.GetText(), VString("xyxy"));
}

// Parsers append a text in pieces. If each piece copied the whole text, the test would take hours.
TEST(DOMElementTest, AppendsManyPiecesInPlace)
{
    DOMElement element("a");
    const VString piece("0123456789");
    for (int i = 0; i < 1000000; ++i)
        element.AppendText(piece);
    EXPECT_EQ(element.GetText().length(), 10000000);
    EXPECT_EQ(element.GetText()[9999999], u'9');
}

TEST(DOMElementTest, TextAttributeOrChildMakesAnElementNonEmpty)
{
    DOMElement text("a");
    text.SetText("x");
    DOMElement attribute("a");
    attribute.SetAttribute("n", "");
    DOMElement child("a");
    child.AddNewChild("b", nullptr);
    EXPECT_FALSE(text.IsEmpty());
    EXPECT_FALSE(attribute.IsEmpty());
    EXPECT_FALSE(child.IsEmpty());
}

class StringToBoolTest : public testing::TestWithParam<BoolRow> {};

TEST_P(StringToBoolTest, AcceptsOnlyExactSpellings)
{
    const BoolRow& row = GetParam();
    bool out = !row.value;
    EXPECT_EQ(DOMElement::StringToBool(row.text, out), row.result);
    EXPECT_EQ(out, row.result ? row.value : !row.value);
}

const BoolRow BoolRows[] = {
    {"True", "true", true, true},
    {"Yes", "yes", true, true},
    {"One", "1", true, true},
    {"False", "false", true, false},
    {"No", "no", true, false},
    {"Zero", "0", true, false},
    {"CapitalsLeaveFalse", "TRUE", false, true},
    {"CapitalsLeaveTrue", "TRUE", false, false},
    {"LeadingBlank", " true", false, true},
    {"Empty", "", false, false},
    {"Two", "2", false, true},
    {"CapitalizedNo", "No", false, false},
};

INSTANTIATE_TEST_SUITE_P(
    Spellings, StringToBoolTest, testing::ValuesIn(BoolRows), [](const auto& row) { return row.param.name; });

TEST(DOMElementTest, SetAttributeInsertsAndOverwrites)
{
    DOMElement element("a");
    element.SetAttribute("n", "1");
    element.SetAttribute("n", "2");
    EXPECT_TRUE(element.HasAttributes());
    EXPECT_TRUE(element.HasAttribute("n"));
    EXPECT_EQ(element.GetAttribute("n"), VString("2"));
    EXPECT_EQ(element.GetAttributes().size(), 1u);
}

TEST(DOMElementTest, AMissingAttributeReadsAsEmpty)
{
    const DOMElement element("a");
    EXPECT_EQ(element.GetAttribute("n"), VString());
    EXPECT_FALSE(element.HasAttribute("n"));
}

TEST(DOMElementTest, SetAttributesReplacesTheWholeMap)
{
    DOMElement element("a");
    element.SetAttribute("old", "1");
    const AttributeMap attributes{{"new", "2"}};
    element.SetAttributes(attributes);
    EXPECT_EQ(element.GetAttributes(), attributes);
    element.SetAttributes(AttributeMap{{"newer", "3"}});
    EXPECT_EQ(element.GetAttributes(), (AttributeMap{{"newer", "3"}}));
}

TEST(DOMElementTest, SetAttributesOfItsOwnMapChangesNothing)
{
    DOMElement element("a");
    element.SetAttribute("n", "1");
    element.SetAttributes(element.GetAttributes());
    element.SetAttributes(std::move(element.GetAttributes()));
    EXPECT_EQ(element.GetAttribute("n"), VString("1"));
}

TEST(DOMElementTest, RemoveAttributeErasesOnlyThatAttribute)
{
    DOMElement element("a");
    element.SetAttribute("n", "1");
    element.RemoveAttribute("other");
    EXPECT_TRUE(element.HasAttribute("n"));
    element.RemoveAttribute("n");
    EXPECT_FALSE(element.HasAttributes());
}

TEST(DOMElementTest, RequireAttributeNamesTheMissingOne)
{
    DOMElement element("a");
    element.SetAttribute("n", "");
    EXPECT_NO_THROW(element.RequireAttribute("n"));
    ExpectMissing(
        [&] { element.RequireAttribute("m"); }, "m", 0x3473F8A4, "DOMException_RequiredDOMAttribute_0x3473F8A4");
}

TEST(DOMElementTest, GetParentAttrReturnsTheNearestValue)
{
    DOMElement top("top");
    DOMElement& middle = top.AddNewChild("middle", nullptr);
    DOMElement& low = middle.AddNewChild("low", nullptr);
    EXPECT_EQ(low.GetParentAttr("n"), VString());
    top.SetAttribute("n", "top");
    EXPECT_EQ(low.GetParentAttr("n"), VString("top"));
    middle.SetAttribute("n", "");
    EXPECT_EQ(low.GetParentAttr("n"), VString());
    low.SetAttribute("n", "low");
    EXPECT_EQ(low.GetParentAttr("n"), VString("low"));
}

TEST(DOMElementTest, AdoptAttributeMovesTheAttribute)
{
    DOMElement target("a");
    DOMElement source("b");
    target.SetAttribute("n", "old");
    source.SetAttributes(AttributeMap{{"n", "new"}, {"m", "kept"}});
    target.AdoptAttribute(source, "n");
    target.AdoptAttribute(source, "missing");
    EXPECT_EQ(target.GetAttributes(), (AttributeMap{{"n", "new"}}));
    EXPECT_EQ(source.GetAttributes(), (AttributeMap{{"m", "kept"}}));
}

TEST(DOMElementTest, AdoptAttributesOverwrites)
{
    DOMElement target("a");
    DOMElement source("b");
    target.SetAttributes(AttributeMap{{"n", "old"}, {"own", "1"}});
    source.SetAttributes(AttributeMap{{"n", "new"}, {"m", "2"}});
    target.AdoptAttributes(source);
    EXPECT_EQ(target.GetAttributes(), (AttributeMap{{"n", "new"}, {"own", "1"}, {"m", "2"}}));
    EXPECT_FALSE(source.HasAttributes());
}

TEST(DOMElementTest, AdoptAttributesWithoutOverwritingStillEmptiesTheOther)
{
    DOMElement target("a");
    DOMElement source("b");
    target.SetAttribute("n", "old");
    source.SetAttributes(AttributeMap{{"n", "new"}, {"m", "2"}});
    target.AdoptAttributes(source, false);
    EXPECT_EQ(target.GetAttributes(), (AttributeMap{{"n", "old"}, {"m", "2"}}));
    EXPECT_FALSE(source.HasAttributes());
}

TEST(DOMElementTest, AdoptAttributesMovesAllIntoAnElementWithoutAny)
{
    for (const bool overwrite : {false, true}) {
        DOMElement target("a");
        DOMElement source("b");
        source.SetAttributes(AttributeMap{{"n", "1"}, {"m", "2"}});
        target.AdoptAttributes(source, overwrite);
        EXPECT_EQ(target.GetAttributes(), (AttributeMap{{"n", "1"}, {"m", "2"}}));
        EXPECT_FALSE(source.HasAttributes());
    }
}

TEST(DOMElementTest, AdoptAttributesFromItselfChangesNothing)
{
    DOMElement element("a");
    element.SetAttribute("n", "1");
    element.AdoptAttributes(element);
    element.AdoptAttributes(element, false);
    element.AdoptAttribute(element, "n");
    EXPECT_EQ(element.GetAttribute("n"), VString("1"));
}

TEST(DOMElementTest, LookupsReturnTheFirstChildOfTheName)
{
    DOMElement element("a");
    DOMElement& first = element.AddNewChild("b", nullptr);
    element.AddNewChild("b", nullptr).SetText("second");
    first.SetText("first");
    EXPECT_EQ(element.GetChild("b"), &first);
    EXPECT_EQ(std::as_const(element).GetChild("b"), &first);
    EXPECT_EQ(element.GetChildText("b"), VString("first"));
    EXPECT_EQ(&element.GetRequiredChild("b"), &first);
    EXPECT_EQ(&std::as_const(element).GetRequiredChild("b"), &first);
    EXPECT_EQ(&element.GetOrNewChild("b"), &first);
}

TEST(DOMElementTest, OnlyGetOrNewChildCreatesAMissingChild)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    EXPECT_EQ(element.GetChild("c"), nullptr);
    EXPECT_EQ(std::as_const(element).GetChild("c"), nullptr);
    EXPECT_EQ(element.GetChildText("c"), VString());
    const DOMElement& made = element.GetOrNewChild("c");
    EXPECT_EQ(ChildNames(element), "b c");
    EXPECT_EQ(made.GetParent(), &element);
}

TEST(DOMElementTest, GetRequiredChildNamesTheMissingOne)
{
    DOMElement element("a");
    const std::function<void()> lookups[] = {
        [&] { element.GetRequiredChild("c"); },
        [&] { std::as_const(element).GetRequiredChild("c"); },
    };
    for (const auto& lookup : lookups)
        ExpectMissing(lookup, "c", 0x26487BC2, "DOMException_RequiredChildMissing_0x26487BC2");
}

TEST(DOMElementTest, GetRequiredChildByAttrReturnsTheFirstMatch)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    element.AddNewChild("c", nullptr).SetAttribute("n", "other");
    DOMElement& match = element.AddNewChild("d", nullptr);
    match.SetAttribute("n", "v");
    element.AddNewChild("e", nullptr).SetAttribute("n", "v");
    EXPECT_EQ(&element.GetRequiredChildByAttr("n", "v"), &match);
    EXPECT_EQ(&std::as_const(element).GetRequiredChildByAttr("n", "v"), &match);
}

TEST(DOMElementTest, GetRequiredChildByAttrNamesTheAttribute)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    // A missing attribute does not match an empty value.
    const std::function<void()> lookups[] = {
        [&] { element.GetRequiredChildByAttr("n", ""); },
        [&] { std::as_const(element).GetRequiredChildByAttr("n", "v"); },
    };
    for (const auto& lookup : lookups)
        ExpectMissing(lookup, "n", 0x21039DFE, "DOMException_RequiredChildByAttribute_0x21039DFE");
}
