#include "vancorexml/main/parser/SharedTexts.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(SharedTextsTest, MakesATextOnce)
{
    SharedTexts texts(100);
    const VString first = texts.Get(u"name");
    EXPECT_EQ(first, VString("name"));
    EXPECT_TRUE(texts.Get(std::u16string(u"name")).IsSharedWith(first));
}

TEST(SharedTextsTest, KeepsWhatWasMadeForAKey)
{
    SharedTexts texts(100);
    int made = 0;
    const auto make = [&made] { return VString::number(++made); };
    EXPECT_EQ(texts.Get(u"key", make), VString("1"));
    EXPECT_EQ(texts.Get(u"key", make), VString("1"));
    EXPECT_EQ(texts.Get(u"other", make), VString("2"));
}

TEST(SharedTextsTest, TellsManyTextsApart)
{
    SharedTexts texts(100000);
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 20000; ++i) {
            const VString text = VString::number(std::int32_t{i});
            ASSERT_EQ(texts.Get(text.View()), text);
        }
}

TEST(SharedTextsTest, EmptyAndNulAreTextsOfTheirOwn)
{
    SharedTexts texts(100);
    EXPECT_TRUE(texts.Get(u"").IsEmpty());
    EXPECT_EQ(texts.Get(std::u16string_view(u"\0", 1)).length(), 1);
    EXPECT_TRUE(texts.Get(u"").IsEmpty());
}

TEST(SharedTextsTest, StartsAfreshAtItsLimit)
{
    SharedTexts texts(32);
    const VString first = texts.Get(u"first");
    for (int i = 0; i < 1000; ++i) texts.Get(VString::number(std::int32_t{i}).View());
    EXPECT_EQ(texts.Get(u"first"), first);
    EXPECT_FALSE(texts.Get(u"first").IsSharedWith(first));
}

TEST(SharedTextsTest, ClearForgets)
{
    SharedTexts texts(100);
    const VString first = texts.Get(u"first");
    texts.Clear();
    EXPECT_FALSE(texts.Get(u"first").IsSharedWith(first));
}

}  // namespace
