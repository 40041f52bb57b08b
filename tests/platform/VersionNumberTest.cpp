#include "vancoredata/VersionNumber.h"

#include <gtest/gtest.h>

#include <string>

#include "vancoredata/Nullable.h"
#include "vansys/LogicException.h"

namespace {

VersionNumber Version(const VString& text)
{
    return VersionNumber(text, u'.', u'-', 0);
}

struct VersionCase {
    const char* name;
    const char* text;
    const char* sameAs;
    const char* majorMinor;
};

}  // namespace

TEST(VersionNumberTest, OptionsOtherThanZeroRaiseTheAssertion)
{
    for (const int options : {1, -1}) {
        try {
            const VersionNumber version("18.1", u'.', u'-', options);
            FAIL() << "no assertion";
        } catch (const LogicException& exception) {
            EXPECT_EQ(exception.GetExpression(), VString("options == 0"));
            EXPECT_EQ(exception.GetErrorInfo().GetCode(), 0xB7419C2Eu);
        }
    }
}

class VersionNumberTextTest : public testing::TestWithParam<VersionCase> {};

TEST_P(VersionNumberTextTest, ReadsTheParts)
{
    const VersionNumber version = Version(GetParam().text);
    EXPECT_EQ(version, Version(GetParam().sameAs));
    EXPECT_EQ(version.GetMajorAndMinorAsString(u'_'), VString(GetParam().majorMinor));
    EXPECT_EQ(version.GetAsString(), VString(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Texts,
    VersionNumberTextTest,
    testing::Values(VersionCase{"Plain", "18.1", "18.1.0", "18_1"},
        VersionCase{"MissingPartsAreZero", "18", "18.0.0.0", "18_0"},
        VersionCase{"MoreParts", "10.5.2", "10.5.2", "10_5"},
        VersionCase{"LeadingZeros", "018.01", "18.1", "18_1"},
        VersionCase{"Suffix", "18.1-beta.7", "18.1", "18_1"},
        VersionCase{"SuffixOnly", "-5.5", "0", "0_0"},
        VersionCase{"Empty", "", "0.0.0", "0_0"},
        VersionCase{"NoNumber", "abc", "0", "0_0"},
        VersionCase{"PartThatIsNoNumber", "18.x.3", "18.0.3", "18_0"},
        VersionCase{"PartWithALetter", "18.1a", "18", "18_0"},
        VersionCase{"PartWithABlank", "18. 1", "18", "18_0"},
        VersionCase{"PartWithASign", "+18.1", "0.1", "0_1"},
        VersionCase{"EmptyParts", "..3", "0.0.3", "0_0"},
        VersionCase{"LargestPart", "2147483647.1", "2147483647.1", "2147483647_1"},
        VersionCase{"TooLargeAPart", "2147483648.1", "0.1", "0_1"},
        VersionCase{"FarTooLargeAPart", "99999999999999999999999.1", "0.1", "0_1"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(VersionNumberTest, DigitsOutsideAsciiAreNoNumbers)
{
    EXPECT_EQ(Version(u"\u0661\u0668.1"), Version("0.1"));
}

TEST(VersionNumberTest, TheDefaultIsZero)
{
    EXPECT_EQ(VersionNumber(), Version("0"));
    EXPECT_EQ(VersionNumber().GetAsString(), VString("0.0.0"));
    EXPECT_EQ(VersionNumber().GetMajorAndMinorAsString(u'.'), VString("0.0"));
}

TEST(VersionNumberTest, OrdersByNumber)
{
    EXPECT_LT(Version("9.5"), Version("10.2"));
    EXPECT_LT(Version("10.2"), Version("10.2.1"));
    EXPECT_LT(Version("18.1"), Version("18.10"));
    EXPECT_FALSE(Version("18.1") < Version("18.1.0"));
    EXPECT_NE(Version("18.1"), Version("18.2"));
}

TEST(VersionNumberTest, UsesTheGivenSeparators)
{
    EXPECT_EQ(VersionNumber("18_1+x", u'_', u'+', 0), Version("18.1"));
}

TEST(NullableTest, AnAbsentValueIsTheDefault)
{
    const Nullable<VersionNumber> absent;
    EXPECT_FALSE(absent.IsPresent());
    EXPECT_EQ(absent.GetValue().GetAsString(), VString("0.0.0"));
}

TEST(NullableTest, APresentValueIsKept)
{
    const Nullable<VersionNumber> present(Version("18.1"));
    EXPECT_TRUE(present.IsPresent());
    EXPECT_EQ(present.GetValue(), Version("18.1"));
}
