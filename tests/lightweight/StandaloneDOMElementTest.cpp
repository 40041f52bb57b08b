#include "vancorexml/main/parser/StandaloneDOMElement.h"

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include "tests/common/TestSupport.h"

namespace {

constexpr const char* const File = "vancorexml\\main\\parser\\StandaloneDOMElement";

std::unique_ptr<StandaloneDOMElement> Make(const char* name)
{
    return std::make_unique<StandaloneDOMElement>(name);
}

StandaloneDOMElement& Append(StandaloneDOMElement& parent, const char* name)
{
    parent.AppendChild(Make(name));
    return const_cast<StandaloneDOMElement&>(parent.GetChildren().back().get());
}

// Lists the nodes in order: "[name]" for a child element, "(text)" for a text.
std::string Nodes(const StandaloneDOMElement& element)
{
    std::string nodes;
    element.WalkNodes(
        [&nodes](const StandaloneDOMElement& child) { nodes += "[" + child.GetName().toStdString() + "]"; },
        [&nodes](const VString& text) { nodes += "(" + text.toStdString() + ")"; });
    return nodes;
}

// Returns a random tree. The same seed gives the same tree.
std::unique_ptr<StandaloneDOMElement> MakeRandomTree(unsigned seed)
{
    std::mt19937 random(seed);
    auto root = Make("root");
    std::vector<StandaloneDOMElement*> elements{root.get()};
    for (int i = 0; i < 200; ++i) {
        StandaloneDOMElement& parent = *elements[random() % elements.size()];
        switch (random() % 3) {
        case 0: elements.push_back(&Append(parent, "e")); break;
        case 1: parent.AppendText("t", random() % 2 == 0); break;
        default: parent.SetAttribute(VString::number(static_cast<int>(random() % 5)), "v");
        }
    }
    return root;
}

}  // namespace

TEST(StandaloneDOMElementTest, NewElementHasOnlyAName)
{
    VString name = "b";
    const StandaloneDOMElement copied(name);
    const StandaloneDOMElement moved(std::move(name));
    for (const StandaloneDOMElement* element : {&copied, &moved}) {
        EXPECT_EQ(element->GetName(), VString("b"));
        EXPECT_TRUE(element->IsEmpty());
        EXPECT_FALSE(element->HasAttributes() || element->HasTextOrChildren() || element->HasText() ||
            element->HasChildren() || element->IsEncoded());
    }
}

TEST(StandaloneDOMElementTest, NameAndEncodedFlagCanBeChanged)
{
    StandaloneDOMElement element("a");
    element.SetName("b");
    element.SetEncoded(true);
    EXPECT_EQ(element.GetName(), VString("b"));
    EXPECT_TRUE(element.IsEncoded());
}

TEST(StandaloneDOMElementTest, AttributesCanBeSetReplacedAndRemoved)
{
    StandaloneDOMElement element("a");
    element.SetAttribute("x", "1");
    element.SetAttribute("x", "2");
    element.SetAttribute("y", "3");
    EXPECT_EQ(element.GetAttribute("x"), VString("2"));
    EXPECT_TRUE(element.HasAttribute("y") && element.HasAttributes());
    element.RemoveAttribute("y");
    element.RemoveAttribute("y");
    EXPECT_FALSE(element.HasAttribute("y"));
    EXPECT_EQ(element.GetAttributes().size(), 1u);
}

TEST(StandaloneDOMElementTest, SetAttributesReplacesTheMap)
{
    StandaloneDOMElement element("a");
    element.SetAttribute("old", "1");
    const AttributeMap map{{"x", "1"}};
    element.SetAttributes(map);
    EXPECT_EQ(element.GetAttributes(), map);
    element.SetAttributes(AttributeMap{{"y", "2"}});
    EXPECT_EQ(element.GetAttribute("y"), VString("2"));
    element.SetAttributes(element.GetAttributes());
    element.SetAttributes(std::move(element.GetAttributes()));
    EXPECT_EQ(element.GetAttribute("y"), VString("2"));
}

TEST(StandaloneDOMElementTest, TryGetAttributeKeepsTheValueIfTheAttributeIsMissing)
{
    StandaloneDOMElement element("a");
    element.SetAttribute("x", "1");
    VString value = "kept";
    EXPECT_FALSE(element.TryGetAttribute("y", value));
    EXPECT_EQ(value, VString("kept"));
    EXPECT_TRUE(element.TryGetAttribute("x", value));
    EXPECT_EQ(value, VString("1"));
}

TEST(StandaloneDOMElementTest, GetAttributeRaisesIfTheAttributeIsMissing)
{
    const StandaloneDOMElement element("a");
    testsupport::ExpectLogicException(
        [&] { element.GetAttribute("x"); }, File, 224, "it != m_attributes.end()", 0x16A1A876);
}

TEST(StandaloneDOMElementTest, AdjacentTextsAreMerged)
{
    StandaloneDOMElement element("a");
    element.AppendText("1");
    element.AppendText("2");
    EXPECT_EQ(Nodes(element), "(12)");
    Append(element, "b");
    element.AppendText("3");
    EXPECT_EQ(Nodes(element), "(12)[b](3)");
}

TEST(StandaloneDOMElementTest, LastAppendTextDeterminesTheEncodedFlag)
{
    StandaloneDOMElement element("a");
    element.AppendText("t", true);
    EXPECT_TRUE(element.IsEncoded());
    element.AppendText("u");
    EXPECT_FALSE(element.IsEncoded());
}

TEST(StandaloneDOMElementTest, EmptyTextIsANode)
{
    StandaloneDOMElement element("a");
    element.AppendText("");
    EXPECT_TRUE(element.HasTextOrChildren() && element.HasText());
    EXPECT_FALSE(element.IsEmpty() || element.HasChildren());
}

TEST(StandaloneDOMElementTest, ElementWithAttributesIsNotEmpty)
{
    StandaloneDOMElement element("a");
    element.SetAttribute("x", "1");
    EXPECT_FALSE(element.IsEmpty());
    EXPECT_FALSE(element.HasTextOrChildren());
}

TEST(StandaloneDOMElementTest, AppendChildRaisesForNull)
{
    StandaloneDOMElement element("a");
    testsupport::ExpectLogicException(
        [&] { element.AppendChild(nullptr); }, File, 293, "element != nullptr", 0xE9519449);
    EXPECT_TRUE(element.IsEmpty());
}

TEST(StandaloneDOMElementTest, InsertChildBeforeFindsTheFirstEqualChild)
{
    StandaloneDOMElement element("a");
    element.AppendText("t");
    Append(element, "b");
    Append(element, "c").SetAttribute("x", "1");
    Append(element, "c").SetAttribute("x", "1");
    StandaloneDOMElement equal("c");
    equal.SetAttribute("x", "1");
    element.InsertChildBefore(Make("new"), equal);
    EXPECT_EQ(Nodes(element), "(t)[b][new][c][c]");
}

TEST(StandaloneDOMElementTest, InsertChildBeforeRaisesForNullAndForAMissingChild)
{
    StandaloneDOMElement element("a");
    Append(element, "b");
    const StandaloneDOMElement other("c");
    testsupport::ExpectLogicException(
        [&] { element.InsertChildBefore(nullptr, other); }, File, 300, "element != nullptr", 0x41228A24);
    testsupport::ExpectLogicException(
        [&] { element.InsertChildBefore(Make("new"), other); }, File, 316, "false", 0xAD7AC3BE);
    EXPECT_EQ(Nodes(element), "[b]");
}

TEST(StandaloneDOMElementTest, RemoveChildSelectsTheChildByIdentity)
{
    StandaloneDOMElement element("a");
    Append(element, "b");
    StandaloneDOMElement& second = Append(element, "b");
    element.AppendText("t");
    const auto removed = element.RemoveChild(second);
    EXPECT_EQ(removed.get(), &second);
    EXPECT_EQ(Nodes(element), "[b](t)");
}

TEST(StandaloneDOMElementTest, RemoveChildRaisesForAnEqualElementThatIsNotAChild)
{
    StandaloneDOMElement element("a");
    Append(element, "b");
    const StandaloneDOMElement equal("b");
    testsupport::ExpectLogicException([&] { element.RemoveChild(equal); }, File, 342, "false", 0x108BF60C);
    EXPECT_EQ(Nodes(element), "[b]");
}

TEST(StandaloneDOMElementTest, RemoveChildrenKeepsTheTexts)
{
    StandaloneDOMElement element("a");
    element.AppendText("1");
    Append(element, "b");
    element.AppendText("2");
    Append(element, "c");
    const auto removed = element.RemoveChildren();
    ASSERT_EQ(removed.size(), 2u);
    EXPECT_EQ(removed[0]->GetName(), VString("b"));
    EXPECT_EQ(removed[1]->GetName(), VString("c"));
    EXPECT_EQ(Nodes(element), "(1)(2)");
}

TEST(StandaloneDOMElementTest, EraseAllChildNodesKeepsTheAttributes)
{
    StandaloneDOMElement element("a");
    element.SetAttribute("x", "1");
    element.AppendText("t");
    Append(element, "b");
    element.EraseAllChildNodes();
    EXPECT_FALSE(element.HasTextOrChildren());
    EXPECT_TRUE(element.HasAttribute("x"));
}

TEST(StandaloneDOMElementTest, QueriesLookAtDirectChildrenOnly)
{
    StandaloneDOMElement element("a");
    element.AppendText("1");
    StandaloneDOMElement& child = Append(element, "b");
    child.AppendText("deep");
    Append(child, "c");
    Append(element, "b");
    element.AppendText("2");
    EXPECT_EQ(element.GetChild("b"), &child);
    EXPECT_EQ(std::as_const(element).GetChild("b"), &child);
    EXPECT_EQ(element.GetChild("c"), nullptr);
    EXPECT_EQ(element.GetAllText(), VString("12"));
    EXPECT_EQ(element.GetChildren().size(), 2u);
    ASSERT_EQ(element.GetTextNodes().size(), 2u);
    EXPECT_EQ(element.GetTextNodes()[1].get(), VString("2"));
    EXPECT_TRUE(element.HasChildren() && element.HasText());
}

TEST(StandaloneDOMElementTest, WalkNodesPassesMutableNodes)
{
    StandaloneDOMElement element("a");
    element.AppendText("1");
    Append(element, "b");
    element.WalkNodes([](StandaloneDOMElement& child) { child.SetName("c"); }, [](VString& text) { text = "2"; });
    EXPECT_EQ(Nodes(element), "(2)[c]");
}

TEST(StandaloneDOMElementTest, WalkNodesThrowsIfItNeedsAnEmptyCallback)
{
    StandaloneDOMElement element("a");
    element.AppendText("1");
    const std::function<void(const StandaloneDOMElement&)> noElement;
    const std::function<void(const VString&)> noText;
    EXPECT_THROW(std::as_const(element).WalkNodes(noElement, noText), std::bad_function_call);
    EXPECT_NO_THROW(std::as_const(element).WalkNodes(noElement, [](const VString&) {}));
    Append(element, "b");
    EXPECT_THROW(std::as_const(element).WalkNodes(noElement, [](const VString&) {}), std::bad_function_call);
}

TEST(StandaloneDOMElementTest, EqualityIsDeepAndIgnoresTheEncodedFlag)
{
    const auto make = [](bool encoded) {
        auto element = Make("a");
        element->SetAttribute("x", "1");
        Append(*element, "b").AppendText("t", encoded);
        return element;
    };
    EXPECT_TRUE(*make(false) == *make(true));
    EXPECT_FALSE(*make(false) != *make(true));
}

TEST(StandaloneDOMElementTest, EveryDifferenceMakesElementsUnequal)
{
    const auto base = [] {
        auto element = Make("a");
        element->SetAttribute("x", "1");
        element->AppendText("t");
        Append(*element, "b").SetAttribute("y", "2");
        return element;
    };
    const std::function<void(StandaloneDOMElement&)> changes[] = {
        [](auto& e) { e.SetName("b"); },
        [](auto& e) { e.SetAttribute("x", "2"); },
        [](auto& e) { e.SetAttribute("z", "2"); },
        [](auto& e) {
            e.RemoveAttribute("x");
            e.SetAttribute("z", "1");
        },
        [](auto& e) { e.AppendText("u"); },
        [](auto& e) { e.GetChild("b")->SetAttribute("y", "3"); },
        [](auto& e) { e.GetChild("b")->AppendText(""); },
        [](auto& e) {
            auto child = e.RemoveChild(*e.GetChild("b"));
            e.EraseAllChildNodes();
            e.AppendChild(std::move(child));
            e.AppendText("t");
        },
    };
    for (const auto& change : changes) {
        const auto changed = base();
        change(*changed);
        EXPECT_TRUE(*base() != *changed) << Nodes(*changed);
    }
}

TEST(StandaloneDOMElementTest, CloneIsEqualAndIndependent)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        const auto tree = MakeRandomTree(seed);
        const auto clone = tree->Clone();
        EXPECT_TRUE(*tree == *clone);
        Append(*clone, "more");
        EXPECT_TRUE(*tree == *MakeRandomTree(seed));
        EXPECT_FALSE(*tree == *clone);
    }
}

TEST(StandaloneDOMElementTest, CloneKeepsTheEncodedFlags)
{
    StandaloneDOMElement element("a");
    element.SetEncoded(true);
    Append(element, "b").AppendText("t", true);
    const auto clone = element.Clone();
    EXPECT_TRUE(clone->IsEncoded());
    EXPECT_TRUE(clone->GetChild("b")->IsEncoded());
}

TEST(StandaloneDOMElementTest, MillionLevelsNeedNoDeepStack)
{
    const auto make = [] {
        auto top = Make("a");
        for (int i = 0; i < 1000000; ++i) {
            auto parent = Make("a");
            if (i % 3 == 0)
                parent->AppendText("t");
            parent->AppendChild(std::move(top));
            if (i % 5 == 0)
                parent->AppendChild(Make("b"));
            top = std::move(parent);
        }
        return top;
    };
    const auto tree = make();
    const auto clone = tree->Clone();
    EXPECT_TRUE(*tree == *clone);
    tree->EraseAllChildNodes();
    EXPECT_FALSE(*tree == *clone);
}

TEST(StandaloneDOMElementTest, NodesKeepTheirOrderAtEverySize)
{
    for (int size = 0; size < 12; ++size) {
        for (int place = 0; place < size; ++place) {
            StandaloneDOMElement parent("parent");
            std::vector<std::string> expected;
            for (int i = 0; i < size; ++i) {
                expected.push_back(std::to_string(i));
                parent.AppendChild(std::make_unique<StandaloneDOMElement>(VString::fromStdString(expected.back())));
                parent.AppendText("text");
            }
            const StandaloneDOMElement& before = *parent.GetChild(VString::number(place));
            parent.InsertChildBefore(std::make_unique<StandaloneDOMElement>("new"), before);
            parent.RemoveChild(before);
            expected[static_cast<std::size_t>(place)] = "new";
            std::vector<std::string> names;
            for (const StandaloneDOMElement& child : parent.GetChildren())
                names.push_back(child.GetName().toStdString());
            EXPECT_EQ(names, expected) << size << " " << place;
            EXPECT_EQ(parent.GetTextNodes().size(), expected.size());
            EXPECT_EQ(parent.Clone()->GetChildren().size(), expected.size());
        }
    }
}

TEST(StandaloneDOMElementTest, AppendedTemporaryTextIsMerged)
{
    StandaloneDOMElement element("e");
    element.AppendText(VString("a"), true);
    element.AppendText(VString("b"));
    EXPECT_FALSE(element.IsEncoded());
    EXPECT_EQ(element.GetTextNodes().size(), 1U);
    element.AppendChild(std::make_unique<StandaloneDOMElement>("c"));
    element.AppendText(VString("d"));
    EXPECT_EQ(element.GetTextNodes().size(), 2U);
    EXPECT_EQ(element.GetAllText(), VString("abd"));
}
