// Languages and locales.
#pragma once

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// A language with its country, as "de_DE". A value.
class VANCOREDATA_API LanguageCode {
public:
    LanguageCode() = default;
    explicit LanguageCode(const VString& isoString) : m_isoString(isoString) {}

    const VString& GetISOString() const noexcept { return m_isoString; }

private:
    VString m_isoString;
};

// The locale of a session. A value.
class VANCOREDATA_API VLocale {
public:
    explicit VLocale(const VString& isoString) : m_language(isoString) {}

    const LanguageCode& getLanguageCode() const noexcept { return m_language; }

private:
    LanguageCode m_language;
};

namespace LanguageUtils {

// The language the product is written in: "en_US", and its language part "en".
VANCOREDATA_API const VString& GetDefaultISOString();
VANCOREDATA_API const VString& GetDefaultLanguage();

// The supported code that stands in for `isoString`: itself when supported; else the
// supported code of the same language ("de_AT" gives "de_DE", "es" gives "es_ES"); else
// the default. Where a language has several: Chinese of Taiwan, Hong Kong and Macau and
// "zh_Hant" give "zh_TW", other Chinese "zh_CN"; English of other countries than the United
// States gives "en_GB"; French of other countries than Canada "fr_FR". Letter case, "-" for
// "_", and what follows "." or "@" do not count.
VANCOREDATA_API LanguageCode GetClosestSupportedLanguageCode(const VString& isoString);

}  // namespace LanguageUtils
