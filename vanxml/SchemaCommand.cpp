#include "vanxml/SchemaCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "vancoredata/VResource.h"
#include "vanxml/SchemaSelection.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

void SchemaCommand::AddTo(CLI::App& application)
{
    CLI::App* command = application.add_subcommand("schema", "List or print the schemas of the library");
    command->require_subcommand(1);
    m_list = command->add_subcommand("list", "Print the names of the schemas");
    command->add_subcommand("show", "Print one schema")
        ->add_option("NAME", m_name, "The name of the schema")
        ->required();
    m_command = command;
}

bool SchemaCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus SchemaCommand::Run()
{
    if (m_list->parsed()) {
        for (const VString& name : ListSchemaResources())
            StandardStreams::Write((name + "\n").toStdString());
        return ExitStatus::Good;
    }
    const std::vector<VString> names = ListSchemaResources();
    const VString name = VString::fromStdString(m_name);
    if (std::find(names.begin(), names.end(), name) == names.end())
        throw ToolError("There is no schema \"" + m_name + "\"; \"vanxml schema list\" names them");
    StandardStreams::Write(UTF8StringVResource(name).GetString().toStdString());
    return ExitStatus::Good;
}
