// The open elements of a document that is being read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/util/QName.hpp>
#include <xercesc/validators/datatype/DatatypeValidator.hpp>
#include <xercesc/validators/schema/ComplexTypeInfo.hpp>
#include <xercesc/validators/schema/SchemaElementDecl.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/SourceTags.h"
#include "vansys/TextHash.h"

// A child of an open element.
struct TrailChild {
    const xercesc::QName* name = nullptr;  // of its declaration
    VString written;                       // the name as the document writes it
    SourceRange start;                     // of the name in its start tag
    std::size_t index = 0;                 // among the siblings of that name, from 1
    std::size_t number = 0;
    xercesc::ComplexTypeInfo* complexType = nullptr;
    bool isReported = false;  // there is a diagnostic that the child is not allowed
};

struct TrailElement {
    VString name;            // as the document writes it
    std::size_t index = 0;   // among the siblings of that name, from 1
    std::size_t number = 0;  // in document order, from 1
    SourceRange start;       // of the name in the start tag; its line is 0 if the element comes from an entity
    bool hasEndTag = false;  // the text has an end tag of this element

    // The declaration and the types of the schema; null if there are none.
    const xercesc::SchemaElementDecl* declaration = nullptr;
    xercesc::ComplexTypeInfo* complexType = nullptr;
    xercesc::DatatypeValidator* simpleType = nullptr;
    bool hasOwnType = false;           // it names a type with xsi:type
    bool hasBadType = false;           // its xsi:type or xsi:nil is not allowed
    bool isUndeclared = false;         // the schema does not declare it or an element around it
    std::vector<TrailChild> children;  // empty without a declaration
    std::u16string text;               // the start of the text of an element with a simple type

    std::optional<std::size_t> undeclared;  // the index of the diagnostic that calls the element undeclared

    std::unordered_map<std::u16string, std::size_t, TextHash> counts;  // of the children, by name
};

// The open elements, the innermost last.
//
// Threads: one at a time.
class ElementTrail {
public:
    bool IsEmpty() const noexcept { return m_elements.empty(); }
    // The trail must not be empty.
    TrailElement& Top() noexcept { return m_elements.back(); }
    // Returns null if fewer than two elements are open.
    TrailElement* Parent() noexcept { return m_elements.size() < 2 ? nullptr : &m_elements[m_elements.size() - 2]; }

    // Opens an element. The reference is valid until the next call.
    TrailElement& Push(const VString& name);
    void Pop() { m_elements.pop_back(); }

    // Returns the path of the innermost element, or of its parent; see ParseDiagnostic::path. A path of more than 1,000
    // UTF-16 code units begins with "…" in place of its first elements. Linear in the depth, up to this length.
    VString GetPath() const { return GetPath(m_elements.size()); }
    VString GetParentPath() const { return GetPath(m_elements.empty() ? 0 : m_elements.size() - 1); }

private:
    VString GetPath(std::size_t depth) const;

    std::vector<TrailElement> m_elements;
    std::size_t m_count = 0;  // of all elements so far
};
