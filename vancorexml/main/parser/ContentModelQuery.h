// Questions about the content that a schema allows in an element.
#pragma once

#include <cstddef>
#include <vector>

#include <xercesc/util/QName.hpp>
#include <xercesc/validators/schema/ComplexTypeInfo.hpp>

// A list of the children of an element, and a type that they must have.
//
// Ownership: refers to the type and to the names.
//
// Threads: one at a time for each grammar.
class ContentModelQuery {
public:
    using Names = std::vector<const xercesc::QName*>;

    // `type` must allow child elements. `budget` is the number of comparisons of names that the queries of a document
    // may still take; each query reduces it, and returns nothing if it would need more.
    ContentModelQuery(xercesc::ComplexTypeInfo& type, const Names& children, std::size_t& budget);

    // Returns the index of the first child that is not allowed, the number of children if the content ends too early,
    // or npos if all children are allowed. Linear in the children.
    std::size_t FindFailure() const;
    // Returns the names that are allowed in place of the child `index`, in the order of the schema. The names of
    // wildcards are not among them. Limited to 100 names. Takes the children in front of `index` times the square of
    // the number of names in the type.
    Names FindAllowed(std::size_t index) const;
    // Returns those of `allowed` behind which the child `index` is allowed, or the end if there is no such child. Cost:
    // see FindAllowed.
    Names FindMissing(std::size_t index, const Names& allowed) const;
    // Returns the index of the last child in front of which the child `index` must stand so that the children up to it
    // are allowed, or npos if there is none. Takes the square of `index` times the number of names in the type.
    std::size_t FindEarlierPlace(std::size_t index) const;
    // Returns all names that the type mentions, in the order of the schema.
    const Names& GetNames() const noexcept { return m_names; }

    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

private:
    // Takes `steps` comparisons with all names of the type from the budget. Returns false if it is too small.
    bool Take(std::size_t steps) const;

    xercesc::ComplexTypeInfo& m_type;
    const Names& m_children;
    std::size_t& m_budget;
    Names m_names;
};
