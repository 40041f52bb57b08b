// The operations of an element that forward to the diagnostics of its document.
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"
#include "vansys/LogicException.h"

// Returns the diagnostics of the element's document. Raises a LogicException if there is no document.
DocumentDiagnostics& DOMElement::RequireDiagnostics(const char* operation, int line, std::uint32_t code) const
{
    if (!m_manager) {
        ThrowLogicException("vancorexml\\main\\parser\\DOMElement",
            line,
            VString(operation) + " can only be called on a DOMElement that is attached to a DOM",
            MakeLogicError(code));
    }
    return *m_manager->m_diagnostics;
}

void DOMElement::ClearErrors()
{
    RequireDiagnostics("DOMElement::ClearErrors", 789, 0xBACFCB15).ClearErrors(*this);
}

void DOMElement::Error(const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel) const
{
    RequireDiagnostics("DOMElement::Error", 801, 0xCA9B9C3D).PushError(*this, message, info, reported, cancel);
}

void DOMElement::PrefixError(const VString& message, const VError::ErrorInfo& info, bool reported) const
{
    RequireDiagnostics("DOMElement::PrefixError", 810, 0x35B23465).InsertError(*this, message, info, reported);
}

bool DOMElement::HasErrors() const
{
    return RequireDiagnostics("DOMElement::HasErrors", 818, 0xF2FE57DA).Has(*this, AnyError);
}

bool DOMElement::HasUnreportedErrors() const
{
    return RequireDiagnostics("DOMElement::HasUnreportedErrors", 827, 0x6BA33C74).Has(*this, UnreportedError);
}

bool DOMElement::HasCancelErrors() const
{
    return RequireDiagnostics("DOMElement::HasCancelErrors", 836, 0x41FC1050).Has(*this, CancelError);
}

bool DOMElement::HasOnlyCancelErrors() const
{
    return !RequireDiagnostics("DOMElement::HasOnlyCancelErrors", 845, 0xB3A0A105).Has(*this, FaultError);
}

void DOMElement::GetErrors(std::list<VString>& messages) const
{
    RequireDiagnostics("DOMElement::GetErrors", 853, 0x58C0A15B).GetErrors(*this, messages);
}

void DOMElement::GetMetadataForErrors(std::list<VError::ErrorInfo>& infos) const
{
    RequireDiagnostics("DOMElement::GetMetadataForErrors", 862, 0x325D575C).GetMetadataForErrors(*this, infos);
}

void DOMElement::ClearWarnings()
{
    RequireDiagnostics("DOMElement::ClearWarnings", 871, 0x89E3A6EC).ClearWarnings(*this);
}

void DOMElement::Warning(const VString& message, const VError::ErrorInfo& info) const
{
    RequireDiagnostics("DOMElement::Warning", 880, 0x7EFAD16F).PushWarning(*this, message, info);
}

void DOMElement::PrefixWarning(const VString& message, const VError::ErrorInfo& info) const
{
    RequireDiagnostics("DOMElement::PrefixWarning", 890, 0x97789898).InsertWarning(*this, message, info);
}

bool DOMElement::HasWarnings() const
{
    return RequireDiagnostics("DOMElement::HasWarnings", 898, 0x58D0894A).Has(*this, AnyWarning);
}

void DOMElement::GetWarnings(std::list<VString>& messages) const
{
    RequireDiagnostics("DOMElement::GetWarnings", 906, 0x4A1AF88C).GetWarnings(*this, messages);
}

void DOMElement::GetMetadataForWarnings(std::list<VError::ErrorInfo>& infos) const
{
    RequireDiagnostics("DOMElement::GetMetadataForWarnings", 915, 0x2DE19AB8).GetMetadataForWarnings(*this, infos);
}
