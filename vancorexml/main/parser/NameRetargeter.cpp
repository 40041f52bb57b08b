#include "vancorexml/main/parser/NameRetargeter.h"

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/FormulaNames.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace {

// Returns the text without white space at its ends, and with one blank in place of each run inside.
VString Collapse(const VString& text)
{
    VString collapsed;
    bool isBehindSpace = false;
    for (const char16_t unit : text) {
        if (!XmlUtils::IsWhitespace(unit)) {
            if (isBehindSpace && !collapsed.IsEmpty())
                collapsed += u' ';
            collapsed += unit;
        }
        isBehindSpace = XmlUtils::IsWhitespace(unit);
    }
    return collapsed;
}

// Writes a local name in the style of `oldText`: without brackets if `oldText` has none and the plain text means the
// same name, and otherwise with brackets.
VString WriteLocalName(const FieldName& name, const VString& oldText, const VString& oldLocalName)
{
    const VString& plain = name.GetLocalValue();
    const bool isPlain = oldText == oldLocalName && FieldName::ParseGlobal(plain) == FieldName(VString(), plain);
    return isPlain ? plain : MakeLocalName(name).GetFullValue();
}

}  // namespace

NameRetargeter::NameRetargeter(const NameRoles& roles, const DOM& tables) : m_roles(roles), m_tables(tables) {}

NameRetargeter::~NameRetargeter() = default;

void NameRetargeter::StartElement(const VString& name, const AttributeMap& attributes)
{
    OpenChild(name, attributes);
    const OpenElement& element = m_open.back();
    if (!element.type)
        return;
    for (const auto& [attribute, value] : attributes) {
        const NameUse use = NameRoles::GetAttributeUse(*element.type, attribute, attributes);
        RenameValue({element.number, attribute, 0, 0, use.isCollapsed}, value, use.role);
    }
}

void NameRetargeter::OpenChild(const VString& name, const AttributeMap& attributes)
{
    OpenElement element;
    element.number = m_elementCount++;
    element.name = name;
    if (m_open.empty()) {
        element.type = m_roles.FindDocumentElement(name);
    } else {
        OpenElement& parent = m_open.back();
        element.dataSource = parent.dataSource;
        element.type = parent.type ? NameRoles::FindChild(*parent.type, name) : nullptr;
        parent.textUse = NameUse();  // only an element without children has a text with a role
    }
    if (element.type) {
        element.textUse = NameRoles::GetTextUse(*element.type, attributes);
        for (const auto& [attribute, value] : attributes) {
            const NameUse use = NameRoles::GetAttributeUse(*element.type, attribute, attributes);
            if (use.role == NameRole::DataSource)
                element.dataSource = use.isCollapsed ? Collapse(value) : value;
        }
    }
    m_open.push_back(std::move(element));
}

void NameRetargeter::EndElement()
{
    const OpenElement& element = m_open.back();
    RenameValue({element.number, VString(), 0, 0, element.textUse.isCollapsed}, element.text, element.textUse.role);
    m_open.pop_back();
}

void NameRetargeter::Characters(const VString& text)
{
    if (!m_open.empty() && m_open.back().textUse.role != NameRole::None)
        m_open.back().text += text;
}

void NameRetargeter::RenameValue(const NamePlace& place, const VString& value, NameRole role)
{
    const VString text = place.isCollapsed ? Collapse(value) : value;
    NamePlace whole = place;
    whole.length = text.View().size();
    switch (role) {
    case NameRole::None: break;
    case NameRole::DataSource: RenameText(whole, role, text, m_tables.RenameDataSource(text)); break;
    case NameRole::DataConnection: RenameText(whole, role, text, m_tables.RenameDataConnection(text)); break;
    case NameRole::MapSource: RenameText(whole, role, text, m_tables.RenameMapSource(text)); break;
    case NameRole::Caption: RenameText(whole, role, text, m_tables.GetCaptionRenameIfItExists(text)); break;
    case NameRole::FilePath:
        RenameText(whole, role, text, m_tables.GetPathRenames().RenamePath(VPath(text)).String());
        break;
    case NameRole::FieldName: RenameField(whole, text, FieldName::ParseGlobal(text)); break;
    case NameRole::Formula: RenameFormula(whole, text); break;
    }
}

void NameRetargeter::RenameFormula(NamePlace place, const VString& formula)
{
    for (const FormulaName& found : FindFormulaNames(formula)) {
        place.offset = found.offset;
        place.length = found.length;
        RenameField(place, formula.mid(static_cast<int>(found.offset), static_cast<int>(found.length)), found.name);
    }
}

void NameRetargeter::RenameText(const NamePlace& place, NameRole role, const VString& oldText, const VString& newText)
{
    if (oldText != newText)
        m_changes.push_back({place, role, oldText, newText, oldText, newText});
    if (role == NameRole::Caption && !place.attribute.IsEmpty() && m_open.size() > 1) {
        const VString parent = VString::number(static_cast<std::uint64_t>(m_open[m_open.size() - 2].number));
        RequireUnique(place, role, parent + " " + m_open.back().name + " " + place.attribute, oldText, newText);
    } else if (role != NameRole::Caption && role != NameRole::FilePath) {
        RequireUnique(place, role, VString(), oldText, newText);
    }
}

VString NameRetargeter::RenameRoot(const VString& dataSource) const
{
    return dataSource == m_tables.GetProtectedDataSourceName() ? dataSource : m_tables.RenameDataSource(dataSource);
}

void NameRetargeter::RenameField(const NamePlace& place, const VString& text, const FieldName& name)
{
    if (name.IsEmpty())
        return;
    const bool isLocal = name.GetRootValue().IsEmpty();
    const VString dataSource = isLocal ? m_open.back().dataSource : name.GetRootValue();
    const FieldName oldName = MakeGlobalName(dataSource, name);
    const FieldName newName = m_tables.RenameField(oldName);
    const bool hasNewText = isLocal ? newName.GetLocalValue() != name.GetLocalValue() : newName != oldName;
    const VString newDataSource = RenameRoot(dataSource);
    const VString oldFull = oldName.GetFullValue();
    // A local name stays in its data source, even if the new name has another.
    const VString newFull = (isLocal ? MakeGlobalName(newDataSource, newName) : newName).GetFullValue();
    if (hasNewText) {
        m_changes.push_back({place,
            NameRole::FieldName,
            oldFull,
            newFull,
            text,
            isLocal ? WriteLocalName(newName, text, name.GetLocalValue()) : newFull});
    }

    const bool isUniqueRoot =
        dataSource.IsEmpty() || RequireUnique(place, NameRole::DataSource, VString(), dataSource, newDataSource);
    // A clash of two data sources is reported once, and not again for each of their fields.
    if (isUniqueRoot)
        RequireUnique(place, NameRole::FieldName, VString(), oldFull, newFull);
}

bool NameRetargeter::RequireUnique(
    const NamePlace& place, NameRole role, const VString& scope, const VString& oldName, const VString& newName)
{
    const VString& other = m_names.try_emplace(std::tuple(role, scope, newName), oldName).first->second;
    if (other == oldName)
        return true;
    if (m_reported.emplace(role, oldName, newName).second)
        m_clashes.push_back({place, role, other, oldName, newName});
    return false;
}
