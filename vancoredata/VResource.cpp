#include "vancoredata/VResource.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <vector>

#include "vancoreplatform/StaticObject.h"

namespace {

// Returns false for a name that leads outside the registered folders or is another spelling of a resource's name.
bool IsResourceName(const VString& name)
{
    if (name.startsWith(":"))
        return false;
    const std::vector<VString> parts = name.replace(u"\\", u"/").split(u'/');
    const auto leadsElsewhere = [](const VString& part) { return part.IsEmpty() || part == "." || part == ".."; };
    return std::none_of(parts.begin(), parts.end(), leadsElsewhere);
}

std::optional<VString> ReadResource(const VString& path)
{
    QFile file(path.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    return VString::fromUtf8(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

}  // namespace

ResourceRegistrationCache& ResourceRegistrationCache::GetInstance()
{
    struct Instance : ResourceRegistrationCache {};
    return GetStaticObject<Instance>();
}

VString ResourceRegistrationCache::GetResourcePath(const VString& alias, const VString& qualifier) const
{
    return qualifier.IsEmpty() ? alias : qualifier + "/" + alias;
}

void ResourceRegistrationCache::AddFolder(const VString& folder)
{
    const std::lock_guard lock(m_mutex);
    m_folders.insert(folder);
    m_read.clear();
}

void ResourceRegistrationCache::RemoveFolder(const VString& folder)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_folders.find(folder);
    if (found != m_folders.end())
        m_folders.erase(found);
    m_read.clear();
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

ResourceRegistrationCache::Location ResourceRegistrationCache::FindLocation(const VString& name) const
{
    if (!IsResourceName(name))
        return {};
    std::vector<VString> folders;
    {
        const std::lock_guard lock(m_mutex);
        const auto text = m_texts.find(name);
        if (text != m_texts.end())
            return {text->second, VString()};
        for (const VString& folder : m_folders) {
            const auto read = m_read.find(folder + "/" + name);
            if (read != m_read.end())
                return {read->second, read->first};
        }
        folders.assign(m_folders.begin(), m_folders.end());
    }
    // QFileInfo may load a library. On Windows, it then waits for threads that load or unload another library. These
    // threads may wait for the mutex, because libraries register their resources when they are loaded.
    for (const VString& folder : folders) {
        const VString path = folder + "/" + name;
        if (QFileInfo(path.ToQString()).isFile())
            return {std::nullopt, path};
    }
    return {};
}

bool ResourceRegistrationCache::Contains(const VString& name) const
{
    const Location location = FindLocation(name);
    return location.text || !location.path.IsEmpty();
}

bool ResourceRegistrationCache::Find(const VString& name, VString* content) const
{
    Location location = FindLocation(name);
    if (!location.text && !location.path.IsEmpty()) {
        location.text = ReadResource(location.path);
        const std::lock_guard lock(m_mutex);
        if (location.text)
            m_read.emplace(location.path, *location.text);
    }
    if (location.text)
        *content = *location.text;
    return location.text.has_value();
}

bool VResource::isValid() const
{
    return ResourceRegistrationCache::GetInstance().Contains(m_name);
}

VString UTF8StringVResource::GetString() const
{
    VString content;
    ResourceRegistrationCache::GetInstance().Find(Name(), &content);
    return content;
}
