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

// Returns the message in the language of the calling thread's session. Falls back to English without a session or
// without a translation. Empty for an unknown id. Thread-safe.
VANCOREXML_API VString GetLocalizedString(std::uint32_t id);
// Returns the message in `language`, such as "de_DE". Falls back to the closest supported language.
VANCOREXML_API VString GetLocalizedString(std::uint32_t id, const VString& language);

// The cache of the translations, with one entry for each requested language, even for a language without a
// translation. One per process; thread-safe.
class VANCOREXML_API LocalStringTableCache {
public:
    // The process's cache. Raises a LogicException if the process object of the cache's name has another type.
    static std::shared_ptr<LocalStringTableCache> GetInstance();

    // Returns null for the empty language and for the product's default language. The translator may be empty. It is
    // read-only, so threads may share it.
    std::shared_ptr<QTranslator> GetTranslator(const VString& language);

private:
    VRecursiveMutex m_lock;
    std::map<VString, std::shared_ptr<QTranslator>> m_translators;  // guarded by m_lock
};

}  // namespace CoreXml
