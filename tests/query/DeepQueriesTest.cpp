// Queries in trees with a million levels. No query may use a call stack that grows with the depth.
#include <climits>
#include <iterator>

#include "tests/query/QueryTestSupport.h"
#include "vancorexml/main/parser/DOMElementSearch.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathCanopy.h"

using namespace querytest;

namespace {

constexpr int Levels = 1000000;

// A document of a million nested elements; the lowest is named "x".
class DeepQueriesTest : public testing::Test {
protected:
    DeepQueriesTest() : low(AddChain(document.GetRoot(), "level", Levels)) { low.SetName("x"); }

    DOM document;
    DOMElement& low;
};

}  // namespace

TEST_F(DeepQueriesTest, PathsFindTheLowestElement)
{
    DOMElement& top = *document.GetDocumentRoot();
    EXPECT_EQ(DOMPath::GetAll(top, "//x"), std::vector<DOMElement*>{&low});
    EXPECT_EQ(DOMPath::GetFirst(top, "//level//x"), &low);
    EXPECT_EQ(DOMPath::GetFirst(low, "/level//x"), &low);
    EXPECT_EQ(DOMPath::GetAll(top, "//*").size(), static_cast<std::size_t>(Levels));
}

TEST_F(DeepQueriesTest, LongPathsFindTheLowestElement)
{
    const VString path = "/" + Repeated("/level", 100) + "/x";
    EXPECT_EQ(DOMPath::GetAll(*document.GetDocumentRoot(), path), std::vector<DOMElement*>{&low});
}

TEST_F(DeepQueriesTest, TraversalReachesTheLowestElement)
{
    const DOMElementTraversal::PreorderTraversal traversal(document.GetRoot());
    EXPECT_EQ(std::distance(traversal.begin(), traversal.end()), Levels + 1);
    DOMElement* last = nullptr;
    for (DOMElement& element : DOMElementTraversal::MutablePreorderTraversal(document.GetRoot()))
        last = &element;
    EXPECT_EQ(last, &low);
}

TEST_F(DeepQueriesTest, SearchReachesTheRequestedDepth)
{
    EXPECT_EQ(document.GetElement("x"), nullptr);
    EXPECT_EQ(document.GetElement("level"), document.GetDocumentRoot());
    EXPECT_EQ(DOMElementSearch::FindElement(document.GetRoot(), "x", INT_MAX, "", ""), &low);
    EXPECT_EQ(DOMElementSearch::FindElement(document.GetRoot(), "x", Levels, "", ""), &low);
    EXPECT_EQ(DOMElementSearch::FindElement(document.GetRoot(), "x", Levels - 1, "", ""), nullptr);
}

TEST_F(DeepQueriesTest, CanopySearchStopsAfter1024Levels)
{
    DOMElement& top = *document.GetDocumentRoot();
    low.AddNewChild("y", nullptr);
    EXPECT_EQ(DOMPathCanopy::WithinCanopy(top, "level", "level").size(), 1024u);
    EXPECT_TRUE(DOMPathCanopy::UnderneathCanopy(top, "level", "x").empty());
    EXPECT_TRUE(DOMPathCanopy::UnderneathCanopy(top, "level", "*").empty());
}
