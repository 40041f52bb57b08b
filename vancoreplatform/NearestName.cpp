#include "vancoreplatform/NearestName.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t LongestName = 100;

// Returns the smallest number of characters that must be added, removed, replaced or swapped with their neighbour to
// make `a` equal to `b`. No character is changed twice.
std::size_t Distance(std::u16string_view a, std::u16string_view b)
{
    // Rows of the table of distances between the first i units of `a` and the first j units of `b`.
    std::vector<std::size_t> beforePrevious(b.size() + 1);
    std::vector<std::size_t> previous(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        current[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforePrevious.swap(previous);
        previous.swap(current);
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            current[j] = std::min({replaced, previous[j] + 1, current[j - 1] + 1});
            const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isSwap)
                current[j] = std::min(current[j], beforePrevious[j - 2] + 1);
        }
    }
    return current[b.size()];
}

}  // namespace

VString FindNearestName(const VString& name, const std::vector<VString>& candidates)
{
    const VString lowerName(name.ToQString().toLower());
    // One mistake in a name of up to five characters, two in one of up to ten, three in a longer one; but never so many
    // that nothing of the name is left.
    const std::size_t length = name.View().size();
    std::size_t best = length <= 2 ? 1 : length <= 5 ? 2 : length <= 10 ? 3 : 4;
    if (length == 0 || length > LongestName)
        return VString();
    VString nearest;
    for (const VString& candidate : candidates) {
        const std::size_t longer = std::max(length, candidate.View().size());
        const std::size_t shorter = std::min(length, candidate.View().size());
        if (candidate == name || longer - shorter >= best + 1 || longer > LongestName)
            continue;
        const VString lowerCandidate(candidate.ToQString().toLower());
        const std::size_t distance = Distance(lowerName.View(), lowerCandidate.View());
        if (distance < best) {
            best = distance;
            nearest = candidate;
        } else if (distance == best) {
            nearest = VString();
        }
    }
    return nearest;
}
