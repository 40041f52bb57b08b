// The paths of "vanxml query" and "vanxml edit".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/AttributeMap.h"

// A path of the library (see DOMPath.h) with two additions that mean the same as in XPath:
// - Predicates behind a name or "*": [n], [@name], [@name='value'] and [@name="value"]. Blanks are allowed in the
//   brackets. [n] counts, from 1, the elements with the same parent that the step and its earlier predicates select.
// - A last step "@name", which selects attributes. "//@name" means "//*/@name".
//
// Any other text that cannot be a path throws UsageError with a hint.
//
// Threads: any number may read a path.
class QueryPath {
public:
    struct Predicate {
        enum class Kind { Position, HasAttribute, AttributeValue };

        Kind kind = Kind::Position;
        std::size_t position = 0;
        VString name;
        VString value;
    };
    struct Step {
        VString name;  // "*" for any name; empty for a step that stands for any number of levels
        std::vector<Predicate> predicates;
    };

    explicit QueryPath(const std::string& text);

    const std::vector<Step>& Steps() const noexcept { return m_steps; }
    bool HasPredicates() const;
    // The name of the attribute that the last step selects; empty if the path selects elements. The path then selects
    // the attributes of the elements that the other steps select.
    const VString& Attribute() const noexcept { return m_attribute; }
    // The path of the library that remains without predicates and attribute.
    VString LibraryPath() const;

private:
    std::vector<Step> m_steps;
    VString m_attribute;
};

// Matches the elements of a document with a path while the caller visits them in document order. It needs only start
// tags, so it serves trees and parsers.
//
// Ownership: refers to the path, which must outlive it.
//
// Threads: one at a time.
//
// Cost: each element costs time for each step that can match on its level, and each predicate of it. Memory grows with
// the depth.
class QueryMatcher {
public:
    explicit QueryMatcher(const QueryPath& path);

    // Enters the next element. Returns true if the steps select it; the attribute of the path is not tested.
    bool Enter(const VString& name, const AttributeMap& attributes);
    // Leaves the element that was entered last and not left yet.
    void Leave() noexcept;
    // True if an element inside the element that was entered last can match.
    bool CanMatchInside() const noexcept { return !m_levels[m_depth].active.empty(); }

private:
    // A step that the elements of a level are compared with.
    struct ActiveStep {
        std::size_t index = 0;
        std::vector<std::size_t> counts;  // of elements that reached each predicate of kind Position
    };
    // The elements with one parent.
    struct Level {
        std::vector<ActiveStep> active;  // sorted by index
    };

    bool Matches(ActiveStep& active, const VString& name, const AttributeMap& attributes) const;
    void Activate(Level& level, std::size_t step) const;
    void ActivateSuccessors(Level& level) const;
    ActiveStep MakeActive(std::size_t step) const;

    const std::vector<QueryPath::Step>& m_steps;
    std::vector<Level> m_levels;  // the levels above m_depth are spare
    std::size_t m_depth = 0;
};
