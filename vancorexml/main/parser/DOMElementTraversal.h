// A walk over a subtree, parents before children.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "vancorexml/main/parser/DOMElement.h"

// Depth-first preorder: the start element, then the subtree of each of its children in document
// order. The walk has a stack on the heap, so a deep tree does not exhaust the call stack. The walk
// points into the tree, so the tree must not change until it ends.
//
//     for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(root))
//         Print(element.GetName());
namespace DOMElementTraversal {

// Yields the elements one by one. T is DOMElement or DOMElement const.
template <typename T>
class PreorderGeneratorTemplate {
public:
    explicit PreorderGeneratorTemplate(T& start)
    {
        m_stack.reserve(Reserved);
        m_stack.push_back(&start);
    }
    PreorderGeneratorTemplate(const PreorderGeneratorTemplate& other)
    {
        m_stack.reserve((std::max)(Reserved, other.m_stack.size()));
        m_stack = other.m_stack;
    }
    // Leaves `other` at its end.
    PreorderGeneratorTemplate(PreorderGeneratorTemplate&& other) noexcept = default;
    PreorderGeneratorTemplate& operator=(const PreorderGeneratorTemplate& other) = default;
    PreorderGeneratorTemplate& operator=(PreorderGeneratorTemplate&& other) noexcept = default;

    // Returns the next element, or null if there are no more.
    T* Next()
    {
        if (m_stack.empty())
            return nullptr;
        T* const element = m_stack.back();
        m_stack.pop_back();
        auto&& children = element->GetChildren();
        for (std::size_t i = children.size(); i > 0; --i)
            m_stack.push_back(children[i - 1]);
        return element;
    }

private:
    // Large enough for most documents, so the stack is allocated once.
    static constexpr std::size_t Reserved = 128;

    std::vector<T*> m_stack;
};

// An input iterator. A copy continues independently.
template <typename T>
class PreorderIteratorTemplate {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    // The end iterator.
    PreorderIteratorTemplate() = default;
    explicit PreorderIteratorTemplate(T& start)
        : m_generator(std::make_unique<PreorderGeneratorTemplate<T>>(start)),
          m_current(m_generator->Next())
    {}
    PreorderIteratorTemplate(const PreorderIteratorTemplate& other)
        : m_generator(other.m_generator ? std::make_unique<PreorderGeneratorTemplate<T>>(*other.m_generator) : nullptr),
          m_current(other.m_current)
    {}
    // Leaves `other` at the end.
    PreorderIteratorTemplate(PreorderIteratorTemplate&& other) noexcept
        : m_generator(std::move(other.m_generator)),
          m_current(std::exchange(other.m_current, nullptr))
    {}
    PreorderIteratorTemplate& operator=(const PreorderIteratorTemplate& other)
    {
        PreorderIteratorTemplate copy(other);
        *this = std::move(copy);
        return *this;
    }
    PreorderIteratorTemplate& operator=(PreorderIteratorTemplate&& other) noexcept
    {
        PreorderIteratorTemplate moved(std::move(other));
        std::swap(m_generator, moved.m_generator);
        std::swap(m_current, moved.m_current);
        return *this;
    }

    T& operator*() const { return *m_current; }
    T* operator->() const { return m_current; }
    PreorderIteratorTemplate& operator++()
    {
        m_current = m_generator->Next();
        return *this;
    }
    PreorderIteratorTemplate operator++(int)
    {
        PreorderIteratorTemplate before(*this);
        ++*this;
        return before;
    }

    // Compares the current elements only, not the elements that are left to visit.
    friend bool operator==(const PreorderIteratorTemplate& a, const PreorderIteratorTemplate& b)
    {
        return a.m_current == b.m_current;
    }
    friend bool operator!=(const PreorderIteratorTemplate& a, const PreorderIteratorTemplate& b) { return !(a == b); }

private:
    std::unique_ptr<PreorderGeneratorTemplate<T>> m_generator;
    T* m_current = nullptr;
};

// The walk as a range. It can be iterated any number of times. A moved-from traversal is empty.
template <typename T>
class PreorderTraversalTemplate {
public:
    explicit PreorderTraversalTemplate(T& start) : m_begin(start) {}

    PreorderIteratorTemplate<T> begin() const { return m_begin; }
    PreorderIteratorTemplate<T> end() const { return m_end; }

private:
    PreorderIteratorTemplate<T> m_begin;
    PreorderIteratorTemplate<T> m_end;
};

using PreorderGenerator = PreorderGeneratorTemplate<::DOMElement const>;
using PreorderIterator = PreorderIteratorTemplate<::DOMElement const>;
using PreorderTraversal = PreorderTraversalTemplate<::DOMElement const>;
using MutablePreorderGenerator = PreorderGeneratorTemplate<::DOMElement>;
using MutablePreorderIterator = PreorderIteratorTemplate<::DOMElement>;
using MutablePreorderTraversal = PreorderTraversalTemplate<::DOMElement>;

}  // namespace DOMElementTraversal
