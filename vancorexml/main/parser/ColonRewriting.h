// The names that the colon sanitizer writes into a document, and how Xerces reports them.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "vancorexml/main/parser/SourceMap.h"

namespace ColonRewriting {

inline constexpr std::string_view Prefix = "IllegalColon:";
inline constexpr std::string_view Namespace = "http://vancorexml.invalid/xml/ThisShouldNotAppear";
inline constexpr std::string_view DeclarationName = "xmlns:IllegalColon";

// As Xerces reads them.
inline constexpr std::u16string_view ReadPrefix = u"IllegalColon:";
inline constexpr std::u16string_view ReadDeclarationName = u"xmlns:IllegalColon";

// As messages of a parser that knows namespaces report them.
inline constexpr std::u16string_view ReportedPrefix = u"{http://vancorexml.invalid/xml/ThisShouldNotAppear}";
inline constexpr std::u16string_view ReportedDeclarationName = u"{http://www.w3.org/2000/xmlns/}IllegalColon";

struct Rewritten {
    std::shared_ptr<std::string> text;
    std::vector<SourceMap::Insertion> insertions;  // sorted; empty when nothing was rewritten
};

// As XercesColonSanitizer::Sanitize, and says where it has inserted how much.
Rewritten Rewrite(const std::shared_ptr<std::string>& text);

// The names that the sanitizer rewrites in `text`, without their colons. Linear.
std::set<std::string> FindNames(const std::string& text);

}  // namespace ColonRewriting
