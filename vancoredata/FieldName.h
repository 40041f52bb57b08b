// Names of fields.
#pragma once

#include <unordered_map>

#include "vancoredata/Export.h"
#include "vancoredata/QualifiedName.h"
#include "vancoreplatform/VString.h"
#include "vansys/VHash32.h"

// A cache of parsed names by their written form.
using QualifiedNameCache = std::unordered_map<VString, QualifiedName, VStringHash>;

// The name of a field. Its root is the data source. A value.
class VANCOREDATA_API FieldName : public QualifiedName {
public:
    FieldName() = default;
    FieldName(const VString& root, const VString& local) : QualifiedName(root, local) {}
    explicit FieldName(const QualifiedName& name) : QualifiedName(name) {}

    // Parses a written name and keeps its root, if it has one. With a cache, each text is parsed only once.
    static FieldName ParseGlobal(const VString& text);
    static FieldName ParseGlobal(const VString& text, QualifiedNameCache& cache);
    // Parses a written name and drops its root: "[root].[local]" gives the local part.
    static FieldName ParseLocal(const VString& text);
    static FieldName ParseLocal(const VString& text, QualifiedNameCache& cache);
};

// Returns `name` with the data source as its root.
VANCOREDATA_API FieldName MakeGlobalName(const VString& dataSourceName, const FieldName& name);
// Returns `name` without its root.
VANCOREDATA_API FieldName MakeLocalName(const FieldName& name);
