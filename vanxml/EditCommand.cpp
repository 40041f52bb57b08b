#include "vanxml/EditCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <utility>

#include "vanxml/DiagnosticText.h"
#include "vanxml/DocumentEdits.h"
#include "vanxml/DocumentText.h"
#include "vanxml/QueryPath.h"
#include "vanxml/ToolError.h"

namespace {

struct Action {
    const char* name;
    const char* valueName;  // null for an action without a value
    const char* description;
    void (*apply)(ElementChange& change, const std::string& value);
};

VString Text(const std::string& value)
{
    return VString::fromStdString(value);
}

void Set(ElementChange& change, const std::string& value)
{
    const std::size_t equals = value.find('=');
    if (equals == std::string::npos)
        throw UsageError("--set '" + value + "' has no '=' between the name and the value");
    change.setAttributes.emplace_back(Text(value.substr(0, equals)), Text(value.substr(equals + 1)));
}

// Returns the error for an option that gives the elements of one --at two values.
UsageError TwoValues(const std::string& option, const VString& first, const std::string& second)
{
    return UsageError(option + " '" + first.toStdString() + "' and " + option + " '" + second +
        "' stand behind one --at; keep one of them, or write --at in front of each");
}

// Returns the path of an --at. Throws UsageError for a path that cannot match, as "vanxml query" does, and for a path
// that selects more than elements by name.
VString ElementPath(const std::string& text)
{
    const QueryPath path(text);
    if (!path.Attribute().IsEmpty()) {
        const std::string name = path.Attribute().toStdString();
        throw UsageError("--at '" + text + "' selects attributes; select their elements, and write --set " + name +
            "=VALUE or --unset " + name + " behind the path");
    }
    if (path.HasPredicates())
        throw UsageError("--at '" + text + "' has a predicate, which only query supports");
    return path.LibraryPath();
}

const Action Actions[] = {
    {"--set", "NAME=VALUE", "Set an attribute", Set},
    {"--unset",
        "NAME",
        "Remove an attribute",
        [](ElementChange& change, const std::string& value) { change.removeAttributes.push_back(Text(value)); }},
    {"--text",
        "TEXT",
        "Replace the text of an element that contains no elements",
        [](ElementChange& change, const std::string& value) {
            if (change.text && *change.text != Text(value))
                throw TwoValues("--text", *change.text, value);
            change.text = Text(value);
        }},
    {"--rename",
        "NAME",
        "Rename the element",
        [](ElementChange& change, const std::string& value) {
            if (change.name && *change.name != Text(value))
                throw TwoValues("--rename", *change.name, value);
            change.name = Text(value);
        }},
    {"--delete",
        nullptr,
        "Delete the element, and its line if nothing else remains on the line",
        [](ElementChange& change, const std::string&) { change.isDeleted = true; }},
    {"--append",
        "XML",
        "Insert XML behind the content of the element: elements, comments or processing instructions",
        [](ElementChange& change, const std::string& value) { change.appended.push_back(Text(value)); }},
    {"--prepend",
        "XML",
        "Insert XML in front of the content of the element",
        [](ElementChange& change, const std::string& value) { change.prepended.push_back(Text(value)); }},
    {"--before",
        "XML",
        "Insert XML in front of the element",
        [](ElementChange& change, const std::string& value) { change.before.push_back(Text(value)); }},
    {"--after",
        "XML",
        "Insert XML behind the element",
        [](ElementChange& change, const std::string& value) { change.after.push_back(Text(value)); }},
};

}  // namespace

void EditCommand::AddTo(CLI::App& application)
{
    m_command =
        application.add_subcommand("edit", "Change the elements that paths select; all other bytes of a document stay");
    AddFileArguments(*m_command);
    const auto addOption = [&](const char* name, std::vector<std::string>& values, const char* description) {
        return m_command->add_option(name, values, description)->allow_extra_args(false)->take_all();
    };
    m_at = addOption("--at",
        m_paths,
        "Select the elements that the actions behind this option change, up to the next --at; "
        "PATH is a path as in 'vanxml query', without predicates and attributes")
               ->required()
               ->type_name("PATH")
               ->group("Changes");
    m_actions.reserve(std::size(Actions));  // the options refer to the values
    for (const Action& action : Actions) {
        Option& added = m_actions.emplace_back(Option{nullptr, action.name, {}, action.apply});
        CLI::Option* const option = action.valueName
            ? addOption(action.name, added.values, action.description)->type_name(action.valueName)
            : m_command->add_flag(action.name, action.description)->disable_flag_override();
        added.option = option->group("Changes");
    }
}

ExitStatus EditCommand::Run()
{
    ReadChanges();
    return RewriteCommand::Run();
}

void EditCommand::ReadChanges()
{
    std::map<const CLI::Option*, std::size_t> used;  // the number of values of each option so far
    bool hasAction = true;
    const auto requireAction = [&] {
        if (!hasAction)
            throw UsageError("--at '" + m_changes.back().first.toStdString() + "' has no action behind it");
    };
    for (const CLI::Option* option : m_command->parse_order()) {
        const std::size_t index = used[option]++;
        if (option == m_at) {
            requireAction();
            m_changes.emplace_back(ElementPath(m_paths[index]), ElementChange());
            hasAction = false;
            continue;
        }
        const auto action =
            std::find_if(m_actions.begin(), m_actions.end(), [&](const Option& each) { return each.option == option; });
        if (action == m_actions.end())
            continue;
        if (m_changes.empty())
            throw UsageError(std::string(action->name) + " needs an --at in front of it");
        action->apply(m_changes.back().second, action->values.empty() ? std::string() : action->values[index]);
        hasAction = true;
    }
    requireAction();
}

RewrittenDocument EditCommand::Rewrite(const VString& name, const std::string& bytes) const
{
    const DocumentText document(name, bytes);
    DocumentEdits edits(name, bytes, document);
    XMLSourceEditor editor(document.Text(), name, {edits.CharacterTest()});
    for (const auto& [path, change] : m_changes)
        editor.Change(path, change);
    RewrittenDocument result;
    std::optional<EditedText> edited = editor.Edit();
    result.lines = FormatDiagnostics(name, editor.GetDiagnostics(), document.Text());
    if (edited)
        result.bytes = edits.Apply(std::move(*edited));
    else
        result.status = ExitStatus::Faulty;
    return result;
}
