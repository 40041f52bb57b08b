// The implementation of the colon sanitizer (see XercesColonSanitizer.h), and the names that it writes into a
// document.
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

// The same names as Xerces passes them to the handler, in UTF-16.
inline constexpr std::u16string_view ReadPrefix = u"IllegalColon:";
inline constexpr std::u16string_view ReadDeclarationName = u"xmlns:IllegalColon";

// The same names in the messages of a namespace-aware parse.
inline constexpr std::u16string_view ReportedPrefix = u"{http://vancorexml.invalid/xml/ThisShouldNotAppear}";
inline constexpr std::u16string_view ReportedDeclarationName = u"{http://www.w3.org/2000/xmlns/}IllegalColon";

struct Rewritten {
    std::shared_ptr<std::string> text;
    std::vector<SourceMap::Insertion> insertions;  // sorted; empty when nothing was rewritten
};

// Like XercesColonSanitizer::Sanitize, but also returns the insertions.
Rewritten Rewrite(const std::shared_ptr<std::string>& text);

// Returns the names that the sanitizer rewrites in `text`, without their colons. Linear.
std::set<std::string> FindNames(const std::string& text);

}  // namespace ColonRewriting
