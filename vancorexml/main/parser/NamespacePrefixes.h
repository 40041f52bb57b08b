// The namespace prefixes of a document that is read without namespaces.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/util/RefVectorOf.hpp>

#include "vancoreplatform/VString.h"

// A violation of the rules of namespaces in a start tag.
struct NamespaceFault {
    enum class Kind {
        UndeclaredPrefix,
        EmptyNamespace,      // a prefix is declared with an empty namespace
        ReservedPrefix,      // "xml" or "xmlns" is declared for another namespace
        TwoColons,           // a name has more than one colon
        DuplicateAttribute,  // two attributes have the same name in the same namespace
    };

    Kind kind = Kind::UndeclaredPrefix;
    std::u16string_view name;       // of the element or attribute, in the start tag
    std::u16string_view prefix;     // a part of the name
    std::u16string_view otherName;  // the attribute with the same name; otherwise empty
};

// Checks the names of a document, tag by tag. A name that begins with a colon has no prefix.
//
// Threads: one at a time.
//
// Cost: for each name with a colon, logarithmic in the declared prefixes.
class NamespacePrefixes {
public:
    // Begins an element. The faults refer to the arguments.
    std::vector<NamespaceFault> StartElement(
        const XMLCh* name, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count);
    void EndElement();
    // Returns the prefixes that are declared in the open elements, sorted.
    std::vector<VString> GetPrefixes() const;

private:
    // Declares a prefix if the attribute does so. Returns the prefix.
    std::u16string_view Declare(const xercesc::XMLAttr& attribute);
    // Returns the namespace of a declared prefix, or null.
    const std::u16string* Find(std::u16string_view prefix) const;

    std::vector<std::size_t> m_elements;     // for each open element, the size of m_declared before it
    std::vector<std::u16string> m_declared;  // prefixes, by open elements, the innermost last
    std::map<std::u16string, std::vector<std::u16string>, std::less<>> m_namespaces;  // by prefix, the innermost last
};
