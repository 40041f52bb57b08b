#include "vanxml/HelpCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VString.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace {

struct Examples {
    const char* command;  // empty for the application
    const char* text;
};

const Examples allExamples[] = {
    {"",
        "Examples:\n"
        "  vanxml check a.kxa b.kxa           check documents\n"
        "  vanxml format --in-place a.kxa     indent a document\n"
        "  vanxml query a.kxa //field         find elements\n"
        "  vanxml help query                  print the options of a command\n"},
    {"format",
        "Examples:\n"
        "  vanxml format a.kxa                              print a document with indentation\n"
        "  vanxml format --in-place --recursive docs        indent all documents in a folder\n"
        "  vanxml format --check --recursive docs           list the documents that are not indented\n"
        "  vanxml format --diff a.kxa                       show what would change\n"},
    {"edit",
        "Examples:\n"
        "  vanxml edit a.xml --at //title --set lang=en             set an attribute of all titles\n"
        "  vanxml edit a.xml --at a/b --text new --in-place         replace a text in the file\n"
        "  vanxml edit a.xml --at a/b --append '<c/>' --diff        show what an insertion would change\n"
        "  vanxml edit a.xml --at //b --delete --at a --unset c     change several elements\n"},
    {"check",
        "Examples:\n"
        "  vanxml check a.kxa                               check a document against the schema of its version\n"
        "  vanxml check --recursive docs                    check all documents in a folder\n"
        "  vanxml check --schema kxa-10.2 a.kxa             check against the schema of another version\n"
        "  vanxml check --schema book.xsd book.xml          check against a schema file\n"
        "  vanxml check --schema hints book.xml             check against the schema that the document names\n"
        "  vanxml check --format sarif --recursive docs     write a log for code hosts\n"
        "  vanxml check --format html -o report.html *.kxa  write a page for a browser\n"},
    {"retarget",
        "Examples:\n"
        "  vanxml retarget a.kxa --data-source orders=sales --in-place     rename a data source in the file\n"
        "  vanxml retarget a.kxa --field '[s].[a]=[s].[b]' --check         list the names that would change\n"
        "  vanxml retarget --recursive docs --from names.csv --in-place    rename all names of a table\n"},
    {"query",
        "Examples:\n"
        "  vanxml query a.xml //title                   print the place of each title\n"
        "  vanxml query a.xml //title --text            print the texts of the titles\n"
        "  vanxml query a.xml \"//book[@id='7']\" --xml  print a book as XML\n"
        "  vanxml query a.xml //book/@id                print the values of an attribute\n"
        "  vanxml query *.xml //title --count           count the titles in each file\n"
        "  vanxml query --files-from list --at //title  search the files that a list names\n"
        "\n"
        "The exit status is 0 if an element was found, 1 if none was found, and 2 if something failed.\n"},
    {"tree",
        "Examples:\n"
        "  vanxml tree a.kxa                                print the outline of a document\n"
        "  vanxml tree --depth 3 a.kxa                      print only its upper levels\n"},
    {"stats",
        "Examples:\n"
        "  vanxml stats a.kxa                               count the elements, attributes and names\n"
        "  vanxml stats --recursive docs --json             count them in all documents in a folder\n"},
    {"diff",
        "Examples:\n"
        "  vanxml diff old.kxa new.kxa                      print what has changed\n"
        "  vanxml diff --json old.kxa new.kxa               print the changes for a program\n"
        "\n"
        "Indentation, comments, processing instructions and the order of attributes do not count.\n"
        "The place of a difference is behind the start tag of the element, or behind the tag in front of the text.\n"
        "If the documents are equal, nothing is printed, also with --json.\n"
        "\n"
        "The exit status is 0 if the documents are equal, 1 if not, and 2 if something failed.\n"},
    {"version",
        "Examples:\n"
        "  vanxml version a.kxa                             print the attribute version of the first element\n"
        "  vanxml version --attribute build a.kxa           print the version in another attribute\n"},
    {"schema",
        "Examples:\n"
        "  vanxml schema list                               print the names of all schemas\n"
        "  vanxml schema show kxa-10.2                      print a schema\n"},
    {"list",
        "Example:\n"
        "  vanxml schema list\n"},
    {"show",
        "Examples:\n"
        "  vanxml schema show kxa-10.2\n"
        "  vanxml schema show oauth-config > oauth-config.xsd\n"},
    {"help",
        "Examples:\n"
        "  vanxml help query\n"
        "  vanxml help schema show\n"},
};

std::vector<const CLI::App*> CommandsOf(const CLI::App& parent)
{
    return parent.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<VString> NamesOfCommands(const CLI::App& parent)
{
    std::vector<VString> names;
    for (const CLI::App* command : CommandsOf(parent))
        names.push_back(VString::fromStdString(command->get_name()));
    return names;
}

// Returns the names of the commands that have an option, such as "'edit', 'format'".
std::string FindCommandsWith(const CLI::App& parent, const std::string& option)
{
    std::string names;
    for (const CLI::App* command : CommandsOf(parent)) {
        if (command->get_option_no_throw(option))
            names += (names.empty() ? "'" : ", '") + command->get_name() + "'";
    }
    return names;
}

std::string Suggest(const std::string& name, const std::vector<VString>& candidates)
{
    const VString nearest = FindNearestName(VString::fromStdString(name), candidates);
    return nearest.IsEmpty() ? std::string() : "; did you mean '" + nearest.toStdString() + "'?";
}

}  // namespace

void HelpCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("help", "Print the help text of a command");
    command->add_option("COMMAND", m_names, "The name of a command");
    m_application = &application;
    m_command = command;
}

bool HelpCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus HelpCommand::Run()
{
    const CLI::App* command = m_application;
    for (const std::string& name : m_names) {
        const std::vector<const CLI::App*> commands = CommandsOf(*command);
        const auto found = std::find_if(
            commands.begin(), commands.end(), [&](const CLI::App* each) { return each->get_name() == name; });
        if (found == commands.end())
            throw UsageError(DescribeUnknownCommand(*command, name));
        command = *found;
    }
    StandardStreams::Write(FormatHelp(*command));
    return ExitStatus::Good;
}

void AddExamples(CLI::App& application)
{
    for (const Examples& examples : allExamples) {
        const bool isTool = application.get_parent() == nullptr;
        if (isTool ? *examples.command == '\0' : application.get_name() == examples.command)
            application.footer(examples.text);
    }
    for (CLI::App* command : application.get_subcommands([](const CLI::App*) { return true; }))
        AddExamples(*command);
}

std::string FormatHelp(const CLI::App& command)
{
    return command.get_formatter()->make_help(&command, "vanxml" + FullName(command), CLI::AppFormatMode::Normal);
}

std::string FullName(const CLI::App& command)
{
    std::string name;
    for (const CLI::App* each = &command; each->get_parent(); each = each->get_parent())
        name.insert(0, " " + each->get_name());
    return name;
}

std::string DescribeUnknownCommand(const CLI::App& parent, const std::string& name)
{
    const std::vector<VString> names = NamesOfCommands(parent);
    const bool isTool = parent.get_parent() == nullptr;
    std::string start =
        isTool ? "there is no command '" + name + "'" : "'" + parent.get_name() + "' has no command '" + name + "'";
    if (names.empty())
        return start;
    const std::string suggestion = Suggest(name, names);
    return start + (suggestion.empty() ? "; there are " + VString::join(names, ", ").toStdString() : suggestion);
}

std::string DescribeUnknownOption(const CLI::App& command, const std::string& argument)
{
    const std::string name = argument.substr(0, argument.find('='));
    if (command.get_option_no_throw(name))
        return "the option '" + name + "' stands behind the command '" + command.get_name() + "'";
    std::vector<VString> names;
    std::vector<VString> sameLetter;  // the options whose names begin with the letter of a short option
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& each : option->get_lnames()) {
            names.push_back(VString::fromStdString("--" + each));
            if (name == "-" + each.substr(0, 1))
                sameLetter.push_back(names.back());
        }
    }
    const std::string unknown = " has no option '" + name + "'";
    const bool isTool = command.get_parent() == nullptr;
    const std::string start = (isTool ? "vanxml" : "'" + command.get_name() + "'") + unknown;
    if (!isTool && sameLetter.size() == 1)
        return start + "; did you mean '" + sameLetter.front().toStdString() + "'?";
    if (const std::string suggestion = Suggest(name, names); !suggestion.empty())
        return start + suggestion;
    if (isTool)
        return start + "; options stand behind the command";
    if (const std::string owners = FindCommandsWith(*command.get_parent(), name); !owners.empty())
        return start + "; it is an option of " + owners;
    return start + "; a file whose name begins with a dash stands behind '--'";
}

std::string DescribeMissingCommand(const CLI::App& parent)
{
    return "'" + parent.get_name() +
        "' needs a command: " + VString::join(NamesOfCommands(parent), " or ").toStdString();
}
