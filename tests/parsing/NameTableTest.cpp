#include "vancorexml/main/parser/NameTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

TEST(NameTableTest, TheNameThatStandsWhereItStoodIsShared)
{
    NameTable names;
    const char16_t name[] = u"name";
    const VString first = names.Get(name);
    EXPECT_EQ(first, VString("name"));
    EXPECT_TRUE(names.Get(name).IsSharedWith(first));
}

TEST(NameTableTest, ANameAtManyPlacesIsMadeTwiceAtMost)
{
    NameTable names;
    const std::vector<std::u16string> places(1000, u"name, longer than a string keeps in itself");
    const VString first = names.Get(places[0].c_str());
    const VString second = names.Get(places[1].c_str());
    for (const std::u16string& place : places) {
        const VString& name = names.Get(place.c_str());
        EXPECT_TRUE(name.IsSharedWith(first) || name.IsSharedWith(second));
    }
}

// Only the text counts, not where it stands.
TEST(NameTableTest, AnotherNameAtTheSamePlaceIsAnotherName)
{
    NameTable names;
    const std::u16string all[] = {u"", u"a", u"ab", u"abc", u"ab", u"abd", u"a", u"", u"b"};
    char16_t place[8] = {};
    for (int round = 0; round < 3; ++round)
        for (const std::u16string& name : all) {
            std::memcpy(place, name.c_str(), (name.size() + 1) * sizeof(char16_t));
            ASSERT_EQ(names.Get(place).View(), name);
        }
}

TEST(NameTableTest, GivesManyNames)
{
    NameTable names;
    std::vector<std::u16string> all;
    for (int i = 0; i < 20000; ++i) all.emplace_back(VString::number(std::int32_t{i}).View());
    for (int round = 0; round < 2; ++round)
        for (const std::u16string& name : all) ASSERT_EQ(names.Get(name.c_str()).View(), name);
}

TEST(NameTableTest, ClearForgets)
{
    NameTable names;
    const char16_t name[] = u"name";
    const VString first = names.Get(name);
    names.Clear();
    EXPECT_EQ(names.Get(name), first);
    EXPECT_FALSE(names.Get(name).IsSharedWith(first));
}

}  // namespace
