// The command "vanxml help", and the texts that help with mistakes in the command line.
#pragma once

#include <string>
#include <vector>

#include "vanxml/Command.h"

// Prints the help text of the tool or of a command.
class HelpCommand : public Command {
public:
    void AddTo(CLI::App& application) override;
    bool IsChosen() const override;
    // Throws ToolError if there is no such command.
    ExitStatus Run() override;

private:
    const CLI::App* m_application = nullptr;
    const CLI::App* m_command = nullptr;
    std::vector<std::string> m_names;  // of a command and its subcommand
};

// Adds examples to the help texts of the application and of all its commands. Call it after the commands were added.
void AddExamples(CLI::App& application);

// Returns the help text of an application or command.
std::string FormatHelp(const CLI::App& command);

// Returns the names that lead to a command, each behind a blank, such as " schema list"; empty for the application.
std::string FullName(const CLI::App& command);

// Returns a sentence that says that `parent` has no such command, with a suggestion if a name is similar.
std::string DescribeUnknownCommand(const CLI::App& parent, const std::string& name);

// Returns a sentence that says that the command has no such option, with a suggestion if a name is similar. If the
// command has the option, the sentence says that it stands in the wrong place. `argument` may contain a value behind an
// equals sign.
std::string DescribeUnknownOption(const CLI::App& command, const std::string& argument);

// Returns a sentence that names the commands of which one must follow `parent`.
std::string DescribeMissingCommand(const CLI::App& parent);
