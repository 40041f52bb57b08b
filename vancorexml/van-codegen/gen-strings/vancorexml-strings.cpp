#include "vancorexml/van-codegen/gen-strings/vancorexml-strings.h"

#include <boost/any.hpp>

#include "vancoredata/VLocale.h"
#include "vancoreplatform/CoreThreadContext.h"
#include "vancoreplatform/StaticObject.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\van-codegen\\gen-strings\\vancorexml-strings";
constexpr AssertionSite ForeignProcessObject{File, 78, "s_cache", 0x2F8D61B4};  // own code

}  // namespace Assertions

// A message: its id, the context it is translated in, and its English text (UTF-8).
struct Message {
    std::uint32_t id;
    const char* name;
    const char* english;
};

constexpr Message Messages[] = {
    {CoreXml::IDS_ERR_XML_ENTITY, "IDS_ERR_XML_ENTITY", "XML External <!ENTITY> definitions are not allowed."},
    {CoreXml::IDS_ERR_XML_INVALID_ENCODING,
        "IDS_ERR_XML_INVALID_ENCODING",
        "The XML file is in an unsupported encoding."},
};

const Message& FindMessage(std::uint32_t id)
{
    static constexpr Message unknown{0, "", ""};
    for (const Message& message : Messages) {
        if (message.id == id)
            return message;
    }
    return unknown;
}

// The language of the calling thread's session; empty when the session has no locale.
VString SessionLanguage()
{
    const boost::any object = CoreThreadContext::GetGenericObject("locale");
    const auto* const locale = boost::any_cast<std::shared_ptr<VLocale>>(&object);
    return locale && *locale ? (*locale)->getLanguageCode().GetISOString() : VString();
}

QString ResourcePath(const VString& language)
{
    return QStringLiteral(":/vancorexml/VQRC_MODSTRINGS_") + language.ToQString();
}

bool Load(QTranslator& translator, const VString& language)
{
    // The delimiters are empty, not null, because with null the translator would also try shorter names.
    const QString none = QLatin1String("");
    return translator.load(ResourcePath(language), none, none, none);
}

// The cache's name among the objects of the process.
constexpr const char* CacheName = "vancorexml-strings";

// Removes the cache from the process's objects when the library is unloaded. Otherwise the store would later destroy
// the cache, when the code of its destructor is no longer loaded.
struct CacheRemover {
    ~CacheRemover() { CoreThreadContext::RemoveProcessObject(CacheName); }
};

boost::any CreateCache()
{
    GetStaticObject<CacheRemover>();
    return std::make_shared<CoreXml::LocalStringTableCache>();
}

}  // namespace

std::shared_ptr<CoreXml::LocalStringTableCache> CoreXml::LocalStringTableCache::GetInstance()
{
    const boost::any object = CoreThreadContext::GetProcessObject(CacheName, CreateCache);
    const auto* const cache = boost::any_cast<std::shared_ptr<LocalStringTableCache>>(&object);
    if (!cache || !*cache)
        ThrowLogicException(Assertions::ForeignProcessObject);
    return *cache;
}

std::shared_ptr<QTranslator> CoreXml::LocalStringTableCache::GetTranslator(const VString& language)
{
    if (language.IsEmpty() || language == LanguageUtils::GetDefaultISOString())
        return nullptr;

    const VRecursiveMutexLocker locker(m_lock);
    const auto known = m_translators.find(language);
    if (known != m_translators.end())
        return known->second;

    auto translator = std::make_shared<QTranslator>();
    if (!Load(*translator, language))
        Load(*translator, LanguageUtils::GetClosestSupportedLanguageCode(language).GetISOString());
    m_translators.emplace(language, translator);
    return translator;
}

VString CoreXml::GetLocalizedString(std::uint32_t id)
{
    if (!CoreThreadContext::HasSessionId())
        return VString(FindMessage(id).english);
    return GetLocalizedString(id, SessionLanguage());
}

VString CoreXml::GetLocalizedString(std::uint32_t id, const VString& language)
{
    const Message& message = FindMessage(id);
    const auto cache = LocalStringTableCache::GetInstance();
    std::shared_ptr<QTranslator> translator = cache->GetTranslator(language);
    const bool isTranslated = translator && !translator->isEmpty();
    if (!isTranslated && !language.startsWith(LanguageUtils::GetDefaultLanguage()) && CoreThreadContext::HasSessionId())
        translator = cache->GetTranslator(SessionLanguage());

    VString text;
    if (translator)
        text = VString(translator->translate(message.name, message.english, nullptr, -1));
    return text.IsEmpty() ? VString(message.english) : text;
}
