#include "vancorexml/main/parser/PositionCounter.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(PositionCounterTest, LinesEndAtEachKindOfLineEnd)
{
    PositionCounter counter("a\nb\r\nc\rd");
    EXPECT_EQ(counter.At(0), (SourcePosition{1, 1}));
    EXPECT_EQ(counter.At(1), (SourcePosition{1, 2}));
    EXPECT_EQ(counter.At(2), (SourcePosition{2, 1}));
    EXPECT_EQ(counter.At(5), (SourcePosition{3, 1}));
    EXPECT_EQ(counter.At(7), (SourcePosition{4, 1}));
    EXPECT_EQ(counter.At(8), (SourcePosition{4, 2}));
}

TEST(PositionCounterTest, ColumnsCountCodeUnits)
{
    const std::string text = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xFFx";
    PositionCounter counter(text);
    EXPECT_EQ(counter.At(2).column, 2u);
    EXPECT_EQ(counter.At(5).column, 3u);
    EXPECT_EQ(counter.At(9).column, 5u);   // an emoji has two code units
    EXPECT_EQ(counter.At(10).column, 6u);  // a bad byte counts as one
}

TEST(PositionCounterTest, SmallerOffsetStartsAgain)
{
    PositionCounter counter("a\nbc");
    EXPECT_EQ(counter.At(4), (SourcePosition{2, 3}));
    EXPECT_EQ(counter.At(1), (SourcePosition{1, 2}));
    EXPECT_EQ(counter.GetOffset(), 1u);
}

TEST(PositionCounterTest, OffsetBehindTheTextIsItsEnd)
{
    PositionCounter counter("ab");
    EXPECT_EQ(counter.At(100), (SourcePosition{1, 3}));
}

TEST(PositionCounterTest, Version11HasMoreLineEnds)
{
    const std::string text = "a\xC2\x85"
                             "b\r\xC2\x85"
                             "c\xE2\x80\xA8"
                             "d";
    EXPECT_EQ(PositionCounter(text).At(text.size()).line, 2u);
    EXPECT_EQ(PositionCounter(text, true).At(text.size()), (SourcePosition{4, 2}));
}

}  // namespace
