// Selects the schema that a document is checked against.
#pragma once

#include <string>
#include <tuple>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/SourcePosition.h"

class SourceDocument;

// A schema to load: none, one of the library's resources, or files.
struct SchemaReference {
    enum class Kind { None, Resource, File };

    Kind kind = Kind::None;
    VString name;
    std::vector<VString> moreFiles;  // schemas of other namespaces that a document names beside `name`

    friend bool operator<(const SchemaReference& a, const SchemaReference& b)
    {
        return std::tie(a.kind, a.name, a.moreFiles) < std::tie(b.kind, b.name, b.moreFiles);
    }
};

// The result of selecting a schema for a document: a schema, or the reasons why there is none.
struct SchemaSelection {
    SchemaReference schema;
    // Errors of the document with the code MissingSchema. Report them only if the document has no other errors: in a
    // document that is not well-formed, they may be consequences of another mistake.
    std::vector<ParseDiagnostic> problems;
};

// Selects the schema for the type and version of the document. The extension (".kxa" to ".kxf") determines the type. A
// document with another extension has a type only if its first element has the name of the type, an attribute "version"
// and no default namespace, because the names of some types are common words. If the document has no known type, the
// result has neither a schema nor a problem. `documentStart` is the position of the source's first byte in the file.
//
// Resets the document to its start. Exceptions of the document propagate. Linear in the document up to the end of its
// first tag.
SchemaSelection SelectSchema(InputSource& document, SourcePosition documentStart);

// Selects the schema files that the first element names with xsi:schemaLocation and xsi:noNamespaceSchemaLocation. The
// paths are relative to the document. Addresses of a network are never opened: they are problems, and so are missing
// files. If several files have the same namespace, the first one counts. The rest is as for SelectSchema.
SchemaSelection SelectHintedSchemas(InputSource& document, SourcePosition documentStart);

// The value of the option --schema.
class SchemaOption {
public:
    // "auto", "hints", "none", the name of a schema of the library, or the name of a file. Throws ToolError if there is
    // no such schema.
    explicit SchemaOption(const std::string& text);

    // Selects the schema for one document. Exceptions of the document propagate.
    SchemaSelection Select(SourceDocument& document) const;

private:
    enum class Rule { Auto, Hints, Fixed };

    Rule m_rule = Rule::Fixed;
    SchemaReference m_fixed;
};

// A schema of the library.
struct SchemaName {
    VString name;      // such as "kxa-10.2"
    VString resource;  // such as "VQRC_FILEFORMAT_KXA_XSD_10_2"
};

// Returns the schemas of the library: first those of the types, by type and version, then all others by name.
std::vector<SchemaName> ListSchemas();

// Returns the resource of the schema with this name or resource name, or an empty text if there is none.
VString FindSchemaResource(const VString& name);

// Returns a sentence that says that there is no such schema, with a suggestion if a name is similar. If
// `isOption`, the name is a value of --schema, which may also be a file.
std::string DescribeUnknownSchema(const VString& name, bool isOption);

// Returns false if `name` does not exist or is a folder. Returns true if the system cannot say because a
// permission is missing: reading the file then reports the reason.
bool MayBeFile(const VString& name);

// Resolves the location of a schema, a path or an address, against the file that names it. Returns an empty text if
// there is no such file.
VString FindSchemaBeside(const VString& file, const VString& location);
