// Renames the names in a document and keeps all other bytes.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/NameRetargeter.h"
#include "vancorexml/main/parser/NameRoles.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"

class DOM;

// A name with its place in the text of the document. Lines and columns count from 1, columns in UTF-16 code units. They
// are 0 if the name is not in the text itself but comes from an entity or a default value.
struct RenamedName {
    NameRole role = NameRole::None;
    VString oldName;
    VString newName;
    std::size_t line = 0;
    std::size_t column = 0;
};

// A name that would become equal to the new name of `other`.
struct ClashingName : RenamedName {
    VString other;
};

// Renames the names in the text of a document by the rename tables of a DOM. Only the bytes of the names change.
// See NameRetargeter for the names that it finds and for the way in which the tables apply to them.
//
// The result is verified before it is returned: it must have the content of the document with the new names.
//
// Ownership: refers to the roles and to the tables, which must outlive this object.
//
// Threads: one at a time. Several objects can share roles and tables.
//
//     XMLSourceRetargeter retargeter(roles, tables);
//     if (const std::optional<EditedText> renamed = retargeter.Retarget(text, "sales.kxa"))
//         Save(renamed->text);
class VANCOREXML_API XMLSourceRetargeter {
public:
    struct Options {
        // Returns false for a character that the encoding of the file lacks. Such a character is written as a
        // reference. Empty if the encoding has all characters.
        std::function<bool(char32_t)> canEncode;
    };

    XMLSourceRetargeter(const NameRoles& roles, const DOM& tables);
    XMLSourceRetargeter(const NameRoles& roles, const DOM& tables, Options options);
    ~XMLSourceRetargeter();

    // Returns the document with the new names. `text` is UTF-8 without a byte order mark; the encoding that it
    // declares is ignored. `id` is the source in diagnostics. Does not validate the text. Returns no value if
    //  - the document has errors: see GetDiagnostics, or
    //  - names would become equal: see GetClashes.
    //
    // Throws VantoraException (VantoraException_NameInEntity) if a new name would replace text that comes from an
    // entity or from a default value of the document type. Throws VantoraException (VantoraException_UnwritableName) if
    // a new name has a character that XML does not allow, or white space that a validating parser would collapse.
    // Throws XMLVerificationError if the result does not have the expected content; this is a fault of the library.
    //
    // Linear in the text and in the expansion of entities, and logarithmic in the number of different names for each
    // name. Uses the memory of two documents and of the result.
    std::optional<EditedText> Retarget(const std::string& text, const VString& id);

    // These describe the last document and are valid until the next call of Retarget.
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }
    // In document order.
    const std::vector<RenamedName>& GetRenamedNames() const noexcept { return m_renamedNames; }
    // In document order. Clashes without a place come last.
    const std::vector<ClashingName>& GetClashes() const noexcept { return m_clashes; }

private:
    EditedText Edit(const std::string& text, const std::vector<NameChange>& changes, std::size_t elementCount);

    const NameRoles& m_roles;
    const DOM& m_tables;
    Options m_options;
    std::vector<ParseDiagnostic> m_diagnostics;
    std::vector<RenamedName> m_renamedNames;
    std::vector<ClashingName> m_clashes;
};
