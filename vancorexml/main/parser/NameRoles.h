// The roles of the names in a document, according to its schema.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// The kind of name that the value of an attribute or the text of an element holds.
enum class NameRole : std::uint8_t {
    None,
    DataSource,
    DataConnection,
    MapSource,
    Caption,
    FieldName,
    FilePath,
    Formula,  // contains any number of field names
};

// A role, and whether a validating parser collapses the white space of the value.
struct NameUse {
    NameRole role = NameRole::None;
    bool isCollapsed = false;
};

// Reads from a schema which attributes and texts of a document hold names. The schema marks its simple types with
// annotations; derived types inherit the mark:
//
//     <xs:simpleType name="data-source-name">
//       <xs:annotation>
//         <xs:appinfo source="http://vancorexml.invalid/xml/name-role">data source</xs:appinfo>
//
// The text of the mark is a role, or "ROLE if ATTRIBUTE is VALUE": then the value has the role only if that attribute
// of the same element has that value. A type may have several such marks.
//
// Reads one schema document, and only the parts of XML Schema that the schemas of the library use. Attributes of other
// namespaces have no role.
//
// Ownership: owns all declarations. References to them die with this object.
//
// Threads: any number of readers.
//
// Cost: the lookups are logarithmic in the number of declarations of a type and linear in its marks.
class VANCOREXML_API NameRoles {
public:
    // The declared attributes, text and children of all elements of one type.
    struct ElementType;

    // Reads the schema. Throws VantoraException (VantoraException_UnreadableNameRoles) if it is not well-formed, or if
    // it declares elements or types in a way that this class does not read. Linear.
    explicit NameRoles(::InputSource& schema);
    ~NameRoles();
    NameRoles(const NameRoles&) = delete;
    NameRoles& operator=(const NameRoles&) = delete;

    // Returns the type of the document element named `name`, or null if the schema declares none.
    const ElementType* FindDocumentElement(const VString& name) const;
    // Returns the type of the child elements named `name`, or null if the schema declares none.
    static const ElementType* FindChild(const ElementType& type, const VString& name);
    // Returns the use of the attribute `name` of an element with these attributes.
    static NameUse GetAttributeUse(const ElementType& type, const VString& name, const AttributeMap& attributes);
    // Returns the use of the text of an element with these attributes.
    static NameUse GetTextUse(const ElementType& type, const AttributeMap& attributes);

private:
    class Reader;

    std::vector<std::unique_ptr<ElementType>> m_types;
    std::map<VString, const ElementType*> m_documentElements;
};
