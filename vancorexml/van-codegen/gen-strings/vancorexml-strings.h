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

// The message in the language of the calling thread's session; in English without a session
// or without a translation; empty for an unknown id. Callable from any thread.
VANCOREXML_API VString GetLocalizedString(std::uint32_t id);
// The same in a language named as "de_DE". For a language that is not supported the closest
// one serves.
VANCOREXML_API VString GetLocalizedString(std::uint32_t id, const VString& language);

// The translations loaded so far: one per language that was ever asked for, also for those
// that have none. One for the process; thread-safe.
class VANCOREXML_API LocalStringTableCache {
public:
    // The process's cache. Raises a LogicException when the process object of that name is
    // something else.
    static std::shared_ptr<LocalStringTableCache> GetInstance();

    // Null for the empty language and for the one the product is written in. What is returned
    // may be empty; it is read-only and may be shared between threads.
    std::shared_ptr<QTranslator> GetTranslator(const VString& language);

private:
    VRecursiveMutex m_lock;
    std::map<VString, std::shared_ptr<QTranslator>> m_translators;  // guarded by m_lock
};

}  // namespace CoreXml
