#include "vancorexml/main/parser/DiagnosticPass.h"

#include <string_view>

#include "vancorexml/main/parser/DiagnosticReader.h"

DiagnosticPass::DiagnosticPass(const XercesInputSource& source,
    const VString& id,
    xercesc::XMLGrammarPool* schemas,
    xercesc::SecurityManager& limits,
    const Settings& settings) noexcept
    : m_source(source),
      m_id(id),
      m_schemas(schemas),
      m_limits(limits),
      m_settings(settings)
{}

bool DiagnosticPass::HasLateDeclaration(const XercesInputSource& source) noexcept
{
    const std::string_view text = source.View();
    constexpr std::string_view Start = "<?xml";
    constexpr std::string_view Blanks = " \t\r\n";
    return text.size() < source.Bytes()->size() && text.starts_with(Start) && text.size() > Start.size() &&
        Blanks.find(text[Start.size()]) != std::string_view::npos;
}

std::vector<ParseDiagnostic> DiagnosticPass::Run()
{
    DiagnosticReader reader(m_source, m_id, m_schemas, m_limits, m_settings);
    std::vector<ParseDiagnostic> diagnostics = reader.Read();
    m_doubts = reader.ReleaseDoubts();
    return diagnostics;
}
