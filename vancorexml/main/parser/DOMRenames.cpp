// The renamed names and paths of a document.
#include "vancorexml/main/parser/DOM.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr AssertionSite CaptionAlreadyRenamed{
    "vancorexml\\main\\parser\\DOM", 95, "m_captionRenames.find(oldCaption) == m_captionRenames.end()", 0xA2CD6EBC};

}  // namespace Assertions

template <typename Map, typename Key>
Key Renamed(const Map& renames, const Key& name)
{
    const auto found = renames.find(name);
    return found != renames.end() ? found->second : name;
}

}  // namespace

const VString& DOM::GetProtectedDataSourceName() const
{
    const VReadLocker locker(m_lock);
    return m_protectedDataSourceName;
}

void DOM::SetProtectedDataSourceName(const VString& name)
{
    const VWriteLocker locker(m_lock);
    m_protectedDataSourceName = name;
}

const PathRenames& DOM::GetPathRenames() const
{
    const VReadLocker locker(m_lock);
    return m_pathRenames;
}

void DOM::SetPathRenames(const PathRenames& renames)
{
    const VWriteLocker locker(m_lock);
    m_pathRenames = renames;
}

void DOM::AddCaptionRename(const VString& oldCaption, const VString& newCaption)
{
    const VWriteLocker locker(m_lock);
    if (!m_captionRenames.emplace(oldCaption, newCaption).second)
        ThrowLogicException(Assertions::CaptionAlreadyRenamed);
}

void DOM::AddDataSourceRename(const VString& oldName, const VString& newName)
{
    const VWriteLocker locker(m_lock);
    m_dataSourceRenames.insert_or_assign(oldName, newName);
}

void DOM::AddDataConnectionRename(const VString& oldName, const VString& newName)
{
    const VWriteLocker locker(m_lock);
    m_dataConnectionRenames.insert_or_assign(oldName, newName);
}

void DOM::AddMapSourceRename(const VString& oldName, const VString& newName)
{
    const VWriteLocker locker(m_lock);
    m_mapSourceRenames.insert_or_assign(oldName, newName);
}

void DOM::AddFieldRename(const FieldName& oldName, const FieldName& newName)
{
    const VWriteLocker locker(m_lock);
    m_fieldRenames.insert_or_assign(oldName, newName);
}

VString DOM::GetCaptionRenameIfItExists(const VString& caption) const
{
    const VReadLocker locker(m_lock);
    return Renamed(m_captionRenames, caption);
}

VString DOM::RenameDataSource(const VString& name) const
{
    const VReadLocker locker(m_lock);
    return Renamed(m_dataSourceRenames, name);
}

VString DOM::RenameDataConnection(const VString& name) const
{
    const VReadLocker locker(m_lock);
    return Renamed(m_dataConnectionRenames, name);
}

VString DOM::RenameMapSource(const VString& name) const
{
    const VReadLocker locker(m_lock);
    return Renamed(m_mapSourceRenames, name);
}

VString DOM::UnRenameDataSource(const VString& name) const
{
    const VReadLocker locker(m_lock);
    for (const auto& [oldName, newName] : m_dataSourceRenames) {
        if (newName == name)
            return oldName;
    }
    return name;
}

FieldName DOM::RenameField(FieldName field) const
{
    if (field.IsEmpty())
        return field;
    const VReadLocker locker(m_lock);
    if (field.GetRootValue() == m_protectedDataSourceName)
        return field;
    const auto dataSource = m_dataSourceRenames.find(field.GetRootValue());
    if (dataSource != m_dataSourceRenames.end())
        field.SetRootValue(dataSource->second);
    return Renamed(m_fieldRenames, field);
}
