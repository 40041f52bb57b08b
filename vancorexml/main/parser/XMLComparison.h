// The comparison of two documents.
#pragma once

#include <stdexcept>
#include <string>

#include "vancorexml/main/parser/XMLExport.h"

// Thrown by an operation that rewrites a document if the result does not have the content that it must have. This is a
// fault of the library, and the operation has not written anything.
class VANCOREXML_API XMLVerificationError : public std::logic_error {
public:
    explicit XMLVerificationError(const char* message);
    ~XMLVerificationError() override;
};

// Compares documents as XML, through Xerces.
namespace XMLComparison {

// True if both texts are well-formed documents with the same content: the same elements, attributes, texts, comments,
// processing instructions, references to entities, document type, and version and "standalone" of the XML declaration.
// A missing declaration is equal to one with version 1.0 and without "standalone".
//
// An attribute must have the same value after its entities are replaced. In addition, both documents must refer to each
// entity equally often.
//
// The comparison ignores the order of attributes, the form of tags and of references to characters, and whether a text
// is in a CDATA section. It also ignores ignorable white space: texts of only white space that stand directly in an
// element that has child elements and otherwise no text. Such white space counts, however, inside an element whose
// xml:space is "preserve", inside a CDATA section, and anywhere inside an element that has both child elements and
// other text.
//
// The texts are UTF-8 without byte order marks; the encodings that they declare are ignored. If `a` has a
// document type, the caller must have parsed `a` without errors: this function does not limit the expansion of
// entities. Thread-safe. Linear in the texts and in the expansion of their entities. The call stack does not grow with
// the depth of the documents.
VANCOREXML_API bool AreEqual(const std::string& a, const std::string& b);

// Like AreEqual, but ignores the XML declarations.
VANCOREXML_API bool AreContentsEqual(const std::string& a, const std::string& b);

}  // namespace XMLComparison
