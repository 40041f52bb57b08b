// The children of an element as plain pointers.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <vector>

#include "vancorexml/main/parser/XMLExport.h"

class DOMElement;

// A view of an element's children in document order. It owns nothing, reads the element's
// children at each call and so follows later changes; valid while the element lives.
// Adding or removing a child invalidates iterators. The view of a constant element is a
// constant one; keep it so, for a copy of it that is not yields elements to change.
//
//     for (const DOMElement* child : element.GetChildren()) Print(child->GetName());
class VANCOREXML_API DOMElementChildren {
public:
    // Steps over the owning pointers and yields the elements themselves; random access.
    template <typename T>
    class IteratorTemplate {
    public:
        using iterator_concept = std::random_access_iterator_tag;
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T*;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = T*;

        IteratorTemplate() = default;
        explicit IteratorTemplate(const std::unique_ptr<DOMElement>* position) : m_position(position) {}
        // A constant iterator from a mutable one.
        template <typename U, typename = std::enable_if_t<std::is_const_v<T> && std::is_same_v<const U, T>>>
        IteratorTemplate(const IteratorTemplate<U>& other) : m_position(other.m_position) {}

        T* operator*() const { return m_position->get(); }
        T* operator[](difference_type n) const { return m_position[n].get(); }
        IteratorTemplate& operator++() { ++m_position; return *this; }
        IteratorTemplate operator++(int) { IteratorTemplate old(*this); ++m_position; return old; }
        IteratorTemplate& operator--() { --m_position; return *this; }
        IteratorTemplate operator--(int) { IteratorTemplate old(*this); --m_position; return old; }
        IteratorTemplate& operator+=(difference_type n) { m_position += n; return *this; }
        IteratorTemplate& operator-=(difference_type n) { m_position -= n; return *this; }
        friend IteratorTemplate operator+(IteratorTemplate i, difference_type n) { return i += n; }
        friend IteratorTemplate operator+(difference_type n, IteratorTemplate i) { return i += n; }
        friend IteratorTemplate operator-(IteratorTemplate i, difference_type n) { return i -= n; }
        friend difference_type operator-(IteratorTemplate a, IteratorTemplate b) { return a.m_position - b.m_position; }
        friend bool operator==(IteratorTemplate a, IteratorTemplate b) { return a.m_position == b.m_position; }
        friend bool operator!=(IteratorTemplate a, IteratorTemplate b) { return a.m_position != b.m_position; }
        friend bool operator<(IteratorTemplate a, IteratorTemplate b) { return a.m_position < b.m_position; }
        friend bool operator>(IteratorTemplate a, IteratorTemplate b) { return b < a; }
        friend bool operator<=(IteratorTemplate a, IteratorTemplate b) { return !(b < a); }
        friend bool operator>=(IteratorTemplate a, IteratorTemplate b) { return !(a < b); }

    private:
        template <typename U>
        friend class IteratorTemplate;

        const std::unique_ptr<DOMElement>* m_position = nullptr;
    };

    using iterator = IteratorTemplate<DOMElement>;
    using const_iterator = IteratorTemplate<DOMElement const>;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    explicit DOMElementChildren(DOMElement& element) noexcept : m_element(&element) {}

    std::size_t size() const noexcept;
    bool empty() const noexcept;

    // Unchecked, as are front and back.
    DOMElement* operator[](std::size_t position);
    const DOMElement* operator[](std::size_t position) const;
    // Throws std::out_of_range ("invalid vector subscript") at or past size().
    DOMElement* at(std::size_t position);
    const DOMElement* at(std::size_t position) const;
    DOMElement* front() { return (*this)[0]; }
    const DOMElement* front() const { return (*this)[0]; }
    DOMElement* back() { return (*this)[size() - 1]; }
    const DOMElement* back() const { return (*this)[size() - 1]; }

    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }

private:
    DOMElement* m_element;
};
