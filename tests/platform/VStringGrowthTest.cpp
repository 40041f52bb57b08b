#include "vancoreplatform/VString.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

#include "vancoreplatform/VFormatString.h"

namespace {

// Returns a text of more than half of the maximal length. Its units are not initialised, so the system only reserves
// the memory.
VString HugeText()
{
    return VString(QString(VString::MaxLength / 2 + 1, Qt::Uninitialized));
}

// Appends `count` single code units and returns how often the buffer grew.
int CountGrowths(VString text, int count)
{
    int growths = 0;
    int capacity = text.ToQString().capacity();
    for (int i = 0; i < count; ++i) {
        text += u'x';
        if (text.ToQString().capacity() != capacity)
            ++growths;
        capacity = text.ToQString().capacity();
    }
    return growths;
}

}  // namespace

TEST(VStringGrowthTest, AppendsTextsAndPieces)
{
    VString text = "a";
    text.append("b").append(u"cde", 2);
    text += "f";
    EXPECT_EQ(text, VString("abcdf"));
    EXPECT_EQ(VString("a") + VString("b"), VString("ab"));
    EXPECT_EQ(text + "g", VString("abcdfg"));
    EXPECT_EQ(text, VString("abcdf"));
}

TEST(VStringGrowthTest, AppendsItself)
{
    VString text = "abc";
    text += text;
    EXPECT_EQ(text, VString("abcabc"));
}

TEST(VStringGrowthTest, AppendsAPieceOfItselfAlsoWhenTheBufferMoves)
{
    VString text = "abc";
    std::u16string expected = u"abc";
    for (int i = 0; i < 16; ++i) {
        text.append(text.begin() + 1, static_cast<std::size_t>(text.length() - 1));
        expected += std::u16string(expected, 1);
    }
    EXPECT_EQ(text.View(), expected);
}

TEST(VStringGrowthTest, AppendingIsAmortisedConstant)
{
    EXPECT_LT(CountGrowths(VString(), 1000000), 64);
}

TEST(VStringGrowthTest, AppendingStaysAmortisedConstantAfterAReserve)
{
    VString text;
    text.reserve(10);
    EXPECT_LT(CountGrowths(text, 1000000), 64);
}

TEST(VStringGrowthTest, ConstructionRefusesATextThatIsTooLong)
{
    EXPECT_THROW(VString(u"x", static_cast<std::size_t>(VString::MaxLength) + 1), std::length_error);
    EXPECT_THROW(VString(u"x", static_cast<std::size_t>(-1)), std::length_error);
}

TEST(VStringGrowthTest, GrowingPastTheLimitThrowsAndChangesNothing)
{
    const VString huge = HugeText();
    VString text = huge;
    EXPECT_THROW(text.append(huge), std::length_error);
    EXPECT_THROW(text += huge, std::length_error);
    EXPECT_THROW(text.append(u"x", static_cast<std::size_t>(VString::MaxLength)), std::length_error);
    EXPECT_THROW(text.append(u"x", static_cast<std::size_t>(-1)), std::length_error);
    EXPECT_TRUE(text.IsSharedWith(huge));
}

TEST(VStringGrowthTest, TheLastUnitFitsAndTheNextDoesNot)
{
    VString text(QString(VString::MaxLength, Qt::Uninitialized));
    EXPECT_THROW(text += u'x', std::length_error);
    EXPECT_THROW(text.append("x"), std::length_error);
    EXPECT_EQ(text.append("").length(), VString::MaxLength);
}

TEST(VStringGrowthTest, EveryOtherGrowingOperationThrowsToo)
{
    const VString huge = HugeText();
    EXPECT_THROW(huge + huge, std::length_error);
    EXPECT_THROW(VString(huge) + huge, std::length_error);
    EXPECT_THROW(VString::join({huge, huge}, ""), std::length_error);
    EXPECT_THROW(VString("aa").replace("a", huge), std::length_error);
    EXPECT_THROW(VFormatString("%1%1").arg(huge).ToString(), std::length_error);
}
