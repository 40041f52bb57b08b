// Path queries: find elements by the names of their ancestors.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLExport.h"

// A path consists of segments separated by slashes. A segment is one of
// - a name: matches elements of exactly that name ("a/b": the children b of an element a),
// - "*": matches any one element,
// - empty: matches any number of levels ("a//b": every b below an a; "//b": every b in the subtree).
//   Each further empty segment skips one level ("a///b": every b that is two or more levels below an a).
// There are no predicates and no escapes. Any other text is a name.
//
// The first segment is compared with the start element itself. A path that begins with a single
// slash starts at the document element instead, and matches nothing if the start element has no
// document. A path that is empty or ends with a slash matches nothing. Matches are in document order.
//
// A walk is lazy and enters only branches that can still match. It points into the tree, so the tree
// must not change while an iterator is in use. Foreach and GetAll collect all matches first. Any
// number of threads may walk a tree that does not change. The cost of an element grows with the
// number of segments that can match it, not with the length of the path.
//
//     const DOMElement& sources = *document->GetDocumentRoot();  // the element "data-sources"
//     for (const DOMElement& column : DOMPath::Walk(sources, "data-sources/data-source/column"))
//         Print(column.GetName());
namespace DOMPath {

class Walker;

// The state of a walk. It is empty when the walk has ended. Callers use the iterators and functions below.
class VANCOREXML_API WalkState {
public:
    WalkState() noexcept;
    WalkState(const ::DOMElement& element, const VString& path);
    // Copies the position, but not the path: Next throws if elements are left to visit.
    WalkState(const WalkState& other);
    WalkState(WalkState&& other) noexcept;
    WalkState& operator=(WalkState other) noexcept;
    ~WalkState();

    // Returns the next match, or null at the end. Throws std::out_of_range ("invalid vector
    // subscript") on a copy that has elements left to visit.
    const ::DOMElement* Next();

    // Two walks are equal only if both are at their end.
    friend bool operator==(const WalkState& a, const WalkState& b) noexcept { return a.m_walker == b.m_walker; }

private:
    std::unique_ptr<Walker> m_walker;  // null at the end
};

// An iterator over the matches, for range-for and the algorithms of std::ranges. A copy can be read
// and compared, but not incremented (see the copy constructor of WalkState). The classic algorithms
// increment copies, so they reject this iterator: std::distance, for example, does not compile.
template <typename E>
class IteratorTemplate {
public:
    using iterator_concept = std::input_iterator_tag;
    using iterator_category = void;
    using value_type = std::remove_const_t<E>;
    using difference_type = std::ptrdiff_t;
    using pointer = E*;
    using reference = E&;

    // The end iterator.
    IteratorTemplate() = default;
    // Points to the first match.
    IteratorTemplate(E& element, const VString& path) : m_state(element, path) { Advance(); }
    IteratorTemplate(const IteratorTemplate& other) = default;
    IteratorTemplate(IteratorTemplate&& other) noexcept
        : m_state(std::move(other.m_state)),
          m_current(std::exchange(other.m_current, nullptr))
    {}
    IteratorTemplate& operator=(const IteratorTemplate& other)
    {
        if (this != &other)
            *this = IteratorTemplate(other);
        return *this;
    }
    IteratorTemplate& operator=(IteratorTemplate&& other) noexcept
    {
        if (this != &other) {
            m_state = std::move(other.m_state);
            m_current = std::exchange(other.m_current, nullptr);
        }
        return *this;
    }

    E& operator*() const { return *m_current; }
    E* operator->() const { return m_current; }
    IteratorTemplate& operator++()
    {
        Advance();
        return *this;
    }
    IteratorTemplate operator++(int)
    {
        IteratorTemplate before(*this);
        ++*this;
        return before;
    }

    friend bool operator==(const IteratorTemplate& a, const IteratorTemplate& b)
    {
        return a.m_state == b.m_state && a.m_current == b.m_current;
    }
    friend bool operator!=(const IteratorTemplate& a, const IteratorTemplate& b) { return !(a == b); }

private:
    // The walk only reads. E is mutable only when the caller passed in a mutable element.
    void Advance() { m_current = const_cast<E*>(m_state.Next()); }

    WalkState m_state;
    E* m_current = nullptr;
};

// The matches of a path as a range. It refers to the element. It copies a path that is a temporary, and
// refers to any other path. begin() reads the path. So the element and a path that was not copied must live
// until the last call of begin().
template <typename E>
class IterableTemplate {
public:
    IterableTemplate(E& element, const VString& path) : m_element(&element), m_path(&path) {}
    IterableTemplate(E& element, const VString&& path) : m_element(&element), m_temporary(path) {}

    IteratorTemplate<E> begin() { return IteratorTemplate<E>(*m_element, Path()); }
    IteratorTemplate<E> end() { return IteratorTemplate<E>(); }
    IteratorTemplate<E const> begin() const { return cbegin(); }
    IteratorTemplate<E const> end() const { return cend(); }
    IteratorTemplate<E const> cbegin() const { return IteratorTemplate<E const>(*m_element, Path()); }
    IteratorTemplate<E const> cend() const { return IteratorTemplate<E const>(); }

private:
    const VString& Path() const { return m_path ? *m_path : m_temporary; }

    E* m_element;
    const VString* m_path = nullptr;  // null for a temporary
    VString m_temporary;
};

// Returns the matches as a range. The search starts with begin(). E is DOMElement or DOMElement const.
template <typename E>
IterableTemplate<E> Walk(E& element, const VString& path)
{
    return IterableTemplate<E>(element, path);
}
template <typename E>
IterableTemplate<E> Walk(E& element, const VString&& path)
{
    // NOLINTNEXTLINE(performance-move-const-arg): selects the constructor that copies the path.
    return IterableTemplate<E>(element, std::move(path));
}

// Returns all matches in document order.
template <typename E>
VANCOREXML_API std::vector<E*> GetAll(E& element, const VString& path);

// Returns the first match, or null. Does not visit later elements.
template <typename E>
VANCOREXML_API E* GetFirst(E& element, const VString& path);

// Collects all matches, then calls `fn` for each. So `fn` may change the tree, but must not destroy
// the later matches. Throws std::bad_function_call if `fn` is empty and there is a match.
VANCOREXML_API void Foreach(::DOMElement& element, VString path, const std::function<void(::DOMElement&)>& fn);
VANCOREXML_API void Foreach(
    const ::DOMElement& element, VString path, const std::function<void(const ::DOMElement&)>& fn);

}  // namespace DOMPath
