// The renames of the command "vanxml retarget".
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/NameRoles.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"

// A kind of names that can be renamed.
struct RenameKind {
    NameRole role;
    const char* option;    // its name in options, without "--", and in tables
    const char* name;      // its name in messages
    const char* argument;  // the form of the argument of the option
};
const std::vector<RenameKind>& GetRenameKinds();
// Returns the kind of names with this role. Precondition, not checked: there is one.
const RenameKind& GetRenameKind(NameRole role);

// Returns "KIND 'OLD' -> 'NEW'".
std::string DescribeRename(NameRole role, const VString& oldName, const VString& newName);

// Collects the renames of the options and tables, and passes them to the tables of a DOM.
//
// Threads: one while renames are added; then any number.
class RenameTables {
public:
    // Creates empty tables. No data source is protected.
    RenameTables();

    // Add and AddTable throw ToolError if a rename is wrong, or if a name has two different new names.
    // Adds "OLD=NEW". The first "=" separates the names; in field names, the first one outside of brackets.
    void Add(const RenameKind& kind, const std::string& text);
    // Adds the records "kind,old,new" of a file. The first record may be the header "kind,old,new". Throws
    // VIO::Exception if the file cannot be read.
    void AddTable(const std::string& file);
    void Protect(const std::string& dataSource);

    bool IsEmpty() const noexcept { return m_renames.empty(); }
    const DOM& GetTables() const noexcept { return m_tables; }

    // Marks the renames that led to the new name.
    void MarkUsed(const RenamedName& name) const;
    // Returns a clause for each rename that is not marked, in the order in which they were added. It says why the
    // rename changed nothing.
    std::vector<std::string> DescribeUnused() const;

private:
    struct Rename {
        NameRole role;
        VString oldName;
        VString newName;
        mutable bool isUsed = false;  // guarded by m_mutex
    };

    // Throws ToolError, with `place` at the start of its message.
    void AddRename(
        const RenameKind& kind, const std::string& oldText, const std::string& newText, const std::string& place);
    void AddToTables(const Rename& rename);
    // Returns null if there is no such rename. Logarithmic.
    const Rename* Find(NameRole role, const VString& oldName) const;
    void Mark(NameRole role, const VString& oldName) const;

    DOM m_tables;
    PathRenames m_paths;  // all path renames; m_tables has a copy
    std::vector<Rename> m_renames;
    // The indices of the renames.
    std::map<std::pair<NameRole, VString>, std::size_t> m_numbers;
    std::map<VPath, std::size_t> m_pathNumbers;
    mutable std::mutex m_mutex;
};
