#include "vanxml/FormatCommand.h"

#include <CLI/CLI.hpp>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/OutputFile.h"
#include "vanxml/SourceDocument.h"
#include "vanxml/StandardStreams.h"

void FormatCommand::AddTo(CLI::App& application)
{
    CLI::App* command =
        application.add_subcommand("format", "Write a document with the indentation and escaping of the library");
    command->add_option("FILE", m_file, "The document; - is standard input")->required();
    CLI::Option* output =
        command->add_option("-o,--output", m_output, "Write to the file OUT; - is standard output")->type_name("OUT");
    command->add_flag("--in-place", m_inPlace, "Write to FILE itself")->excludes(output);
    command->add_flag("--no-header", m_noHeader, "Leave out the XML declaration");
    command->add_flag("--strict", m_strict, "Escape all text like attribute values, and write no CDATA sections");
    command->callback([this] {
        if (m_inPlace && m_file == "-")
            throw CLI::ValidationError("--in-place", "standard input cannot be replaced");
    });
    m_command = command;
}

bool FormatCommand::IsChosen() const
{
    return m_command->parsed();
}

ExitStatus FormatCommand::Run()
{
    SourceDocument source = SourceDocument::Read(VString::fromStdString(m_file));
    DOMParser parser;
    const std::unique_ptr<DOM> document = parser.ParseXmlInputSource(source.Source(), false);
    if (document->HasErrors()) {
        for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
            if (IsError(diagnostic))
                StandardStreams::WriteError(FormatErrorLine(source.Name(), diagnostic));
        }
        return ExitStatus::Faulty;
    }
    const std::string bytes = Render(*document).toStdString();
    if (m_inPlace)
        ReplaceFile(source.Name(), bytes);
    else if (m_output == "-")
        StandardStreams::Write(bytes);
    else
        WriteOutputFile(VString::fromStdString(m_output), bytes);
    return ExitStatus::Good;
}

VString FormatCommand::Render(const DOM& document) const
{
    if (!m_strict)
        return XMLDomFormatter::RenderAsXMLString(document, nullptr, !m_noHeader);
    XMLStringFormatter formatter("  ", false);
    formatter.SetFormatMode(FormatModeStrict);
    XMLFormatter::FormatDOM(formatter, document, nullptr, !m_noHeader);
    return formatter.GetOutput();
}
