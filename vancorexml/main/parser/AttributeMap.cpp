#include "vancorexml/main/parser/AttributeMap.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "vansys/VHash32.h"

namespace {

using Entry = AttributeMap::value_type;

// Up to this capacity a linear scan is as fast as a hash index, so the map allocates no index.
constexpr std::size_t ScanLimit = 16;

// Returns the number of slots of the index: 0 up to ScanLimit, else a power of two that is at least twice
// the capacity, so the index is at most half full.
std::size_t SlotCount(std::size_t capacity)
{
    if (capacity <= ScanLimit)
        return 0;
    std::size_t count = 64;
    while (count < 2 * capacity)
        count *= 2;
    return count;
}

// The open-addressing hash index behind the entries. A slot holds the position of an entry plus one, or
// 0 if it is free. Probing is linear. A removal shifts later slots back, so there are no tombstones and
// lookups stay constant after any number of erases.
class Index {
public:
    Index(const Entry* entries, std::size_t capacity) noexcept
        : m_entries(entries),
          m_slots(const_cast<std::uint32_t*>(reinterpret_cast<const std::uint32_t*>(entries + capacity))),
          m_mask(SlotCount(capacity) - 1)
    {}

    void Clear() noexcept { std::memset(m_slots, 0, (m_mask + 1) * sizeof(std::uint32_t)); }

    // Returns the slot of the name, or the free slot into which it belongs.
    std::size_t Find(const VString& name) const noexcept
    {
        std::size_t slot = Home(name);
        while (m_slots[slot] != 0 && m_entries[m_slots[slot] - 1].first != name)
            slot = Next(slot);
        return slot;
    }

    bool IsFree(std::size_t slot) const noexcept { return m_slots[slot] == 0; }
    std::size_t Position(std::size_t slot) const noexcept { return m_slots[slot] - 1; }
    void Set(std::size_t slot, std::size_t position) noexcept
    {
        m_slots[slot] = static_cast<std::uint32_t>(position + 1);
    }

    // Adds a name that is not in the index.
    void Insert(const VString& name, std::size_t position) noexcept
    {
        std::size_t slot = Home(name);
        while (m_slots[slot] != 0)
            slot = Next(slot);
        Set(slot, position);
    }

    void Remove(std::size_t slot) noexcept
    {
        for (std::size_t next = Next(slot); m_slots[next] != 0; next = Next(next)) {
            const std::size_t home = Home(m_entries[Position(next)].first);
            // An entry may fill the gap unless its home slot lies between the gap and its own slot.
            if (((next - home) & m_mask) >= ((next - slot) & m_mask)) {
                m_slots[slot] = m_slots[next];
                slot = next;
            }
        }
        m_slots[slot] = 0;
    }

private:
    std::size_t Home(const VString& name) const noexcept
    {
        return static_cast<std::size_t>(VSeededHash(name)) & m_mask;
    }
    std::size_t Next(std::size_t slot) const noexcept { return (slot + 1) & m_mask; }

    const Entry* m_entries;
    std::uint32_t* m_slots;
    std::size_t m_mask;
};

void MoveEntry(Entry* target, Entry& source) noexcept
{
    new (target) Entry(source.first, std::move(source.second));
    source.~Entry();
}

Entry* AllocateBlock(std::size_t capacity)
{
    if (capacity > AttributeMap::max_size())
        throw std::length_error("AttributeMap");
    const std::size_t slots = SlotCount(capacity);
    auto* const block = static_cast<Entry*>(::operator new(capacity * sizeof(Entry) + slots * sizeof(std::uint32_t)));
    if (slots != 0)
        Index(block, capacity).Clear();
    return block;
}

}  // namespace

AttributeMap::AttributeMap(std::initializer_list<value_type> entries)
{
    // Allocate all memory here, so that a later step cannot fail and leak the block.
    reserve(entries.size());
    for (const value_type& entry : entries)
        insert(entry);
}

AttributeMap::AttributeMap(const AttributeMap& other)
{
    reserve(other.size());
    for (const value_type& entry : other)
        Append(entry.first, VString(entry.second));
}

AttributeMap& AttributeMap::operator=(const AttributeMap& other)
{
    if (this != &other) {
        AttributeMap copy(other);
        swap(copy);
    }
    return *this;
}

AttributeMap& AttributeMap::operator=(AttributeMap&& other) noexcept
{
    if (this != &other) {
        clear();
        AdoptEntries(other);
    }
    return *this;
}

void AttributeMap::AdoptEntries(AttributeMap& other) noexcept
{
    if (other.IsInBlock())
        m_block = other.m_block;
    else if (other.m_size != 0)
        MoveEntry(&m_entry, other.m_entry);
    m_size = std::exchange(other.m_size, 0);
    m_capacity = std::exchange(other.m_capacity, 1);
}

void AttributeMap::swap(AttributeMap& other) noexcept
{
    AttributeMap entries;
    entries.AdoptEntries(other);
    other.AdoptEntries(*this);
    AdoptEntries(entries);
}

AttributeMap::const_iterator AttributeMap::find(const VString& name) const noexcept
{
    if (m_capacity <= ScanLimit)
        return std::find_if(begin(), end(), [&](const value_type& entry) { return entry.first == name; });
    const Index index(m_block, m_capacity);
    const std::size_t slot = index.Find(name);
    return index.IsFree(slot) ? end() : begin() + index.Position(slot);
}

VString& AttributeMap::at(const VString& name)
{
    return const_cast<VString&>(static_cast<const AttributeMap*>(this)->at(name));
}

const VString& AttributeMap::at(const VString& name) const
{
    const const_iterator position = find(name);
    if (position == end())
        throw std::out_of_range("AttributeMap::at");
    return position->second;
}

void AttributeMap::reserve(size_type count)
{
    if (count > m_capacity)
        Reallocate(count);
}

AttributeMap::iterator AttributeMap::Append(const VString& name, VString&& value) noexcept
{
    const iterator position = new (end()) value_type(name, std::move(value));
    if (m_capacity > ScanLimit)
        Index(m_block, m_capacity).Insert(name, m_size);
    ++m_size;
    return position;
}

AttributeMap::iterator AttributeMap::GrowAndAppend(const VString& name, VString&& value)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): `name` may refer to an entry, which moves.
    const VString key(name);
    Reallocate(2 * size() + 1);
    return Append(key, std::move(value));
}

std::pair<AttributeMap::iterator, bool> AttributeMap::insert_or_assign(const VString& name, VString value)
{
    const iterator found = find(name);
    if (found == end())
        return {InsertNew(name, std::move(value)), true};
    found->second = std::move(value);
    return {found, false};
}

void AttributeMap::merge(AttributeMap& other)
{
    for (const_iterator i = other.begin(); i != other.end();)
        i = try_emplace(i->first, i->second).second ? const_iterator(other.erase(i)) : i + 1;
}

AttributeMap::size_type AttributeMap::erase(const VString& name)
{
    const const_iterator position = find(name);
    if (position == end())
        return 0;
    erase(position);
    return 1;
}

AttributeMap::iterator AttributeMap::erase(const_iterator position)
{
    value_type* const entry = begin() + (position - cbegin());
    value_type* const last = end() - 1;
    if (m_capacity > ScanLimit) {
        Index index(m_block, m_capacity);
        index.Remove(index.Find(entry->first));
        if (entry != last)
            index.Set(index.Find(last->first), static_cast<std::size_t>(entry - begin()));
    }
    entry->~value_type();
    if (entry != last)
        MoveEntry(entry, *last);
    --m_size;
    return entry;
}

// Erases from the back. The last entry of the map fills each gap, so it must not be an entry that is still to be
// erased.
AttributeMap::iterator AttributeMap::erase(const_iterator first, const_iterator last)
{
    while (last != first)
        erase(--last);
    return begin() + (first - cbegin());
}

void AttributeMap::DestroyEntries() noexcept
{
    for (value_type& entry : *this)
        entry.~value_type();
    if (IsInBlock())
        ::operator delete(m_block);
    m_size = 0;
    m_capacity = 1;
}

void AttributeMap::Reallocate(size_type capacity)
{
    value_type* const grown = AllocateBlock(capacity);
    value_type* target = grown;
    for (value_type& entry : *this) {
        MoveEntry(target, entry);
        if (capacity > ScanLimit)
            Index(grown, capacity).Insert(target->first, static_cast<std::size_t>(target - grown));
        ++target;
    }
    if (IsInBlock())
        ::operator delete(m_block);
    m_block = grown;
    m_capacity = static_cast<std::uint32_t>(capacity);
}

bool operator==(const AttributeMap& a, const AttributeMap& b) noexcept
{
    return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&](const AttributeMap::value_type& entry) {
        const AttributeMap::const_iterator other = b.find(entry.first);
        return other != b.end() && other->second == entry.second;
    });
}
