// Attribute name to value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLExport.h"

// The attributes of an element: an unordered map from name to value with the interface of
// the standard's, kept flat, because an element has few attributes and a document many
// elements: one attribute within the map itself, more of them in one block.
//
// Ownership: a value. The order of iteration carries no meaning and changes with an erase.
// Unlike the standard's map, anything that inserts, erases, moves or swaps invalidates all
// iterators, pointers and references into the map.
//
// Threads: one writer or many readers.
//
// Cost: lookups are constant; up to 16 entries they are a scan of the block, above that a
// hash index whose key is drawn per process, so names cannot be chosen to collide.
// Inserting n entries is linear in n.
class VANCOREXML_API AttributeMap {
public:
    using key_type = VString;
    using mapped_type = VString;
    using value_type = std::pair<const VString, VString>;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = value_type&;
    using const_reference = const value_type&;
    using pointer = value_type*;
    using const_pointer = const value_type*;
    using iterator = value_type*;
    using const_iterator = const value_type*;

    AttributeMap() noexcept {}
    // Of equal names the first stays.
    AttributeMap(std::initializer_list<value_type> entries);
    template <typename Iterator>
    AttributeMap(Iterator first, Iterator last) : AttributeMap() { insert(first, last); }
    AttributeMap(const AttributeMap& other);
    // Leaves `other` empty.
    AttributeMap(AttributeMap&& other) noexcept { Take(other); }
    AttributeMap& operator=(const AttributeMap& other);
    // Nothing when `other` is this map; else `other` is left empty.
    AttributeMap& operator=(AttributeMap&& other) noexcept;
    ~AttributeMap() { clear(); }

    size_type size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }
    iterator begin() noexcept { return IsInBlock() ? m_block : &m_entry; }
    iterator end() noexcept { return begin() + size(); }
    const_iterator begin() const noexcept { return IsInBlock() ? m_block : &m_entry; }
    const_iterator end() const noexcept { return begin() + size(); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }

    iterator find(const VString& name) noexcept { return begin() + (static_cast<const AttributeMap*>(this)->find(name) - static_cast<const AttributeMap*>(this)->begin()); }
    const_iterator find(const VString& name) const noexcept;
    size_type count(const VString& name) const noexcept { return find(name) != end() ? 1 : 0; }
    bool contains(const VString& name) const noexcept { return find(name) != end(); }
    // The entry of that name as a range; empty when there is none.
    std::pair<iterator, iterator> equal_range(const VString& name) noexcept { const iterator i = find(name); return {i, i != end() ? i + 1 : i}; }
    std::pair<const_iterator, const_iterator> equal_range(const VString& name) const noexcept { const const_iterator i = find(name); return {i, i != end() ? i + 1 : i}; }
    // Throws std::out_of_range when there is no such name.
    VString& at(const VString& name);
    const VString& at(const VString& name) const;
    // Inserts the empty value when there is no such name.
    VString& operator[](const VString& name) { return try_emplace(name).first->second; }

    // Makes room for `count` entries in all.
    void reserve(size_type count);
    // Inserts unless the name is there; says where it is and whether it was inserted.
    std::pair<iterator, bool> insert(const value_type& entry) { return try_emplace(entry.first, entry.second); }
    void insert(std::initializer_list<value_type> entries) { insert(entries.begin(), entries.end()); }
    template <typename Iterator>
    void insert(Iterator first, Iterator last)
    {
        for (; first != last; ++first)
            insert(*first);
    }
    std::pair<iterator, bool> emplace(const VString& name, const VString& value) { return try_emplace(name, value); }
    std::pair<iterator, bool> try_emplace(const VString& name, VString value = VString());
    // Inserts, or overwrites the value.
    std::pair<iterator, bool> insert_or_assign(const VString& name, VString value);
    size_type erase(const VString& name);
    // The position now holds an entry not yet seen by a walk from the front, or is the end.
    iterator erase(const_iterator position);
    iterator erase(const_iterator first, const_iterator last);
    void clear() noexcept { if (m_size != 0 || IsInBlock()) Release(); }
    void swap(AttributeMap& other) noexcept;

    friend void swap(AttributeMap& a, AttributeMap& b) noexcept { a.swap(b); }
    // The same names with equal values.
    friend VANCOREXML_API bool operator==(const AttributeMap& a, const AttributeMap& b) noexcept;
    friend bool operator!=(const AttributeMap& a, const AttributeMap& b) noexcept { return !(a == b); }

private:
    friend class XercesXMLHandler;   // appends

    bool IsInBlock() const noexcept { return m_capacity > 1; }
    // For an empty map without a block; leaves `other` like that.
    void Take(AttributeMap& other) noexcept;
    // Back to an empty map without a block.
    void Release() noexcept;
    void Grow(size_type capacity);
    // For a name that is not there, while there is room.
    iterator Append(const VString& name, VString&& value) noexcept;

    std::uint32_t m_size = 0;
    std::uint32_t m_capacity = 1;
    union {
        value_type m_entry;    // the only one, while the capacity is 1
        // Else that many entries and behind them, when the capacity is above what a scan
        // serves, the slots of the hash index.
        value_type* m_block;
    };
};
