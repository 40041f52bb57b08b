#include "vanxml/SchemaCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "vancoredata/VResource.h"
#include "vanxml/SchemaSelection.h"
#include "vanxml/StandardStreams.h"
#include "vanxml/ToolError.h"

namespace {

// Prints the names in one column and the names of the resources in another.
void PrintList()
{
    const std::vector<SchemaName> schemas = ListSchemas();
    std::size_t width = 0;
    for (const SchemaName& schema : schemas)
        width = std::max(width, schema.name.toStdString().size());
    for (const SchemaName& schema : schemas) {
        std::string name = schema.name.toStdString();
        name.resize(width, ' ');
        StandardStreams::Write(name + "  " + schema.resource.toStdString() + "\n");
    }
}

}  // namespace

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
        PrintList();
        return ExitStatus::Good;
    }
    const VString name = VString::fromStdString(m_name);
    const VString resource = FindSchemaResource(name);
    if (resource.IsEmpty())
        throw UsageError(DescribeUnknownSchema(name, false));
    StandardStreams::Write(UTF8StringVResource(resource).GetString().toStdString());
    return ExitStatus::Good;
}
