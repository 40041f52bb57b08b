// Attribute names that begin with a colon.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// Documents may contain attribute names that begin with a colon, which a namespace-aware parser rejects.
// Before a parse, the sanitizer replaces each such colon by the prefix "IllegalColon:" and inserts a
// declaration of the prefix into the start tag of the document element. The handler of the parse
// restores the names.
namespace XercesColonSanitizer {

// Returns the rewritten UTF-8 text, or `text` itself if there is nothing to rewrite. Raises a
// LogicException if there is a name to rewrite, but no element. Linear.
VANCOREXML_API std::shared_ptr<std::string> Sanitize(const std::shared_ptr<std::string>& text);

// Returns the attribute name that the document writes. Returns an empty text for the declaration of the
// prefix, because the document does not contain it.
VANCOREXML_API VString RestoreName(const VString& qualifiedName);
// Like RestoreName, but returns a part of `qualifiedName` instead of a copy.
VANCOREXML_API std::u16string_view RestoreNameView(std::u16string_view qualifiedName) noexcept;

}  // namespace XercesColonSanitizer
