// The command "vanxml stats".
#pragma once

#include <cstddef>

#include "vanxml/Command.h"
#include "vanxml/FileSelection.h"

// Counts the elements, attributes, texts and names of documents.
class StatsCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    const CLI::App* m_command = nullptr;
    FileSelection m_selection;
    std::size_t m_mostNames = 10;
    bool m_isJson = false;
    unsigned m_jobs = 0;
};
