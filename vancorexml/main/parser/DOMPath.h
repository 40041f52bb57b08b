// Elements by the names on their path.
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

// A path is names between slashes: "a/b" names the children b of an element a. "*" stands for
// any one element, and an empty segment for any number of levels: "a//b" names every b below
// an a, "//b" every b of the subtree. Each further empty segment skips one level: "a///b" names
// the b that are grandchildren of an a or deeper. Names are compared exactly; there are no
// predicates and no escapes, and any other text is a name that may match nothing.
//
// The first segment is held against the start element itself. A path that begins with one
// slash starts at the document element, whatever element it is asked of, and yields nothing
// for an element without a document; "//b" starts at the element. A path that is empty or ends
// with a slash yields nothing. Matches come in document order.
//
// The walk is lazy and enters only branches that can still match. It holds pointers into the
// tree, which must not change while an iterator is live; Foreach and GetAll collect first.
// Any number of threads may walk one tree that does not change. The cost of an element grows
// with the number of segments that can match it, not with the length of the path.
//
//     for (const DOMElement& column : DOMPath::Walk(root, "data-source/column")) Print(column.GetName());
namespace DOMPath {

// Steps through the matches of one path. Iterators below are what callers use.
class VANCOREXML_API Walker {
public:
    Walker(const DOMElement& element, const VString& path);
    // Keeps its place but not the path: Next throws unless nothing was left to visit.
    Walker(const Walker& other);
    Walker& operator=(const Walker&) = delete;
    ~Walker();

    // Abandons the current walk and starts again with the same path at another element. Must
    // not be called on a copy, which has no path.
    void Restart(const DOMElement& element);
    // The next match; null at the end. Throws std::out_of_range ("invalid vector subscript")
    // on a copy that still has elements to visit.
    const DOMElement* Next();

private:
    using Word = std::uint64_t;

    // The words of a set that are kept: from its first word that is not zero to its last.
    struct Span {
        std::size_t firstWord = 0;
        std::size_t words = 1;
    };
    // The elements of one level that are visited next, their end, and the level's set.
    struct Frame {
        DOMElementChildren::const_iterator next;
        DOMElementChildren::const_iterator end;
        Span span;
    };

    bool Visit(const DOMElement& element, const Span& span);
    void Enter(const DOMElement& element, std::size_t firstWord);
    void Close(std::vector<Word>& active, std::size_t firstWord) const;

    std::vector<VString> m_segments;
    std::vector<Word> m_emptySegments;    // which segments are empty
    std::vector<Word> m_starSegments;     // which are "*"
    const DOMElement* m_start = nullptr;  // until it is visited
    std::vector<Frame> m_frames;
    std::vector<Word> m_active;  // the kept words for the start element and then for each frame
    std::vector<Word> m_next;    // the set for the children of the element visited last
};

// An iterator over the matches, for range-for and the algorithms of std::ranges. A copy can be
// read and compared but not moved on, as Walker says. The classic algorithms move copies on, so
// for them it is no iterator: std::distance and its like do not compile.
template <typename E>
class IteratorTemplate {
public:
    using iterator_concept = std::input_iterator_tag;
    using iterator_category = void;
    using value_type = std::remove_const_t<E>;
    using difference_type = std::ptrdiff_t;
    using pointer = E*;
    using reference = E&;

    // The end.
    IteratorTemplate() = default;
    // On the first match.
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

    // Two walks are never equal before both are at their end.
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

// The matches of a path as a range. Refers to the element, and to a path that is a variable:
// both must live until begin() has been called, which reads the path. Copies a path that is a
// temporary.
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

// Does no work until begin(). E is DOMElement or DOMElement const.
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

// Every match, in order.
template <typename E>
std::vector<E*> GetAll(E& element, const VString& path)
{
    std::vector<E*> matches;
    Walker walker(element, path);
    while (const DOMElement* match = walker.Next())
        matches.push_back(const_cast<E*>(match));
    return matches;
}

// The first match, null when there is none; visits nothing behind it.
template <typename E>
E* GetFirst(E& element, const VString& path)
{
    return const_cast<E*>(Walker(element, path).Next());
}

// Collects every match and then calls `fn` for each, so `fn` may change the tree as long as
// the matches still to come live. Throws std::bad_function_call for an empty function when
// there is a match.
VANCOREXML_API void Foreach(DOMElement& element, VString path, const std::function<void(DOMElement&)>& fn);
VANCOREXML_API void Foreach(const DOMElement& element, VString path, const std::function<void(const DOMElement&)>& fn);

}  // namespace DOMPath
