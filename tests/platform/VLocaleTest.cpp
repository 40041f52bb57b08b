#include "vancoredata/VLocale.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct LanguageCase {
    const char* asked;
    const char* given;
};

}  // namespace

TEST(VLocaleTest, HasItsLanguageCode)
{
    EXPECT_EQ(VLocale("de_DE").getLanguageCode().GetISOString(), VString("de_DE"));
    EXPECT_TRUE(LanguageCode().GetISOString().IsEmpty());
}

TEST(LanguageUtilsTest, TheDefaultIsAmericanEnglish)
{
    EXPECT_EQ(LanguageUtils::GetDefaultISOString(), VString("en_US"));
    EXPECT_EQ(LanguageUtils::GetDefaultLanguage(), VString("en"));
}

TEST(LanguageUtilsTest, ReturnsSupportedCodesUnchanged)
{
    for (const char* code : {"de_DE",
             "it_IT",
             "ko_KR",
             "es_ES",
             "fr_FR",
             "zh_TW",
             "ar_YE",
             "pt_BR",
             "ja_JP",
             "en_GB",
             "ga_IE",
             "zh_CN",
             "fr_CA",
             "en_US"}) {
        EXPECT_EQ(LanguageUtils::GetClosestSupportedLanguageCode(code).GetISOString(), VString(code));
    }
}

class ClosestLanguageTest : public testing::TestWithParam<LanguageCase> {};

TEST_P(ClosestLanguageTest, ReturnsTheClosestCode)
{
    EXPECT_EQ(
        LanguageUtils::GetClosestSupportedLanguageCode(GetParam().asked).GetISOString(), VString(GetParam().given));
}

INSTANTIATE_TEST_SUITE_P(Codes,
    ClosestLanguageTest,
    testing::Values(LanguageCase{"de", "de_DE"},
        LanguageCase{"de_AT", "de_DE"},
        LanguageCase{"de-AT", "de_DE"},
        LanguageCase{"DE-at", "de_DE"},
        LanguageCase{"de_DE.UTF-8@euro", "de_DE"},
        LanguageCase{"de@euro", "de_DE"},
        LanguageCase{"es", "es_ES"},
        LanguageCase{"es_MX", "es_ES"},
        LanguageCase{"fr", "fr_FR"},
        LanguageCase{"fr_BE", "fr_FR"},
        LanguageCase{"fr-ca", "fr_CA"},
        LanguageCase{"pt", "pt_BR"},
        LanguageCase{"pt_PT", "pt_BR"},
        LanguageCase{"ar_EG", "ar_YE"},
        LanguageCase{"ga", "ga_IE"},
        LanguageCase{"it_CH", "it_IT"},
        LanguageCase{"ja", "ja_JP"},
        LanguageCase{"ko", "ko_KR"},
        LanguageCase{"en", "en_US"},
        LanguageCase{"en-us", "en_US"},
        LanguageCase{"en_AU", "en_GB"},
        LanguageCase{"en_IE", "en_GB"},
        LanguageCase{"zh", "zh_CN"},
        LanguageCase{"zh_SG", "zh_CN"},
        LanguageCase{"zh_HK", "zh_TW"},
        LanguageCase{"zh_MO", "zh_TW"},
        LanguageCase{"zh_Hant", "zh_TW"},
        LanguageCase{"zh-Hant-HK", "zh_TW"},
        LanguageCase{"zh_Hans_TW", "zh_CN"},
        LanguageCase{"", "en_US"},
        LanguageCase{"sv_SE", "en_US"},
        LanguageCase{"d", "en_US"},
        LanguageCase{"deu_DE", "en_US"},
        LanguageCase{"_DE", "en_US"},
        LanguageCase{"C", "en_US"}));
