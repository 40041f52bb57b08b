// The command "vanxml check".
#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>

#include "vanxml/Command.h"
#include "vanxml/FileSelection.h"

// Checks documents, optionally against schemas, and reports their errors and warnings.
class CheckCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    FileSelection m_selection;
    std::string m_schema = "auto";
    std::string m_format = "text";
    std::string m_colors = "auto";
    std::optional<std::string> m_output;
    std::size_t m_mostMessages = std::numeric_limits<std::size_t>::max();
    bool m_isQuiet = false;
    bool m_isStrict = false;
    unsigned m_jobs = 0;
};
