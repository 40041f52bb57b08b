#include "vancoredata/VResource.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

// A name may lead nowhere but into the folder that it is looked up in.
bool IsResourceName(const VString& name)
{
    if (name.IsEmpty() || name.startsWith(":") || name.startsWith("/")) return false;
    const std::vector<VString> parts = name.replace(u"\\", u"/").split(u'/');
    return std::find(parts.begin(), parts.end(), VString("..")) == parts.end();
}

std::optional<VString> ReadResource(const VString& path)
{
    if (!QFileInfo(path.ToQString()).isFile()) return std::nullopt;
    QFile file(path.ToQString());
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    return VString::fromUtf8(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

}  // namespace

ResourceRegistrationCache& ResourceRegistrationCache::GetInstance()
{
    static ResourceRegistrationCache instance;
    return instance;
}

VString ResourceRegistrationCache::GetResourcePath(const VString& alias, const VString& qualifier) const
{
    return qualifier.IsEmpty() ? alias : qualifier + "/" + alias;
}

void ResourceRegistrationCache::AddFolder(const VString& folder)
{
    const std::lock_guard lock(m_mutex);
    m_folders.insert(folder);
}

void ResourceRegistrationCache::RemoveFolder(const VString& folder)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_folders.find(folder);
    if (found != m_folders.end()) m_folders.erase(found);
}

void ResourceRegistrationCache::RegisterText(const VString& name, const VString& text)
{
    const std::lock_guard lock(m_mutex);
    m_texts[name] = text;
}

void ResourceRegistrationCache::UnregisterText(const VString& name)
{
    const std::lock_guard lock(m_mutex);
    m_texts.erase(name);
}

bool ResourceRegistrationCache::Find(const VString& name, VString* content) const
{
    if (!IsResourceName(name)) return false;
    const std::lock_guard lock(m_mutex);
    const auto text = m_texts.find(name);
    if (text != m_texts.end()) {
        *content = text->second;
        return true;
    }
    for (const VString& folder : m_folders) {
        if (const std::optional<VString> found = ReadResource(folder + "/" + name)) {
            *content = *found;
            return true;
        }
    }
    return false;
}

bool VResource::isValid() const
{
    VString content;
    return ResourceRegistrationCache::GetInstance().Find(m_name, &content);
}

VString UTF8StringVResource::GetString() const
{
    VString content;
    ResourceRegistrationCache::GetInstance().Find(Name(), &content);
    return content;
}
