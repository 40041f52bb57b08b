#include "vanxml/VersionCommand.h"

#include <CLI/CLI.hpp>

#include "vancorexml/main/parser/VersionSniffer.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"

void VersionCommand::AddTo(CLI::App& application)
{
    CLI::App* command =
        application.add_subcommand("version", "Print the version that a document declares, without parsing it");
    command->add_option("FILE", m_file, "The document; - is standard input")->required();
    command->add_option("--attribute", m_attribute, "Read the version from attribute NAME of the first element")
        ->capture_default_str()
        ->type_name("NAME");
    m_command = command;
}

bool VersionCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus VersionCommand::Run()
{
    SourceDocument source = SourceDocument::Read(VString::fromStdString(m_file));
    const VString attribute = VString::fromStdString(m_attribute);
    const Nullable<VersionNumber> version = VersionSniffer(source.Source(), attribute);
    if (!version.IsPresent()) {
        StandardStreams::WriteError(
            FormatErrorLine(source.Name(), "The first element has no attribute \"" + attribute + "\"."));
        return ExitStatus::Faulty;
    }
    StandardStreams::Write((version.GetValue().GetAsString() + "\n").toStdString());
    return ExitStatus::Good;
}
