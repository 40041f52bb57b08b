// What an element asks of its document's diagnostics.
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vansys/LogicException.h"

namespace {

DOM& Require(DOM* manager, const char* operation, int line, std::uint32_t code)
{
    if (!manager)
        ThrowLogicException("vancorexml\\main\\parser\\DOMElement", line, VString(operation) + " can only be called on a DOMElement that is attached to a DOM", MakeLogicError(code));
    return *manager;
}

}  // namespace

void DOMElement::ClearErrors()
{
    Require(m_manager, "DOMElement::ClearErrors", 789, 0xBACFCB15).ClearErrors(*this);
}

void DOMElement::Error(const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel) const
{
    Require(m_manager, "DOMElement::Error", 801, 0xCA9B9C3D).PushError(*this, message, info, reported, cancel);
}

void DOMElement::PrefixError(const VString& message, const VError::ErrorInfo& info, bool reported) const
{
    Require(m_manager, "DOMElement::PrefixError", 810, 0x35B23465).InsertError(*this, message, info, reported);
}

bool DOMElement::HasErrors() const
{
    return Require(m_manager, "DOMElement::HasErrors", 818, 0xF2FE57DA).HasErrors(*this);
}

bool DOMElement::HasUnreportedErrors() const
{
    return Require(m_manager, "DOMElement::HasUnreportedErrors", 827, 0x6BA33C74).HasUnreportedErrors(*this);
}

bool DOMElement::HasCancelErrors() const
{
    return Require(m_manager, "DOMElement::HasCancelErrors", 836, 0x41FC1050).HasCancelErrors(*this);
}

bool DOMElement::HasOnlyCancelErrors() const
{
    return Require(m_manager, "DOMElement::HasOnlyCancelErrors", 845, 0xB3A0A105).HasOnlyCancelErrors(*this);
}

void DOMElement::GetErrors(std::list<VString>& messages) const
{
    Require(m_manager, "DOMElement::GetErrors", 853, 0x58C0A15B).GetErrors(*this, messages);
}

void DOMElement::GetMetadataForErrors(std::list<VError::ErrorInfo>& infos) const
{
    Require(m_manager, "DOMElement::GetMetadataForErrors", 862, 0x325D575C).GetMetadataForErrors(*this, infos);
}

void DOMElement::ClearWarnings()
{
    Require(m_manager, "DOMElement::ClearWarnings", 871, 0x89E3A6EC).ClearWarnings(*this);
}

void DOMElement::Warning(const VString& message, const VError::ErrorInfo& info) const
{
    Require(m_manager, "DOMElement::Warning", 880, 0x7EFAD16F).PushWarning(*this, message, info);
}

void DOMElement::PrefixWarning(const VString& message, const VError::ErrorInfo& info) const
{
    Require(m_manager, "DOMElement::PrefixWarning", 890, 0x97789898).InsertWarning(*this, message, info);
}

bool DOMElement::HasWarnings() const
{
    return Require(m_manager, "DOMElement::HasWarnings", 898, 0x58D0894A).HasWarnings(*this);
}

void DOMElement::GetWarnings(std::list<VString>& messages) const
{
    Require(m_manager, "DOMElement::GetWarnings", 906, 0x4A1AF88C).GetWarnings(*this, messages);
}

void DOMElement::GetMetadataForWarnings(std::list<VError::ErrorInfo>& infos) const
{
    Require(m_manager, "DOMElement::GetMetadataForWarnings", 915, 0x2DE19AB8).GetMetadataForWarnings(*this, infos);
}
