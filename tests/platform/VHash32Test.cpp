#include "vansys/VHash32.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "vansys/SipHash.h"

namespace {

// Returns a hundred thousand short texts with small differences.
std::vector<VString> ManyTexts()
{
    std::vector<VString> texts;
    for (int i = 0; i < 50000; ++i) {
        texts.push_back("name" + VString::number(i));
        texts.push_back(VString::number(i) + "-id");
    }
    return texts;
}

struct PublishedHash {
    std::size_t length;
    std::uint64_t hash;
};

}  // namespace

TEST(SipHashTest, ReturnsThePublishedHashes)
{
    const SipKey key{0x0706050403020100, 0x0F0E0D0C0B0A0908};
    unsigned char bytes[64];
    for (unsigned char i = 0; i < sizeof bytes; ++i)
        bytes[i] = i;
    // These hashes are from the table of the reference implementation for 2 and 4 rounds, with the bytes 0, 1, 2, ...
    for (const PublishedHash& vector : {PublishedHash{0, 0x726FDB47DD0E0E31},
             PublishedHash{1, 0x74F839C593DC67FD},
             PublishedHash{7, 0xAB0200F58B01D137},
             PublishedHash{8, 0x93F5F5799A932462},
             PublishedHash{15, 0xA129CA6149BE45E5},
             PublishedHash{63, 0x958A324CEB064572}}) {
        EXPECT_EQ((SipHash<2, 4>::Hash(key, bytes, vector.length)), vector.hash) << vector.length;
    }
}

TEST(SipHashTest, ReturnsThePublishedHashesOfFewerRounds)
{
    const SipKey key{0x0706050403020100, 0x0F0E0D0C0B0A0908};
    const unsigned char bytes[] = {0};
    EXPECT_EQ((SipHash<1, 3>::Hash(key, bytes, 0)), 0xABAC0158050FC4DCu);
    EXPECT_EQ((SipHash<1, 3>::Hash(key, bytes, 1)), 0xC9F49BF37D57CA93u);
}

TEST(SipHashTest, TheHashDependsOnTheKey)
{
    const unsigned char bytes[] = {1, 2, 3};
    const std::uint64_t hash = SipHash<1, 3>::Hash({1, 2}, bytes, 3);
    EXPECT_NE(hash, (SipHash<1, 3>::Hash({1, 3}, bytes, 3)));
    EXPECT_NE(hash, (SipHash<1, 3>::Hash({2, 2}, bytes, 3)));
}

TEST(VHash32Test, EqualTextsHaveEqualHashes)
{
    const VString built = VString("na") + "me";
    EXPECT_FALSE(built.IsSharedWith("name"));
    EXPECT_EQ(VHash32(built), VHash32("name"));
    EXPECT_EQ(VSeededHash(built), VSeededHash("name"));
    EXPECT_EQ(VStringHash()(built), static_cast<std::size_t>(VSeededHash("name")));
}

TEST(VHash32Test, EmptyTextsHaveEqualHashes)
{
    EXPECT_EQ(VHash32(VString()), VHash32(VString("a").left(0)));
    EXPECT_EQ(VSeededHash(VString()), VSeededHash(VString("a").left(0)));
}

TEST(VHash32Test, TheUnkeyedHashIsTheSameInEveryRun)
{
    EXPECT_EQ(VHash32("name"), VHash32("name", 0xDEADBEEF));
    EXPECT_NE(VHash32("name", 1), VHash32("name", 2));
}

TEST(VHash32Test, NulsChangeTheHash)
{
    std::set<std::uint32_t> unkeyed;
    std::set<std::uint64_t> keyed;
    for (std::size_t length = 0; length <= 16; ++length) {
        const std::u16string nuls(length, u'\0');
        unkeyed.insert(VHash32(VString(nuls.data(), nuls.size())));
        keyed.insert(VSeededHash(VString(nuls.data(), nuls.size())));
    }
    EXPECT_EQ(unkeyed.size(), 17u);
    EXPECT_EQ(keyed.size(), 17u);
}

TEST(VHash32Test, DistinctTextsSeldomCollide)
{
    std::unordered_set<std::uint32_t> unkeyed;
    std::unordered_set<std::uint64_t> keyed;
    const std::vector<VString> texts = ManyTexts();
    for (const VString& text : texts) {
        unkeyed.insert(VHash32(text));
        keyed.insert(VSeededHash(text));
    }
    // With a perfect 32-bit hash, about one pair of a hundred thousand texts collides.
    EXPECT_GT(unkeyed.size(), texts.size() - 20);
    EXPECT_EQ(keyed.size(), texts.size());
}

TEST(VHash32Test, TheLowBitsAreSpreadEvenly)
{
    std::vector<int> unkeyed(1024);
    std::vector<int> keyed(1024);
    const std::vector<VString> texts = ManyTexts();
    for (const VString& text : texts) {
        ++unkeyed[VHash32(text) % 1024];
        ++keyed[VSeededHash(text) % 1024];
    }
    // A bucket has about 98 texts. The limit is ten standard deviations higher.
    for (std::size_t i = 0; i < 1024; ++i) {
        EXPECT_LT(unkeyed[i], 198);
        EXPECT_LT(keyed[i], 198);
    }
}
