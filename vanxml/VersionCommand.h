// The command "vanxml version".
#pragma once

#include <string>

#include "vanxml/Command.h"

// Prints the version that the document element declares, without parsing the document.
class VersionCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    std::string m_file;
    std::string m_attribute = "version";
};
