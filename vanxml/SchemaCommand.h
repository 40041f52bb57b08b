// The command "vanxml schema".
#pragma once

#include <string>

#include "vanxml/Command.h"

// Lists the schemas of the library, or prints one of them.
class SchemaCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    const CLI::App* m_list = nullptr;
    std::string m_name;
};
