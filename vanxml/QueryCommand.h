// The command "vanxml query".
#pragma once

#include <functional>
#include <string>

#include "vanxml/Command.h"

namespace CLI {
class Option;
}
class DOMElement;
class SourceDocument;

// Prints the elements that a path selects.
class QueryCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    using Visitor = std::function<void(const DOMElement&)>;

    void ForEachMatch(const DOMElement& root, const Visitor& visit) const;
    Visitor MakePrinter(SourceDocument& source) const;
    Visitor MakePositionPrinter(SourceDocument& source) const;

    // Owned by the application that the command was added to.
    const CLI::App* m_command = nullptr;
    const CLI::Option* m_attributeOption = nullptr;
    const CLI::Option* m_withinOption = nullptr;
    const CLI::Option* m_underneathOption = nullptr;

    std::string m_file;
    std::string m_path;
    std::string m_attribute;
    std::string m_within;
    std::string m_underneath;
    bool m_count = false;
    bool m_first = false;
    bool m_text = false;
    bool m_xml = false;
};
