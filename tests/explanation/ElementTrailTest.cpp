#include "vancorexml/main/parser/ElementTrail.h"

#include <gtest/gtest.h>

namespace {

TEST(ElementTrailTest, PathCountsSiblingsOfTheSameName)
{
    ElementTrail trail;
    EXPECT_EQ(trail.GetPath(), VString());
    EXPECT_EQ(trail.Push("orders").number, 1u);
    EXPECT_EQ(trail.GetPath(), VString("/orders"));
    EXPECT_EQ(trail.Parent(), nullptr);
    trail.Push("order");
    trail.Pop();
    trail.Push("note");
    trail.Pop();
    trail.Push("order");
    EXPECT_EQ(trail.Push("item").number, 5u);
    EXPECT_EQ(trail.GetPath(), VString("/orders/order[2]/item[1]"));
    EXPECT_EQ(trail.GetParentPath(), VString("/orders/order[2]"));
    EXPECT_EQ(trail.Parent()->name, VString("order"));
}

TEST(ElementTrailTest, LongPathKeepsItsEnd)
{
    ElementTrail trail;
    for (int i = 0; i < 500; ++i)
        trail.Push("abc");
    const VString path = trail.GetPath();
    EXPECT_TRUE(path.startsWith(u"\u2026/abc[1]/")) << path;
    EXPECT_TRUE(path.endsWith("/abc[1]"));
    EXPECT_LE(path.length(), 1001);
    EXPECT_GT(path.length(), 980);
}

}  // namespace
