#include "vansys/Unicode.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Normalized(std::string text)
{
    text.resize(Unicode::normalizeLineEndings(text.data(), text.size()));
    return text;
}

}  // namespace

TEST(UnicodeTest, PairsAndLoneCarriageReturnsBecomeLineFeeds)
{
    EXPECT_EQ(Normalized("a\r\nb"), "a\nb");
    EXPECT_EQ(Normalized("a\rb"), "a\nb");
    EXPECT_EQ(Normalized("a\nb"), "a\nb");
    EXPECT_EQ(Normalized("a\r"), "a\n");
}

TEST(UnicodeTest, ConsecutiveLineEndingsStaySeparate)
{
    EXPECT_EQ(Normalized("\r\r\n\n\r\n\r"), "\n\n\n\n\n");
    EXPECT_EQ(Normalized("\n\r"), "\n\n");
}

TEST(UnicodeTest, KeepsOtherBytes)
{
    const std::string text("größe\0\t", 9);
    EXPECT_EQ(Normalized(text), text);
    EXPECT_EQ(Normalized(""), "");
}

TEST(UnicodeTest, DoesNotReadOrWriteBehindTheLength)
{
    std::string text = "a\r\nb\r\n";
    EXPECT_EQ(Unicode::normalizeLineEndings(text.data(), 5), 4u);
    EXPECT_EQ(text.substr(0, 4), "a\nb\n");
    EXPECT_EQ(text[5], '\n');
}
