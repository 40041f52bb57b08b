#include "vancorexml/main/parser/AttributeMap.h"

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_map>

#include "vansys/VHash32.h"

namespace {

using Model = std::unordered_map<VString, VString, VStringHash>;

AttributeMap MapOf(int count)
{
    AttributeMap map;
    for (int i = 0; i < count; ++i)
        map.insert_or_assign(VString::number(i), VString::number(-i));
    return map;
}

void ExpectSame(const AttributeMap& map, const Model& model)
{
    ASSERT_EQ(map.size(), model.size());
    std::set<VString> seen;
    for (const auto& [name, value] : map) {
        const auto found = model.find(name);
        ASSERT_NE(found, model.end()) << name;
        EXPECT_EQ(value, found->second);
        EXPECT_TRUE(seen.insert(name).second) << name;
        EXPECT_EQ(map.at(name), value);
    }
}

// Applies `steps` random operations to an AttributeMap and to a standard map and expects the same
// results. The operations use `names` different names.
void ExpectAgreementWithStandardMap(unsigned seed, int names, int steps)
{
    std::mt19937 random(seed);
    AttributeMap map;
    Model model;
    for (int step = 0; step < steps; ++step) {
        const VString name = VString::number(static_cast<int>(random() % static_cast<unsigned>(names)));
        const VString value = VString::number(step);
        switch (random() % 8) {
        case 0: ASSERT_EQ(map.insert({name, value}).second, model.insert({name, value}).second); break;
        case 1:
        case 2: ASSERT_EQ(map.insert_or_assign(name, value).second, model.insert_or_assign(name, value).second); break;
        case 3: ASSERT_EQ(map.emplace(name, value).first->second, model.emplace(name, value).first->second); break;
        case 4:
        case 5: ASSERT_EQ(map.erase(name), model.erase(name)); break;
        case 6:
            map[name] += value;
            model[name] += value;
            break;
        default: ASSERT_EQ(map.count(name), model.count(name));
        }
    }
    ExpectSame(map, model);
    const AttributeMap copy(map);
    ExpectSame(copy, model);
    EXPECT_EQ(copy, map);
}

}  // namespace

// The range constructor and the range insert accept only iterators over entries.
template <typename T>
constexpr bool InsertsRangeOf = requires(AttributeMap map, T i)
{
    map.insert(i, i);
};
static_assert(std::is_constructible_v<AttributeMap, Model::iterator, Model::iterator>);
static_assert(!std::is_constructible_v<AttributeMap, int, int>);
static_assert(!std::is_constructible_v<AttributeMap, const char*, const char*>);
static_assert(InsertsRangeOf<Model::const_iterator>);
static_assert(InsertsRangeOf<AttributeMap::iterator>);
static_assert(!InsertsRangeOf<int>);
static_assert(!InsertsRangeOf<const char*>);
static_assert(!InsertsRangeOf<VString*>);

static_assert(std::is_same_v<AttributeMap::key_equal, std::equal_to<VString>>);
static_assert(std::is_same_v<AttributeMap::hasher, VStringHash>);

// A change that can be applied to an AttributeMap and to a standard map.
struct ChangeRow {
    template <typename Change>
    ChangeRow(const char* rowName, Change change) : name(rowName),
                                                    ours(change),
                                                    standard(change)
    {}

    const char* name;
    std::function<void(AttributeMap&)> ours;
    std::function<void(Model&)> standard;
};

class AttributeMapChangeTest : public testing::TestWithParam<ChangeRow> {};

TEST_P(AttributeMapChangeTest, MatchesTheStandardMap)
{
    for (const Model& start : {Model{}, Model{{"a", "0"}}, Model{{"b", "2"}, {"c", "3"}}}) {
        AttributeMap map(start.begin(), start.end());
        Model model(start);
        GetParam().ours(map);
        GetParam().standard(model);
        ExpectSame(map, model);
    }
}

const ChangeRow ChangeRows[] = {
    {"InsertBracedPair",
        [](auto& map) {
            map.insert({"a", "1"}).first->second += "x";
        }},
    {"InsertEntry", [](auto& map) { map.insert(std::pair<const VString, VString>("a", "1")).first->second += "x"; }},
    {"InsertPair", [](auto& map) { map.insert(std::pair<VString, VString>("a", "1")).first->second += "x"; }},
    {"InsertPairOfLiterals", [](auto& map) { map.insert(std::make_pair("a", "1")).first->second += "x"; }},
    {"InsertPairObject",
        [](auto& map) {
            std::pair<const VString, VString> entry("a", "1");
            map.insert(entry);
            map.insert(map.end(), entry)->second += entry.second;
        }},
    {"InsertHint",
        [](auto& map) {
            map.insert(map.begin(), {"a", "1"})->second += "x";
        }},
    {"InsertHintPair", [](auto& map) { map.insert(map.cend(), std::make_pair("a", "1"))->second += "x"; }},
    {"InsertList",
        [](auto& map) {
            map.insert({{"a", "1"}, {"d", "4"}, {"a", "5"}});
        }},
    {"EmplaceWithoutArguments", [](auto& map) { map.emplace().first->second += "x"; }},
    {"EmplacePair", [](auto& map) { map.emplace(std::make_pair("a", "1")).first->second += "x"; }},
    {"EmplaceNameAndValue", [](auto& map) { map.emplace("a", VString("1")).first->second += "x"; }},
    {"EmplacePiecewise",
        [](auto& map) {
            map.emplace(std::piecewise_construct, std::forward_as_tuple("a"), std::forward_as_tuple(u"123", 2))
                .first->second += "x";
        }},
    {"EmplaceHint", [](auto& map) { map.emplace_hint(map.begin(), "a", "1")->second += "x"; }},
    {"TryEmplace", [](auto& map) { map.try_emplace("a", "1").first->second += "x"; }},
    {"TryEmplaceWithoutValue", [](auto& map) { map.try_emplace("a").first->second += "x"; }},
    {"TryEmplaceTwoValueArguments", [](auto& map) { map.try_emplace("a", u"123", 2).first->second += "x"; }},
    {"TryEmplaceHint", [](auto& map) { map.try_emplace(map.end(), "a", u"123", 2)->second += "x"; }},
    {"InsertOrAssign", [](auto& map) { map.insert_or_assign("a", "1").first->second += "x"; }},
    {"InsertOrAssignHint", [](auto& map) { map.insert_or_assign(map.begin(), "a", "1")->second += "x"; }},
    {"AssignList",
        [](auto& map) {
            map = {{"a", "1"}, {"b", "2"}};
        }},
    {"AssignEmptyList", [](auto& map) { map = {}; }},
    {"EraseIf", [](auto& map) { std::erase_if(map, [](const auto& entry) { return entry.first == VString("a"); }); }},
};

INSTANTIATE_TEST_SUITE_P(
    Changes, AttributeMapChangeTest, testing::ValuesIn(ChangeRows), [](const auto& row) { return row.param.name; });

TEST(AttributeMapTest, TryEmplaceDoesNotMoveItsArgumentsWhenTheNameExists)
{
    AttributeMap map{{"a", "1"}};
    VString value("2");
    EXPECT_FALSE(map.try_emplace("a", std::move(value)).second);
    EXPECT_EQ(value, VString("2"));
    EXPECT_TRUE(map.try_emplace("b", std::move(value)).second);
    EXPECT_EQ(map.at("b"), VString("2"));
}

TEST(AttributeMapTest, InsertNewAddsEntriesThatLookupsFind)
{
    AttributeMap map;
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(map.InsertNew(VString::number(i), VString::number(-i))->second, VString::number(-i));
    EXPECT_EQ(map, MapOf(50));
}

TEST(AttributeMapTest, EraseIfTestsEveryEntryOnce)
{
    AttributeMap map = MapOf(100);
    int asked = 0;
    const auto isOdd = [&asked](const AttributeMap::value_type& entry) {
        ++asked;
        return entry.first.toStdString().back() % 2 == 1;
    };
    EXPECT_EQ(std::erase_if(map, isOdd), 50u);
    EXPECT_EQ(asked, 100);
    EXPECT_EQ(map.size(), 50u);
    EXPECT_EQ(map.count("98"), 1u);
    EXPECT_EQ(map.count("99"), 0u);
}

TEST(AttributeMapTest, ReserveThrowsAboveMaxSize)
{
    AttributeMap map;
    EXPECT_GT(map.max_size(), 1000000u);
    EXPECT_THROW(map.reserve(map.max_size() + 1), std::length_error);
}

class AttributeMapPropertyTest : public testing::TestWithParam<int> {};

TEST_P(AttributeMapPropertyTest, AgreesWithTheStandardMap)
{
    for (unsigned seed = 0; seed < 40; ++seed)
        ExpectAgreementWithStandardMap(seed, GetParam(), 40 * GetParam() + 100);
}

INSTANTIATE_TEST_SUITE_P(Sizes, AttributeMapPropertyTest, testing::Values(1, 3, 16, 17, 40, 300), [](const auto& row) {
    return "Names" + std::to_string(row.param);
});

TEST(AttributeMapTest, LargeMapAgreesWithTheStandardMap)
{
    ExpectAgreementWithStandardMap(7, 30000, 300000);
}

TEST(AttributeMapTest, StartsEmpty)
{
    const AttributeMap map;
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.size(), 0u);
    EXPECT_EQ(map.begin(), map.end());
    EXPECT_FALSE(map.contains("a"));
    EXPECT_EQ(map.find("a"), map.end());
}

TEST(AttributeMapTest, InitializerListKeepsTheFirstOfEqualNames)
{
    const AttributeMap map{{"a", "1"}, {"b", "2"}, {"a", "3"}};
    EXPECT_EQ(map.size(), 2u);
    EXPECT_EQ(map.at("a"), VString("1"));
    EXPECT_EQ(map.at("b"), VString("2"));
}

TEST(AttributeMapTest, AtThrowsForAMissingName)
{
    AttributeMap map{{"a", "1"}};
    EXPECT_THROW(map.at("b"), std::out_of_range);
    EXPECT_THROW(std::as_const(map).at("b"), std::out_of_range);
    map.at("a") = "2";
    EXPECT_EQ(std::as_const(map).at("a"), VString("2"));
}

TEST(AttributeMapTest, SubscriptInsertsAnEmptyValue)
{
    AttributeMap map;
    EXPECT_EQ(map["a"], VString());
    EXPECT_TRUE(map.contains("a"));
}

TEST(AttributeMapTest, InsertKeepsAnExistingValue)
{
    AttributeMap map{{"a", "1"}};
    const auto [position, inserted] = map.insert({"a", "2"});
    EXPECT_FALSE(inserted);
    EXPECT_EQ(position->second, VString("1"));
}

TEST(AttributeMapTest, NamesDifferingInCaseOrAfterNulAreDistinct)
{
    AttributeMap map{{"a", "1"}, {"A", "2"}, {VString(u"a\0b", 3), "3"}};
    EXPECT_EQ(map.size(), 3u);
    EXPECT_EQ(map.at(VString(u"a\0b", 3)), VString("3"));
}

TEST(AttributeMapTest, SelfAssignmentChangesNothing)
{
    AttributeMap map = MapOf(20);
    AttributeMap& alias = map;
    map = alias;
    EXPECT_EQ(map, MapOf(20));
    map = std::move(alias);
    EXPECT_EQ(map, MapOf(20));
}

TEST(AttributeMapTest, MovingLeavesTheSourceEmpty)
{
    AttributeMap source = MapOf(20);
    AttributeMap target(std::move(source));
    EXPECT_TRUE(source.empty());
    AttributeMap assigned = MapOf(3);
    assigned = std::move(target);
    EXPECT_TRUE(target.empty());
    EXPECT_EQ(assigned, MapOf(20));
}

TEST(AttributeMapTest, CopiesAreIndependent)
{
    AttributeMap source = MapOf(20);
    const AttributeMap copy(source);
    source["1"] = "changed";
    source.erase("2");
    EXPECT_EQ(copy, MapOf(20));
}

// Passes names and values of the map itself as arguments, while the map reallocates many times.
TEST(AttributeMapTest, AcceptsItsOwnEntriesAsArguments)
{
    AttributeMap map{{"first", "value"}};
    for (int i = 0; i < 200; ++i) {
        map.begin()->second = VString::number(i);
        map.try_emplace(map.begin()->second, map.begin()->first);
        EXPECT_EQ(map.at(VString::number(i)), VString("first"));
        map.insert_or_assign(VString::number(-1 - i), map.begin()->second);
        EXPECT_EQ(map.at(VString::number(-1 - i)), VString::number(i));
    }
    EXPECT_EQ(map.size(), 401u);
    map.erase(map.begin()->first);
    EXPECT_FALSE(map.contains("first"));
}

TEST(AttributeMapTest, ErasingDuringIterationVisitsEveryEntryOnce)
{
    AttributeMap map = MapOf(100);
    std::set<VString> seen;
    for (auto i = map.begin(); i != map.end();) {
        EXPECT_TRUE(seen.insert(i->first).second);
        if (i->first.toInt() % 3 == 0)
            i = map.erase(i);
        else
            ++i;
    }
    EXPECT_EQ(seen.size(), 100u);
    EXPECT_EQ(map.size(), 66u);
    EXPECT_FALSE(map.contains("99"));
}

TEST(AttributeMapTest, InsertsRangesOfEntries)
{
    const Model model{{"a", "1"}, {"b", "2"}};
    AttributeMap map(model.begin(), model.end());
    ExpectSame(map, model);
    map.insert({{"b", "other"}, {"c", "3"}});
    ExpectSame(map, {{"a", "1"}, {"b", "2"}, {"c", "3"}});
}

TEST(AttributeMapTest, ErasesRangesOfEntries)
{
    for (const int size : {5, 40}) {
        for (int first = 0; first <= size; ++first) {
            AttributeMap map = MapOf(size);
            Model left;
            for (auto i = map.begin(); i != map.end(); ++i) {
                if (i < map.begin() + first || i >= map.begin() + (first + size + 1) / 2)
                    left.insert(*i);
            }
            const auto next = map.erase(map.begin() + first, map.begin() + (first + size + 1) / 2);
            ExpectSame(map, left);
            EXPECT_EQ(next, map.begin() + first);
        }
    }
}

TEST(AttributeMapTest, EqualRangeHoldsAtMostOneEntry)
{
    AttributeMap map = MapOf(3);
    const auto [first, last] = map.equal_range("1");
    ASSERT_EQ(last - first, 1);
    EXPECT_EQ(first->second, VString("-1"));
    const auto [none, end] = std::as_const(map).equal_range("9");
    EXPECT_EQ(none, end);
}

TEST(AttributeMapTest, LookupsWorkAfterManyInsertionsAndErasures)
{
    AttributeMap map;
    for (int i = 0; i < 100000; ++i) {
        map.insert_or_assign(VString::number(i), VString());
        ASSERT_EQ(map.erase(VString::number(i - 50)), i >= 50 ? 1u : 0u);
    }
    EXPECT_EQ(map.size(), 50u);
    EXPECT_TRUE(map.contains("99999"));
    EXPECT_FALSE(map.contains("99949"));
}

TEST(AttributeMapTest, InsertionsWithinTheReservedCapacityDoNotReallocate)
{
    AttributeMap map;
    map.reserve(100);
    map["0"];
    const auto* const first = map.begin();
    for (int i = 1; i < 100; ++i)
        map[VString::number(i)];
    EXPECT_EQ(map.begin(), first);
    map.reserve(5);
    EXPECT_EQ(map.begin(), first);
}

// The block has an index of names from a certain capacity.
TEST(AttributeMapTest, ReservesEachCapacity)
{
    for (std::size_t capacity = 4; capacity < 40; ++capacity) {
        AttributeMap map = MapOf(3);
        map.reserve(capacity);
        EXPECT_EQ(map, MapOf(3)) << capacity;
        for (std::size_t i = 3; i < capacity; ++i)
            map[VString::number(static_cast<std::uint64_t>(i))] = "value";
        EXPECT_EQ(map.size(), capacity);
        EXPECT_TRUE(map.contains(VString::number(static_cast<std::uint64_t>(capacity - 1)))) << capacity;
    }
}

TEST(AttributeMapTest, FailedReserveChangesNothing)
{
    AttributeMap map = MapOf(3);
    EXPECT_THROW(map.reserve(std::size_t{1} << 40), std::length_error);
    EXPECT_EQ(map, MapOf(3));
}

TEST(AttributeMapTest, SwapExchangesTheEntriesAndClearRemovesThem)
{
    AttributeMap map = MapOf(30);
    AttributeMap other;
    map.swap(other);
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(other, MapOf(30));
    swap(map, other);
    EXPECT_EQ(map, MapOf(30));
    swap(map, other);
    other.clear();
    EXPECT_TRUE(other.empty());
    other["a"] = "b";
    EXPECT_EQ(other.size(), 1u);
}

// The map stores a single attribute inline, and several attributes in an allocated block.
TEST(AttributeMapTest, MovesAndSwapsBetweenAllSmallSizes)
{
    for (int a = 0; a <= 3; ++a) {
        for (int b = 0; b <= 3; ++b) {
            AttributeMap first = MapOf(a);
            AttributeMap second = MapOf(b);
            first.swap(second);
            EXPECT_EQ(first, MapOf(b)) << a << ' ' << b;
            EXPECT_EQ(second, MapOf(a)) << a << ' ' << b;
            first = std::move(second);
            EXPECT_EQ(first, MapOf(a)) << a << ' ' << b;
            EXPECT_TRUE(second.empty());
            second["late"] = "1";
            EXPECT_EQ(second, (AttributeMap{{"late", "1"}}));
        }
    }
    AttributeMap one = MapOf(1);
    AttributeMap& alias = one;
    one.swap(alias);
    one = std::move(alias);
    EXPECT_EQ(one, MapOf(1));
}

TEST(AttributeMapTest, InsertsAgainAfterTheOnlyEntryIsRemoved)
{
    AttributeMap map{{"a", "1"}};
    const AttributeMap::iterator next = map.erase(map.begin());
    EXPECT_EQ(next, map.end());
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.begin(), map.end());
    map["b"] = "2";
    map.clear();
    map["c"] = "3";
    EXPECT_EQ(map, (AttributeMap{{"c", "3"}}));
}

TEST(AttributeMapTest, ComparisonIgnoresOrderAndCapacity)
{
    AttributeMap a{{"x", "1"}, {"y", "2"}};
    AttributeMap b{{"y", "2"}, {"x", "1"}};
    b.reserve(100);
    EXPECT_EQ(a, b);
    EXPECT_EQ(b, a);
    b["x"] = "other";
    EXPECT_NE(a, b);
    EXPECT_NE(a, (AttributeMap{{"x", "1"}}));
    EXPECT_NE(a, (AttributeMap{{"x", "1"}, {"z", "2"}}));
}

TEST(AttributeMapTest, MergeMovesOnlyEntriesWithNewNames)
{
    for (const int count : {1, 3, 40}) {
        AttributeMap map{{"n0", "kept"}};
        AttributeMap other;
        for (int i = 0; i < count; ++i)
            other[VString::fromStdString("n" + std::to_string(i))] = "other";
        map.merge(other);
        EXPECT_EQ(other, (AttributeMap{{"n0", "other"}}));
        EXPECT_EQ(map.size(), static_cast<std::size_t>(count));
        EXPECT_EQ(map.find("n0")->second, VString("kept"));
        map.merge(map);
        EXPECT_EQ(map.size(), static_cast<std::size_t>(count));
    }
}
