#include "vanxml/ElementPaths.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"

TEST(ElementPathsTest, NumbersOnlySiblingsThatShareAName)
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

TEST(ElementPathsTest, NumbersManySiblingsInLinearTime)
{
    DOM document;
    DOMElement& root = document.GetRoot().AddNewChild("r", nullptr);
    constexpr std::size_t count = 200000;
    constexpr std::size_t digits = 1088895;  // of the numbers from 1 to 200000
    for (std::size_t i = 0; i < count; ++i)
        root.AddNewChild("a", nullptr);
    ElementPaths paths;
    std::size_t length = 0;
    for (const DOMElement* child : root.GetChildren())
        length += paths.PathOf(*child).size();
    EXPECT_EQ(length, count * std::string("/r/a[]").size() + digits);
}
