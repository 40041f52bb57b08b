// vanxml schema
#pragma once

#include <string>

#include "vanxml/Command.h"

// Names the schemas that come with the library, and prints one.
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
