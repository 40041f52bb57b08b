#include "vanxml/TreeDiff.h"

#include "tests/tool/ToolRun.h"
#include "tests/tool/TreeComparison.h"

TEST(TreeDiffTest, AttributesAndTextsAreComparedByValue)
{
    EXPECT_EQ(DescribeDifferences("<a b='1' c='2'/>", "<a c='2' b='1'/>"), "");
    EXPECT_EQ(DescribeDifferences("<a b='1' c='2'>x</a>", "<a b='2' d='3'>y</a>"),
        "changed /a/@b, removed /a/@c, added /a/@d, changed /a/text()");
    EXPECT_EQ(DescribeDifferences("<a>x</a>", "<a/>"), "removed /a/text()");
    EXPECT_EQ(DescribeDifferences("<a>&lt;<![CDATA[b]]></a>", "<a>&#60;b</a>"), "");
}

TEST(TreeDiffTest, IndentationAndCommentsDoNotCount)
{
    EXPECT_EQ(DescribeDifferences("<a><b/><c/></a>", "<?p?><a>\n  <b></b><!-- x -->\n  <c/>\n</a>"), "");
    EXPECT_EQ(DescribeDifferences("<a> </a>", "<a/>"), "removed /a/text()");
    EXPECT_EQ(DescribeDifferences("<a xml:space='preserve'><b/></a>", "<a xml:space='preserve'> <b/></a>"),
        "added /a/text()");
    EXPECT_EQ(DescribeDifferences("<a>x<b> <c/></b></a>", "<a>x<b><c/></b></a>"), "removed /a/b/text()");
}

TEST(TreeDiffTest, InsertionsAndRemovalsLeaveTheOtherChildrenAlone)
{
    EXPECT_EQ(DescribeDifferences("<a><b>1</b><b>2</b><b>3</b></a>", "<a><b>1</b><b>3</b></a>"), "removed /a/b[2]");
    EXPECT_EQ(DescribeDifferences("<a><b>1</b><b>3</b></a>", "<a><b>1</b><b>2</b><b>3</b></a>"), "added /a/b[2]");
    EXPECT_EQ(DescribeDifferences("<a><b/></a>", "<a><c/></a>"), "removed /a/b, added /a/c");
    EXPECT_EQ(DescribeDifferences("<a><b/></a>", "<c><b/></c>"), "removed /a, added /c");
}

TEST(TreeDiffTest, MovedElementsAreToldApart)
{
    EXPECT_EQ(DescribeDifferences("<a><b>1</b><b>2</b><b>3</b></a>", "<a><b>3</b><b>1</b><b>2</b></a>"),
        "moved /a/b[3] to /a/b[1]");
    EXPECT_EQ(DescribeDifferences("<a><b><d x='1'>t</d></b><c/></a>", "<a><b/><c><d x='1'>t</d></c></a>"),
        "moved /a/b/d to /a/c/d");
    EXPECT_EQ(DescribeDifferences("<a><w><d x='1'>t</d></w></a>", "<a><d x='1'>t</d></a>"),
        "removed /a/w, moved /a/w/d to /a/d");
}

TEST(TreeDiffTest, AMovedElementIsNotTakenForAChangedOne)
{
    EXPECT_EQ(
        DescribeDifferences("<a><p><d x='1'>t</d></p><q/></a>", "<a><p><d x='2'>u</d></p><q><d x='1'>t</d></q></a>"),
        "moved /a/p/d to /a/q/d, added /a/p/d");
}

TEST(TreeDiffTest, ElementsWithTheSameIdentifierCorrespond)
{
    EXPECT_EQ(DescribeDifferences("<a><b id='1' v='1'/><b id='2' v='1'/></a>",
                  "<a><b id='0' v='2'/><b id='1' v='2'/><b id='2' v='2'/></a>"),
        "added /a/b[1], changed /a/b[1]/@v, changed /a/b[2]/@v");
}

TEST(TreeDiffTest, AChangedElementWithAnIdentifierIsKeptIfAnEqualOneCrossesIt)
{
    EXPECT_EQ(DescribeDifferences("<a><s id='1'>x</s><b/></a>", "<a><b/><s id='1'>y</s></a>"),
        "changed /a/s/text(), moved /a/b to /a/b");
    EXPECT_EQ(DescribeDifferences("<a><b/><s id='1'>x</s></a>", "<a><s id='1'>y</s><b/></a>"),
        "moved /a/b to /a/b, changed /a/s/text()");
    EXPECT_EQ(DescribeDifferences("<a><s id='1'>x</s><s id='2'>x</s><n>z</n><s id='3'>x</s></a>",
                  "<a><n>z</n><s id='1'>y</s><s id='2'>y</s><s id='3'>y</s></a>"),
        "changed /a/s[1]/text(), changed /a/s[2]/text(), moved /a/n to /a/n, changed /a/s[3]/text()");
    // Which one of these has moved is open. The equal one can be told as moved.
    EXPECT_EQ(DescribeDifferences("<a><s id='1'>x</s><s id='2'>x</s></a>", "<a><s id='2'>x</s><s id='1'>y</s></a>"),
        "changed /a/s[1]/text(), moved /a/s[2] to /a/s[1]");
}

TEST(TreeDiffTest, EachOfTheSiblingsThatCrossOthersIsMoved)
{
    EXPECT_EQ(DescribeDifferences("<a><b/><c/><p/><q/><r/></a>", "<a><p/><q/><r/><b/><c/></a>"),
        "moved /a/b to /a/b, moved /a/c to /a/c");
    EXPECT_EQ(DescribeDifferences("<a><p/><q/><r/><b/><c/></a>", "<a><b/><c/><p/><q/><r/></a>"),
        "moved /a/b to /a/b, moved /a/c to /a/c");
}

TEST(TreeDiffTest, AnElementThatHasMovedAndChangedIsRemovedAndAdded)
{
    EXPECT_EQ(DescribeDifferences("<a><s id='1'>x</s><b/><c/><d/></a>", "<a><b/><c/><d/><s id='1'>y</s></a>"),
        "removed /a/s, added /a/s");
    EXPECT_EQ(DescribeDifferences("<a><s id='1'>x</s><s id='2'>x</s><s id='3'>x</s></a>",
                  "<a><s id='2'>y</s><s id='3'>y</s><s id='1'>y</s></a>"),
        "removed /a/s[1], changed /a/s[2]/text(), changed /a/s[3]/text(), added /a/s[3]");
    EXPECT_EQ(DescribeDifferences("<a><s id='1'>x</s><b/><c/><d/></a>", "<a><b/><c/><d/><s id='1'>x</s></a>"),
        "moved /a/s to /a/s");
}

TEST(TreeDiffTest, AnElementThatHasMovedAwayDoesNotKeepItsIdentifier)
{
    EXPECT_EQ(DescribeDifferences(
                  "<a><s id='1'><t/>x</s><b/><p/></a>", "<a><b/><s id='1'>y</s><p><s id='1'><t/>x</s></p></a>"),
        "moved /a/s to /a/p/s, added /a/s");
}

TEST(TreeDiffTest, AnAddedNodeComesBehindTheSiblingThatStays)
{
    // <d> has moved, so <n> comes behind <b>, and not behind <d>.
    EXPECT_EQ(DescribeDifferences("<a><b/><c/><e/><d/></a>", "<a><b/><d/><n/><c/><e/></a>"),
        "added /a/n, moved /a/d to /a/d");
}

TEST(TreeDiffTest, TheElementsInsideARemovedOneCountOnlyIfTheyHaveNotMoved)
{
    const TreeComparison comparison(
        "<a><w><d x='1'>t<f/></d><e/><e/></w><c/></a>", "<a><c/><v><d x='1'>t<f/></d></v></a>");
    ASSERT_EQ(comparison.Describe(), "removed /a/w, moved /a/w/d to /a/v/d, added /a/v");
    std::vector<std::uint32_t> elements;
    for (const TreeDifference& each : comparison.differences)
        elements.push_back(each.elements);
    EXPECT_EQ(elements, (std::vector<std::uint32_t>{2, 1, 0}));
}

TEST(TreeDiffTest, AnElementWithoutAttributesAndContentMovesOnlyWithinItsParent)
{
    EXPECT_EQ(
        DescribeDifferences("<a><p>1<b/></p><q/></a>", "<a><p>1</p><q><b/></q></a>"), "removed /a/p/b, added /a/q/b");
    EXPECT_EQ(DescribeDifferences("<a><b/><c/></a>", "<a><c/><b/></a>"), "moved /a/b to /a/b");
    // With several elements of the name, nothing tells which one has moved.
    EXPECT_EQ(
        DescribeDifferences("<a><b/>1<b/><c/><d/></a>", "<a><b/>1<c/><d/><b/></a>"), "removed /a/b[2], added /a/b[2]");
    EXPECT_EQ(DescribeDifferences("<a><p>1<b x='1'/></p><q/></a>", "<a><p>1</p><q><b x='1'/></q></a>"),
        "moved /a/p/b to /a/q/b");
    EXPECT_EQ(
        DescribeDifferences("<a><p>1<b>2</b></p><q/></a>", "<a><p>1</p><q><b>2</b></q></a>"), "moved /a/p/b to /a/q/b");
}

TEST(TreeDiffTest, AMoveWithinTheParentIsPreferred)
{
    EXPECT_EQ(DescribeDifferences("<a><p><b x='1'/><c/></p><q><d/></q><b x='1'/></a>",
                  "<a><p><c/></p><q><b x='1'/><d/></q><b x='1'/></a>"),
        "moved /a/p/b to /a/q/b");
    EXPECT_EQ(DescribeDifferences(
                  "<a><p>1<b x='1'/></p><q><b x='1'/><d>2</d></q></a>", "<a><p>1</p><q><d>2</d><b x='1'/></q></a>"),
        "removed /a/p/b, moved /a/q/b to /a/q/b");
}

TEST(TreeDiffTest, DifferencesOfAttributesAreInTheOrderOfTheTags)
{
    // The numbers of the names are in another order, because the names are also texts and values in front.
    EXPECT_EQ(DescribeDifferences("<a b='d' c='b'><e z='1' y='1' c='1' b='1' d='1'/></a>",
                  "<a b='d' c='b'><e d='2' n='1' m='1' b='2' c='2' z='2'/></a>"),
        "changed /a/e/@z, removed /a/e/@y, changed /a/e/@c, changed /a/e/@b, changed /a/e/@d, added /a/e/@n, "
        "added /a/e/@m");
    std::string before = "<a";
    std::string after = "<a";
    std::string expected;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "x" + std::to_string(i * 7 % 40);
        before += " " + name + "='1'";
        after += " x" + std::to_string(i) + "='2'";
        expected += (i == 0 ? "" : ", ") + ("changed /a/@" + name);
    }
    EXPECT_EQ(DescribeDifferences(before + "/>", after + "/>"), expected);
}

TEST(TreeDiffTest, LongPathsAreShortened)
{
    const auto nested = [](int levels, const std::string& name, const std::string& text) {
        std::string begin;
        std::string end;
        for (int i = 0; i < levels; ++i) {
            begin += "<" + name + ">";
            end += "</" + name + ">";
        }
        return begin + text + end;
    };
    EXPECT_THAT(DescribeDifferences(nested(63, "e", "1"), nested(63, "e", "2")),
        ContainsExpression("^changed (/e){63}/text\\(\\)$"));
    EXPECT_THAT(DescribeDifferences(nested(64, "e", "1"), nested(64, "e", "2")),
        ContainsExpression("^changed …(/e){63}/text\\(\\)$"));
    const std::string longName(100, 'e');
    EXPECT_THAT(DescribeDifferences(nested(9, longName, "1"), nested(9, longName, "2")),
        ContainsExpression("^changed (/e{100}){9}/text\\(\\)$"));
    EXPECT_THAT(DescribeDifferences(nested(10, longName, "1"), nested(10, longName, "2")),
        ContainsExpression("^changed …(/e{100}){9}/text\\(\\)$"));
    EXPECT_THAT(DescribeDifferences(nested(2, longName + "f", "1"), nested(2, longName + "f", "2")),
        ContainsExpression("^changed (/e{100}…){2}/text\\(\\)$"));
}

TEST(TreeDiffTest, PathsTakeAsLongForLongNames)
{
    const std::string name(1000000, 'n');
    std::string children;
    for (int i = 0; i < 20000; ++i)
        children += "<c/>";
    const std::string text = "<" + name + ">" + children + "</" + name + ">";
    const testsupport::CpuTimeLimit limit(2);
    const TreeComparison comparison(text, text);
    for (std::uint32_t node = 1; node < comparison.a.Size(); ++node)
        ASSERT_LT(comparison.a.PathOf(node).size(), 200u);
}

TEST(TreeDiffTest, HostileDocumentsTakeNearlyLinearTime)
{
    // Each document is large, and its twin has no equal children, or all of them in the reverse order, or one less.
    constexpr int count = 100000;
    std::string reverse;
    std::string forward;
    std::string same;
    std::string keys;
    std::string otherKeys;
    std::string deepA;
    std::string deepB;
    for (int i = 0; i < count; ++i) {
        forward += "<b x='" + std::to_string(i) + "'/>";
        reverse += "<b x='" + std::to_string(count - i) + "'/>";
        same += "<b/>";
        keys += "<b id='" + std::to_string(i) + "' v='1'/>";
        otherKeys += "<b id='" + std::to_string(count - i) + "' v='2'/>";
        deepA += "<d x='1'>";
        deepB += "<d x='2'>";
    }
    std::string end;
    for (int i = 0; i < count; ++i)
        end += "</d>";
    const testsupport::CpuTimeLimit limit(20);
    EXPECT_EQ(TreeComparison("<a>" + forward + "</a>", "<a>" + reverse + "</a>").differences.size(), 99999u);
    EXPECT_EQ(DescribeDifferences("<a>" + same + "<b/></a>", "<a>" + same + "</a>"), "removed /a/b[100001]");
    EXPECT_EQ(TreeComparison("<a>" + keys + "</a>", "<a>" + otherKeys + "</a>").differences.size(), 199999u);
    EXPECT_EQ(TreeComparison(deepA + end, deepB + end).differences.size(), 100000u);
}
