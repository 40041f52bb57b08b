#include "vancorexml/main/parser/EntitySizes.h"

#include <gtest/gtest.h>

#include "tests/common/TestSupport.h"

namespace {

Expansion Expand(std::u16string_view text)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    sizes.Declare(u"x", u"12345");
    return sizes.Expand(sizes.Declare(u"e", text));
}

TEST(EntitySizesTest, TextCountsInCodeUnits)
{
    EXPECT_EQ(Expand(u"").text, 0u);
    EXPECT_EQ(Expand(u"ab\u00E9").text, 3u);
    EXPECT_EQ(Expand(u"\U0001F600").text, 2u);
    EXPECT_EQ(Expand(u"a").count, 1u);
}

TEST(EntitySizesTest, AReferenceCountsAsItsReplacement)
{
    struct Row {
        const char16_t* text;
        std::uint64_t expected;
    };
    const Row rows[] = {
        {u"&x;", 5},
        {u"a&x;b&x;", 12},
        {u"&unknown;", 0},
        {u"&lt;&gt;&amp;&apos;&quot;", 5},
        {u"&#65;", 1},
        {u"&#00000065;", 1},
        {u"&#x41;", 1},
        {u"&#xFFFD;", 1},
        {u"&#65536;", 2},
        {u"&#x1F600;", 2},
        {u"&#x10ffff;", 2},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Expand(row.text).text, row.expected) << VString(row.text);
}

TEST(EntitySizesTest, OtherTextCountsItsOwnLength)
{
    const std::u16string texts[] = {
        u"&",
        u"&;",
        u"& x;",
        u"&x",
        u"&x<b/>;",
        u"&&&&",
        u"<",
        u"<!--&x;-->",
        u"<?p &x;?>",
        u"<![CDATA[&x;]]>",
        u"<!--&x;",
        u"<![CDATA[&x;",
    };
    for (const std::u16string& text : texts)
        EXPECT_EQ(Expand(text).text, text.size()) << VString(text.c_str());
    EXPECT_EQ(Expand(u"<!--&x;-->&x;").text, 15u);
    EXPECT_EQ(Expand(u"<a b='&x;'>&x;</a>").text, 22u);
    EXPECT_EQ(Expand(u"&&x;").text, 6u);
}

TEST(EntitySizesTest, ReadCountIncludesTheReferences)
{
    const Expansion expansion = Expand(u"a&x;&lt;");
    EXPECT_EQ(expansion.count, 2u);
    EXPECT_EQ(expansion.text, 7u);
    EXPECT_EQ(expansion.read, 13u);
}

// Declares `levels` nested entities and returns the last one. The first one is one unit long. Each further one refers
// `fan` times to the one before.
std::size_t DeclareLevels(EntitySizes& sizes, int levels, int fan)
{
    std::size_t last = sizes.Declare(u"e0", u"x");
    for (int level = 1; level < levels; ++level) {
        const std::string name = "e" + std::to_string(level - 1);
        std::u16string text;
        for (int i = 0; i < fan; ++i)
            text += u"&" + std::u16string(name.begin(), name.end()) + u";";
        const std::string own = "e" + std::to_string(level);
        last = sizes.Declare(std::u16string(own.begin(), own.end()), text);
    }
    return last;
}

TEST(EntitySizesTest, NestedEntitiesMultiply)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    const Expansion expansion = sizes.Expand(DeclareLevels(sizes, 5, 10));
    EXPECT_EQ(expansion.text, 10000u);
    EXPECT_EQ(expansion.count, 11111u);
}

TEST(EntitySizesTest, SizesSaturateInsteadOfOverflowing)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    EXPECT_EQ(sizes.Expand(DeclareLevels(sizes, 100, 10)).text, Expansion::Max);
}

TEST(EntitySizesTest, DeepNestingNeedsNoCallStack)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    const Expansion expansion = sizes.Expand(DeclareLevels(sizes, 200000, 1));
    EXPECT_EQ(expansion.text, 1u);
    EXPECT_EQ(expansion.count, 200000u);
    EXPECT_EQ(expansion.levels, 200000u);
}

TEST(EntitySizesTest, EntityMayBeDeclaredAfterAReferenceToIt)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    const std::size_t outer = sizes.Declare(u"outer", u"&inner;&inner;");
    EXPECT_EQ(sizes.Expand(outer).text, 0u);
    sizes.Declare(u"inner", u"abc");
    EXPECT_EQ(sizes.Expand(outer).text, 6u);
}

TEST(EntitySizesTest, CircularEntitiesAreExpandedOnce)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    const std::size_t a = sizes.Declare(u"a", u"12&x;&b;&x;&x;");
    const std::size_t b = sizes.Declare(u"b", u"345&a;&x;");
    const std::size_t x = sizes.Declare(u"x", u"67890");
    const std::size_t outer = sizes.Declare(u"outer", u"&x;&b;&x;");
    EXPECT_EQ(sizes.Expand(a).text, 2u + 5 + 3);
    EXPECT_EQ(sizes.Expand(b).text, 3u + 2 + 5);
    EXPECT_EQ(sizes.Expand(outer).text, 5u + 3 + 2 + 5);
    EXPECT_TRUE(sizes.IsCircular(a));
    EXPECT_TRUE(sizes.IsCircular(outer));
    EXPECT_FALSE(sizes.IsCircular(x));
}

TEST(EntitySizesTest, EntityThatContainsItselfIsExpandedOnce)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    const std::size_t self = sizes.Declare(u"self", u"ab&self;");
    EXPECT_EQ(sizes.Expand(self).text, 2u);
    EXPECT_EQ(sizes.Expand(self).count, 1u);
    EXPECT_TRUE(sizes.IsCircular(self));
}

TEST(EntitySizesTest, CountsTheNamesOfNestedEntities)
{
    EntitySizes sizes(EntitySizes::Kind::General);
    const std::size_t inner = sizes.Declare(u"four", u"x");
    sizes.Declare(u"two", u"&four;");
    const std::size_t outer = sizes.Declare(u"o", u"&two;&four;");
    EXPECT_EQ(sizes.Expand(inner).compared, 0u);
    EXPECT_EQ(sizes.Expand(outer).compared, 3u + 2 * 4 + 4);
    EXPECT_EQ(sizes.Expand(outer).names, 1u + 3 + 4 + 4);
}

TEST(EntitySizesTest, TextsWithMarkupCountAsMarkup)
{
    EXPECT_EQ(Expand(u"<a/>").markup, 4u);
    EXPECT_EQ(Expand(u"text<a b='c'>text</a>").markup, 21u);
    EXPECT_EQ(Expand(u"&x;<a/>&x;").markup, 4u);
    EXPECT_EQ(Expand(u"<!--c--><?p d?><![CDATA[e]]>&x;").markup, 0u);
    EXPECT_EQ(Expand(u"<!--c--><a/>").markup, 12u);

    EntitySizes sizes(EntitySizes::Kind::General);
    sizes.Declare(u"m", u"<a/>");
    EXPECT_EQ(sizes.Expand(sizes.Declare(u"e", u"text&m;&m;")).markup, 8u);

    EntitySizes parameterEntities(EntitySizes::Kind::Parameter);
    EXPECT_EQ(parameterEntities.Expand(parameterEntities.Declare(u"p", u"<!ELEMENT a ANY>")).markup, 16u);
    EXPECT_EQ(parameterEntities.Expand(parameterEntities.Declare(u"q", u" %p;<!--c-->")).markup, 16u);
}

TEST(EntitySizesTest, IgnoresReferencesInQuotedPartsOfParameterEntities)
{
    EntitySizes sizes(EntitySizes::Kind::Parameter);
    sizes.Declare(u"a", u"12345");
    const auto own = [&](std::u16string_view text) {
        static int count = 0;
        const std::string name = "p" + std::to_string(++count);
        return sizes.OwnExpansion(sizes.Declare(std::u16string(name.begin(), name.end()), text)).text;
    };
    EXPECT_EQ(own(u"%a;<!--b-->%a;"), 8u);
    EXPECT_EQ(own(u"<!--%a;--><?p %a;?><!ENTITY e '%a;' \"%a;\">"), 42u);
    EXPECT_EQ(own(u"<!ENTITY % a 'b'>%a;"), 17u);
    EXPECT_EQ(own(u"% %;%a"), 6u);
    EXPECT_EQ(own(u"'%a;"), 4u);
    EXPECT_EQ(sizes.Expand(sizes.Declare(u"all", u"%a;b%a;&c;")).text, 14u);
}

}  // namespace
