// The names of a document in the messages about it.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// Xerces' messages name attributes as Xerces reads them. Where a name of the document begins with
// a colon, Xerces reads the prefix of the sanitizer. This class restores the name in a message. It
// keeps names that the document itself writes with that prefix.
//
// Threads: one at a time.
class WrittenNames {
public:
    // For a document that was not rewritten.
    WrittenNames() = default;
    explicit WrittenNames(const XercesInputSource& source)
        : m_isRewritten(source.IsRewritten()),
          m_given(source.Given())
    {}

    // The first message about such a name costs a search through the document.
    VString Restore(const VString& message);
    // Whether the message is about the declaration of the prefix, which the sanitizer has added.
    bool IsAboutDeclaration(const VString& message);

private:
    // The names of the document that look like those of the sanitizer.
    struct OwnNames {
        std::set<std::string> rewritten;  // without their colons, in UTF-8
        bool hasDeclaration;
        bool hasNamespace;
    };

    const OwnNames& FindOwnNames();
    bool IsRewritten(std::u16string_view name);

    bool m_isRewritten = false;
    // The document before the rewriting. Null when it was not kept: every name with the prefix
    // then counts as rewritten.
    std::shared_ptr<const std::string> m_given;
    std::optional<OwnNames> m_ownNames;
};
