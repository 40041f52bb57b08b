// vanxml: the library's work from the command line.
#include <CLI/CLI.hpp>

#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include "vanxml/CheckCommand.h"
#include "vanxml/FormatCommand.h"
#include "vanxml/QueryCommand.h"
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
    commands.push_back(std::make_unique<CheckCommand>());
    commands.push_back(std::make_unique<QueryCommand>());
    commands.push_back(std::make_unique<VersionCommand>());
    commands.push_back(std::make_unique<SchemaCommand>());
    return commands;
}

// Help and the version are asked for; everything else that ends the reading of the command
// line is a mistake in it.
ExitStatus EndOfParse(const CLI::App& application, const CLI::ParseError& error)
{
    std::ostringstream output;
    std::ostringstream errors;
    const int code = application.exit(error, output, errors);
    StandardStreams::Write(output.str());
    StandardStreams::WriteError(errors.str());
    return code == 0 ? ExitStatus::Good : ExitStatus::Failed;
}

ExitStatus Run(const std::vector<std::string>& arguments)
{
    const Commands commands = MakeCommands();
    CLI::App application("Reads, checks, queries and writes XML documents", "vanxml");
    application.require_subcommand(1);
    application.set_version_flag("--version", "vanxml " VANXML_VERSION);
    for (const std::unique_ptr<Command>& command : commands) command->AddTo(application);

    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    try {
        application.parse(static_cast<int>(pointers.size()), pointers.data());
    } catch (const CLI::ParseError& error) {
        return EndOfParse(application, error);
    }
    for (const std::unique_ptr<Command>& command : commands) {
        if (command->IsChosen()) return command->Run();
    }
    return ExitStatus::Failed;
}

ExitStatus Fail(const std::string& message)
{
    StandardStreams::WriteError("vanxml: " + message + "\n");
    return ExitStatus::Failed;
}

}  // namespace

int main(int argc, char** argv)
{
    ExitStatus status = ExitStatus::Failed;
    try {
        StandardStreams::Prepare();
        status = Run(StandardStreams::Arguments(argc, argv));
        StandardStreams::FlushOutput();
    } catch (const std::length_error&) {
        status = Fail("The text is too large");
    } catch (const std::bad_alloc&) {
        status = Fail("The text is too large for the memory there is");
    } catch (const std::exception& exception) {
        status = Fail(exception.what());
    }
    return static_cast<int>(status);
}
