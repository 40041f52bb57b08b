#include "vanxml/TreeDiff.h"

#include <map>
#include <memory>
#include <random>
#include <set>

#include "tests/common/TestSupport.h"
#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

namespace {

using Kind = TreeDifference::Kind;
constexpr std::uint32_t None = TreeDifference::None;

// A random element.
struct RandomNode {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;  // behind the start tag
    std::vector<std::unique_ptr<RandomNode>> children;
};

class RandomTree {
public:
    explicit RandomTree(unsigned seed) : m_random(seed), m_root(MakeNode(0)) { m_root->name = "root"; }

    // Changes an attribute, a text, or the place of a child.
    void Edit()
    {
        RandomNode& node = Pick();
        const unsigned children = static_cast<unsigned>(node.children.size());
        switch (m_random() % 6) {
        case 0: node.attributes[Letter("xyz")] = Letter("12345"); break;
        case 1: node.attributes.erase(Letter("xyz")); break;
        case 2: node.text = m_random() % 3 == 0 ? "" : Letter("pqrst"); break;
        case 3: node.children.insert(node.children.begin() + m_random() % (children + 1), MakeNode(3)); break;
        case 4:
            if (children > 0)
                node.children.erase(node.children.begin() + m_random() % children);
            break;
        default:
            if (children > 0) {
                const auto place = node.children.begin() + m_random() % children;
                std::unique_ptr<RandomNode> moved = std::move(*place);
                node.children.erase(place);
                RandomNode& target = Pick();
                target.children.insert(
                    target.children.begin() + static_cast<int>(m_random() % (target.children.size() + 1)),
                    std::move(moved));
            }
        }
    }

    // Writes the tree with random line feeds between the elements that have no text, which do not belong to it.
    std::string Write()
    {
        std::string text;
        Write(*m_root, text, true, false);
        return text;
    }
    // Equal trees, and only these, have the same canonical text.
    std::string WriteCanonical()
    {
        std::string text;
        Write(*m_root, text, false, false);
        return text;
    }

private:
    std::string Letter(const std::string& letters) { return letters.substr(m_random() % letters.size(), 1); }

    std::unique_ptr<RandomNode> MakeNode(int depth)
    {
        auto node = std::make_unique<RandomNode>();
        node->name = Letter("abc");
        if (m_random() % 2 == 0)
            node->attributes[m_random() % 2 == 0 ? "id" : "x"] = Letter("12345");
        if (m_random() % 3 == 0)
            node->text = Letter("pqrst");
        if (depth < 5) {
            for (unsigned i = m_random() % 4; i > 0; --i)
                node->children.push_back(MakeNode(depth + 1));
        }
        return node;
    }

    RandomNode& Pick()
    {
        RandomNode* node = m_root.get();
        while (!node->children.empty() && m_random() % 3 != 0)
            node = node->children[m_random() % node->children.size()].get();
        return *node;
    }

    void Write(const RandomNode& node, std::string& text, bool isLoose, bool isMixed)
    {
        const bool isInMixed = isMixed || (!node.text.empty() && !node.children.empty());
        const auto space = [&] { return isLoose && !isInMixed && m_random() % 3 == 0 ? "\n " : ""; };
        text += "<" + node.name;
        std::vector<std::string> attributes;
        for (const auto& [name, value] : node.attributes)
            attributes.push_back(" " + name + "='" + value + "'");
        if (isLoose)
            std::shuffle(attributes.begin(), attributes.end(), m_random);
        for (const std::string& attribute : attributes)
            text += attribute;
        text += ">" + node.text;
        for (const auto& child : node.children) {
            text += space();
            Write(*child, text, isLoose, isInMixed);
        }
        if (!node.children.empty())
            text += space();
        text += "</" + node.name + ">";
    }

    std::mt19937 m_random;
    std::unique_ptr<RandomNode> m_root;
};

// Two documents and their differences.
class Comparison {
public:
    Comparison(const std::string& before, const std::string& after)
        : textA(before),
          textB(after),
          a(m_folder.Write("a.xml", textA), m_table),
          b(m_folder.Write("b.xml", textB), m_table),
          differences(DiffTrees(a, b, m_table))
    {}

    // Such as "changed /a/@b, moved /c[1] to /d/c".
    std::string Describe() const
    {
        std::string text;
        for (const TreeDifference& each : differences) {
            constexpr const char* kinds[] = {"changed ", "removed ", "added ", "moved "};
            text += (text.empty() ? "" : ", ") + std::string(kinds[static_cast<int>(each.kind)]);
            text += each.a != None ? a.PathOf(each.a) : b.PathOf(each.b);
            if (each.attribute != None)
                text += "/@" + m_table.Text(each.attribute).toStdString();
            if (each.kind == Kind::Moved)
                text += " to " + b.PathOf(each.b);
        }
        return text;
    }

    VString Text(std::uint32_t number) const { return m_table.Text(number); }

private:
    TemporaryFolder m_folder;
    ContentTable m_table;

public:
    const std::string textA;
    const std::string textB;
    const ComparedTree a;
    const ComparedTree b;
    const std::vector<TreeDifference> differences;
};

std::string Diff(const std::string& a, const std::string& b)
{
    return Comparison(a, b).Describe();
}

// Returns the byte of an ASCII text at a place.
std::size_t OffsetOf(const std::string& text, SourcePosition place)
{
    std::size_t start = 0;
    for (std::uint64_t line = 1; line < place.line; ++line)
        start = text.find('\n', start) + 1;
    return start + static_cast<std::size_t>(place.column) - 1;
}

void ExpectRealPlace(
    const Comparison& comparison, const ComparedTree& tree, const std::string& text, std::uint32_t node)
{
    const std::size_t offset = OffsetOf(text, tree.PlaceOf(node));
    ASSERT_LE(offset, text.size());
    const ComparedNode& found = tree.Node(node);
    if (found.IsText()) {
        EXPECT_TRUE(text.substr(offset).starts_with(comparison.Text(found.value).toStdString())) << text;
        return;
    }
    const std::string tag = text.substr(0, offset).substr(text.substr(0, offset).rfind('<'));
    EXPECT_TRUE(tag.starts_with("<" + comparison.Text(found.name).toStdString())) << tag;
    EXPECT_TRUE(tag.ends_with(">")) << tag;
}

// The names of the nodes that are neither removed nor added, moved elements included.
std::multiset<std::string> CommonNames(
    const Comparison& comparison, const ComparedTree& tree, Kind kind, std::uint32_t TreeDifference::*side)
{
    std::vector<bool> isGone(tree.Size());
    const auto mark = [&](Kind wanted, bool value) {
        for (const TreeDifference& each : comparison.differences) {
            if (each.kind == wanted && each.attribute == None)
                std::fill(isGone.begin() + (each.*side), isGone.begin() + tree.Node(each.*side).end, value);
        }
    };
    mark(kind, true);
    mark(Kind::Moved, false);
    std::multiset<std::string> names;
    for (std::uint32_t i = 0; i < tree.Size(); ++i) {
        if (!isGone[i])
            names.insert(comparison.Text(tree.Node(i).name).toStdString());
    }
    return names;
}

}  // namespace

TEST(TreeDiffTest, AttributesAndTextsAreComparedByValue)
{
    EXPECT_EQ(Diff("<a b='1' c='2'/>", "<a c='2' b='1'/>"), "");
    EXPECT_EQ(Diff("<a b='1' c='2'>x</a>", "<a b='2' d='3'>y</a>"),
        "changed /a/@b, removed /a/@c, added /a/@d, changed /a/text()");
    EXPECT_EQ(Diff("<a>x</a>", "<a/>"), "removed /a/text()");
    EXPECT_EQ(Diff("<a>&lt;<![CDATA[b]]></a>", "<a>&#60;b</a>"), "");
}

TEST(TreeDiffTest, IndentationAndCommentsDoNotCount)
{
    EXPECT_EQ(Diff("<a><b/><c/></a>", "<?p?><a>\n  <b></b><!-- x -->\n  <c/>\n</a>"), "");
    EXPECT_EQ(Diff("<a> </a>", "<a/>"), "removed /a/text()");
    EXPECT_EQ(Diff("<a xml:space='preserve'><b/></a>", "<a xml:space='preserve'> <b/></a>"), "added /a/text()");
    EXPECT_EQ(Diff("<a>x<b> <c/></b></a>", "<a>x<b><c/></b></a>"), "removed /a/b/text()");
}

TEST(TreeDiffTest, InsertionsAndRemovalsLeaveTheOtherChildrenAlone)
{
    EXPECT_EQ(Diff("<a><b>1</b><b>2</b><b>3</b></a>", "<a><b>1</b><b>3</b></a>"), "removed /a/b[2]");
    EXPECT_EQ(Diff("<a><b>1</b><b>3</b></a>", "<a><b>1</b><b>2</b><b>3</b></a>"), "added /a/b[2]");
    EXPECT_EQ(Diff("<a><b/></a>", "<a><c/></a>"), "removed /a/b, added /a/c");
    EXPECT_EQ(Diff("<a><b/></a>", "<c><b/></c>"), "removed /a, added /c");
}

TEST(TreeDiffTest, MovedElementsAreToldApart)
{
    EXPECT_EQ(Diff("<a><b>1</b><b>2</b><b>3</b></a>", "<a><b>3</b><b>1</b><b>2</b></a>"), "moved /a/b[3] to /a/b[1]");
    EXPECT_EQ(Diff("<a><b><d x='1'>t</d></b><c/></a>", "<a><b/><c><d x='1'>t</d></c></a>"), "moved /a/b/d to /a/c/d");
    EXPECT_EQ(Diff("<a><w><d x='1'>t</d></w></a>", "<a><d x='1'>t</d></a>"), "removed /a/w, moved /a/w/d to /a/d");
}

TEST(TreeDiffTest, AMovedElementIsNotTakenForAChangedOne)
{
    EXPECT_EQ(Diff("<a><p><d x='1'>t</d></p><q/></a>", "<a><p><d x='2'>u</d></p><q><d x='1'>t</d></q></a>"),
        "moved /a/p/d to /a/q/d, added /a/p/d");
}

TEST(TreeDiffTest, ElementsWithTheSameIdentifierCorrespond)
{
    EXPECT_EQ(
        Diff("<a><b id='1' v='1'/><b id='2' v='1'/></a>", "<a><b id='0' v='2'/><b id='1' v='2'/><b id='2' v='2'/></a>"),
        "added /a/b[1], changed /a/b[1]/@v, changed /a/b[2]/@v");
}

TEST(TreeDiffTest, LongPathsAreShortened)
{
    std::string a;
    std::string b;
    for (int i = 0; i < 100; ++i) {
        a += "<e>";
        b += "</e>";
    }
    EXPECT_THAT(
        Diff(a + "1" + b, a + "2" + b), ContainsExpression("^changed (/e){32}/\\(37 more\\)(/e){31}/text\\(\\)$"));
}

TEST(TreeDiffTest, DifferencesOfRandomDocumentsAreTrue)
{
    std::size_t unequal = 0;
    std::map<Kind, std::size_t> kinds;
    for (unsigned seed = 0; seed < 400; ++seed) {
        RandomTree tree(seed);
        const std::string canonicalA = tree.WriteCanonical();
        const std::string textA = tree.Write();
        for (unsigned edits = seed % 5; edits > 0; --edits)
            tree.Edit();
        const std::string canonicalB = tree.WriteCanonical();
        const Comparison comparison(textA, tree.Write());
        EXPECT_EQ(comparison.differences.empty(), canonicalA == canonicalB) << canonicalA << "\n" << canonicalB;
        unequal += canonicalA == canonicalB ? 0 : 1;
        for (const TreeDifference& each : comparison.differences) {
            ++kinds[each.kind];
            if (each.a != None)
                ExpectRealPlace(comparison, comparison.a, comparison.textA, each.a);
            if (each.b != None)
                ExpectRealPlace(comparison, comparison.b, comparison.textB, each.b);
            if (each.kind == Kind::Moved) {
                EXPECT_EQ(comparison.a.Node(each.a).content, comparison.b.Node(each.b).content);
                EXPECT_FALSE(comparison.a.Node(each.a).IsText());
            }
        }
        EXPECT_EQ(CommonNames(comparison, comparison.a, Kind::Removed, &TreeDifference::a),
            CommonNames(comparison, comparison.b, Kind::Added, &TreeDifference::b));
        EXPECT_EQ(Diff(textA, canonicalA), "");
    }
    EXPECT_GT(unequal, 200u);
    EXPECT_EQ(kinds.size(), 4u);
}

TEST(TreeDiffTest, SingleEditsGiveFewDifferences)
{
    std::size_t differences = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        RandomTree tree(seed);
        const std::string before = tree.Write();
        tree.Edit();
        differences += Comparison(before, tree.Write()).differences.size();
    }
    EXPECT_LT(differences, 400u);
}

TEST(TreeDiffTest, HostileDocumentsTakeNearlyLinearTime)
{
    // Each document is large, and its twin has no equal children, or all of them in the reverse order, or one less.
    constexpr int count = 100000;
    std::string reverse;
    std::string forward;
    std::string same;
    std::string deepA;
    std::string deepB;
    for (int i = 0; i < count; ++i) {
        forward += "<b x='" + std::to_string(i) + "'/>";
        reverse += "<b x='" + std::to_string(count - i) + "'/>";
        same += "<b/>";
        deepA += "<d x='1'>";
        deepB += "<d x='2'>";
    }
    std::string end;
    for (int i = 0; i < count; ++i)
        end += "</d>";
    const testsupport::CpuTimeLimit limit(20);
    EXPECT_EQ(Comparison("<a>" + forward + "</a>", "<a>" + reverse + "</a>").differences.size(), 99999u);
    EXPECT_EQ(Diff("<a>" + same + "<b/></a>", "<a>" + same + "</a>"), "removed /a/b[100001]");
    EXPECT_EQ(Comparison(deepA + end, deepB + end).differences.size(), 100000u);
}
