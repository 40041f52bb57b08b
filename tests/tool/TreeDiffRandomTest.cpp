// Random pairs of documents. An independent reading of both decides whether they are equal, and the differences turn
// the one into the other.
#include <QXmlStreamReader>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "tests/tool/TreeComparison.h"

namespace {

using Kind = TreeDifference::Kind;
constexpr std::uint32_t None = TreeDifference::None;

// An element, or a text if the name is empty.
struct RandomNode {
    std::string name;
    std::string text;
    std::map<std::string, std::string> attributes;
    std::vector<std::unique_ptr<RandomNode>> children;
};

class RandomDocument {
public:
    explicit RandomDocument(unsigned seed, unsigned depth = 5) : m_random(seed), m_depth(depth), m_root(MakeElement(0))
    {
        m_root->name = "root";
    }

    // Changes an attribute, a text, or the place of a child.
    void Edit()
    {
        RandomNode& node = Pick();
        const bool hasChildren = !node.children.empty();
        switch (m_random() % 6) {
        case 0: node.attributes[Letter("xyz")] = Letter("12345"); break;
        case 1: node.attributes.erase(Letter("xyz")); break;
        case 2: Insert(node, MakeText()); break;
        case 3: Insert(node, MakeElement(3)); break;
        case 4:
            if (hasChildren)
                RemoveChild(node);
            break;
        default:
            if (hasChildren) {
                std::unique_ptr<RandomNode> moved = RemoveChild(node);
                Insert(Pick(), std::move(moved));
            }
        }
    }

    // Writes the document, each time in another form. Now and then, an indented form has another meaning: it adds white
    // space in an element that has a text.
    std::string Write(bool isIndented = true)
    {
        m_isIndented = isIndented;
        std::string text;
        Write(*m_root, text);
        return text;
    }

private:
    bool OneIn(unsigned count) { return m_random() % count == 0; }
    std::string Letter(const std::string& letters) { return letters.substr(m_random() % letters.size(), 1); }

    static std::unique_ptr<RandomNode> RemoveChild(RandomNode& node, std::size_t place)
    {
        std::unique_ptr<RandomNode> child = std::move(node.children[place]);
        node.children.erase(node.children.begin() + static_cast<std::ptrdiff_t>(place));
        return child;
    }
    std::unique_ptr<RandomNode> RemoveChild(RandomNode& node)
    {
        return RemoveChild(node, m_random() % node.children.size());
    }

    void Insert(RandomNode& node, std::unique_ptr<RandomNode> child)
    {
        const auto place = static_cast<std::ptrdiff_t>(m_random() % (node.children.size() + 1));
        node.children.insert(node.children.begin() + place, std::move(child));
    }

    std::unique_ptr<RandomNode> MakeText()
    {
        auto node = std::make_unique<RandomNode>();
        node->text = OneIn(5) ? " " : Letter("pqrst");
        return node;
    }

    std::unique_ptr<RandomNode> MakeElement(unsigned depth)
    {
        auto node = std::make_unique<RandomNode>();
        node->name = Letter("abc");
        if (OneIn(2))
            node->attributes[OneIn(2) ? "id" : "x"] = Letter("12345");
        if (OneIn(30))
            node->attributes["xml:space"] = OneIn(3) ? "default" : "preserve";
        if (OneIn(3))
            node->children.push_back(MakeText());
        for (unsigned i = depth < m_depth ? m_random() % 4 : 0; i > 0; --i)
            node->children.push_back(OneIn(8) ? MakeText() : MakeElement(depth + 1));
        return node;
    }

    // Returns an element.
    RandomNode& Pick()
    {
        RandomNode* node = m_root.get();
        while (!node->children.empty() && !OneIn(3)) {
            RandomNode* child = node->children[m_random() % node->children.size()].get();
            if (child->name.empty())
                break;
            node = child;
        }
        return *node;
    }

    void WriteText(const std::string& value, std::string& text)
    {
        switch (m_random() % 4) {
        case 0: text += "<![CDATA[" + value + "]]>"; break;
        case 1: text += "&#" + std::to_string(static_cast<int>(value[0])) + ";" + value.substr(1); break;
        default: text += value;
        }
    }

    void Write(const RandomNode& node, std::string& text)
    {
        if (node.name.empty())
            return WriteText(node.text, text);
        text += "<" + node.name;
        std::vector<std::string> attributes;
        for (const auto& [name, value] : node.attributes)
            attributes.push_back(
                (OneIn(4) ? "\n" : " ") + name + (OneIn(2) ? "='" + value + "'" : " = \"" + value + "\""));
        std::shuffle(attributes.begin(), attributes.end(), m_random);
        for (const std::string& attribute : attributes)
            text += attribute;
        if (node.children.empty() && OneIn(2)) {
            text += "/>";
            return;
        }
        text += ">";
        const bool hasText = std::any_of(
            node.children.begin(), node.children.end(), [](const auto& child) { return child->name.empty(); });
        const bool isLoose = m_isIndented && (hasText ? OneIn(50) : OneIn(3));
        for (const auto& child : node.children) {
            text += isLoose ? "\n " : "";
            text += OneIn(10) ? "<!-- d -->" : OneIn(10) ? "<?d e?>" : "";
            Write(*child, text);
        }
        text += isLoose && !node.children.empty() ? "\n" : "";
        text += "</" + node.name + ">";
    }

    std::mt19937 m_random;
    const unsigned m_depth;
    bool m_isIndented = true;
    std::unique_ptr<RandomNode> m_root;
};

// An element or a text as QXmlStreamReader reads it.
struct PlainNode {
    std::string name;  // empty for a text
    std::string text;
    std::map<std::string, std::string> attributes;
    std::vector<PlainNode> children;
    std::size_t offset = 0;  // behind the start tag, or behind the tag in front of the text

    bool operator==(const PlainNode& other) const
    {
        return name == other.name && text == other.text && attributes == other.attributes && children == other.children;
    }
    bool IsBlank() const { return name.empty() && text.find_first_not_of(" \n") == std::string::npos; }
};

// Reads the content of an element up to its end tag. `last` is the end of the last tag.
void ReadContent(QXmlStreamReader& reader, PlainNode& element, std::size_t& last)
{
    for (;;) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement: {
            last = static_cast<std::size_t>(reader.characterOffset());
            PlainNode& child = element.children.emplace_back();
            child.name = reader.qualifiedName().toString().toStdString();
            child.offset = last;
            for (const QXmlStreamAttribute& each : reader.attributes())
                child.attributes[each.qualifiedName().toString().toStdString()] = each.value().toString().toStdString();
            ReadContent(reader, child, last);
            break;
        }
        case QXmlStreamReader::Characters:
            if (element.children.empty() || !element.children.back().name.empty()) {
                element.children.emplace_back();
                element.children.back().offset = last;
            }
            element.children.back().text += reader.text().toString().toStdString();
            break;
        case QXmlStreamReader::EndElement: last = static_cast<std::size_t>(reader.characterOffset()); return;
        case QXmlStreamReader::EndDocument: return;
        case QXmlStreamReader::Invalid: FAIL() << reader.errorString().toStdString();
        default: break;
        }
    }
}

// Removes the texts that do not count.
void DropIndentation(PlainNode& element, bool isInMixed, bool isInPreserved)
{
    bool hasElement = false;
    bool hasText = false;
    for (const PlainNode& child : element.children) {
        hasElement |= !child.name.empty();
        hasText |= child.name.empty() && !child.IsBlank();
    }
    const bool isMixed = isInMixed || (hasElement && hasText);
    const auto space = element.attributes.find("xml:space");
    const bool isPreserved = space == element.attributes.end() ? isInPreserved : space->second == "preserve";
    if (hasElement && !isMixed && !isPreserved)
        std::erase_if(element.children, [](const PlainNode& child) { return child.IsBlank(); });
    for (PlainNode& child : element.children) {
        if (!child.name.empty())
            DropIndentation(child, isMixed, isPreserved);
    }
}

PlainNode ReadPlainly(const std::string& text)
{
    QXmlStreamReader reader(QByteArray::fromStdString(text));
    reader.setNamespaceProcessing(false);
    PlainNode document;
    std::size_t last = 0;
    ReadContent(reader, document, last);
    EXPECT_EQ(document.children.size(), 1u) << text;
    DropIndentation(document.children[0], false, false);
    return document.children[0];
}

// Appends the nodes in document order.
void ListNodes(const PlainNode& node, std::vector<const PlainNode*>& nodes)
{
    nodes.push_back(&node);
    for (const PlainNode& child : node.children)
        ListNodes(child, nodes);
}

// Returns the byte of an ASCII text at a place.
std::size_t OffsetOf(const std::string& text, SourcePosition place)
{
    std::size_t start = 0;
    for (std::uint64_t line = 1; line < place.line; ++line)
        start = text.find('\n', start) + 1;
    return start + static_cast<std::size_t>(place.column) - 1;
}

// Expects that the node of a difference stands at its place with its value.
void ExpectNodeAtPlace(const TreeComparison& comparison,
    const ComparedTree& tree,
    const std::string& text,
    const std::vector<const PlainNode*>& plain,
    std::uint32_t node,
    std::uint32_t attribute,
    std::uint32_t value)
{
    const PlainNode& expected = *plain[node];
    EXPECT_EQ(comparison.Text(tree.Node(node).name), expected.name);
    EXPECT_EQ(OffsetOf(text, tree.PlaceOf(node)), expected.offset) << text;
    const auto isElement = [](const PlainNode* each) { return !each->name.empty(); };
    if (isElement(plain[node])) {
        EXPECT_EQ(tree.ElementNumberOf(node), std::count_if(plain.begin(), plain.begin() + node + 1, isElement));
    }
    const std::uint32_t parent = tree.Node(node).parent;
    EXPECT_EQ(&expected, parent == None ? plain[0] : &plain[parent]->children.at(tree.Node(node).child - 1));
    const std::string found = value == None ? "" : comparison.Text(value);
    if (attribute == None) {
        EXPECT_EQ(found, expected.text);
        return;
    }
    const auto place = expected.attributes.find(comparison.Text(attribute));
    EXPECT_EQ(place == expected.attributes.end(), value == None);
    if (place != expected.attributes.end()) {
        EXPECT_EQ(found, place->second);
    }
}

// Returns the nodes that are not inside a removed, added or moved one.
std::vector<std::uint32_t> ListCommonNodes(
    const ComparedTree& tree, const std::vector<TreeDifference>& differences, std::uint32_t TreeDifference::*side)
{
    std::vector<bool> isGone(tree.Size());
    for (const TreeDifference& each : differences) {
        if (each.attribute == None && each.kind != Kind::Changed && each.*side != None)
            std::fill(isGone.begin() + (each.*side), isGone.begin() + tree.Node(each.*side).end, true);
    }
    std::vector<std::uint32_t> common;
    for (std::uint32_t node = 0; node < tree.Size(); ++node) {
        if (!isGone[node])
            common.push_back(node);
    }
    return common;
}

// Changes a node of A as the differences tell.
void ApplyChanges(const TreeComparison& comparison, std::uint32_t node, PlainNode& plain)
{
    for (const TreeDifference& each : comparison.differences) {
        if (each.a != node)
            continue;
        const bool isText = each.attribute == None && each.kind == Kind::Changed;
        if (isText)
            plain.text = comparison.Text(each.valueB);
        else if (each.attribute != None && each.kind == Kind::Removed)
            plain.attributes.erase(comparison.Text(each.attribute));
        else if (each.attribute != None)
            plain.attributes[comparison.Text(each.attribute)] = comparison.Text(each.valueB);
    }
}

// Expects that A becomes B: the common nodes have the same order and parents, and become equal by the changes.
void ExpectDifferencesComplete(const TreeComparison& comparison,
    const std::vector<const PlainNode*>& plainA,
    const std::vector<const PlainNode*>& plainB)
{
    const auto a = ListCommonNodes(comparison.a, comparison.differences, &TreeDifference::a);
    const auto b = ListCommonNodes(comparison.b, comparison.differences, &TreeDifference::b);
    ASSERT_EQ(a.size(), b.size());
    std::map<std::uint32_t, std::uint32_t> partners{{None, None}};
    for (std::size_t i = 0; i < a.size(); ++i) {
        partners[a[i]] = b[i];
        EXPECT_EQ(partners.at(comparison.a.Node(a[i]).parent), comparison.b.Node(b[i]).parent);
        PlainNode changed = *plainA[a[i]];
        ApplyChanges(comparison, a[i], changed);
        changed.children = plainB[b[i]]->children;
        EXPECT_EQ(changed, *plainB[b[i]]);
    }
}

// Returns the number of elements inside the node, but not inside a moved element if the node itself has not moved.
std::size_t CountElements(const TreeComparison& comparison,
    const ComparedTree& tree,
    const std::vector<const PlainNode*>& plain,
    const TreeDifference& difference,
    std::uint32_t TreeDifference::*side)
{
    std::set<std::uint32_t> moved;
    for (const TreeDifference& each : comparison.differences) {
        if (each.kind == Kind::Moved && difference.kind != Kind::Moved)
            moved.insert(each.*side);
    }
    std::size_t count = 0;
    const std::uint32_t node = difference.*side;
    for (std::uint32_t inside = node + 1; inside < tree.Node(node).end;) {
        if (moved.count(inside) != 0) {
            inside = tree.Node(inside).end;
            continue;
        }
        count += plain[inside]->name.empty() ? 0u : 1u;
        ++inside;
    }
    return count;
}

// Expects that the differences between two documents are correct. Returns true if there are none.
bool CheckPair(const std::string& textA, const std::string& textB, std::map<Kind, std::size_t>& kinds)
{
    const PlainNode documentA = ReadPlainly(textA);
    const PlainNode documentB = ReadPlainly(textB);
    std::vector<const PlainNode*> plainA;
    std::vector<const PlainNode*> plainB;
    ListNodes(documentA, plainA);
    ListNodes(documentB, plainB);
    const TreeComparison comparison(textA, textB);
    EXPECT_EQ(comparison.differences.empty(), documentA == documentB);
    EXPECT_EQ(comparison.a.Size(), plainA.size());
    EXPECT_EQ(comparison.b.Size(), plainB.size());
    for (const TreeDifference& each : comparison.differences) {
        ++kinds[each.kind];
        if (each.a != None)
            ExpectNodeAtPlace(comparison, comparison.a, textA, plainA, each.a, each.attribute, each.valueA);
        if (each.b != None)
            ExpectNodeAtPlace(comparison, comparison.b, textB, plainB, each.b, each.attribute, each.valueB);
        if (each.kind == Kind::Moved) {
            EXPECT_EQ(*plainA[each.a], *plainB[each.b]);
        }
        const bool isInA = each.a != None;
        EXPECT_EQ(each.elements,
            each.attribute != None || each.kind == Kind::Changed ? 0u
                : isInA ? CountElements(comparison, comparison.a, plainA, each, &TreeDifference::a)
                        : CountElements(comparison, comparison.b, plainB, each, &TreeDifference::b));
    }
    ExpectDifferencesComplete(comparison, plainA, plainB);
    return comparison.differences.empty();
}

}  // namespace

TEST(TreeDiffRandomTest, TheDifferencesTurnOneDocumentIntoTheOther)
{
    std::size_t equal = 0;
    std::map<Kind, std::size_t> kinds;
    for (unsigned seed = 0; seed < 1500 && !HasFailure(); ++seed) {
        RandomDocument document(seed);
        const std::string before = document.Write();
        for (unsigned edits = seed % 5; edits > 0; --edits)
            document.Edit();
        const std::string after = document.Write();
        equal += CheckPair(before, after, kinds) ? 1U : 0U;
        EXPECT_FALSE(HasFailure()) << "seed " << seed << "\n" << before << "\n" << after;
    }
    EXPECT_GT(equal, 200u);
    EXPECT_LT(equal, 700u);
    for (const Kind kind : {Kind::Changed, Kind::Removed, Kind::Added, Kind::Moved})
        EXPECT_GT(kinds[kind], 150u) << static_cast<int>(kind);
}

TEST(TreeDiffRandomTest, UnrelatedDocumentsAreComparedCorrectly)
{
    std::size_t equal = 0;
    std::map<Kind, std::size_t> kinds;
    for (unsigned seed = 0; seed < 1500 && !HasFailure(); ++seed) {
        const std::string a = RandomDocument(2 * seed, seed % 3).Write();
        const std::string b = RandomDocument(2 * seed + 1, seed % 3).Write();
        equal += CheckPair(a, b, kinds) ? 1U : 0U;
        EXPECT_FALSE(HasFailure()) << "seed " << seed << "\n" << a << "\n" << b;
    }
    EXPECT_GT(equal, 20u);
}

TEST(TreeDiffRandomTest, SingleEditsGiveFewDifferences)
{
    std::size_t differences = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        RandomDocument document(seed);
        const std::string before = document.Write(false);
        document.Edit();
        differences += TreeComparison(before, document.Write(false)).differences.size();
    }
    EXPECT_LT(differences, 400u);
}
