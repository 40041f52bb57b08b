// Attribute name to value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <type_traits>
#include <utility>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"
#include "vansys/VHash32.h"

// A type from which an attribute's name and value can be constructed.
template <typename Pair>
concept AttributePair = std::is_constructible_v<std::pair<const VString, VString>, Pair>;

// An iterator over values of such a type.
template <typename Iterator>
concept AttributeIterator =
    std::is_convertible_v<typename std::iterator_traits<Iterator>::iterator_category, std::input_iterator_tag> &&
    AttributePair<typename std::iterator_traits<Iterator>::reference>;

// The attributes of an element: an unordered map from name to value. It has the interface of
// std::unordered_map except for node handles, buckets and allocators; hints are ignored. A single
// attribute is stored in the map object, several in one block, because a document has many elements
// with few attributes each.
//
// Ownership: a value. The order of iteration is unspecified and may change with an erase. Unlike with
// std::unordered_map, every insert, erase, move and swap invalidates all iterators, pointers and
// references into the map.
//
// Threads: one writer or many readers.
//
// Cost: a lookup is constant. It scans up to 16 entries and uses a hash index for more. The hash key
// is random per process, so nobody can choose names that collide. Inserting n entries is linear in n.
class VANCOREXML_API AttributeMap {
public:
    using key_type = VString;
    using mapped_type = VString;
    using value_type = std::pair<const VString, VString>;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using hasher = VStringHash;
    using key_equal = std::equal_to<VString>;
    using reference = value_type&;
    using const_reference = const value_type&;
    using pointer = value_type*;
    using const_pointer = const value_type*;
    using iterator = value_type*;
    using const_iterator = const value_type*;

    // NOLINTNEXTLINE(modernize-use-equals-default): a defaulted one is deleted, because m_entry has a constructor.
    AttributeMap() noexcept {}
    // If names are equal, the first entry stays.
    AttributeMap(std::initializer_list<value_type> entries);
    template <AttributeIterator Iterator>
    AttributeMap(Iterator first, Iterator last) : AttributeMap()
    {
        insert(first, last);
    }
    AttributeMap(const AttributeMap& other);
    // Leaves `other` empty.
    AttributeMap(AttributeMap&& other) noexcept { AdoptEntries(other); }
    AttributeMap& operator=(const AttributeMap& other);
    // Leaves `other` empty, unless it is this map.
    AttributeMap& operator=(AttributeMap&& other) noexcept;
    AttributeMap& operator=(std::initializer_list<value_type> entries) { return *this = AttributeMap(entries); }
    ~AttributeMap() { clear(); }

    size_type size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }
    // Inserting more entries than this throws std::length_error.
    static size_type max_size() noexcept { return MaxSize; }
    hasher hash_function() const { return hasher(); }
    key_equal key_eq() const { return key_equal(); }
    iterator begin() noexcept { return IsInBlock() ? m_block : &m_entry; }
    iterator end() noexcept { return begin() + size(); }
    const_iterator begin() const noexcept { return IsInBlock() ? m_block : &m_entry; }
    const_iterator end() const noexcept { return begin() + size(); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }

    iterator find(const VString& name) noexcept
    {
        return begin() +
            (static_cast<const AttributeMap*>(this)->find(name) - static_cast<const AttributeMap*>(this)->begin());
    }
    const_iterator find(const VString& name) const noexcept;
    size_type count(const VString& name) const noexcept { return find(name) != end() ? 1 : 0; }
    bool contains(const VString& name) const noexcept { return find(name) != end(); }
    // Returns the entry of that name as a range, or an empty range.
    std::pair<iterator, iterator> equal_range(const VString& name) noexcept
    {
        const iterator i = find(name);
        return {i, i != end() ? i + 1 : i};
    }
    std::pair<const_iterator, const_iterator> equal_range(const VString& name) const noexcept
    {
        const const_iterator i = find(name);
        return {i, i != end() ? i + 1 : i};
    }
    // Throws std::out_of_range if there is no such name.
    VString& at(const VString& name);
    const VString& at(const VString& name) const;
    // Inserts an empty value if there is no such name.
    VString& operator[](const VString& name) { return try_emplace(name).first->second; }

    // Allocates memory for a total of `count` entries.
    void reserve(size_type count);
    // These insert if the name is new. They return an iterator to the entry of that name and whether
    // it was inserted; with a hint, only the iterator. If the name exists, try_emplace does not move
    // from `args`.
    std::pair<iterator, bool> insert(const value_type& entry) { return try_emplace(entry.first, entry.second); }
    std::pair<iterator, bool> insert(value_type&& entry) { return try_emplace(entry.first, std::move(entry.second)); }
    template <AttributePair Pair>
    std::pair<iterator, bool> insert(Pair&& entry)
    {
        return emplace(std::forward<Pair>(entry));
    }
    iterator insert(const_iterator, const value_type& entry) { return insert(entry).first; }
    iterator insert(const_iterator, value_type&& entry) { return insert(std::move(entry)).first; }
    template <AttributePair Pair>
    iterator insert(const_iterator, Pair&& entry)
    {
        return emplace(std::forward<Pair>(entry)).first;
    }
    void insert(std::initializer_list<value_type> entries) { insert(entries.begin(), entries.end()); }
    template <AttributeIterator Iterator>
    void insert(Iterator first, Iterator last)
    {
        for (; first != last; ++first)
            insert(*first);
    }
    template <typename... Args>
    std::pair<iterator, bool> emplace(Args&&... args)
    {
        return insert(value_type(std::forward<Args>(args)...));
    }
    template <typename... Args>
    iterator emplace_hint(const_iterator, Args&&... args)
    {
        return emplace(std::forward<Args>(args)...).first;
    }
    template <typename... Args>
    std::pair<iterator, bool> try_emplace(const VString& name, Args&&... args)
    {
        const iterator found = find(name);
        if (found != end())
            return {found, false};
        return {InsertNew(name, VString(std::forward<Args>(args)...)), true};
    }
    template <typename... Args>
    iterator try_emplace(const_iterator, const VString& name, Args&&... args)
    {
        return try_emplace(name, std::forward<Args>(args)...).first;
    }
    // Inserts without a lookup. Precondition: the map has no entry named `name`. Otherwise it holds the name twice,
    // and a lookup finds either entry.
    iterator InsertNew(const VString& name, VString&& value)
    {
        return m_size != m_capacity ? Append(name, std::move(value)) : GrowAndAppend(name, std::move(value));
    }
    // Inserts the entry, or overwrites the value of an existing one.
    std::pair<iterator, bool> insert_or_assign(const VString& name, VString value);
    iterator insert_or_assign(const_iterator, const VString& name, VString value)
    {
        return insert_or_assign(name, std::move(value)).first;
    }
    // Moves the entries of `other` whose names are new; the others stay in `other`. Linear.
    void merge(AttributeMap& other);
    void merge(AttributeMap&& other) { merge(other); }
    size_type erase(const VString& name);
    // Returns the iterator with which a loop from begin() to end() continues without skipping an entry.
    iterator erase(const_iterator position);
    iterator erase(const_iterator first, const_iterator last);
    void clear() noexcept
    {
        if (m_size != 0 || IsInBlock())
            DestroyEntries();
    }
    void swap(AttributeMap& other) noexcept;

    friend void swap(AttributeMap& a, AttributeMap& b) noexcept { a.swap(b); }
    // True if the maps have the same names with equal values.
    friend VANCOREXML_API bool operator==(const AttributeMap& a, const AttributeMap& b) noexcept;
    friend bool operator!=(const AttributeMap& a, const AttributeMap& b) noexcept { return !(a == b); }

private:
    bool IsInBlock() const noexcept { return m_capacity > 1; }
    // Precondition: this map is empty and has no block. Leaves `other` in that state.
    void AdoptEntries(AttributeMap& other) noexcept;
    // Destroys the entries and frees the block.
    void DestroyEntries() noexcept;
    void Reallocate(size_type capacity);
    // Precondition: the map has no entry named `name`, and has spare capacity.
    iterator Append(const VString& name, VString&& value) noexcept;
    // Precondition: the map has no entry named `name`. Increases the capacity first.
    iterator GrowAndAppend(const VString& name, VString&& value);

    static constexpr size_type MaxSize = (std::numeric_limits<std::uint32_t>::max)() / 4;

    std::uint32_t m_size = 0;
    std::uint32_t m_capacity = 1;
    union {
        value_type m_entry;  // the only entry, if the capacity is 1
        // The block, if the capacity is larger. It has room for `m_capacity` entries. If the capacity is above 16,
        // the slots of the hash index follow.
        value_type* m_block;
    };
};

namespace std {

// Erases the entries for which `predicate` is true; returns their number. Linear.
template <typename Predicate>
AttributeMap::size_type erase_if(AttributeMap& map, Predicate predicate)
{
    const AttributeMap::size_type before = map.size();
    for (AttributeMap::iterator i = map.begin(); i != map.end();) {
        if (predicate(*i))
            i = map.erase(i);
        else
            ++i;
    }
    return before - map.size();
}

}  // namespace std
