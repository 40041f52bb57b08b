// Restores the names of a document in messages.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// Restores attribute names in the messages of Xerces. If a name in the document begins with a colon,
// Xerces reads and reports the prefix of the colon sanitizer in place of the colon. Names that the
// document itself writes with that prefix stay unchanged.
//
// Threads: one at a time.
class WrittenNames {
public:
    // For a document that was not rewritten: Restore returns each message unchanged.
    WrittenNames() = default;
    explicit WrittenNames(const XercesInputSource& source)
        : m_isRewritten(source.IsRewritten()),
          m_given(source.Given())
    {}

    // True if the prefix comes from the sanitizer wherever Xerces reads it: it is not written in the document itself.
    // Linear in a document that was rewritten.
    bool IsPrefixInserted() const;
    // True if the prefix in a text that quotes the document can only come from the sanitizer, or if the document was
    // not kept. Linear in a document that was rewritten.
    bool RestoresQuotations() const;
    // Returns the message with the attribute name that the document writes. The first message about a name
    // with the prefix is linear in the document.
    VString Restore(const VString& message);
    // True if the message is about the declaration of the prefix that the sanitizer inserted.
    bool IsAboutDeclaration(const VString& message);

private:
    // Facts about the document before the rewriting. They distinguish its own names from those of the
    // sanitizer.
    struct OwnNames {
        std::set<std::string> rewritten;  // the names that the sanitizer rewrites, without their colons, in UTF-8
        bool hasDeclaration;              // the text contains the name of the sanitizer's declaration
        bool hasNamespace;                // the text contains the sanitizer's namespace
    };

    const OwnNames& FindOwnNames();
    bool IsRewritten(std::u16string_view name);

    bool m_isRewritten = false;
    // The document before the rewriting. If it is null because it was not kept, every name with the prefix
    // counts as rewritten.
    std::shared_ptr<const std::string> m_given;
    std::optional<OwnNames> m_ownNames;
};
