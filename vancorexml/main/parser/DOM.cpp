#include "vancorexml/main/parser/DOM.h"

#include <vector>

#include "vancorexml/main/parser/DOMElementSearch.h"
#include "vancorexml/main/parser/DocumentDiagnostics.h"
#include "vancorexml/main/parser/ElementLinks.h"
#include "vancorexml/main/parser/TwoWriteLocks.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\DOM";
// Both are unreachable: a document has its root until its destructor runs.
constexpr AssertionSite TargetHasNoRoot{File, 38, "m_root", 0xE9B29E95};
constexpr AssertionSite SourceHasNoRoot{File, 39, "dom.m_root", 0x41ACEBB0};

}  // namespace Assertions

constexpr int SearchDepth = 1000;

}  // namespace

DOM::DOM(bool restrictExternalPaths)
    : m_root(std::make_unique<DOMElement>(VString("Document"))),
      m_diagnostics(std::make_unique<DocumentDiagnostics>(*this, m_lock, *m_root)),
      m_restrictExternalPaths(restrictExternalPaths),
      m_linkedElements(std::make_unique<LinkedElements>())
{
    m_root->m_manager = this;
}

DOM::~DOM()
{
    m_diagnostics->DocumentDies();
    // Destroy the elements first: their destructors use the other members.
    m_root.reset();
    DOMElement::DocumentDies(*this);
}

DOMElement* DOM::GetDocumentRoot() noexcept
{
    return m_root->HasChildren() ? m_root->GetChildren().front() : nullptr;
}

const DOMElement* DOM::GetDocumentRoot() const noexcept
{
    return m_root->HasChildren() ? m_root->GetChildren().front() : nullptr;
}

DOMElement* DOM::GetElement(const VString& name)
{
    return DOMElementSearch::FindElement(*m_root, name, SearchDepth, VString(), VString());
}

const DOMElement* DOM::GetElement(const VString& name) const
{
    return DOMElementSearch::FindElement(GetRoot(), name, SearchDepth, VString(), VString());
}

void DOM::DeepCopy(const DOM& other)
{
    // `old` is declared before the locks, so the old elements die after the locks are released: their destructors
    // may lock a third document.
    std::vector<std::unique_ptr<DOMElement>> old;
    const TwoWriteLocks locks(m_lock, other.m_lock);
    if (!m_root)
        ThrowLogicException(Assertions::TargetHasNoRoot);
    if (!other.m_root)
        ThrowLogicException(Assertions::SourceHasNoRoot);
    m_diagnostics->ClearAllErrorsAndWarnings();
    if (&other != this) {
        m_diagnostics->ClearParseDiagnostics();
        old = m_root->Assign(*other.m_root);
        m_diagnostics->CopyParseDiagnosticsFrom(*other.m_diagnostics);
    }
    m_fieldRenames = other.m_fieldRenames;
    m_captionRenames = other.m_captionRenames;
    m_dataSourceRenames = other.m_dataSourceRenames;
    m_dataConnectionRenames = other.m_dataConnectionRenames;
    m_mapSourceRenames = other.m_mapSourceRenames;
    m_pathRenames = other.m_pathRenames;
    m_protectedDataSourceName = other.m_protectedDataSourceName;
    m_dsValidationCancelType = other.m_dsValidationCancelType;
    m_restrictExternalPaths = other.m_restrictExternalPaths;
}

bool DOM::GetRestrictExternalPaths() const
{
    const VReadLocker lock(m_lock);
    return m_restrictExternalPaths;
}

int DOM::GetDSValidationCancelType() const
{
    const VReadLocker lock(m_lock);
    return m_dsValidationCancelType;
}

void DOM::SetDSValidationCancelType(int type)
{
    const VWriteLocker lock(m_lock);
    m_dsValidationCancelType = type;
}
