#include "vanxml/FirstTag.h"

#include <gtest/gtest.h>

#include "tests/common/EndlessSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

FirstTag Read(const std::string& text, SourcePosition start = {1, 1})
{
    const auto source = StringInputSource::FromUtf8(std::string(text), "memory", false);
    return ReadFirstTag(*source, start);
}

}  // namespace

TEST(FirstTagTest, ReadsTheNameAndTheAttributes)
{
    const FirstTag tag = Read("<?xml version='1.0'?><!-- <x y='1'> --><a:b\tc = 'd' :e=\"f>'&lt;\"/>");
    EXPECT_EQ(tag.name, "a:b");
    ASSERT_EQ(tag.attributes.size(), 2u);
    EXPECT_EQ(tag.Find("c")->value, "d");
    EXPECT_EQ(tag.Find(":e")->value, "f>'&lt;");
    EXPECT_EQ(tag.Find("y"), nullptr);
}

TEST(FirstTagTest, CountsLinesAndUtf16Columns)
{
    const FirstTag tag = Read("<!--\U0001F600ä-->\r\n\n <a\n b='x😀' c='y'>\n");
    EXPECT_EQ(tag.start, (SourcePosition{3, 2}));
    EXPECT_EQ(tag.end, (SourcePosition{4, 16}));
    EXPECT_EQ(tag.Find("b")->start, (SourcePosition{4, 5}));
    EXPECT_EQ(tag.Find("b")->end, (SourcePosition{4, 8}));
    EXPECT_EQ(tag.Find("c")->start, (SourcePosition{4, 13}));
}

TEST(FirstTagTest, PlacesBeginAtTheStartOfTheSource)
{
    EXPECT_EQ(Read("<a/>", {3, 5}).start, (SourcePosition{3, 5}));
    EXPECT_EQ(Read("\n<a/>", {3, 5}).start, (SourcePosition{4, 1}));
    EXPECT_EQ(Read("\xEF\xBB\xBF<a/>").start, (SourcePosition{1, 1}));
}

TEST(FirstTagTest, DocumentWithoutATagHasAnEmptyName)
{
    for (const char* text : {"", "text", "<!-- a -->", "<a b='"})
        EXPECT_EQ(Read(text).name, "") << text;
}

TEST(FirstTagTest, AttributesEndAtTheFirstMistake)
{
    for (const char* text : {"<a b='1' c d='2'>", "<a b='1' c=d e='2'>", "<a b='1' = e='2'>"})
        EXPECT_EQ(Read(text).attributes.size(), 1u) << text;
}

TEST(FirstTagTest, ReadsNoFurtherThanTheTag)
{
    testsupport::EndlessSource source("<!--" + std::string(2000, 'x') + "--><a>");
    EXPECT_EQ(ReadFirstTag(source, {1, 1}).name, "a");
    EXPECT_EQ(source.blocks, 3);
    EXPECT_TRUE(source.IsAtStart());
}
