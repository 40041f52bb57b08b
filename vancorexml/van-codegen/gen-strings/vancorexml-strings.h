// The library's messages to users, in the session's language.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include <QTranslator>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VRecursiveMutex.h"

namespace CoreXml {

inline constexpr std::uint32_t IDS_ERR_XML_ENTITY = 0xCDE820DF;
inline constexpr std::uint32_t IDS_ERR_XML_INVALID_ENCODING = 0x927F7F7B;

// Returns the message in the language of the calling thread's session, or in English if there is no session or no
// translation. Returns an empty text for an unknown id. Thread-safe.
VANCOREXML_API VString GetLocalizedString(std::uint32_t id);
// Returns the message in `language`, such as "de_DE". Without a translation, falls back to the closest supported
// language, then to the language of the session, then to English.
VANCOREXML_API VString GetLocalizedString(std::uint32_t id, const VString& language);

// The cache of the translations, with one entry for each requested language, even for a language without a
// translation. One per process; thread-safe.
class VANCOREXML_API LocalStringTableCache {
public:
    // Returns the cache of the process. Raises a LogicException if a process object of another type has the name of
    // the cache (see CoreThreadContext::GetProcessObject).
    static std::shared_ptr<LocalStringTableCache> GetInstance();

    // Returns the translator for the language or the closest supported one. It is empty if there is no translation.
    // Returns null for the empty language and for the product's default, "en_US". The translator is read-only, so
    // threads may share it.
    std::shared_ptr<QTranslator> GetTranslator(const VString& language);

private:
    VRecursiveMutex m_lock;
    std::map<VString, std::shared_ptr<QTranslator>> m_translators;  // guarded by m_lock
};

}  // namespace CoreXml
