// Finds the children of two elements that correspond to each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

// Aligns two lists of children in passes. Each pass matches children with the same key between two children that an
// earlier pass has matched, and keeps the largest set of matches that do not cross each other.
//
// Threads: one at a time.
//
// Cost: a pass takes O(n log n) for n children.
class ChildAlignment {
public:
    static constexpr std::size_t None = std::numeric_limits<std::size_t>::max();
    // A child without a key has the key NoKey.
    static constexpr std::uint64_t NoKey = std::numeric_limits<std::uint64_t>::max();
    using Key = std::function<std::uint64_t(std::size_t place)>;
    enum class Repeats {
        Match,   // matches the first child that has a key with the first one, the second with the second
        Ignore,  // matches only keys that one child of each list has
    };

    ChildAlignment(std::size_t countA, std::size_t countB);

    // Matches equal children at both ends of the lists. Linear.
    void MatchEnds(const Key& keyA, const Key& keyB);
    // Runs a pass. Returns the pairs that have the same key but would cross other matches.
    std::vector<std::pair<std::size_t, std::size_t>> Match(const Key& keyA, const Key& keyB, Repeats repeats);
    // Leaves a pair out of further passes.
    void Exclude(std::size_t placeA, std::size_t placeB);

    // Returns the place in the list B of the child that corresponds to a child in the list A, or None.
    std::size_t PartnerOf(std::size_t placeA) const { return m_partners[placeA]; }

private:
    using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;

    // The pairs in the gap with the same key, sorted by the place in the list A.
    Pairs FindPairs(std::size_t firstA,
        std::size_t endA,
        std::size_t firstB,
        std::size_t endB,
        const Key& keyA,
        const Key& keyB,
        Repeats repeats) const;
    // Adds pairs that do not cross each other. Returns the others.
    Pairs Accept(const Pairs& pairs);

    std::vector<std::size_t> m_partners;  // by place in the list A
    std::vector<bool> m_isTakenA;         // matched or excluded
    std::vector<bool> m_isTakenB;
};
