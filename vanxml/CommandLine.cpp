#include "vanxml/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/Encoding.h"
#include "vanxml/CheckCommand.h"
#include "vanxml/DiffCommand.h"
#include "vanxml/EditCommand.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/FormatCommand.h"
#include "vanxml/HelpCommand.h"
#include "vanxml/QueryCommand.h"
#include "vanxml/RetargetCommand.h"
#include "vanxml/SchemaCommand.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/StatsCommand.h"
#include "vanxml/ToolError.h"
#include "vanxml/TraceFile.h"
#include "vanxml/TreeCommand.h"
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
    commands.push_back(std::make_unique<TreeCommand>());
    commands.push_back(std::make_unique<StatsCommand>());
    commands.push_back(std::make_unique<DiffCommand>());
    commands.push_back(std::make_unique<VersionCommand>());
    commands.push_back(std::make_unique<SchemaCommand>());
    commands.push_back(std::make_unique<HelpCommand>());
    return commands;
}

// VString replaces bytes that are not UTF-8, so the name of a file could become that of another file.
void RequireUtf8(const std::vector<std::string>& arguments)
{
    for (const std::string& argument : arguments) {
        const bool isUtf8 = FindInvalidUtf8(argument.data(), argument.size()) == argument.size();
        if (!isUtf8)
            throw UsageError("the argument '" + argument + "' is not UTF-8");
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

// Returns the innermost command that the arguments name, or the application.
const CLI::App& ChosenCommand(const CLI::App& application)
{
    const CLI::App* command = &application;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().front();
    return *command;
}

// Prints a mistake in the command line and how to get help.
ExitStatus Fail(const CLI::App& application, const std::string& message)
{
    const std::string name = FullName(ChosenCommand(application));
    const bool isHelp = name == " help";  // its mistakes are names of commands
    StandardStreams::WriteError(
        FormatErrorLine(message) + "Run 'vanxml help" + (isHelp ? "" : name) + "' for more information.\n");
    return ExitStatus::Failed;
}

// Returns a plain sentence for a message about the number of values of an option:
// - "--at needs a value: PATH" for "--at: 1 required PATH missing"
// - "--schema is given 2 times; give it once" for "--schema: At Most 1 required but received 2"
// Returns every other message unchanged.
std::string DescribeNumberOfValues(const std::string& message)
{
    constexpr std::string_view missing = ": 1 required ";
    constexpr std::string_view missingEnd = " missing";
    constexpr std::string_view repeated = ": At Most 1 required but received ";
    if (const std::size_t found = message.find(repeated); found != std::string::npos)
        return message.substr(0, found) + " is given " + message.substr(found + repeated.size()) +
            " times; give it once";
    const std::size_t found = message.find(missing);
    if (found == std::string::npos || !message.ends_with(missingEnd))
        return message;
    const std::size_t start = found + missing.size();
    return message.substr(0, found) +
        " needs a value: " + message.substr(start, message.size() - missingEnd.size() - start);
}

// Returns a sentence about the mistake. The texts of CLI11 do not say what to write instead.
std::string DescribeMistake(const CLI::App& application, const CLI::ParseError& error)
{
    const CLI::App& command = ChosenCommand(application);
    const std::vector<std::string> rest = application.remaining(true);  // the arguments that have no meaning
    const auto isOption = [](const std::string& argument) { return argument.size() > 1 && argument[0] == '-'; };
    const auto option = std::find_if(rest.begin(), rest.end(), isOption);
    if (option != rest.end())
        return DescribeUnknownOption(command, *option);
    const bool needsCommand = command.get_require_subcommand_min() > 0;
    if (needsCommand && !rest.empty())
        return DescribeUnknownCommand(command, WithoutMarks(rest.front()));
    if (!rest.empty())
        return "'" + command.get_name() + "' does not expect the argument '" + WithoutMarks(rest.front()) + "'";
    if (needsCommand)
        return DescribeMissingCommand(command);
    return DescribeNumberOfValues(WithoutMarks(error.what()));
}

// Requests for help or the version succeed. Every other exception of CLI11 is a mistake in the command
// line.
ExitStatus EndOfParse(const CLI::App& application, const CLI::ParseError& error, bool hasArguments)
{
    if (error.get_exit_code() == 0) {
        std::ostringstream output;
        application.exit(error, output, output);
        StandardStreams::Write(output.str());
        return ExitStatus::Good;
    }
    if (!hasArguments) {
        StandardStreams::WriteError(FormatHelp(application));
        return ExitStatus::Failed;
    }
    return Fail(application, DescribeMistake(application, error));
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
    const Commands commands = MakeCommands();
    CLI::App application("Formats, edits, checks and queries XML documents", "vanxml");
    application.require_subcommand(1);
    application.allow_windows_style_options(false);  // "/a" is a path
    application.set_version_flag("--version", "vanxml " VANXML_VERSION);
    for (const std::unique_ptr<Command>& command : commands)
        command->AddTo(application);
    std::optional<std::string> traceFile;
    AddTraceOption(application, traceFile);
    UnmarkOperands(application);
    AddExamples(application);

    std::vector<std::string> marked = MarkOperands(arguments);
    std::reverse(marked.begin(), marked.end());  // CLI11 reads from the end
    try {
        RequireUtf8(arguments);
        application.parse(std::move(marked));
        for (const std::unique_ptr<Command>& command : commands) {
            if (command->IsChosen())
                return RunTraced(
                    traceFile, FullName(ChosenCommand(application)).substr(1), [&] { return command->Run(); });
        }
        return ExitStatus::Failed;
    } catch (const CLI::ParseError& error) {
        return EndOfParse(application, error, !arguments.empty());
    } catch (const UsageError& error) {
        return Fail(application, error.what());
    }
}
