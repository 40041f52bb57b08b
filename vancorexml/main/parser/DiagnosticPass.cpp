#include "vancorexml/main/parser/DiagnosticPass.h"

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
    return source.View().size() < source.Bytes()->size() && source.View().starts_with("<?xml ");
}

std::vector<ParseDiagnostic> DiagnosticPass::Run()
{
    DiagnosticReader reader(m_source, m_id, m_schemas, m_limits, m_settings);
    std::vector<ParseDiagnostic> diagnostics = reader.Read();
    m_doubts = reader.ReleaseDoubts();
    return diagnostics;
}
