// The command "vanxml edit".
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"
#include "vanxml/RewriteCommand.h"

namespace CLI {
class Option;
}

// Changes the elements that paths select, and nothing else.
class EditCommand : public RewriteCommand {
public:
    void AddTo(CLI::App& application) override;
    ExitStatus Run() override;

protected:
    RewrittenDocument Rewrite(const VString& name, const std::string& bytes) const override;

private:
    struct Option {
        const CLI::Option* option;
        const char* name;
        std::vector<std::string> values;  // in the order of the command line
        void (*apply)(ElementChange& change, const std::string& value);
    };

    // Reads the paths and actions in the order of the command line.
    void ReadChanges();

    CLI::App* m_command = nullptr;
    std::vector<std::string> m_paths;
    const CLI::Option* m_at = nullptr;
    std::vector<Option> m_actions;
    std::vector<std::pair<VString, ElementChange>> m_changes;
};
