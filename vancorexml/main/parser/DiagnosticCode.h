// The kinds of faults in a document.
#pragma once

#include <cstdint>
#include <vector>

#include "vancorexml/main/parser/XMLExport.h"

// Programs can rely on the codes and their names: neither changes in later versions. Later versions may add codes.
enum class DiagnosticCode : std::uint8_t {
    Other,  // any other fault

    // The document as a whole.
    EmptyDocument,         // no element
    NotXml,                // another kind of file, such as JSON
    SecondRoot,            // an element behind the document element
    TextOutsideRoot,       // text in front of or behind the document element
    MisplacedDeclaration,  // an XML declaration that is not at the start of the document
    BadDeclaration,        // an XML declaration with a fault
    BadDocumentType,       // a document type declaration with a fault

    // Bytes and characters.
    BadBytes,               // bytes that are no characters in the encoding of the document
    UnknownEncoding,        // an encoding that the parser does not know
    WrongEncoding,          // the document declares another encoding than its own
    InvalidCharacter,       // a character that XML does not allow
    BadCharacterReference,  // a reference such as "&#0;" or "&#xZZ;"

    // Tags and attributes.
    UnclosedElement,     // an element without an end tag
    MismatchedEndTag,    // an end tag of another element than the innermost open one
    UnexpectedEndTag,    // an end tag where no element is open
    MalformedTag,        // a tag with any other fault
    MissingValue,        // an attribute without a value
    UnquotedValue,       // a value without quotes
    UnclosedValue,       // a value without its closing quote
    DuplicateAttribute,  // two attributes with the same name in one tag

    // Text, references and sections.
    BareLessThan,              // a "<" that begins no tag
    BareAmpersand,             // an "&" that begins no reference
    UnclosedReference,         // a reference without its ";"
    UnknownEntity,             // a reference to an entity that is not declared
    RecursiveEntity,           // an entity that contains itself
    ExternalEntity,            // an external entity, which the library refuses
    ExpansionLimit,            // entities or default attributes that grow too large
    BadComment,                // a comment with "--" inside
    UnclosedSection,           // a comment, CDATA section or processing instruction without its end
    SectionEndInText,          // "]]>" outside of a CDATA section
    BadProcessingInstruction,  // a processing instruction with a bad name

    // Namespaces.
    UndeclaredPrefix,  // a prefix without a declaration
    BadNamespace,      // a declaration that the rules of namespaces forbid
    WrongNamespace,    // a document element in another namespace than that of the schema

    // Elements and attributes against a schema.
    UndeclaredElement,    // an element that the schema does not declare
    UnexpectedElement,    // an element that is not allowed at its place
    MissingChild,         // an element that must have more children
    UnexpectedText,       // text where only elements are allowed
    UndeclaredAttribute,  // an attribute that the schema does not declare for the element
    MissingAttribute,     // a required attribute that is missing
    BadValue,             // a value of an attribute or element that has not its type
    FixedValue,           // another value than the fixed one
    BadType,              // an xsi:type or xsi:nil that is not allowed
    DuplicateKey,         // a key or unique value that stands twice
    MissingKey,           // an element without the value that is its key
    UnknownReference,     // a reference to a key or id that does not exist

    // Schemas.
    BadSchema,      // a schema with a fault
    MissingSchema,  // a schema that was not found, or none for the type and version of the document

    // The machine.
    OutOfMemory,  // the parse ended because memory ran out
};

// Returns the name of a code: lower-case words with hyphens, such as "unclosed-element". The text is static.
VANCOREXML_API const char* GetDiagnosticName(DiagnosticCode code) noexcept;

// Returns all codes, in the order of their declaration.
VANCOREXML_API std::vector<DiagnosticCode> GetDiagnosticCodes();
