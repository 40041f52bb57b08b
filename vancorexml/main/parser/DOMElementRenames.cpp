// The operations of an element that forward to the renames of its document.
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vansys/LogicException.h"

namespace {

// Each site is named after the operation that was called on an element without a document.
namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\DOMElement";
constexpr AssertionSite AddFieldRename{
    File, 677, "DOMElement::AddFieldRename can only be called on a DOMElement that is attached to a DOM", 0x7BB9AD71};
constexpr AssertionSite AddCaptionRename{
    File, 686, "DOMElement::AddCaptionRename can only be called on a DOMElement that is attached to a DOM", 0xFFF990FC};
// Own code.
constexpr AssertionSite GetCaptionRenameIfItExists{File,
    694,
    "DOMElement::GetCaptionRenameIfItExists can only be called on a DOMElement that is attached to a DOM",
    0x4E3B71C8};

}  // namespace Assertions

}  // namespace

FieldName DOMElement::GetFieldName(const VString& attrName) const
{
    return RenameField(FieldName::ParseGlobal(GetAttribute(attrName)));
}

FieldName DOMElement::GetFieldName(const VString& attrName, QualifiedNameCache& cache) const
{
    return RenameField(FieldName::ParseGlobal(GetAttribute(attrName), cache));
}

FieldName DOMElement::GetLocalFieldName(const VString& attrName, const VString& dataSourceName) const
{
    return MakeLocalName(RenameField(MakeGlobalName(dataSourceName, FieldName::ParseLocal(GetAttribute(attrName)))));
}

FieldName DOMElement::GetLocalFieldName(
    const VString& attrName, const VString& dataSourceName, QualifiedNameCache& cache) const
{
    return MakeLocalName(
        RenameField(MakeGlobalName(dataSourceName, FieldName::ParseLocal(GetAttribute(attrName), cache))));
}

FieldName DOMElement::GetTextAsFieldName() const
{
    return RenameField(FieldName::ParseGlobal(m_text));
}

FieldName DOMElement::GetTextAsFieldName(QualifiedNameCache& cache) const
{
    return RenameField(FieldName::ParseGlobal(m_text, cache));
}

void DOMElement::AddCaptionRename(const VString& oldCaption, const VString& newCaption)
{
    if (!m_manager)
        ThrowLogicException(Assertions::AddCaptionRename);
    m_manager->AddCaptionRename(oldCaption, newCaption);
}

void DOMElement::AddFieldRename(const FieldName& oldName, const FieldName& newName)
{
    if (!m_manager)
        ThrowLogicException(Assertions::AddFieldRename);
    m_manager->AddFieldRename(oldName, newName);
}

FieldName DOMElement::RenameField(const FieldName& field) const
{
    return m_manager ? m_manager->RenameField(field) : field;
}

VString DOMElement::RenameDataSource(const VString& name) const
{
    return m_manager ? m_manager->RenameDataSource(name) : name;
}

VString DOMElement::RenameDataConnection(const VString& name) const
{
    return m_manager ? m_manager->RenameDataConnection(name) : name;
}

VString DOMElement::RenameMapSource(const VString& name) const
{
    return m_manager ? m_manager->RenameMapSource(name) : name;
}

VString DOMElement::GetCaptionRenameIfItExists(const VString& attrName) const
{
    if (!m_manager)
        ThrowLogicException(Assertions::GetCaptionRenameIfItExists);
    return m_manager->GetCaptionRenameIfItExists(GetAttribute(attrName));
}
