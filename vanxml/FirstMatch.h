// Finds the first element that a path selects without reading the rest of the document.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/SourcePosition.h"
#include "vanxml/QueryPath.h"

// The element that a search found.
struct FirstMatch {
    std::unique_ptr<DOM> tree;  // its document element is a copy of the element
    SourcePosition place;       // the end of the start tag in the file
    // Such as "/a/b[2]/c[1]": each name below the first has its position among the siblings of the same name.
    std::string path;
};

// The element to search for.
struct FirstMatchQuery {
    const QueryPath& path;
    VString attribute;          // if not empty, an element must have this attribute
    bool needsContent = false;  // copies the texts and children of the element, not only its name and attributes
};

// Searches the file `name`, or standard input if the name is "-". Reads only the start of the document up to the match,
// so errors behind it are not found. If the document has an error in front of the match, returns nothing and sets
// `errors` to the lines that describe it, as FormatDiagnostics does. Throws like SourceDocument::Read.
//
// Linear in the document up to the match.
std::optional<FirstMatch> FindFirstMatch(const VString& name, const FirstMatchQuery& query, std::string& errors);
