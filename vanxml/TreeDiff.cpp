#include "vanxml/TreeDiff.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "vanxml/ChildAlignment.h"

namespace {

using Kind = TreeDifference::Kind;
constexpr std::uint32_t None = TreeDifference::None;

// An element that comes to another parent counts as moved only from this number of nodes and attributes on: an element
// without attributes and content is equal to others by chance.
constexpr std::uint32_t leastMoved = 2;
// The same inside an element that was removed or added. Small ones, such as <b>1</b>, are often equal by chance.
constexpr std::uint32_t leastMovedInside = 3;

// A difference with its place in the result: the place in A, removed nodes first, and the place in B.
struct PlacedDifference {
    std::tuple<std::uint32_t, int, std::uint32_t> place;
    TreeDifference difference;
};

class TreeComparer {
public:
    TreeComparer(const ComparedTree& a, const ComparedTree& b, ContentTable& table)
        : m_a(a),
          m_b(b),
          m_countsA(CountContents(a, table)),
          m_countsB(CountContents(b, table)),
          m_keyNames{table.IdentifyText("id"),
              table.IdentifyText("xml:id"),
              table.IdentifyText("name"),
              table.IdentifyText("key")}
    {}

    std::vector<TreeDifference> Run()
    {
        if (m_a.Node(0).name == m_b.Node(0).name) {
            m_pairs.emplace_back(0, 0);
        } else {
            m_removed.push_back(0);
            m_added.push_back({0, 0, None});
        }
        while (!m_pairs.empty()) {
            const auto [a, b] = m_pairs.back();
            m_pairs.pop_back();
            if (m_a.Node(a).content != m_b.Node(b).content)
                ComparePair(a, b);
        }
        FindMoves();
        AddUnmatched();
        std::stable_sort(m_found.begin(), m_found.end(), [](const PlacedDifference& x, const PlacedDifference& y) {
            return x.place < y.place;
        });
        std::vector<TreeDifference> differences;
        differences.reserve(m_found.size());
        for (const PlacedDifference& found : m_found)
            differences.push_back(found.difference);
        return differences;
    }

private:
    using Children = std::vector<std::uint32_t>;
    struct AddedNode {
        std::uint32_t node = 0;
        std::uint32_t placeInA = 0;
        std::uint32_t parentInA = 0;  // the element that corresponds to the parent
    };
    struct Sibling {
        std::uint32_t parent = 0;  // in A
        std::uint32_t content = 0;
        std::uint32_t node = 0;
    };
    struct Candidate {
        std::uint32_t content = 0;
        std::uint32_t node = 0;
        std::uint32_t size = 0;
    };

    static std::vector<std::uint32_t> CountContents(const ComparedTree& tree, const ContentTable& table)
    {
        std::vector<std::uint32_t> counts(table.CountSequences());
        for (std::uint32_t i = 0; i < tree.Size(); ++i)
            ++counts[tree.Node(i).content];
        return counts;
    }

    static std::uint32_t SizeOf(const ComparedTree& tree, std::uint32_t node) { return tree.Node(node).end - node; }

    // The number of nodes in an element, itself included, and of its attributes.
    static std::uint32_t CountParts(const ComparedTree& tree, std::uint32_t node)
    {
        return SizeOf(tree, node) + tree.Node(node).attributeCount;
    }

    // True for an element that is exactly once in each document. Unless the element is in the same gap of the children,
    // FindMoves finds it, so it must not be matched with another one of its name.
    bool HasMoved(const ComparedTree& tree, std::uint32_t node) const
    {
        const std::uint32_t content = tree.Node(node).content;
        return CountParts(tree, node) >= leastMovedInside && m_countsA[content] == 1 && m_countsB[content] == 1;
    }

    void ComparePair(std::uint32_t a, std::uint32_t b)
    {
        if (m_a.Node(a).IsText()) {
            Add({a, 2, b}, {Kind::Changed, a, b, None, m_a.Node(a).value, m_b.Node(b).value, 0});
            return;
        }
        CompareAttributes(a, b);
        const Children childrenA = m_a.ChildrenOf(a);
        const Children childrenB = m_b.ChildrenOf(b);
        const ChildAlignment alignment = Align(childrenA, childrenB);
        // Invariant: all children of B in front of nextB were handled.
        std::uint32_t placeInA = a + 1;
        std::size_t nextB = 0;
        const auto addUpTo = [&](std::size_t endB) {
            for (; nextB < endB; ++nextB)
                m_added.push_back({childrenB[nextB], placeInA, a});
        };
        for (std::size_t i = 0; i < childrenA.size(); ++i) {
            const std::size_t partner = alignment.PartnerOf(i);
            if (partner == ChildAlignment::None) {
                m_removed.push_back(childrenA[i]);
                continue;
            }
            addUpTo(partner);
            nextB = partner + 1;
            placeInA = m_a.Node(childrenA[i]).end;
            m_pairs.emplace_back(childrenA[i], childrenB[partner]);
        }
        addUpTo(childrenB.size());
    }

    void CompareAttributes(std::uint32_t a, std::uint32_t b)
    {
        if (m_a.Node(a).tag == m_b.Node(b).tag)
            return;
        const std::vector<ComparedTree::Attribute> before = m_a.AttributesOf(a);
        const std::vector<ComparedTree::Attribute> after = m_b.AttributesOf(b);
        const std::vector<ComparedTree::Attribute> sortedBefore = Sort(before);
        const std::vector<ComparedTree::Attribute> sortedAfter = Sort(after);
        for (const auto& [name, value] : before) {
            const std::uint32_t newValue = FindValue(sortedAfter, name);
            if (newValue != value)
                Add({a, 2, b}, {newValue == None ? Kind::Removed : Kind::Changed, a, b, name, value, newValue});
        }
        for (const auto& [name, value] : after) {
            if (FindValue(sortedBefore, name) == None)
                Add({a, 2, b}, {Kind::Added, a, b, name, None, value});
        }
    }

    static std::vector<ComparedTree::Attribute> Sort(std::vector<ComparedTree::Attribute> attributes)
    {
        std::sort(attributes.begin(), attributes.end());
        return attributes;
    }

    // Returns the value of a name, or None.
    static std::uint32_t FindValue(const std::vector<ComparedTree::Attribute>& sorted, std::uint32_t name)
    {
        const auto found = std::lower_bound(sorted.begin(), sorted.end(), ComparedTree::Attribute(name, 0));
        return found != sorted.end() && found->first == name ? found->second : None;
    }

    ChildAlignment Align(const Children& childrenA, const Children& childrenB) const
    {
        ChildAlignment alignment(childrenA.size(), childrenB.size());
        const auto content = [](const ComparedTree& tree, const Children& children) {
            return [&tree, &children](std::size_t place) { return std::uint64_t{tree.Node(children[place]).content}; };
        };
        const auto unlessMoved = [this](const ComparedTree& tree, const Children& children, const auto& keyOf) {
            return [this, &tree, &children, keyOf](std::size_t place) {
                return HasMoved(tree, children[place]) ? ChildAlignment::NoKey : keyOf(tree, children[place]);
            };
        };
        const auto tag = [](const ComparedTree& tree, std::uint32_t node) {
            return std::uint64_t{tree.Node(node).tag};
        };
        const auto name = [](const ComparedTree& tree, std::uint32_t node) {
            return std::uint64_t{tree.Node(node).name};
        };
        const auto keyAttribute = [this](const ComparedTree& tree, std::uint32_t node) { return KeyOf(tree, node); };
        const ChildAlignment::Key contentA = content(m_a, childrenA);
        const ChildAlignment::Key contentB = content(m_b, childrenB);
        const ChildAlignment::Key identityA = unlessMoved(m_a, childrenA, keyAttribute);
        const ChildAlignment::Key identityB = unlessMoved(m_b, childrenB, keyAttribute);
        alignment.MatchEnds(contentA, contentB);
        for (const ChildAlignment::Pair& pair : alignment.MatchUnique(contentA, contentB, identityA, identityB)) {
            // Equal elements that changed their order are found by FindMoves.
            if (contentA(pair.a) == contentB(pair.b) && !m_a.Node(childrenA[pair.a]).IsText())
                alignment.Exclude(pair.a, pair.b);
        }
        alignment.Match(contentA, contentB);
        alignment.Match(unlessMoved(m_a, childrenA, tag), unlessMoved(m_b, childrenB, tag));
        alignment.Match(identityA, identityB);
        alignment.Match(unlessMoved(m_a, childrenA, name), unlessMoved(m_b, childrenB, name));
        return alignment;
    }

    // Returns a number for the name and the first identifying attribute of an element.
    std::uint64_t KeyOf(const ComparedTree& tree, std::uint32_t node) const
    {
        for (const std::uint32_t key : m_keyNames) {
            const std::uint32_t value = tree.FindAttribute(node, key);
            if (value != None)
                return std::uint64_t{tree.Node(node).name} << 32 | value;
        }
        return ChildAlignment::NoKey;
    }

    // The elements that may have come to another parent: those in `nodes` and inside them, unless they are too small.
    template <typename Nodes, typename ToNode>
    static std::vector<Candidate> FindCandidates(const ComparedTree& tree, const Nodes& nodes, const ToNode& toNode)
    {
        std::vector<Candidate> candidates;
        for (const auto& each : nodes) {
            const std::uint32_t first = toNode(each);
            for (std::uint32_t node = first; node < tree.Node(first).end; ++node) {
                const std::uint32_t least = node == first ? leastMoved : leastMovedInside;
                if (!tree.Node(node).IsText() && CountParts(tree, node) >= least)
                    candidates.push_back({tree.Node(node).content, node, SizeOf(tree, node)});
            }
        }
        // The largest first: then a moved element is never inside one that is found later.
        std::sort(candidates.begin(), candidates.end(), [](const Candidate& x, const Candidate& y) {
            return std::tuple(y.size, x.content, x.node) < std::tuple(x.size, y.content, y.node);
        });
        return candidates;
    }

    // Matches equal elements among the removed and the added ones.
    void FindMoves()
    {
        m_hasMovedA.resize(m_a.Size());
        m_hasMovedB.resize(m_b.Size());
        FindMovesInParents();
        FindMovesToOtherParents();
    }

    // An element without attributes and content stays the same only if no other child has its name.
    static bool MayMoveInParent(const ComparedTree& tree, std::uint32_t node)
    {
        return !tree.Node(node).IsText() && (CountParts(tree, node) > 1 || tree.Node(node).position == 0);
    }

    void FindMovesInParents()
    {
        std::vector<Sibling> before;
        std::vector<Sibling> after;
        for (const std::uint32_t node : m_removed) {
            if (MayMoveInParent(m_a, node))
                before.push_back({m_a.Node(node).parent, m_a.Node(node).content, node});
        }
        for (const AddedNode& added : m_added) {
            if (MayMoveInParent(m_b, added.node))
                after.push_back({added.parentInA, m_b.Node(added.node).content, added.node});
        }
        const auto isBefore = [](const Sibling& x, const Sibling& y) {
            return std::tie(x.parent, x.content, x.node) < std::tie(y.parent, y.content, y.node);
        };
        std::sort(before.begin(), before.end(), isBefore);
        std::sort(after.begin(), after.end(), isBefore);
        auto i = before.begin();
        auto j = after.begin();
        while (i != before.end() && j != after.end()) {
            const auto x = std::tie(i->parent, i->content);
            const auto y = std::tie(j->parent, j->content);
            if (x < y) {
                ++i;
            } else if (y < x) {
                ++j;
            } else {
                AddMove(i->node, j->node);
                ++i;
                ++j;
            }
        }
    }

    void FindMovesToOtherParents()
    {
        const std::vector<Candidate> before = FindCandidates(m_a, m_removed, [](std::uint32_t node) { return node; });
        const std::vector<Candidate> after =
            FindCandidates(m_b, m_added, [](const AddedNode& added) { return added.node; });
        std::size_t i = 0;
        std::size_t j = 0;
        while (i < before.size() && j < after.size()) {
            const std::tuple x(after[j].size, before[i].content);
            const std::tuple y(before[i].size, after[j].content);
            if (m_hasMovedA[before[i].node] || x < y) {
                ++i;
            } else if (m_hasMovedB[after[j].node] || y < x) {
                ++j;
            } else {
                AddMove(before[i].node, after[j].node);
                ++i;
                ++j;
            }
        }
    }

    void AddMove(std::uint32_t a, std::uint32_t b)
    {
        const auto mark = [](std::vector<bool>& nodes, std::uint32_t node, std::uint32_t size) {
            std::fill_n(nodes.begin() + static_cast<std::ptrdiff_t>(node), size, true);
        };
        mark(m_hasMovedA, a, SizeOf(m_a, a));
        mark(m_hasMovedB, b, SizeOf(m_b, b));
        Add({a, 0, b}, {Kind::Moved, a, b, None, None, None, m_a.CountElementsIn(a)});
    }

    // Returns the number of elements inside a removed or added one that have not moved.
    static std::uint32_t CountUnmoved(const ComparedTree& tree, std::uint32_t node, const std::vector<bool>& hasMoved)
    {
        std::uint32_t count = 0;
        for (std::uint32_t inside = node + 1; inside < tree.Node(node).end; ++inside)
            count += !hasMoved[inside] && !tree.Node(inside).IsText() ? 1u : 0u;
        return count;
    }

    void AddUnmatched()
    {
        const auto valueOf = [](const ComparedNode& node) { return node.IsText() ? node.value : None; };
        for (const std::uint32_t node : m_removed) {
            if (m_hasMovedA[node])
                continue;
            const std::uint32_t elements = CountUnmoved(m_a, node, m_hasMovedA);
            Add({node, 0, 0}, {Kind::Removed, node, None, None, valueOf(m_a.Node(node)), None, elements});
        }
        for (const AddedNode& added : m_added) {
            if (m_hasMovedB[added.node])
                continue;
            const std::uint32_t elements = CountUnmoved(m_b, added.node, m_hasMovedB);
            Add({added.placeInA, 1, added.node},
                {Kind::Added, None, added.node, None, None, valueOf(m_b.Node(added.node)), elements});
        }
    }

    void Add(const std::tuple<std::uint32_t, int, std::uint32_t>& place, const TreeDifference& difference)
    {
        m_found.push_back({place, difference});
    }

    const ComparedTree& m_a;
    const ComparedTree& m_b;
    const std::vector<std::uint32_t> m_countsA;  // by content: the number of nodes of A
    const std::vector<std::uint32_t> m_countsB;
    const std::array<std::uint32_t, 4> m_keyNames;

    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_pairs;  // corresponding nodes that are still to be compared
    std::vector<std::uint32_t> m_removed;                          // nodes of A that correspond to none of B
    std::vector<AddedNode> m_added;                                // nodes of B that correspond to none of A
    std::vector<bool> m_hasMovedA;                                 // nodes of A in a moved element
    std::vector<bool> m_hasMovedB;
    std::vector<PlacedDifference> m_found;
};

}  // namespace

std::vector<TreeDifference> DiffTrees(const ComparedTree& a, const ComparedTree& b, ContentTable& table)
{
    return TreeComparer(a, b, table).Run();
}
