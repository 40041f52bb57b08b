// Which schema a document is checked against.
#pragma once

#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"

// A schema to load: none, one of the library's resources, or a file.
struct SchemaReference {
    enum class Kind { None, Resource, File };

    Kind kind = Kind::None;
    VString name;

    friend bool operator<(const SchemaReference& a, const SchemaReference& b)
    {
        return a.kind != b.kind ? a.kind < b.kind : a.name < b.name;
    }
};

// The result of selecting a schema for a document: a schema, or the reason why there is none.
struct SchemaSelection {
    SchemaReference schema;
    VString problem;  // empty when a schema was found
};

// The schema for the document's type, which its extension (".kxa" to ".kxf") or else its
// first element says, and the version that it declares. The document is left at its start.
// Linear in the document up to the end of its first tag.
SchemaSelection SelectSchema(InputSource& document);

// False when `name` does not exist or is a folder. True when the system does not tell, because
// a permission is missing: reading the file then reports the reason.
bool MayBeFile(const VString& name);

// The schema that a user names: a resource, or else a file. Throws ToolError when it is
// neither.
SchemaReference FindSchema(const VString& nameOrFile);

// The names of the schemas among the resources, sorted.
std::vector<VString> ListSchemaResources();
