// Selects the schema that a document is checked against.
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

// Selects the schema for the type and version of the document. The extension (".kxa" to ".kxf") determines the
// type, or else the first element does. The first element declares the version. Resets the document to its
// start. Linear in the document up to the end of its first tag.
SchemaSelection SelectSchema(InputSource& document);

// Returns false if `name` does not exist or is a folder. Returns true if the system cannot say because a
// permission is missing: reading the file then reports the reason.
bool MayBeFile(const VString& name);

// Returns the resource or else the file of this name. Throws ToolError if there is neither.
SchemaReference FindSchema(const VString& nameOrFile);

// Returns the names of the schemas among the resources, sorted.
std::vector<VString> ListSchemaResources();
