#include "vancorexml/main/parser/ByteSet.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

TEST(ByteSetTest, FindsTheFirstByteOfTheSet)
{
    constexpr ByteSet set("b>");
    EXPECT_EQ(set.FindFirst("a>b"), 1u);
    EXPECT_EQ(set.FindFirst("a>b", 1), 1u);
    EXPECT_EQ(set.FindFirst("a>b", 2), 2u);
}

TEST(ByteSetTest, ReturnsNposWhenTheTextHasNoByteOfTheSet)
{
    constexpr ByteSet set("b>");
    EXPECT_EQ(set.FindFirst(""), std::string_view::npos);
    EXPECT_EQ(set.FindFirst("ac<"), std::string_view::npos);
    EXPECT_EQ(set.FindFirst("b", 1), std::string_view::npos);
    EXPECT_EQ(set.FindFirst("b", 2), std::string_view::npos);
}

TEST(ByteSetTest, AgreesWithTheStandardSearchForEachByte)
{
    const std::string bytes("\0 \x7F\x80\xC2\xFF", 6);
    const ByteSet set(bytes);
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = "a" + std::string(1, static_cast<char>(byte));
        EXPECT_EQ(set.FindFirst(text), text.find_first_of(bytes)) << byte;
    }
}

}  // namespace
