#include "vanxml/ChildAlignment.h"

#include <algorithm>

namespace {

using KeyedPlaces = std::vector<std::pair<std::uint64_t, std::size_t>>;

// Returns the keys of the free places from `first` to `end`, sorted.
KeyedPlaces SortPlaces(
    std::size_t first, std::size_t end, const std::vector<bool>& isTaken, const ChildAlignment::Key& keyOf)
{
    KeyedPlaces places;
    for (std::size_t place = first; place < end; ++place) {
        const std::uint64_t key = isTaken[place] ? ChildAlignment::NoKey : keyOf(place);
        if (key != ChildAlignment::NoKey)
            places.emplace_back(key, place);
    }
    std::sort(places.begin(), places.end());
    return places;
}

std::size_t FindRunEnd(const KeyedPlaces& places, std::size_t first)
{
    std::size_t end = first;
    while (end < places.size() && places[end].first == places[first].first)
        ++end;
    return end;
}

}  // namespace

ChildAlignment::ChildAlignment(std::size_t countA, std::size_t countB)
    : m_partners(countA, None),
      m_isTakenA(countA),
      m_isTakenB(countB)
{}

void ChildAlignment::MatchEnds(const Key& keyA, const Key& keyB)
{
    const auto take = [this](std::size_t placeA, std::size_t placeB) {
        m_partners[placeA] = placeB;
        Exclude(placeA, placeB);
    };
    std::size_t endA = m_isTakenA.size();
    std::size_t endB = m_isTakenB.size();
    std::size_t start = 0;
    for (; start < std::min(endA, endB) && keyA(start) == keyB(start); ++start)
        take(start, start);
    for (; endA > start && endB > start && keyA(endA - 1) == keyB(endB - 1); --endA, --endB)
        take(endA - 1, endB - 1);
}

void ChildAlignment::Exclude(std::size_t placeA, std::size_t placeB)
{
    m_isTakenA[placeA] = true;
    m_isTakenB[placeB] = true;
}

ChildAlignment::Pairs ChildAlignment::Match(const Key& keyA, const Key& keyB, Repeats repeats)
{
    Pairs crossing;
    std::size_t firstA = 0;
    std::size_t firstB = 0;
    for (std::size_t endA = 0; endA <= m_partners.size(); ++endA) {
        const bool isEnd = endA == m_partners.size();
        // The pairs that Accept adds lie in front of this place.
        const std::size_t endB = isEnd ? m_isTakenB.size() : m_partners[endA];
        if (endB == None)
            continue;
        if (firstA < endA && firstB < endB) {
            const Pairs others = Accept(FindPairs(firstA, endA, firstB, endB, keyA, keyB, repeats));
            crossing.insert(crossing.end(), others.begin(), others.end());
        }
        firstA = endA + 1;
        firstB = endB + 1;
    }
    return crossing;
}

ChildAlignment::Pairs ChildAlignment::FindPairs(std::size_t firstA,
    std::size_t endA,
    std::size_t firstB,
    std::size_t endB,
    const Key& keyA,
    const Key& keyB,
    Repeats repeats) const
{
    const KeyedPlaces a = SortPlaces(firstA, endA, m_isTakenA, keyA);
    const KeyedPlaces b = SortPlaces(firstB, endB, m_isTakenB, keyB);
    Pairs pairs;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (a[i].first != b[j].first) {
            ++(a[i].first < b[j].first ? i : j);
            continue;
        }
        const std::size_t runA = FindRunEnd(a, i) - i;
        const std::size_t runB = FindRunEnd(b, j) - j;
        const bool isUnique = runA == 1 && runB == 1;
        if (isUnique || repeats == Repeats::Match) {
            for (std::size_t k = 0; k < std::min(runA, runB); ++k)
                pairs.emplace_back(a[i + k].second, b[j + k].second);
        }
        i += runA;
        j += runB;
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

// The longest increasing sequence of the places in the list B, by patience sorting.
ChildAlignment::Pairs ChildAlignment::Accept(const Pairs& pairs)
{
    std::vector<std::size_t> tails;  // by length - 1: the pair that ends the best sequence of this length
    std::vector<std::size_t> previous(pairs.size(), None);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto tail =
            std::lower_bound(tails.begin(), tails.end(), pairs[i].second, [&](std::size_t pair, std::size_t place) {
                return pairs[pair].second < place;
            });
        if (tail != tails.begin())
            previous[i] = *(tail - 1);
        if (tail == tails.end())
            tails.push_back(i);
        else
            *tail = i;
    }
    std::vector<bool> isAccepted(pairs.size());
    for (std::size_t i = tails.empty() ? None : tails.back(); i != None; i = previous[i])
        isAccepted[i] = true;
    Pairs others;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        if (!isAccepted[i]) {
            others.push_back(pairs[i]);
            continue;
        }
        m_partners[pairs[i].first] = pairs[i].second;
        Exclude(pairs[i].first, pairs[i].second);
    }
    return others;
}
