// Attribute names that begin with a colon.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// Documents have attributes whose names begin with a colon, which a namespace-aware parser
// rejects. Before a parse, the sanitizer replaces each such colon by the prefix "IllegalColon:"
// and adds a declaration of the prefix to the document element. When the handler passes on the
// attributes, it restores the names.
namespace XercesColonSanitizer {

// The rewritten UTF-8 text; the very same object when there is nothing to rewrite. Raises a
// LogicException when there is something to rewrite and no element. Linear.
VANCOREXML_API std::shared_ptr<std::string> Sanitize(const std::shared_ptr<std::string>& text);

// The name as it stood in the document; empty for the declaration of the prefix itself, which
// is no attribute of the document.
VANCOREXML_API VString RestoreName(const VString& qualifiedName);
// The same without a copy: the result is a part of `qualifiedName`.
VANCOREXML_API std::u16string_view RestoreNameView(std::u16string_view qualifiedName) noexcept;

}  // namespace XercesColonSanitizer
