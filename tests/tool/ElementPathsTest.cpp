#include "vanxml/ElementPaths.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"

TEST(ElementPathsTest, NumbersOnlyWhereANameStandsTwice)
{
    DOM document;
    DOMElement& root = document.GetRoot().AddNewChild("r", nullptr);
    const DOMElement& first = root.AddNewChild("a", nullptr);
    const DOMElement& other = root.AddNewChild("b", nullptr);
    DOMElement& second = root.AddNewChild("a", nullptr);
    const DOMElement& inner = second.AddNewChild("a", nullptr);
    ElementPaths paths;
    EXPECT_EQ(paths.PathOf(root), "/r");
    EXPECT_EQ(paths.PathOf(first), "/r/a[1]");
    EXPECT_EQ(paths.PathOf(other), "/r/b");
    EXPECT_EQ(paths.PathOf(inner), "/r/a[2]/a");
}

TEST(ElementPathsTest, LooksAtEachListOfChildrenOnce)
{
    DOM document;
    DOMElement& root = document.GetRoot().AddNewChild("r", nullptr);
    for (int i = 0; i < 200000; ++i)
        root.AddNewChild("a", nullptr);
    ElementPaths paths;
    std::size_t length = 0;
    for (const DOMElement* child : root.GetChildren())
        length += paths.PathOf(*child).size();
    EXPECT_EQ(length, 200000 * std::string("/r/a[]").size() + 1088895);
}
