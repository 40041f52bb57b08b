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

TEST(VScanStringTest, SkipsWhiteSpaceToTheEnd)
{
    EXPECT_TRUE(IsBlank(""));
    EXPECT_TRUE(IsBlank(" \t\n\v\f\r "));
}

TEST(VScanStringTest, SkipsIndentsOfAnyWidthButStopsAtTextInThem)
{
    for (int width = 0; width < 20; ++width) {
        const std::u16string indent = u"\n" + std::u16string(static_cast<std::size_t>(width), u' ');
        EXPECT_TRUE(IsBlank(VString(indent.data(), indent.size()))) << width;
        for (std::size_t position = 0; position < indent.size(); ++position) {
            std::u16string text = indent;
            text[position] = u'x';
            EXPECT_FALSE(IsBlank(VString(text.data(), text.size()))) << width << ' ' << position;
            text[position] = u'\t';
            EXPECT_TRUE(IsBlank(VString(text.data(), text.size()))) << width << ' ' << position;
        }
    }
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

TEST(VScanStringTest, StartsAtTheBeginning)
{
    const VString text = " ";
    EXPECT_FALSE(VScanString(text).IsAtEnd());
}
