// The command "vanxml query".
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vanxml/Command.h"
#include "vanxml/FileSelection.h"
#include "vanxml/QueryPath.h"

namespace CLI {
class Option;
}

class DOMElement;
class SourceDocument;

// Prints the elements of documents that a path selects.
class QueryCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    ExitStatus Run() override;

private:
    using Visitor = std::function<void(const DOMElement&)>;

    // Removes the path from the arguments and returns it.
    std::string ReleasePath();
    void RequireUsable() const;
    // Prints the matches in one document. Returns Faulty if there is none.
    ExitStatus Search(const VString& file);
    // These return the number of matches, or nothing if the document has errors, which they print.
    std::optional<std::size_t> SearchFile(const VString& file);
    std::optional<std::size_t> SearchTree(SourceDocument& source);
    std::optional<std::size_t> SearchStart(const VString& file);
    void ForEachMatch(const DOMElement& root, const Visitor& visit) const;
    void ForEachPathMatch(const DOMElement& root, const Visitor& visit) const;
    bool HasWantedAttribute(const DOMElement& element) const;
    // Prints the value, the text or the XML of an element.
    void PrintContent(const DOMElement& element) const;
    void PrintLines(const std::string& text) const;

    // Owned by the application that the command was added to.
    const CLI::App* m_command = nullptr;
    const CLI::Option* m_atOption = nullptr;
    const CLI::Option* m_attributeOption = nullptr;
    const CLI::Option* m_withinOption = nullptr;
    const CLI::Option* m_underneathOption = nullptr;

    FileSelection m_selection;
    std::string m_unused;  // the parser of the command line gives PATH to m_selection
    std::string m_at;
    std::string m_attribute;
    std::string m_within;
    std::string m_underneath;
    bool m_count = false;
    bool m_first = false;
    bool m_text = false;
    bool m_xml = false;

    std::optional<QueryPath> m_path;
    VString m_wantedAttribute;  // empty if elements are printed
    std::string m_prefix;       // of each line
};
