// The command "vanxml diff".
#pragma once

#include <string>

#include "vanxml/Command.h"

// Prints the differences between two documents as trees.
class DiffCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    // Returns Good if the documents are equal, and Faulty if not.
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    std::string m_fileA;
    std::string m_fileB;
    bool m_isJson = false;
    std::string m_colors = "auto";
};
