// Finds the children of two elements that correspond to each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

// Aligns two lists of children in passes. Each pass matches children with the same key between two children that an
// earlier pass has matched, and keeps the matches that do not cross each other and have the largest total weight.
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
    struct Pair {
        std::size_t a = 0;  // places
        std::size_t b = 0;
        std::size_t weight = 1;
    };
    using Pairs = std::vector<Pair>;

    ChildAlignment(std::size_t countA, std::size_t countB);

    // Matches equal children at both ends of the lists. Linear.
    void MatchEnds(const Key& keyA, const Key& keyB);
    // Runs a pass that matches only keys that one child of each list has. Pairs with the same content weigh 1. The
    // children of the other pairs have only the same identity, and weigh 2. Returns the pairs that would cross others.
    Pairs MatchUnique(const Key& contentA, const Key& contentB, const Key& identityA, const Key& identityB);
    // Runs a pass that matches the first child that has a key with the first one, the second with the second.
    void Match(const Key& keyA, const Key& keyB);
    // Leaves a pair out of further passes.
    void Exclude(std::size_t placeA, std::size_t placeB);

    // Returns the place in the list B of the child that corresponds to a child in the list A, or None.
    std::size_t PartnerOf(std::size_t placeA) const { return m_partners[placeA]; }

private:
    // The places between two matched pairs.
    struct Gap {
        std::size_t firstA = 0;
        std::size_t endA = 0;
        std::size_t firstB = 0;
        std::size_t endB = 0;
    };

    template <typename Visit>
    void ForEachGap(const Visit& visit);
    // The free children in the gap with the same key. Ignores keys that are repeated, if `isUnique`.
    Pairs FindPairs(const Gap& gap, const Key& keyA, const Key& keyB, bool isUnique) const;
    // Adds pairs of the gap that do not cross each other. Returns the others.
    Pairs Accept(const Gap& gap, Pairs pairs);

    std::vector<std::size_t> m_partners;  // by place in the list A
    std::vector<bool> m_isTakenA;         // matched or excluded
    std::vector<bool> m_isTakenB;
};
