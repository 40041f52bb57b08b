#include "vancorexml/van-codegen/gen-strings/vancorexml-strings.h"

#include <cstdlib>
#include <iterator>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <boost/any.hpp>

#include <QFile>

#include "tests/common/TestSupport.h"
#include "vancoredata/VLocale.h"
#include "vancoreplatform/CoreThreadContext.h"

namespace {

const VString EnglishEntity = "XML External <!ENTITY> definitions are not allowed.";
const VString EnglishEncoding = "The XML file is in an unsupported encoding.";
constexpr std::uint32_t Unknown = 0x12345678;

// Puts this thread into a session with the locale `language` while the object lives. A null language makes a session
// without a locale.
class Session {
public:
    explicit Session(const char* language)
    {
        CoreThreadContext::HasSessionId = [] { return true; };
        CoreThreadContext::SetGenericObject(
            "locale", language ? boost::any(std::make_shared<VLocale>(VString(language))) : boost::any());
    }
    ~Session()
    {
        CoreThreadContext::HasSessionId = [] { return false; };
        CoreThreadContext::SetGenericObject("locale", boost::any());
    }
};

struct LocaleRow {
    const char* locale;
    const char* entity;
    const char* encoding;
};

const LocaleRow Locales[] = {
    {"de_DE",
        "XML-Definitionen externer <!ENTITY> sind nicht zulässig.",
        "Die Codierung der XML-Datei wird nicht unterstützt."},
    {"it_IT",
        "Le definizioni XML di <!ENTITY> esterne non sono consentite.",
        "La codifica del file XML non è supportata."},
    {"ko_KR", "XML 외부 <!ENTITY> 정의는 허용되지 않습니다.", "XML 파일의 인코딩이 지원되지 않습니다."},
    {"es_ES",
        "No se permiten definiciones XML de <!ENTITY> externas.",
        "La codificación del archivo XML no es compatible."},
    {"fr_FR",
        "Les définitions XML d’entités <!ENTITY> externes ne sont pas autorisées.",
        "L’encodage du fichier XML n’est pas pris en charge."},
    {"zh_TW", "不允許使用 XML 外部 <!ENTITY> 定義。", "不支援此 XML 檔案的編碼方式。"},
    {"ar_YE", "غير مسموح بتعريفات <!ENTITY> الخارجية في XML.", "ترميز ملف XML غير مدعوم."},
    {"pt_BR",
        "Não são permitidas definições XML de <!ENTITY> externas.",
        "A codificação do arquivo XML não é suportada."},
    {"ja_JP", "XML の外部 <!ENTITY> 定義は許可されていません。", "XML ファイルのエンコードはサポートされていません。"},
    {"en_GB", "XML External <!ENTITY> definitions are not allowed.", "The XML file is in an unsupported encoding."},
    {"ga_IE",
        "Ní cheadaítear sainmhínithe <!ENTITY> seachtracha in XML.",
        "Ní thacaítear le hionchódú an chomhaid XML."},
    {"zh_CN", "不允许使用 XML 外部 <!ENTITY> 定义。", "不支持此 XML 文件的编码。"},
    {"fr_CA",
        "Les définitions XML d’entités <!ENTITY> externes ne sont pas permises.",
        "Le codage du fichier XML n’est pas pris en charge."},
};

}  // namespace

TEST(LocalizedStringsTest, EveryLocaleHasItsTranslationFile)
{
    for (const LocaleRow& row : Locales) {
        EXPECT_TRUE(QFile::exists(QStringLiteral(":/vancorexml/VQRC_MODSTRINGS_") + QString::fromLatin1(row.locale)))
            << row.locale;
    }
}

TEST(LocalizedStringsTest, EveryLocaleHasItsOwnTexts)
{
    for (const LocaleRow& row : Locales) {
        const VString entity = CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, row.locale);
        const VString encoding = CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_INVALID_ENCODING, row.locale);
        EXPECT_EQ(entity, VString(row.entity));
        EXPECT_EQ(encoding, VString(row.encoding));
    }
}

TEST(LocalizedStringsTest, TranslationsDifferFromEnglishAndFromEachOther)
{
    std::set<VString> texts;
    for (const LocaleRow& row : Locales) {
        if (VString(row.locale).startsWith("en"))
            continue;
        EXPECT_NE(VString(row.entity), EnglishEntity);
        EXPECT_TRUE(texts.insert(row.entity).second) << row.locale;
        EXPECT_TRUE(texts.insert(row.encoding).second) << row.locale;
    }
}

TEST(LocalizedStringsTest, IdsHaveFixedNumbers)
{
    EXPECT_EQ(CoreXml::IDS_ERR_XML_ENTITY, 0xCDE820DFu);
    EXPECT_EQ(CoreXml::IDS_ERR_XML_INVALID_ENCODING, 0x927F7F7Bu);
}

TEST(LocalizedStringsTest, TextIsEnglishWithoutASessionEvenIfALocaleIsSet)
{
    CoreThreadContext::SetGenericObject("locale", std::make_shared<VLocale>(VString("de_DE")));
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY), EnglishEntity);
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_INVALID_ENCODING), EnglishEncoding);
    CoreThreadContext::SetGenericObject("locale", boost::any());
}

TEST(LocalizedStringsTest, SessionSelectsTheLanguage)
{
    const Session session("it_IT");
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY), VString(Locales[1].entity));
}

TEST(LocalizedStringsTest, SessionWithoutALocaleSelectsEnglish)
{
    const Session session(nullptr);
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY), EnglishEntity);
}

TEST(LocalizedStringsTest, EmptyHasSessionIdFunctionThrows)
{
    CoreThreadContext::HasSessionId = nullptr;
    EXPECT_THROW(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY), std::bad_function_call);
    CoreThreadContext::HasSessionId = [] { return false; };
}

TEST(LocalizedStringsTest, UnknownIdHasAnEmptyTextInEveryLanguage)
{
    EXPECT_TRUE(CoreXml::GetLocalizedString(Unknown).IsEmpty());
    for (const LocaleRow& row : Locales)
        EXPECT_TRUE(CoreXml::GetLocalizedString(Unknown, row.locale).IsEmpty()) << row.locale;
    EXPECT_TRUE(CoreXml::GetLocalizedString(Unknown, "").IsEmpty());
}

TEST(LocalizedStringsTest, UnsupportedLocaleFallsBackToItsLanguage)
{
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, "de_AT"), VString(Locales[0].entity));
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, "es_MX"), VString(Locales[3].entity));
}

TEST(LocalizedStringsTest, UnknownLanguageFallsBackToTheSessionAndThenToEnglish)
{
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, "xx_XX"), EnglishEntity);
    const Session session("fr_FR");
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, "xx_XX"), VString(Locales[4].entity));
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, ""), VString(Locales[4].entity));
}

TEST(LocalizedStringsTest, RequestedEnglishOverridesTheSession)
{
    const Session session("fr_FR");
    EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, "en_US"), EnglishEntity);
}

TEST(LocalizedStringsTest, TranslatorIsLoadedOnce)
{
    const auto cache = CoreXml::LocalStringTableCache::GetInstance();
    const auto first = cache->GetTranslator("ja_JP");
    ASSERT_NE(first, nullptr);
    EXPECT_FALSE(first->isEmpty());
    EXPECT_EQ(cache->GetTranslator("ja_JP"), first);
    EXPECT_EQ(CoreXml::LocalStringTableCache::GetInstance(), cache);
}

TEST(LocalizedStringsTest, LanguageWithoutAFileHasAnEmptyTranslator)
{
    const auto cache = CoreXml::LocalStringTableCache::GetInstance();
    const auto translator = cache->GetTranslator("qq_QQ");
    ASSERT_NE(translator, nullptr);
    EXPECT_TRUE(translator->isEmpty());
    EXPECT_EQ(cache->GetTranslator("qq_QQ"), translator);
}

TEST(LocalizedStringsTest, DefaultAndEmptyLanguageHaveNoTranslator)
{
    const auto cache = CoreXml::LocalStringTableCache::GetInstance();
    EXPECT_EQ(cache->GetTranslator(""), nullptr);
    EXPECT_EQ(cache->GetTranslator(LanguageUtils::GetDefaultISOString()), nullptr);
}

// A death test runs in a separate process, in which the cache does not exist yet.
TEST(LocalizedStringsDeathTest, GetInstanceAssertsIfItsKeyHoldsAnotherObject)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [] {
        CoreThreadContext::GetProcessObject("vancorexml-strings", [] { return boost::any(7); });
        const char* const file = "vancorexml\\van-codegen\\gen-strings\\vancorexml-strings";
        const auto getInstance = [] { CoreXml::LocalStringTableCache::GetInstance(); };
        testsupport::ExpectLogicException(getInstance, file, 78, "s_cache", 0x2F8D61B4);
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

// Each thread begins with another language, so that several threads load translations at once.
TEST(LocalizedStringsThreadTest, ManyThreadsGetTextsInAllLanguages)
{
    constexpr std::size_t count = std::size(Locales);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < count; ++thread) {
        threads.emplace_back([thread] {
            for (std::size_t i = 0; i < 50 * count; ++i) {
                const LocaleRow& row = Locales[(thread + i) % count];
                const VString text = CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, row.locale);
                EXPECT_EQ(text, VString(row.entity));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

// The locale belongs to the thread, but the session check to the process.
TEST(LocalizedStringsThreadTest, EachThreadGetsTextsInTheLanguageOfItsSession)
{
    CoreThreadContext::HasSessionId = [] { return true; };
    std::vector<std::thread> threads;
    for (const LocaleRow& row : Locales) {
        threads.emplace_back([&row] {
            CoreThreadContext::SetGenericObject("locale", std::make_shared<VLocale>(VString(row.locale)));
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_INVALID_ENCODING), VString(row.encoding));
                const VString unknown = "x" + VString::number(i);
                EXPECT_EQ(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY, unknown), VString(row.entity));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    CoreThreadContext::HasSessionId = [] { return false; };
}
