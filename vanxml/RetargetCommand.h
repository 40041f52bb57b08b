// The command "vanxml retarget".
#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/NameRoles.h"
#include "vanxml/RenameTables.h"
#include "vanxml/RewriteCommand.h"
#include "vanxml/SchemaDriver.h"

// Renames the data sources, captions, fields, files and so on to which documents refer.
class RetargetCommand : public RewriteCommand {
public:
    void AddTo(CLI::App& application) override;
    ExitStatus Run() override;

protected:
    // Prints the names that change. Checks the document before and after against its schema.
    RewrittenDocument Rewrite(const VString& name, const std::string& bytes) const override;

private:
    class Validator;

    void FillTables();
    RewrittenDocument Retarget(const VString& name, const std::string& bytes) const;
    // Sets m_hasFoundProtected if the document has the protected data source. Parses the document if that is not known.
    void LookForProtected(InputSource& document, const NameRoles& roles) const;
    // Returns the roles of the schema `name`. They live as long as this command.
    const NameRoles& GetRoles(const VString& name) const;

    // The options: for each of GetRenameKinds(), in their order, a list of "OLD=NEW".
    std::vector<std::vector<std::string>> m_renames;
    std::vector<std::string> m_tableFiles;
    std::string m_protected;

    RenameTables m_tables;
    mutable std::atomic<std::size_t> m_failures{0};  // documents that were not retargeted
    mutable std::atomic<bool> m_hasFoundProtected{false};

    mutable std::mutex m_mutex;
    mutable std::map<VString, std::unique_ptr<NameRoles>> m_roles;                             // guarded by m_mutex
    mutable std::map<VString, std::vector<std::unique_ptr<SchemaDriver>>> m_unusedValidators;  // guarded by m_mutex
};
