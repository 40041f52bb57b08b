// Explains faults in keys, references and ids.
#pragma once

#include <memory>
#include <vector>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/validators/datatype/DatatypeValidator.hpp>
#include <xercesc/validators/schema/ComplexTypeInfo.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/SourcePosition.h"

// Knows the places in a document that is being read. KeyTracker calls it only for values of keys, references and ids.
class KeyPlaces {
public:
    virtual ~KeyPlaces() = default;

    // Returns the place of the innermost open element: the value of this attribute, or the start tag if `attribute` is
    // null. `attribute` is the qualified name of an attribute of the start tag that is being read.
    virtual SourcePosition GetStart(const XMLCh* attribute) = 0;
    // Returns a diagnostic about this place. It has all that the document knows: severity, source, range, path, number
    // of the element.
    virtual ParseDiagnostic Describe(const XMLCh* attribute) = 0;
};

// An element of a document that is being validated, as Xerces reports it.
struct KeyElement {
    const xercesc::XMLElementDecl& declaration;
    unsigned int uri;  // of the namespace
    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes;
    XMLSize_t attributeCount;
    VString name;  // as the document writes it
    // The types of the element; null if there are none.
    const xercesc::ComplexTypeInfo* complexType;
    const xercesc::DatatypeValidator* simpleType;
};

// Finds the faults that Xerces reports without their value and without the other place: values that stand twice in a
// key or unique constraint, missing parts of a key, references to a key that does not exist, and the same for ids.
//
// Pass it each start tag, text and end tag of a document. Each operation returns the faults that show at this event, as
// diagnostics of the codes DuplicateKey, MissingKey and UnknownReference. Xerces reports them just before the same
// event. Several references with the same unknown value are one fault, at the first of them. Only the first 1,000
// unknown references list the allowed values.
//
// Values are compared after their white space was normalised. Numbers and Boolean values are compared by value, all
// other values as text. In rare cases, this differs from Xerces: use a fault only if Xerces reports one too.
//
// Ownership: refers to `places` and to the schemas, which must outlive it.
//
// Threads: one at a time.
//
// Cost: an element outside of all constraints costs a lookup. Otherwise the cost is linear in the values, and in
// the number of open constraints that search at any depth below their element. The memory grows with the values of the
// open constraints and with all ids.
class KeyTracker {
public:
    using Faults = std::vector<ParseDiagnostic>;

    explicit KeyTracker(KeyPlaces& places);
    ~KeyTracker();

    Faults StartElement(const KeyElement& element);
    void AddText(const XMLCh* text, XMLSize_t length);
    // Call it before KeyPlaces forgets the element.
    Faults EndElement();
    // Returns the references to ids that do not exist. Does not call KeyPlaces.
    Faults EndDocument();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
