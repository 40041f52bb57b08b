// The command "vanxml format".
#pragma once

#include <string>

#include "vanxml/Command.h"

class DOM;
class VString;

// Parses a document and writes it as the library renders it.
class FormatCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    VString Render(const DOM& document) const;

    const CLI::App* m_command = nullptr;
    std::string m_file;
    std::string m_output = "-";  // standard output
    bool m_inPlace = false;
    bool m_noHeader = false;
    bool m_strict = false;
};
