// Path queries: find elements by the names of their ancestors.
#pragma once

#include <cstddef>
#include <cstdint>
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
//     for (const DOMElement& column : DOMPath::Walk(root, "data-source/column")) Print(column.GetName());
namespace DOMPath {

// Steps through the matches of one path. Callers use the iterators below instead.
class VANCOREXML_API Walker {
public:
    Walker(const DOMElement& element, const VString& path);
    // Copies the position, but not the path: Next throws if elements are left to visit.
    Walker(const Walker& other);
    Walker& operator=(const Walker&) = delete;
    ~Walker();

    // Restarts the walk at another element, with the same path. Do not call it on a copy, which has
    // no path.
    void Restart(const DOMElement& element);
    // Returns the next match, or null at the end. Throws std::out_of_range ("invalid vector
    // subscript") on a copy that has elements left to visit.
    const DOMElement* Next();

private:
    using Word = std::uint64_t;

    // A set of segments is stored without the zero words at its ends. This is the stored range.
    struct Span {
        std::size_t firstWord = 0;
        std::size_t words = 1;
    };
    // One level of the walk: the elements left to visit, and the set of active segments.
    struct Frame {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
        Span span;
    };

    bool Visit(const DOMElement& element, const Span& span);
    void PushLevel(const DOMElement& element, std::size_t firstWord);
    void ActivateSuccessors(std::vector<Word>& active, std::size_t firstWord) const;

    std::vector<VString> m_segments;
    std::vector<Word> m_emptySegments;    // the set of the empty segments
    std::vector<Word> m_starSegments;     // the set of the "*" segments
    const DOMElement* m_start = nullptr;  // null after it was visited
    std::vector<Frame> m_frames;
    std::vector<Word> m_active;  // the stored words of the start element's set and of each frame's set
    std::vector<Word> m_next;    // the set for the children of the element visited last
};

// An iterator over the matches, for range-for and the algorithms of std::ranges. A copy can be read
// and compared, but not incremented (see the copy constructor of Walker). The classic algorithms
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
    IteratorTemplate(E& element, const VString& path) : m_state(std::make_unique<Walker>(element, path)) { Advance(); }
    IteratorTemplate(const IteratorTemplate& other)
        : m_state(other.m_state ? std::make_unique<Walker>(*other.m_state) : nullptr),
          m_current(other.m_current)
    {}
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
        if (m_state)
            Advance();
        return *this;
    }
    IteratorTemplate operator++(int)
    {
        IteratorTemplate before(*this);
        ++*this;
        return before;
    }

    // Iterators of two walks are equal only if both are at their end.
    friend bool operator==(const IteratorTemplate& a, const IteratorTemplate& b)
    {
        return a.m_state == b.m_state && a.m_current == b.m_current;
    }
    friend bool operator!=(const IteratorTemplate& a, const IteratorTemplate& b) { return !(a == b); }

private:
    void Advance()
    {
        // The walk only reads. E is mutable only when the caller passed in a mutable element.
        m_current = const_cast<E*>(m_state->Next());
        if (!m_current)
            m_state.reset();
    }

    std::unique_ptr<Walker> m_state;  // null at the end
    E* m_current = nullptr;
};

// The matches of a path as a range. It refers to the element and to a path that is an lvalue, so both
// must live until begin() is called, which reads the path. It copies a path that is a temporary.
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
    return IterableTemplate<E>(element, std::move(path));
}

// Returns all matches in document order.
template <typename E>
std::vector<E*> GetAll(E& element, const VString& path)
{
    std::vector<E*> matches;
    Walker walker(element, path);
    while (const DOMElement* match = walker.Next())
        matches.push_back(const_cast<E*>(match));
    return matches;
}

// Returns the first match, or null. Does not visit later elements.
template <typename E>
E* GetFirst(E& element, const VString& path)
{
    return const_cast<E*>(Walker(element, path).Next());
}

// Collects all matches, then calls `fn` for each. So `fn` may change the tree, but must not destroy
// the later matches. Throws std::bad_function_call if `fn` is empty and there is a match.
VANCOREXML_API void Foreach(DOMElement& element, VString path, const std::function<void(DOMElement&)>& fn);
VANCOREXML_API void Foreach(const DOMElement& element, VString path, const std::function<void(const DOMElement&)>& fn);

}  // namespace DOMPath
