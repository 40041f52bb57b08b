// The diagnostics of a whole document.
#include <utility>
#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"

namespace {

VString Concatenate(const std::list<VString>& messages)
{
    return VString::join({messages.begin(), messages.end()}, VString("\n"));
}

}  // namespace

bool DOM::HasErrors() const
{
    return m_diagnostics->Has(*m_root, AnyError);
}

bool DOM::HasUnreportedErrors() const
{
    return m_diagnostics->Has(*m_root, UnreportedError);
}

bool DOM::HasCancelErrors() const
{
    return m_diagnostics->Has(*m_root, CancelError);
}

bool DOM::HasOnlyCancelErrors() const
{
    return !m_diagnostics->Has(*m_root, FaultError);
}

bool DOM::HasWarnings() const
{
    return m_diagnostics->Has(*m_root, AnyWarning);
}

std::list<VString> DOM::GetErrors() const
{
    std::list<VString> messages;
    m_diagnostics->GetErrors(*m_root, messages);
    return messages;
}

std::list<VString> DOM::GetWarnings() const
{
    std::list<VString> messages;
    m_diagnostics->GetWarnings(*m_root, messages);
    return messages;
}

std::list<VError::ErrorInfo> DOM::GetMetadataForErrors() const
{
    std::list<VError::ErrorInfo> infos;
    m_diagnostics->GetMetadataForErrors(*m_root, infos);
    return infos;
}

std::list<VError::ErrorInfo> DOM::GetMetadataForWarnings() const
{
    std::list<VError::ErrorInfo> infos;
    m_diagnostics->GetMetadataForWarnings(*m_root, infos);
    return infos;
}

VString DOM::GetConcatenatedErrors() const
{
    return Concatenate(GetErrors());
}

VString DOM::GetConcatenatedWarnings() const
{
    return Concatenate(GetWarnings());
}

std::vector<DOMDiagnostic> DOM::GetDiagnostics() const
{
    return m_diagnostics->GetDiagnostics(*m_root);
}

const std::vector<DOMParseDiagnostic>& DOM::GetParseDiagnostics() const noexcept
{
    return m_diagnostics->GetParseDiagnostics();
}

void DOM::SetParseDiagnostics(std::vector<ParseDiagnostic> diagnostics)
{
    m_diagnostics->SetParseDiagnostics(std::move(diagnostics));
}

void DOM::ClearErrors()
{
    m_diagnostics->ClearErrors(*m_root);
}

void DOM::ClearWarnings()
{
    m_diagnostics->ClearWarnings(*m_root);
}

void DOM::AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target)
{
    m_diagnostics->AdoptErrorsAndWarningsForNode(node, target);
}
