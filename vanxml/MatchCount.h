// Counts the elements that a path selects without a tree.
#pragma once

#include <cstddef>
#include <optional>

#include "vancoreplatform/VString.h"
#include "vanxml/QueryPath.h"
#include "vanxml/SourceDocument.h"

// Returns the number of elements of the document that the path selects. If `attribute` is not empty, counts only
// elements that have this attribute. Returns nothing if the document has errors. Throws std::bad_alloc. Linear.
std::optional<std::size_t> CountMatches(SourceDocument& source, const QueryPath& path, const VString& attribute);
