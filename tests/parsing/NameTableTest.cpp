#include "vancorexml/main/parser/NameTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

TEST(NameTableTest, NameAtTheSameAddressIsShared)
{
    NameTable names;
    const char16_t name[] = u"name";
    const VString first = names.Get(name);
    EXPECT_EQ(first, VString("name"));
    EXPECT_TRUE(names.Get(name).IsSharedWith(first));
}

TEST(NameTableTest, NameAtManyAddressesIsCreatedOnce)
{
    NameTable names;
    const std::vector<std::u16string> places(1000, u"name, longer than a string keeps in itself");
    const VString first = names.Get(places[0].c_str());
    for (const std::u16string& place : places)
        EXPECT_TRUE(names.Get(place.c_str()).IsSharedWith(first));
}

// A wide table has about a thousand columns.
TEST(NameTableTest, MostOfAThousandNamesStayShared)
{
    NameTable names;
    std::vector<std::u16string> all;
    for (int i = 0; i < 1000; ++i)
        all.emplace_back((VString("column-") + VString::number(std::int32_t{i})).View());
    std::vector<VString> last(all.size());
    std::size_t shared = 0;
    for (int round = 0; round < 10; ++round) {
        shared = 0;
        for (std::size_t i = 0; i < all.size(); ++i) {
            const VString name = names.Get(all[i].c_str());
            ASSERT_EQ(name.View(), all[i]);
            shared += name.IsSharedWith(last[i]);
            last[i] = name;
        }
    }
    EXPECT_GT(shared, 700u);
}

// The table compares names by content, never by address alone.
TEST(NameTableTest, ReturnsTheNewNameAtAReusedAddress)
{
    NameTable names;
    const std::u16string all[] = {u"", u"a", u"ab", u"abc", u"ab", u"abd", u"a", u"", u"b"};
    char16_t place[8] = {};
    for (int round = 0; round < 3; ++round) {
        for (const std::u16string& name : all) {
            std::memcpy(place, name.c_str(), (name.size() + 1) * sizeof(char16_t));
            ASSERT_EQ(names.Get(place).View(), name);
        }
    }
}

TEST(NameTableTest, ReturnsManyNames)
{
    NameTable names;
    std::vector<std::u16string> all;
    for (int i = 0; i < 20000; ++i)
        all.emplace_back(VString::number(std::int32_t{i}).View());
    for (int round = 0; round < 2; ++round) {
        for (const std::u16string& name : all)
            ASSERT_EQ(names.Get(name.c_str()).View(), name);
    }
}

TEST(NameTableTest, ClearDropsTheNames)
{
    NameTable names;
    const char16_t name[] = u"name";
    const VString first = names.Get(name);
    names.Clear();
    EXPECT_EQ(names.Get(name), first);
    EXPECT_FALSE(names.Get(name).IsSharedWith(first));
}

}  // namespace
