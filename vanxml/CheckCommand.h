// The command "vanxml check".
#pragma once

#include <string>

#include "vanxml/Command.h"
#include "vanxml/FileSelection.h"

// Checks documents, optionally against schemas, and prints their errors.
class CheckCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    FileSelection m_selection;
    std::string m_schema = "none";
    unsigned m_jobs = 0;
};
