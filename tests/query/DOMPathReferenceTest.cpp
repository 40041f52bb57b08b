// Compares the path walk with a plain implementation of its rules.
#include "vancorexml/main/parser/DOMPath.h"

#include <random>
#include <utility>

#include "tests/query/QueryTestSupport.h"
#include "tests/query/ReferencePathWalk.h"

using namespace querytest;

namespace {

using reference::Matches;
using reference::Segments;

// Returns all forests of `elements` elements, each named "a" or "b".
std::vector<std::string> Forests(int elements)
{
    std::vector<std::string> forests;
    if (elements == 0)
        forests.emplace_back();
    for (int below = 0; below < elements; ++below) {
        for (const std::string& children : Forests(below)) {
            for (const std::string& siblings : Forests(elements - 1 - below)) {
                for (const char* name : {"a", "b"})
                    forests.push_back(name + (below > 0 ? "(" + children + ")" : "") + siblings);
            }
        }
    }
    return forests;
}

std::vector<std::string> Trees(int elements)
{
    std::vector<std::string> trees;
    for (const std::string& children : Forests(elements - 1)) {
        for (const char* name : {"a", "b"})
            trees.push_back(name + (children.empty() ? "" : "(" + children + ")"));
    }
    return trees;
}

// Returns all paths of up to four segments, each "a", "b", "*" or empty.
std::vector<Segments> ShortPaths()
{
    std::vector<Segments> paths;
    std::vector<Segments> longest{{}};
    for (int length = 1; length <= 4; ++length) {
        std::vector<Segments> longer;
        for (const Segments& path : longest) {
            for (const char* segment : {"a", "b", "*", ""}) {
                longer.push_back(path);
                longer.back().push_back(segment);
            }
        }
        paths.insert(paths.end(), longer.begin(), longer.end());
        longest = std::move(longer);
    }
    return paths;
}

// Returns true if every query function returns the expected matches.
bool AgreesWithReference(DOMElement& element, const VString& path, const Matches& expected)
{
    const DOMElement& constant = element;
    if (DOMPath::GetAll(constant, path) != expected)
        return false;
    if (DOMPath::GetFirst(constant, path) != (expected.empty() ? nullptr : expected.front()))
        return false;
    const std::vector<DOMElement*> all = DOMPath::GetAll(element, path);
    if (Matches(all.begin(), all.end()) != expected)
        return false;
    Matches walked;
    for (const DOMElement& match : DOMPath::Walk(element, path))
        walked.push_back(&match);
    return walked == expected;
}

class DOMPathAllTrees : public testing::TestWithParam<int> {};

class DOMPathLongPaths : public testing::TestWithParam<int> {};

}  // namespace

TEST(DOMPathReferenceTest, GeneratesAllTreesAndPaths)
{
    EXPECT_EQ(Trees(1).size(), 2u);
    EXPECT_EQ(Trees(3).size(), 2u * 8);
    EXPECT_EQ(Trees(5).size(), 14u * 32);
    EXPECT_EQ(ShortPaths().size(), 4u + 16 + 64 + 256);
}

TEST_P(DOMPathAllTrees, AgreeWithTheReferenceForAllShortPaths)
{
    const std::vector<Segments> paths = ShortPaths();
    for (const std::string& text : Trees(GetParam())) {
        const Tree tree(text);
        for (const Segments& segments : paths) {
            const VString path = VString::join(segments, "/");
            for (DOMElement* element : tree.elements) {
                ASSERT_TRUE(AgreesWithReference(*element, path, reference::WalkPath(*element, segments)))
                    << text << " from " << element->GetStartLine() << ", path " << path;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(DOMPathReferenceTest, DOMPathAllTrees, testing::Range(1, 6), [](const auto& row) {
    return "OfSize" + std::to_string(row.param);
});

// The tree is a chain that branches at every level. The paths follow the chain. They replace some names by stars and
// empty segments, also at the boundaries of 64-bit words.
TEST_P(DOMPathLongPaths, AgreeWithTheReference)
{
    const auto length = static_cast<std::size_t>(GetParam());
    std::mt19937 random(static_cast<unsigned>(length));
    DOM document;
    std::vector<DOMElement*> chain{&document.GetRoot().AddNewChild("a", nullptr)};
    while (chain.size() < length + 8) {
        DOMElement& parent = *chain.back();
        parent.AddNewChild(random() % 2 == 0 ? "a" : "b", nullptr).AddNewChild("b", nullptr);
        chain.push_back(&parent.AddNewChild(random() % 2 == 0 ? "a" : "b", nullptr));
        parent.AddNewChild("a", nullptr);
    }
    int matching = 0;
    for (int round = 0; round < 300; ++round) {
        const std::size_t start = random() % 4;
        const unsigned kinds = round % 3 == 0 ? 4 : 40;
        Segments segments;
        for (std::size_t i = 0; i < length; ++i) {
            const auto kind = random() % kinds;
            const bool isForcedEmpty = round % 5 == 1 && (i % 64 == 62 || i % 64 == 63 || i % 64 == 0);
            if (kind == 0 || isForcedEmpty)
                segments.emplace_back();
            else if (kind == 1)
                segments.emplace_back("*");
            else
                segments.push_back(chain[start + i]->GetName());
        }
        const VString path = VString::join(segments, "/");
        const Matches expected = reference::WalkPath(*chain[start], segments);
        matching += !expected.empty();
        ASSERT_TRUE(AgreesWithReference(*chain[start], path, expected)) << path;
    }
    EXPECT_GT(matching, 50);
}

INSTANTIATE_TEST_SUITE_P(
    DOMPathReferenceTest, DOMPathLongPaths, testing::Values(63, 64, 65, 127, 128, 129, 130), [](const auto& row) {
        return "OfSegments" + std::to_string(row.param);
    });

TEST_P(DOMPathLongPaths, PathsOfNamesMatchOneElement)
{
    DOM document;
    const VString name("n");
    const DOMElement& low = AddChain(document.GetRoot(), name, GetParam());
    const VString path = VString::join(std::vector<VString>(static_cast<std::size_t>(GetParam()), name), "/");
    EXPECT_EQ(
        DOMPath::GetAll(*document.GetDocumentRoot(), path), std::vector<DOMElement*>{const_cast<DOMElement*>(&low)});
    EXPECT_EQ(DOMPath::GetAll(low, "/" + path), Matches{&low});
    EXPECT_TRUE(DOMPath::GetAll(*document.GetDocumentRoot(), path + "/n").empty());
}

TEST(DOMPathReferenceTest, AdvancingACopyOfALongWalkThrows)
{
    DOM document;
    const VString name("n");
    AddChain(document.GetRoot(), name, 200);
    const VString path = "/" + VString::join(std::vector<VString>(130, name), "/") + "//n";
    const DOMPath::IteratorTemplate<DOMElement> i(document.GetRoot(), path);
    DOMPath::IteratorTemplate<DOMElement> copy(i);
    EXPECT_EQ(&*copy, &*i);
    EXPECT_THROW(++copy, std::out_of_range);
}
