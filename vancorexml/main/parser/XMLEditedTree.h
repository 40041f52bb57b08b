// The tree that an edited document must have.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLFragment.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"

// A change with its fragments.
struct TreeChange {
    using Fragments = std::vector<std::unique_ptr<XMLFragment>>;

    const ElementChange* change = nullptr;
    Fragments before;
    Fragments prepended;
    Fragments appended;
    Fragments after;
};

// The tree of a document, to which changes are applied by the operations of DOMElement. It does not depend on the code
// that edits the text, so it can check what that code did.
//
// Texts are exact, unlike those of DOMParser: white space is dropped only from an element that has child elements and
// no other text.
//
// Ownership: owns the tree. Refers to the changes.
//
// Threads: one at a time.
class XMLEditedTree {
public:
    // Parses a document in UTF-8. See GetDiagnostics for its errors.
    XMLEditedTree(const std::string& text, const VString& id);
    ~XMLEditedTree();

    bool HasErrors() const noexcept { return m_hasErrors; }
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }
    // Precondition: the document has no errors.
    DOMElement& DocumentElement() const { return *m_document->GetDocumentRoot(); }

    // Applies each change to its elements. The elements are those of the tree before the first change. Linear in the
    // elements, in the children of changed parents, and in the fragments.
    void Apply(const std::vector<std::pair<const TreeChange*, std::vector<DOMElement*>>>& changes);

    // True if the document `text` has this tree. False if it has errors, which GetDiagnostics then returns.
    bool IsTreeOf(const std::string& text, const VString& id);
    // Returns the path of the first element that differs, after IsTreeOf.
    const VString& PathOfDifference() const noexcept { return m_pathOfDifference; }

private:
    std::unique_ptr<DOM> m_document;
    std::vector<ParseDiagnostic> m_diagnostics;
    VString m_pathOfDifference;
    bool m_hasErrors = false;
};
