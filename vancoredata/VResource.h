// Lookup of embedded resources by name.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// The registry of the resources of all modules. One per process; thread-safe.
class VANCOREDATA_API ResourceRegistrationCache {
public:
    static ResourceRegistrationCache& GetInstance();

    // Returns the name with which VResource finds the resource: "qualifier/alias", or `alias` if `qualifier` is empty.
    VString GetResourcePath(const VString& alias, const VString& qualifier) const;

    // Adds or removes a folder of Qt's resources, such as ":/vancorexml", in which names are looked up. A folder that
    // was added twice must be removed twice.
    void AddFolder(const VString& folder);
    void RemoveFolder(const VString& folder);

    // Registers `text` as the resource `name`. Registered texts take precedence over the folders. Registering a name
    // again replaces its text.
    void RegisterText(const VString& name, const VString& text);
    void UnregisterText(const VString& name);

    // Returns whether there is a resource called `name`, without reading it. Returns false if a part of the path
    // `name` is empty, "." or "..", so that no resource has a second name.
    bool Contains(const VString& name) const;

    // Reads the resource called `name` into `content`. Returns false and leaves `content` unchanged if there is no
    // such resource or it cannot be read. Linear in the size of the resource; other threads do not wait meanwhile.
    bool Find(const VString& name, VString* content) const;

private:
    // The content of a resource: its registered text, or the path of its file. Both are empty if there is no such
    // resource.
    struct Location {
        std::optional<VString> text;
        VString path;
    };

    ResourceRegistrationCache() = default;

    Location FindLocation(const VString& name) const;

    mutable std::mutex m_mutex;
    std::multiset<VString> m_folders;    // guarded by m_mutex
    std::map<VString, VString> m_texts;  // guarded by m_mutex
    // The resources that were read, by their paths. Reading them again needs nothing of Qt, which destroys its static
    // objects while other threads still use this object. Guarded by m_mutex.
    mutable std::map<VString, VString> m_read;
};

// A resource of the product. Its name is the path that ResourceRegistrationCache::GetResourcePath returns.
class VANCOREDATA_API VResource {
public:
    explicit VResource(const VString& name) : m_name(name) {}

    // Returns whether there is such a resource, without reading it.
    bool isValid() const;

protected:
    const VString& Name() const noexcept { return m_name; }

private:
    VString m_name;
};

// A resource that is a UTF-8 text.
class VANCOREDATA_API UTF8StringVResource : public VResource {
public:
    explicit UTF8StringVResource(const VString& name) : VResource(name) {}

    // Returns the text, or an empty text if there is no such resource.
    VString GetString() const;
};
