// The children of an element as plain pointers.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>  // declares std::ranges::enable_borrowed_range
#include <type_traits>
#include <vector>

#include "vancorexml/main/parser/XMLExport.h"

class DOMElement;
class DOMElementConstChildren;

// A view of an element's children in document order. It owns nothing and reads the children at
// each call, so it follows later changes. It is valid while the element lives. Adding or removing
// a child invalidates iterators. A constant view and the view of a constant element yield constant
// children.
//
//     for (const DOMElement* child : element.GetChildren()) Print(child->GetName());
class VANCOREXML_API DOMElementChildren {
public:
    // Yields plain pointers by value. It is therefore a random access iterator in C++20, but only an
    // input iterator for the classic algorithms. To step back, use --, - or std::ranges::prev:
    // std::prev and std::advance with a negative distance need a classic bidirectional iterator and
    // would never return.
    template <typename T>
    class IteratorTemplate {
    public:
        using iterator_concept = std::random_access_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using value_type = T*;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = T*;

        IteratorTemplate() = default;
        explicit IteratorTemplate(const std::unique_ptr<::DOMElement>* position) : m_position(position) {}
        // Converts a mutable iterator into a constant one.
        template <typename U, typename = std::enable_if_t<std::is_const_v<T> && std::is_same_v<const U, T>>>
        IteratorTemplate(const IteratorTemplate<U>& other) : m_position(other.m_position)
        {}

        T* operator*() const { return m_position->get(); }
        T* operator[](difference_type n) const { return m_position[n].get(); }
        IteratorTemplate& operator++()
        {
            ++m_position;
            return *this;
        }
        IteratorTemplate operator++(int)
        {
            IteratorTemplate old(*this);
            ++m_position;
            return old;
        }
        IteratorTemplate& operator--()
        {
            --m_position;
            return *this;
        }
        IteratorTemplate operator--(int)
        {
            IteratorTemplate old(*this);
            --m_position;
            return old;
        }
        IteratorTemplate& operator+=(difference_type n)
        {
            m_position += n;
            return *this;
        }
        IteratorTemplate& operator-=(difference_type n)
        {
            m_position -= n;
            return *this;
        }
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

        const std::unique_ptr<::DOMElement>* m_position = nullptr;
    };

    using value_type = ::DOMElement*;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = ::DOMElement*;
    using const_reference = const ::DOMElement*;
    using iterator = IteratorTemplate<::DOMElement>;
    using const_iterator = IteratorTemplate<::DOMElement const>;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    explicit DOMElementChildren(::DOMElement& element) noexcept : m_element(&element) {}
    // Deleted: the result would let a caller change the children of a constant element.
    DOMElementChildren(const DOMElementConstChildren& children) = delete;
    DOMElementChildren& operator=(const DOMElementConstChildren& children) = delete;

    size_type size() const noexcept;
    bool empty() const noexcept;

    // Unchecked access. Precondition of operator[]: `position` is below size(). Precondition of front and
    // back: the view is not empty.
    ::DOMElement* operator[](size_type position);
    const ::DOMElement* operator[](size_type position) const;
    // Throws std::out_of_range ("invalid vector subscript") at or past size().
    ::DOMElement* at(size_type position);
    const ::DOMElement* at(size_type position) const;
    ::DOMElement* front() { return (*this)[0]; }
    const ::DOMElement* front() const { return (*this)[0]; }
    ::DOMElement* back() { return (*this)[size() - 1]; }
    const ::DOMElement* back() const { return (*this)[size() - 1]; }

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
    ::DOMElement* m_element;
};

// The view of a constant element's children: a DOMElementChildren that yields constant children only.
// Declare variables of it with `auto`. It binds to `const DOMElementChildren&`, but cannot be copied
// into a DOMElementChildren.
class DOMElementConstChildren : public DOMElementChildren {
public:
    using value_type = const ::DOMElement*;
    using reference = const ::DOMElement*;
    using iterator = const_iterator;
    using reverse_iterator = const_reverse_iterator;

    explicit DOMElementConstChildren(const ::DOMElement& element) noexcept
        : DOMElementChildren(const_cast<::DOMElement&>(element))
    {}
    DOMElementConstChildren(const DOMElementChildren& children) noexcept : DOMElementChildren(children) {}
    DOMElementConstChildren(const DOMElementConstChildren& other) noexcept : DOMElementChildren(other.View()) {}
    DOMElementConstChildren& operator=(const DOMElementConstChildren& other) noexcept
    {
        DOMElementChildren::operator=(other.View());
        return *this;
    }

    const ::DOMElement* operator[](size_type position) const { return View()[position]; }
    const ::DOMElement* at(size_type position) const { return View().at(position); }
    const ::DOMElement* front() const { return View().front(); }
    const ::DOMElement* back() const { return View().back(); }

    iterator begin() const { return View().begin(); }
    iterator end() const { return View().end(); }
    reverse_iterator rbegin() const { return View().rbegin(); }
    reverse_iterator rend() const { return View().rend(); }

private:
    const DOMElementChildren& View() const noexcept { return *this; }
};

// Iterators refer to the element's children and stay valid when the view dies.
template <>
inline constexpr bool std::ranges::enable_borrowed_range<DOMElementChildren> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<DOMElementConstChildren> = true;
