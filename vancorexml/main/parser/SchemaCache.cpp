#include "vancorexml/main/parser/SchemaCache.h"

#include <algorithm>
#include <list>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

#include "vancoreplatform/ProcessEnd.h"
#include "vancoreplatform/StaticObject.h"
#include "vancorexml/main/parser/XercesBuffer.h"
#include "vancorexml/main/parser/XercesXMLParserImpl.h"

namespace {

// Returns an empty view if Xerces detects the encoding.
std::u16string_view EncodingOf(const XercesInputSource& source)
{
    const XMLCh* const encoding = source.Get().getEncoding();
    return encoding ? std::u16string_view(encoding) : std::u16string_view();
}

struct Entry {
    std::unique_ptr<CompiledSchemas> schemas;
    std::size_t size;
};

struct Cache {
    std::mutex mutex;
    // Guarded by mutex, like size. The last used schemas come first.
    std::list<Entry> entries;
    std::size_t size = 0;  // of all entries
};

Cache& GetCache()
{
    return GetStaticObject<Cache>();
}

bool HaveTexts(const CompiledSchemas& schemas, const std::vector<SchemaCache::Wanted>& wanted)
{
    return std::equal(schemas.texts.begin(),
        schemas.texts.end(),
        wanted.begin(),
        wanted.end(),
        [](const SchemaText& text, const SchemaCache::Wanted& each) { return text.IsEqual(each.id, each.source); });
}

}  // namespace

SchemaText::SchemaText(VString schemaId, const XercesInputSource& source)
    : id(std::move(schemaId)),
      bytes(source.View()),
      encoding(EncodingOf(source))
{}

bool SchemaText::IsEqual(const VString& otherId, const XercesInputSource& source) const
{
    return id == otherId && encoding == EncodingOf(source) && bytes == source.View();
}

CompiledSchemas::CompiledSchemas() = default;

CompiledSchemas::~CompiledSchemas()
{
    memory.BeginDestruction();
}

std::size_t CompiledSchemas::Size() const
{
    std::size_t size = memory.Size() + (reader ? reader->GetMemory().Size() : 0);
    for (const SchemaText& text : texts)
        size += text.bytes.size();
    return size;
}

std::unique_ptr<CompiledSchemas> SchemaCache::Take(const std::vector<Wanted>& texts)
{
    Cache& cache = GetCache();
    const std::lock_guard lock(cache.mutex);
    const auto found = std::find_if(cache.entries.begin(), cache.entries.end(), [&](const Entry& entry) {
        return HaveTexts(*entry.schemas, texts);
    });
    if (found == cache.entries.end())
        return nullptr;
    std::unique_ptr<CompiledSchemas> schemas = std::move(found->schemas);
    cache.size -= found->size;
    cache.entries.erase(found);
    return schemas;
}

void SchemaCache::Put(std::unique_ptr<CompiledSchemas> schemas) noexcept
{
    const std::size_t size = schemas->Size();
    if (IsProcessEnding() || size > MostBytes)
        return;
    std::list<Entry> changed;  // first the new entry, then the entries that leave the cache
    try {
        changed.push_back({std::move(schemas), size});
    } catch (const std::bad_alloc&) {
        return;  // the next parser compiles its schemas
    }
    Cache& cache = GetCache();
    const std::lock_guard lock(cache.mutex);
    cache.entries.splice(cache.entries.begin(), changed);
    cache.size += size;
    while (cache.entries.size() > MostSchemas || cache.size > MostBytes) {
        cache.size -= cache.entries.back().size;
        changed.splice(changed.end(), cache.entries, std::prev(cache.entries.end()));
    }
}

void SchemaCache::Clear() noexcept
{
    std::list<Entry> old;
    Cache& cache = GetCache();
    const std::lock_guard lock(cache.mutex);
    old.swap(cache.entries);
    cache.size = 0;
}

std::size_t SchemaCache::Count()
{
    Cache& cache = GetCache();
    const std::lock_guard lock(cache.mutex);
    return cache.entries.size();
}
