#include "vancoreplatform/NearestName.h"

#include <gtest/gtest.h>

namespace {

const std::vector<VString> names{"customer", "order", "item", "state", "note", "id"};

TEST(NearestNameTest, OneMistakeIsFound)
{
    EXPECT_EQ(FindNearestName("custmer", names), VString("customer"));
    EXPECT_EQ(FindNearestName("customerr", names), VString("customer"));
    EXPECT_EQ(FindNearestName("cusromer", names), VString("customer"));
    EXPECT_EQ(FindNearestName("csutomer", names), VString("customer"));
    EXPECT_EQ(FindNearestName("itme", names), VString("item"));
}

TEST(NearestNameTest, LetterCaseIsNoDifference)
{
    EXPECT_EQ(FindNearestName("Customer", names), VString("customer"));
    EXPECT_EQ(FindNearestName("ID", names), VString("id"));
}

TEST(NearestNameTest, LongerNamesMayHaveMoreMistakes)
{
    EXPECT_EQ(FindNearestName("costumer", names), VString("customer"));
    EXPECT_EQ(FindNearestName("xtxm", names), VString());
    EXPECT_EQ(FindNearestName("x", names), VString());
    EXPECT_EQ(FindNearestName("entirely", names), VString());
}

TEST(NearestNameTest, NoSuggestionInDoubt)
{
    EXPECT_EQ(FindNearestName("cat", {"car", "cap"}), VString());
    EXPECT_EQ(FindNearestName("cat", {"car", "cap", "cats", "Cat"}), VString("Cat"));
}

TEST(NearestNameTest, EqualEmptyAndVeryLongNamesHaveNoSuggestion)
{
    EXPECT_EQ(FindNearestName("item", {"item"}), VString());
    EXPECT_EQ(FindNearestName("", names), VString());
    EXPECT_EQ(FindNearestName("a", {}), VString());
    const VString longName(QString(101, u'a'));
    EXPECT_EQ(FindNearestName(longName, {longName + "b"}), VString());
}

}  // namespace
