#include "vancoreplatform/VFormatString.h"

#include <gtest/gtest.h>

#include <limits>

TEST(VFormatStringTest, ReplacesPlaceholdersByNumber)
{
    EXPECT_EQ(VFormatString("%1(%2)").arg("Error").arg(12).ToString(), VString("Error(12)"));
    EXPECT_EQ(VFormatString("%2%1").arg("a").arg("b").ToString(), VString("ba"));
}

TEST(VFormatStringTest, DoesNotReplacePlaceholdersInArguments)
{
    const VString text = VFormatString("%1|%2|%3|%4").arg("%4").arg("%3%2").arg("%").arg("1");
    EXPECT_EQ(text, VString("%4|%3%2|%|1"));
}

TEST(VFormatStringTest, AnArgumentCannotCompleteAPlaceholder)
{
    EXPECT_EQ(VFormatString("%1%22").arg("%").arg("x").ToString(), VString("%x2"));
}

TEST(VFormatStringTest, KeepsPlaceholdersWithoutAnArgument)
{
    EXPECT_EQ(VFormatString("%1 %2 %9").arg("a").ToString(), VString("a %2 %9"));
    EXPECT_EQ(VFormatString("%1").ToString(), VString("%1"));
}

TEST(VFormatStringTest, APlaceholderMayOccurMoreThanOnce)
{
    EXPECT_EQ(VFormatString("%1%1-%1").arg("ab").ToString(), VString("abab-ab"));
}

TEST(VFormatStringTest, KeepsOtherPercentSigns)
{
    EXPECT_EQ(VFormatString("100% %0 %a %%1 %").arg("x").ToString(), VString("100% %0 %a %x %"));
    EXPECT_EQ(VFormatString("").arg("x").ToString(), VString());
}

TEST(VFormatStringTest, PlaceholdersHaveOneDigit)
{
    EXPECT_EQ(VFormatString("%12").arg("x").ToString(), VString("x2"));
}

TEST(VFormatStringTest, IgnoresTheTenthArgument)
{
    VFormatString format("%9%10");
    for (int i = 1; i <= 10; ++i)
        format.arg(i);
    EXPECT_EQ(format.ToString(), VString("910"));
}

TEST(VFormatStringTest, FormatsEveryIntegerType)
{
    VFormatString format("%1 %2 %3 %4");
    format.arg(std::numeric_limits<std::int32_t>::min()).arg(std::numeric_limits<std::uint32_t>::max());
    format.arg(std::numeric_limits<std::int64_t>::min()).arg(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(format.ToString(), VString("-2147483648 4294967295 -9223372036854775808 18446744073709551615"));
}
