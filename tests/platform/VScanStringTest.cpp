#include "vancoreplatform/VScanString.h"

#include <gtest/gtest.h>

namespace {

bool IsBlank(const VString& text)
{
    VScanString scan(text);
    scan.skipWhitespace();
    return scan.IsAtEnd();
}

}  // namespace

TEST(VScanStringTest, WhiteSpaceIsSkippedToTheEnd)
{
    EXPECT_TRUE(IsBlank(""));
    EXPECT_TRUE(IsBlank(" \t\n\v\f\r "));
}

TEST(VScanStringTest, StopsAtText)
{
    EXPECT_FALSE(IsBlank(" x "));
    EXPECT_FALSE(IsBlank(VString(u" \0 ", 3)));
}

TEST(VScanStringTest, ANoBreakSpaceIsText)
{
    EXPECT_FALSE(IsBlank(u" \u00A0 "));
    EXPECT_FALSE(IsBlank(u"\u2003"));
    EXPECT_FALSE(IsBlank(u"\u0085"));
}

TEST(VScanStringTest, IsAtTheStartAtFirst)
{
    const VString text = " ";
    EXPECT_FALSE(VScanString(text).IsAtEnd());
}
