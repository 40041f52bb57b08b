#include "vancorexml/main/parser/PathRenames.h"

// Assigns all three maps or none: if an allocation fails, the target is unchanged.
PathRenames& PathRenames::operator=(const PathRenames& other)
{
    if (this != &other) {
        PathRenames copy(other);
        m_pathMap.swap(copy.m_pathMap);
        m_crcPaths.swap(copy.m_crcPaths);
        m_seenFolders.swap(copy.m_seenFolders);
    }
    return *this;
}

void PathRenames::SetRename(const VPath& from, const VPath& to)
{
    m_pathMap.insert_or_assign(from, to);
}

void PathRenames::SetCRC(const VPath& from, const VPath& to, int crc)
{
    if (from.IsEmpty())
        return;

    // Copy the paths before the map changes: `from` and `to` may refer to its entries.
    VPath fromFolder = from;
    fromFolder.RemoveFilename();
    VPath toFolder = to;
    toFolder.RemoveFilename();

    const auto [known, isNew] = m_crcPaths.try_emplace(crc, to);
    if (!isNew)
        m_pathMap.insert_or_assign(from, known->second);
    if (fromFolder.IsEmpty())
        return;

    if (m_seenFolders.insert(fromFolder).second) {
        m_pathMap.insert_or_assign(fromFolder, toFolder);
        return;
    }
    const auto folder = m_pathMap.find(fromFolder);
    if (folder != m_pathMap.end() && folder->second != toFolder)
        m_pathMap.erase(folder);
}

VPath PathRenames::RenamePath(const VPath& path) const
{
    const auto found = m_pathMap.find(path);
    return found != m_pathMap.end() ? found->second : path;
}

VPath PathRenames::RenamePathAbsolute(const VPath& path, const VPath& base) const
{
    for (const auto& [from, to] : m_pathMap) {
        if (base / from == path)
            return to == path ? VPath() : to;
    }
    return VPath();
}

VPath PathRenames::ReverseRenamePath(const VPath& path) const
{
    for (const auto& [from, to] : m_pathMap) {
        if (to == path)
            return from;
    }
    return VPath();
}

bool PathRenames::IsValidPath(const VPath& path) const
{
    const VString text = path.GenericString();
    for (const auto& [from, to] : m_pathMap) {
        if (text.startsWith(to.GenericString()))
            return true;
    }
    return false;
}

void PathRenames::ResetRenames()
{
    m_pathMap.clear();
    m_seenFolders.clear();
}
