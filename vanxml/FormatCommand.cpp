#include "vanxml/FormatCommand.h"

#include <CLI/CLI.hpp>

#include <memory>

#include "vancoreplatform/VFile.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"
#include "vanxml/ErrorLines.h"

void FormatCommand::AddTo(CLI::App& application)
{
    CLI::App* command =
        application.add_subcommand("format", "Write documents with the indentation and escaping of the library");
    AddFileArguments(*command);
    command->add_flag("--no-header", m_noHeader, "Leave out the XML declaration");
    command->add_flag("--strict", m_isStrict, "Escape all text like attribute values, and write no CDATA sections");
}

RewrittenDocument FormatCommand::Rewrite(const VString& name, const std::string& bytes) const
{
    RewrittenDocument result;
    StringInputSource source(VFile::DecodeText(bytes.data(), bytes.size(), name, true), name, true);
    DOMParser parser;
    const std::unique_ptr<DOM> document = parser.ParseXmlInputSource(source, false);
    if (document->HasErrors()) {
        for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
            if (IsError(diagnostic))
                result.lines += FormatErrorLine(name, diagnostic);
        }
        result.status = ExitStatus::Faulty;
        return result;
    }
    result.bytes = Render(*document).toStdString();
    return result;
}

VString FormatCommand::Render(const DOM& document) const
{
    if (!m_isStrict)
        return XMLDomFormatter::RenderAsXMLString(document, nullptr, !m_noHeader);
    XMLStringFormatter formatter("  ", false);
    formatter.SetFormatMode(FormatModeStrict);
    XMLFormatter::FormatDOM(formatter, document, nullptr, !m_noHeader);
    return formatter.GetOutput();
}
