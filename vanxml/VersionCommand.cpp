#include "vanxml/VersionCommand.h"

#include <CLI/CLI.hpp>

#include <optional>

#include "vancorexml/main/parser/FirstElementTag.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/InputPieces.h"
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
    const VString name = VString::fromStdString(m_file);
    const VString attribute = VString::fromStdString(m_attribute);
    InputPieces pieces(name);
    bool hasTag = false;
    while (!hasTag && pieces.ReadMore()) {
        std::optional<SourceDocument> source = pieces.GetDocument();
        if (!source)
            continue;
        hasTag = !ReadFirstElementTag(source->Source()).empty();
        const Nullable<VersionNumber> version = VersionSniffer(source->Source(), attribute);
        if (version.IsPresent()) {
            StandardStreams::Write(EscapeControlCharacters(version.GetValue().GetAsString().toStdString()) + "\n");
            return ExitStatus::Good;
        }
    }
    const VString problem = hasTag ? "the first element has no attribute '" + attribute + "'"
                                   : VString("the document has no element that could declare a version");
    StandardStreams::WriteError(FormatErrorLine(name, problem));
    return ExitStatus::Faulty;
}
