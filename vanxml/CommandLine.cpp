#include "vanxml/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "vancoreplatform/Encoding.h"
#include "vanxml/CheckCommand.h"
#include "vanxml/EditCommand.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/FormatCommand.h"
#include "vanxml/QueryCommand.h"
#include "vanxml/RetargetCommand.h"
#include "vanxml/SchemaCommand.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"
#include "vanxml/VersionCommand.h"

namespace {

using Commands = std::vector<std::unique_ptr<Command>>;

Commands MakeCommands()
{
    Commands commands;
    commands.push_back(std::make_unique<FormatCommand>());
    commands.push_back(std::make_unique<EditCommand>());
    commands.push_back(std::make_unique<CheckCommand>());
    commands.push_back(std::make_unique<RetargetCommand>());
    commands.push_back(std::make_unique<QueryCommand>());
    commands.push_back(std::make_unique<VersionCommand>());
    commands.push_back(std::make_unique<SchemaCommand>());
    return commands;
}

ExitStatus Fail(const std::string& message)
{
    StandardStreams::WriteError(FormatErrorLine(message));
    return ExitStatus::Failed;
}

// VString replaces bytes that are not UTF-8, so the name of a file could become that of another file.
void RequireUtf8(const std::vector<std::string>& arguments)
{
    for (const std::string& argument : arguments) {
        const bool isUtf8 = FindInvalidUtf8(argument.data(), argument.size()) == argument.size();
        if (!isUtf8)
            throw ToolError("The argument \"" + argument + "\" is not UTF-8");
    }
}

// This byte is prepended to arguments that CLI11 must not interpret: operands behind "--", because CLI11
// ends a command there if it needs no more operands, and names such as "[a,b]", which CLI11 would split.
// It is also prepended to the empty value of "--text=", because CLI11 would take the next argument as the value. No
// argument contains this byte, because all arguments are UTF-8.
constexpr char operandMark = '\xFF';

std::string WithoutMarks(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), operandMark), text.end());
    return text;
}

// Requests for help or the version succeed. Every other exception of CLI11 is a mistake in the command
// line.
ExitStatus EndOfParse(const CLI::App& application, const CLI::ParseError& error)
{
    if (error.get_exit_code() == 0) {
        std::ostringstream output;
        application.exit(error, output, output);
        StandardStreams::Write(output.str());
        return ExitStatus::Good;
    }
    // CLI11 treats a misspelt command as an operand: it is in remaining(), and no subcommand was parsed.
    const std::vector<std::string> rest = application.remaining();
    const bool isUnknown = application.get_subcommands().empty() && !rest.empty();
    Fail(WithoutMarks(isUnknown ? "There is no command \"" + rest.front() + "\"" : error.what()));
    StandardStreams::WriteError("Run with --help for more information.\n");
    return ExitStatus::Failed;
}

// Marks the value behind the equals sign of an option if CLI11 must not interpret it.
std::string MarkValue(std::string option)
{
    const std::size_t value = option.find('=') + 1;
    const bool hasValue = value > 0;
    if (hasValue && (value == option.size() || option[value] == '['))
        option.insert(value, 1, operandMark);
    return option;
}

std::vector<std::string> MarkOperands(const std::vector<std::string>& arguments)
{
    std::vector<std::string> marked;
    bool areOperands = false;
    for (const std::string& argument : arguments) {
        if (areOperands || argument.starts_with("["))
            marked.push_back(operandMark + argument);
        else if (argument == "--")
            areOperands = true;
        else if (argument.starts_with("--"))
            marked.push_back(MarkValue(argument));
        else
            marked.push_back(argument);
    }
    return marked;
}

void UnmarkOperands(CLI::App& command)
{
    const auto takesValues = [](const CLI::Option* option) { return option->get_items_expected_max() > 0; };
    const auto unmark = [](const std::string& value) {
        return value.starts_with(operandMark) ? value.substr(1) : value;
    };
    for (CLI::Option* option : command.get_options(takesValues))
        option->transform(unmark);
    for (CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; }))
        UnmarkOperands(*each);
}

}  // namespace

ExitStatus RunCommandLine(const std::vector<std::string>& arguments)
{
    RequireUtf8(arguments);
    const Commands commands = MakeCommands();
    CLI::App application("Formats, edits, checks and queries XML documents", "vanxml");
    application.require_subcommand(1);
    application.allow_windows_style_options(false);  // "/a" is a path
    application.set_version_flag("--version", "vanxml " VANXML_VERSION);
    for (const std::unique_ptr<Command>& command : commands)
        command->AddTo(application);
    UnmarkOperands(application);

    std::vector<std::string> marked = MarkOperands(arguments);
    std::reverse(marked.begin(), marked.end());  // CLI11 reads from the end
    try {
        application.parse(std::move(marked));
    } catch (const CLI::ParseError& error) {
        return EndOfParse(application, error);
    }
    for (const std::unique_ptr<Command>& command : commands) {
        if (command->IsChosen())
            return command->Run();
    }
    return ExitStatus::Failed;
}
