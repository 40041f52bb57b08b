// Names of fields.
#pragma once

#include <unordered_map>

#include "vancoredata/Export.h"
#include "vancoredata/QualifiedName.h"
#include "vancoreplatform/VString.h"
#include "vansys/VHash32.h"

// Names already parsed, by their written form.
using QualifiedNameCache = std::unordered_map<VString, QualifiedName, VStringHash>;

// The name of a field: its data source is the root. A value.
class VANCOREDATA_API FieldName : public QualifiedName {
public:
    FieldName() = default;
    FieldName(const VString& root, const VString& local) : QualifiedName(root, local) {}
    explicit FieldName(const QualifiedName& name) : QualifiedName(name) {}

    // Reads a written name with its root, where it has one. With a cache, a text is
    // parsed once and found there afterwards.
    static FieldName ParseGlobal(const VString& text);
    static FieldName ParseGlobal(const VString& text, QualifiedNameCache& cache);
    // Reads a written name as one without a root: "[root].[local]" gives the local part.
    static FieldName ParseLocal(const VString& text);
    static FieldName ParseLocal(const VString& text, QualifiedNameCache& cache);
};

// `name` with the data source as its root.
VANCOREDATA_API FieldName MakeGlobalName(const VString& dataSourceName, const FieldName& name);
// `name` without its root.
VANCOREDATA_API FieldName MakeLocalName(const FieldName& name);
