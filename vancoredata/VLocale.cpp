#include "vancoredata/VLocale.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "vancoreplatform/StaticObject.h"

namespace LanguageUtils {

namespace {

constexpr const char* SupportedCodes[] = {"de_DE",
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
    "en_US"};

// The supported codes for a language: `alone` if it has no country, `elsewhere` if its country has no supported code.
struct Substitute {
    const char* language;
    const char* alone;
    const char* elsewhere;
};

constexpr Substitute Substitutes[] = {
    {"ar", "ar_YE", "ar_YE"},
    {"de", "de_DE", "de_DE"},
    {"en", "en_US", "en_GB"},
    {"es", "es_ES", "es_ES"},
    {"fr", "fr_FR", "fr_FR"},
    {"ga", "ga_IE", "ga_IE"},
    {"it", "it_IT", "it_IT"},
    {"ja", "ja_JP", "ja_JP"},
    {"ko", "ko_KR", "ko_KR"},
    {"pt", "pt_BR", "pt_BR"},
    {"zh", "zh_CN", "zh_CN"},
};

// A parsed code. "de_DE" has the language "de", in lower case, and the subtags {"DE"}, in upper case.
struct Code {
    VString language;
    std::vector<VString> subtags;

    bool Has(const char* subtag) const
    {
        return std::find(subtags.begin(), subtags.end(), VString(subtag)) != subtags.end();
    }
};

Code ReadCode(const VString& isoString)
{
    // Ignore the encoding and the variant, as in "de_DE.UTF-8@euro".
    const VString plain = isoString.replace(u"-", u"_").split(u'.')[0].split(u'@')[0];
    Code code;
    for (const VString& part : plain.split(u'_'))
        code.subtags.push_back(part.ToQString().toUpper());
    code.language = code.subtags[0].ToQString().toLower();
    code.subtags.erase(code.subtags.begin());
    return code;
}

bool IsTraditionalChinese(const Code& code)
{
    if (code.language != VString("zh") || code.Has("HANS"))
        return false;
    return code.Has("HANT") || code.Has("TW") || code.Has("HK") || code.Has("MO");
}

VString FindSupported(const Code& code)
{
    if (IsTraditionalChinese(code))
        return "zh_TW";
    for (const VString& subtag : code.subtags) {
        VString candidate = code.language + "_" + subtag;
        const bool supported =
            std::find(std::begin(SupportedCodes), std::end(SupportedCodes), candidate) != std::end(SupportedCodes);
        if (supported && candidate != VString("zh_TW"))
            return candidate;
    }
    for (const Substitute& substitute : Substitutes) {
        if (code.language == VString(substitute.language))
            return code.subtags.empty() ? substitute.alone : substitute.elsewhere;
    }
    return GetDefaultISOString();
}

struct DefaultCodes {
    VString code = "en_US";
    VString language = "en";
};

}  // namespace

const VString& GetDefaultISOString()
{
    return GetStaticObject<DefaultCodes>().code;
}

const VString& GetDefaultLanguage()
{
    return GetStaticObject<DefaultCodes>().language;
}

LanguageCode GetClosestSupportedLanguageCode(const VString& isoString)
{
    return LanguageCode(FindSupported(ReadCode(isoString)));
}

}  // namespace LanguageUtils
