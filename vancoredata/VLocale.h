// Languages and locales.
#pragma once

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// A language with its country, such as "de_DE". A value.
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

// The product's default: the code "en_US" and the language "en".
VANCOREDATA_API const VString& GetDefaultISOString();
VANCOREDATA_API const VString& GetDefaultLanguage();

// Returns the supported code that is closest to `isoString`. The first of these rules that applies decides:
//  1. A supported code maps to itself.
//  2. Chinese maps to "zh_TW" if the code has a part "TW", "HK", "MO" or "Hant", and no part "Hans". All other
//     Chinese maps to "zh_CN".
//  3. English maps to "en_US" without a country, and otherwise to "en_GB".
//  4. French maps to "fr_FR".
//  5. Another supported language maps to its only supported code: "de_AT" to "de_DE", and "es" to "es_ES".
//  6. Any other text maps to the default.
// Letter case is ignored, "-" equals "_", and text from the first "." or "@" on is ignored.
VANCOREDATA_API LanguageCode GetClosestSupportedLanguageCode(const VString& isoString);

}  // namespace LanguageUtils
