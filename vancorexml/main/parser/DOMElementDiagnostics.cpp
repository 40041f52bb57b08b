// The operations of an element that forward to the diagnostics of its document.
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"
#include "vansys/LogicException.h"

namespace {

// Each site is named after the operation that was called on an element without a document.
namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\DOMElement";
constexpr AssertionSite ClearErrors{
    File, 789, "DOMElement::ClearErrors can only be called on a DOMElement that is attached to a DOM", 0xBACFCB15};
constexpr AssertionSite Error{
    File, 801, "DOMElement::Error can only be called on a DOMElement that is attached to a DOM", 0xCA9B9C3D};
constexpr AssertionSite PrefixError{
    File, 810, "DOMElement::PrefixError can only be called on a DOMElement that is attached to a DOM", 0x35B23465};
constexpr AssertionSite HasErrors{
    File, 818, "DOMElement::HasErrors can only be called on a DOMElement that is attached to a DOM", 0xF2FE57DA};
constexpr AssertionSite HasUnreportedErrors{File,
    827,
    "DOMElement::HasUnreportedErrors can only be called on a DOMElement that is attached to a DOM",
    0x6BA33C74};
constexpr AssertionSite HasCancelErrors{
    File, 836, "DOMElement::HasCancelErrors can only be called on a DOMElement that is attached to a DOM", 0x41FC1050};
constexpr AssertionSite HasOnlyCancelErrors{File,
    845,
    "DOMElement::HasOnlyCancelErrors can only be called on a DOMElement that is attached to a DOM",
    0xB3A0A105};
constexpr AssertionSite GetErrors{
    File, 853, "DOMElement::GetErrors can only be called on a DOMElement that is attached to a DOM", 0x58C0A15B};
constexpr AssertionSite GetMetadataForErrors{File,
    862,
    "DOMElement::GetMetadataForErrors can only be called on a DOMElement that is attached to a DOM",
    0x325D575C};
constexpr AssertionSite ClearWarnings{
    File, 871, "DOMElement::ClearWarnings can only be called on a DOMElement that is attached to a DOM", 0x89E3A6EC};
constexpr AssertionSite Warning{
    File, 880, "DOMElement::Warning can only be called on a DOMElement that is attached to a DOM", 0x7EFAD16F};
constexpr AssertionSite PrefixWarning{
    File, 890, "DOMElement::PrefixWarning can only be called on a DOMElement that is attached to a DOM", 0x97789898};
constexpr AssertionSite HasWarnings{
    File, 898, "DOMElement::HasWarnings can only be called on a DOMElement that is attached to a DOM", 0x58D0894A};
constexpr AssertionSite GetWarnings{
    File, 906, "DOMElement::GetWarnings can only be called on a DOMElement that is attached to a DOM", 0x4A1AF88C};
constexpr AssertionSite GetMetadataForWarnings{File,
    915,
    "DOMElement::GetMetadataForWarnings can only be called on a DOMElement that is attached to a DOM",
    0x2DE19AB8};

}  // namespace Assertions

}  // namespace

// Returns the diagnostics of the document of the element. Raises the assertion if there is no document.
DocumentDiagnostics& DOMElement::RequireDiagnostics(const AssertionSite& site) const
{
    if (!m_manager)
        ThrowLogicException(site);
    return *m_manager->m_diagnostics;
}

void DOMElement::ClearErrors()
{
    RequireDiagnostics(Assertions::ClearErrors).ClearErrors(*this);
}

void DOMElement::Error(const VString& message, const VError::ErrorInfo& info, bool reported, bool cancel) const
{
    RequireDiagnostics(Assertions::Error).PushError(*this, message, info, reported, cancel);
}

void DOMElement::PrefixError(const VString& message, const VError::ErrorInfo& info, bool reported) const
{
    RequireDiagnostics(Assertions::PrefixError).InsertError(*this, message, info, reported);
}

bool DOMElement::HasErrors() const
{
    return RequireDiagnostics(Assertions::HasErrors).Has(*this, AnyError);
}

bool DOMElement::HasUnreportedErrors() const
{
    return RequireDiagnostics(Assertions::HasUnreportedErrors).Has(*this, UnreportedError);
}

bool DOMElement::HasCancelErrors() const
{
    return RequireDiagnostics(Assertions::HasCancelErrors).Has(*this, CancelError);
}

bool DOMElement::HasOnlyCancelErrors() const
{
    return !RequireDiagnostics(Assertions::HasOnlyCancelErrors).Has(*this, FaultError);
}

void DOMElement::GetErrors(std::list<VString>& messages) const
{
    RequireDiagnostics(Assertions::GetErrors).GetErrors(*this, messages);
}

void DOMElement::GetMetadataForErrors(std::list<VError::ErrorInfo>& infos) const
{
    RequireDiagnostics(Assertions::GetMetadataForErrors).GetMetadataForErrors(*this, infos);
}

void DOMElement::ClearWarnings()
{
    RequireDiagnostics(Assertions::ClearWarnings).ClearWarnings(*this);
}

void DOMElement::Warning(const VString& message, const VError::ErrorInfo& info) const
{
    RequireDiagnostics(Assertions::Warning).PushWarning(*this, message, info);
}

void DOMElement::PrefixWarning(const VString& message, const VError::ErrorInfo& info) const
{
    RequireDiagnostics(Assertions::PrefixWarning).InsertWarning(*this, message, info);
}

bool DOMElement::HasWarnings() const
{
    return RequireDiagnostics(Assertions::HasWarnings).Has(*this, AnyWarning);
}

void DOMElement::GetWarnings(std::list<VString>& messages) const
{
    RequireDiagnostics(Assertions::GetWarnings).GetWarnings(*this, messages);
}

void DOMElement::GetMetadataForWarnings(std::list<VError::ErrorInfo>& infos) const
{
    RequireDiagnostics(Assertions::GetMetadataForWarnings).GetMetadataForWarnings(*this, infos);
}
