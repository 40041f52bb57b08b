// The command "vanxml tree".
#pragma once

#include <cstddef>
#include <limits>
#include <string>

#include "vanxml/Command.h"

// Prints the outline of a document.
class TreeCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    std::string m_file;
    std::size_t m_depth = std::numeric_limits<std::size_t>::max();
    bool m_isJson = false;
    std::string m_colors = "auto";
};
