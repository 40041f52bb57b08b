#include "vancorexml/main/parser/SharedTexts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

TEST(SharedTextsTest, RepeatedTextIsStoredAtItsSecondLookup)
{
    SharedTexts texts(128, SharedTexts::CachePolicy::OnSecondMiss);
    EXPECT_EQ(texts.Get(u"name"), VString("name"));
    const VString second = texts.Get(u"name");
    EXPECT_EQ(second, VString("name"));
    EXPECT_TRUE(texts.Get(std::u16string(u"name")).IsSharedWith(second));
}

TEST(SharedTextsTest, UniqueTextsDoNotEvictARepeatedText)
{
    SharedTexts texts(64, SharedTexts::CachePolicy::OnSecondMiss);
    texts.Get(u"kept");
    const VString kept = texts.Get(u"kept");
    for (int i = 0; i < 10000; ++i) {
        texts.Get(VString::number(std::int32_t{i}).View());
        ASSERT_TRUE(texts.Get(u"kept").IsSharedWith(kept) || i < 200) << i;
    }
}

TEST(SharedTextsTest, DistinguishesManyTexts)
{
    SharedTexts texts(1 << 16, SharedTexts::CachePolicy::Always);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 20000; ++i) {
            const VString text = VString::number(std::int32_t{i});
            ASSERT_EQ(texts.Get(text.View()), text);
        }
    }
}

// The hash must distinguish short texts of different lengths, and texts that differ at one position.
TEST(SharedTextsTest, ShortTextsRarelyShareASlot)
{
    SharedTexts texts(1 << 16, SharedTexts::CachePolicy::Always);
    for (std::int32_t i = 0; i < 40000; ++i)
        texts.Get((VString("grow") + VString::number(i)).View());
    int evicted = 0;
    for (std::int32_t a = 0; a < 128; ++a) {
        for (std::int32_t b = 0; b < a; ++b) {
            const VString kept = texts.Get(VString::number(a).View());
            texts.Get(VString::number(b).View());
            evicted += !texts.Get(VString::number(a).View()).IsSharedWith(kept);
        }
    }
    EXPECT_LE(evicted, 1);  // one of 8,128 pairs may collide by chance
}

TEST(SharedTextsTest, EmptyTextAndNulAreDistinct)
{
    SharedTexts texts(128, SharedTexts::CachePolicy::OnSecondMiss);
    EXPECT_TRUE(texts.Get(u"").IsEmpty());
    EXPECT_EQ(texts.Get(std::u16string_view(u"\0", 1)).length(), 1);
    EXPECT_TRUE(texts.Get(u"").IsEmpty());
}

TEST(SharedTextsTest, OldTextsAreEvictedAtTheLimit)
{
    SharedTexts texts(64, SharedTexts::CachePolicy::OnSecondMiss);
    texts.Get(u"first");
    const VString first = texts.Get(u"first");
    for (int i = 0; i < 500; ++i) {
        for (int round = 0; round < 2; ++round)
            texts.Get(VString::number(std::int32_t{i}).View());
    }
    EXPECT_EQ(texts.Get(u"first"), first);
    EXPECT_FALSE(texts.Get(u"first").IsSharedWith(first));
}

TEST(SharedTextsTest, KeepsMostOfManyRepeatedTexts)
{
    SharedTexts texts(2048, SharedTexts::CachePolicy::OnSecondMiss);
    std::vector<VString> made;
    const auto name = [](int i) { return VString("name") + VString::number(std::int32_t{i}); };
    // The first lookups grow the table to its full size.
    for (int i = 0; i < 600; ++i)
        texts.Get(VString::number(std::int32_t{i}).View());
    for (int i = 0; i < 500; ++i)
        texts.Get(name(i).View());
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 500; ++i) {
            const VString text = texts.Get(name(i).View());
            if (round == 0) {
                made.push_back(text);
            } else {
                made[static_cast<std::size_t>(i)] =
                    text.IsSharedWith(made[static_cast<std::size_t>(i)]) ? VString("kept") : VString();
            }
        }
    }
    EXPECT_GT(std::count(made.begin(), made.end(), VString("kept")), 250);
}

TEST(SharedTextsTest, ClearDropsTheTexts)
{
    SharedTexts texts(128, SharedTexts::CachePolicy::OnSecondMiss);
    texts.Get(u"first");
    const VString first = texts.Get(u"first");
    texts.Clear();
    EXPECT_FALSE(texts.Get(u"first").IsSharedWith(first));
}

TEST(SharedTextsTest, ExpectedTextIsStoredAtItsFirstLookup)
{
    SharedTexts texts(128, SharedTexts::CachePolicy::Always);
    const VString first = texts.Get(u"name");
    EXPECT_EQ(first, VString("name"));
    EXPECT_TRUE(texts.Get(std::u16string(u"name")).IsSharedWith(first));
}

// Looks up the texts "0" to "count - 1" in each round. Returns the number of strings that the last two rounds share.
int CountShared(SharedTexts& texts, int count, int rounds)
{
    std::vector<VString> last(static_cast<std::size_t>(count));
    int shared = 0;
    for (int round = 0; round < rounds; ++round) {
        shared = 0;
        for (int i = 0; i < count; ++i) {
            const VString text = texts.Get(VString::number(std::int32_t{i}).View());
            VString& before = last[static_cast<std::size_t>(i)];
            shared += text.IsSharedWith(before);
            before = text;
        }
    }
    return shared;
}

TEST(SharedTextsTest, MostOfManyExpectedTextsAreShared)
{
    SharedTexts texts(4096, SharedTexts::CachePolicy::Always);
    EXPECT_GT(CountShared(texts, 1000, 6), 600);
}

TEST(SharedTextsTest, ManyUniqueTextsPauseTheLookups)
{
    SharedTexts texts(64, SharedTexts::CachePolicy::OnSecondMiss);
    for (int i = 0; i < 2500; ++i)
        texts.Get(VString::number(std::int32_t{i}).View());
    EXPECT_EQ(CountShared(texts, 3, 10), 0);
    // After the pause, repeated texts are shared again.
    EXPECT_EQ(CountShared(texts, 3, 10000), 3);
}

TEST(SharedTextsTest, ClearEndsThePause)
{
    SharedTexts texts(64, SharedTexts::CachePolicy::OnSecondMiss);
    for (int i = 0; i < 2500; ++i)
        texts.Get(VString::number(std::int32_t{i}).View());
    texts.Clear();
    EXPECT_EQ(CountShared(texts, 3, 10), 3);
}

TEST(SharedTextsTest, DistinguishesTextsThatDifferInOneUnit)
{
    SharedTexts texts(64, SharedTexts::CachePolicy::OnSecondMiss);
    for (std::size_t length = 1; length < 20; ++length) {
        for (std::size_t i = 0; i < length; ++i) {
            std::u16string text(length, u'a');
            text[i] = u'b';
            ASSERT_EQ(texts.Get(text).View(), text);
        }
    }
}

}  // namespace
