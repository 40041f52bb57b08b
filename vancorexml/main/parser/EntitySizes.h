// The sizes of the entities that a document declares.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// The size of an expansion. The sums saturate at Max.
struct Expansion {
    static constexpr std::uint64_t Max = std::uint64_t{1} << 62;

    // References that are replaced, including references within entities.
    std::uint64_t count = 0;
    // UTF-16 code units that finally replace the references.
    std::uint64_t text = 0;
    // UTF-16 code units that a parser reads while it replaces the references: `text`, and the references in the
    // texts of entities.
    std::uint64_t read = 0;
    // UTF-16 code units of the entities' names, one name for each reference.
    std::uint64_t names = 0;
    // UTF-16 code units that are compared to find circles: Xerces compares the name of an entity with
    // the name of each entity around it.
    std::uint64_t compared = 0;
    // The levels of entities within each other: 1 for an entity without references. A parser keeps as many open.
    std::uint64_t levels = 0;
    // The part of `text` that comes from entities with tags or declarations in their own text.
    std::uint64_t markup = 0;

    // Adds the sizes. The levels become those of the deeper expansion.
    Expansion& operator+=(const Expansion& other) noexcept;
};

// The general or the parameter entities of a document. Computes the size of an expansion from the
// replacement texts, without expanding anything. A reference to an undeclared entity expands to
// nothing.
//
// Threads: one at a time.
//
// Cost: Declare is linear in the text. Expand visits each entity at most once between two declarations.
// A call of Expand for a visited entity is constant, or linear in the number of entities if the entity
// is circular. The call stack does not grow.
class EntitySizes {
public:
    enum class Kind { General, Parameter };

    explicit EntitySizes(Kind kind) noexcept : m_kind(kind) {}

    // Returns the entity's number, from 0. The name must not be declared yet.
    std::size_t Declare(std::u16string_view name, std::u16string_view text);

    // The expansion of one reference to the entity, without the expansions of the references in its text.
    const Expansion& OwnExpansion(std::size_t entity) const noexcept { return m_entities[entity].own; }
    // The expansion of one reference to the entity. If entities contain each other in a circle, it ends
    // at the first reference that closes the circle, because a parser stops there.
    Expansion Expand(std::size_t entity);
    // True if the entity contains itself or an entity that contains itself. Call Expand for it first.
    bool IsCircular(std::size_t entity) const noexcept { return m_entities[entity].circle != None; }

    std::size_t Count() const noexcept { return m_entities.size(); }
    // The maxima of `text`, `read`, `names` and `markup` over the own expansions of all entities. Each maximum
    // may come from a different entity.
    const Expansion& Longest() const noexcept { return m_longest; }

private:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    enum class State { Unknown, Open, Known };
    struct Entity {
        Expansion own;
        std::vector<std::uint32_t> names;  // numbers of the names it refers to, in order
        // Valid while `generation` is m_generation:
        State state = State::Unknown;
        // The expansion of the entity, including the expansions of the references in its text. If a reference
        // leads into a circle, includes only the references before it.
        Expansion all;
        std::size_t circle = None;  // the first referenced entity that leads into a circle; None without a circle
        std::uint64_t generation = 0;
    };

    std::uint32_t FindOrAddName(std::u16string_view name);
    State StateOf(std::size_t entity) const noexcept
    {
        return m_entities[entity].generation == m_generation ? m_entities[entity].state : State::Unknown;
    }
    // Records the reference at `position` of the entity's text. Returns its length, or 0 if there is none.
    std::size_t RecordReference(std::u16string_view text, std::size_t position, Entity& entity);
    void BeginVisit(std::size_t entity);
    void ComputeExpansion(std::size_t root);

    Kind m_kind;
    std::map<std::u16string, std::uint32_t, std::less<>> m_names;
    std::vector<std::size_t> m_entityOfName;  // None for a name that is not declared
    std::vector<Entity> m_entities;
    // Incremented by each declaration, which may change the size of every entity.
    std::uint64_t m_generation = 0;
    Expansion m_longest;
};
