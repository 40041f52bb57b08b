#include "vancorexml/main/parser/SourceTags.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

bool operator==(const SourceRange& a, const SourceRange& b)
{
    return a.start == b.start && a.end == b.end;
}

TEST(SourceTagsTest, TagsAndTheirRangesAreRead)
{
    SourceTags tags("<?xml version='1.0'?><!DOCTYPE a [<!ENTITY e '<b>'>]>\n<a><!-- <c> --><b/>\n</a>");
    ASSERT_TRUE(tags.Next());
    EXPECT_EQ(tags.Next()->name, "a");
    EXPECT_TRUE(tags.GetRange() == (SourceRange{{2, 1}, {2, 4}}));
    tags.Advance();
    ASSERT_TRUE(tags.Next());
    EXPECT_TRUE(tags.Next()->isEmpty);
    EXPECT_TRUE(tags.GetRange() == (SourceRange{{2, 16}, {2, 20}}));
    tags.Advance();
    ASSERT_TRUE(tags.Next());
    EXPECT_EQ(tags.Next()->kind, XMLToken::Kind::EndTag);
    EXPECT_TRUE(tags.GetRange() == (SourceRange{{3, 1}, {3, 5}}));
    tags.Advance();
    EXPECT_FALSE(tags.Next());
    EXPECT_TRUE(tags.GetRange() == (SourceRange{{3, 5}, {3, 5}}));
}

TEST(SourceTagsTest, PartsOfATagHaveRangesInAnyOrder)
{
    const std::string text = "<a>\n<b one='1'\n two='2'/></a>";
    SourceTags tags(text);
    tags.Advance();
    const std::string_view tag = tags.Next()->text;
    EXPECT_TRUE(tags.GetRange(tag.substr(tag.find("two"), 3)) == (SourceRange{{3, 2}, {3, 5}}));
    EXPECT_TRUE(tags.GetRange(tag.substr(tag.find("one"), 3)) == (SourceRange{{2, 4}, {2, 7}}));
    EXPECT_TRUE(tags.GetRange() == (SourceRange{{2, 1}, {3, 11}}));
}

TEST(SourceTagsTest, FirstLineOfTheFirstTextInFrontOfATagHasARange)
{
    SourceTags tags("<a>\n  <!--x-->one two \nthree<!--y-->four<b/> </a>");
    EXPECT_FALSE(tags.GetTextRange());
    tags.Advance();
    ASSERT_TRUE(tags.GetTextRange());
    EXPECT_TRUE(*tags.GetTextRange() == (SourceRange{{2, 11}, {2, 18}}));
    EXPECT_TRUE(tags.GetRange() == (SourceRange{{3, 18}, {3, 22}}));
    tags.Advance();
    EXPECT_FALSE(tags.GetTextRange());
}

TEST(SourceTagsTest, VisitorSeesTextsWithoutSections)
{
    std::vector<std::string> texts;
    SourceTags tags("<a>1<![CDATA[2]]>3<b/>4</a>", [&](std::string_view text) { texts.emplace_back(text); });
    while (tags.Next())
        tags.Advance();
    EXPECT_EQ(texts, (std::vector<std::string>{"1", "3", "4"}));
}

}  // namespace
