// Deterministic automata of the patterns of schemas.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <xercesc/util/regx/RangeToken.hpp>
#include <xercesc/util/regx/Token.hpp>
#include <xercesc/util/regx/TokenFactory.hpp>

// The sets of characters of a pattern, and the cells: the largest sets of characters that the pattern does not
// tell apart. Cells have no common characters.
//
// Threads: one at a time.
class PatternCharacters {
public:
    using Set = std::unique_ptr<xercesc::RangeToken>;

    // `tokens` is the factory of the pattern.
    explicit PatternCharacters(xercesc::TokenFactory& tokens) noexcept : m_tokens(tokens) {}

    // Adds a set unless it is known, and returns its number. `token` is a T_RANGE, T_NRANGE, T_CHAR or T_DOT.
    std::size_t Add(const xercesc::Token& token);
    std::size_t Add(XMLInt32 character);
    // Call after the last set.
    void FindCells();
    std::size_t CountCells() const noexcept { return m_cells.size(); }
    // Returns the cells that a set consists of, in increasing order.
    const std::vector<std::size_t>& CellsOf(std::size_t set) const { return m_cellsOfSets[set]; }
    // Returns a character of the cell.
    XMLInt32 SampleOf(std::size_t cell) const { return m_samples[cell]; }
    // Returns a set that consists of some cells. It belongs to the factory.
    xercesc::RangeToken& Join(const std::vector<std::size_t>& cells);

private:
    Set MakeSet(const xercesc::Token& token);
    void Insert(const xercesc::RangeToken& set);

    xercesc::TokenFactory& m_tokens;
    std::map<const xercesc::Token*, std::size_t> m_numbersOfTokens;
    std::map<XMLInt32, std::size_t> m_numbersOfCharacters;
    std::vector<Set> m_sets;
    std::vector<Set> m_cells;
    std::vector<std::vector<std::size_t>> m_cellsOfSets;
    std::vector<XMLInt32> m_samples;
    std::map<std::vector<std::size_t>, xercesc::RangeToken*> m_joined;
};

// A deterministic automaton that accepts the values that match a pattern.
struct PatternAutomaton {
    struct State {
        bool accepts = false;
        // For each state that follows this one, the cells of the characters that lead there. Other characters lead
        // nowhere.
        std::map<std::size_t, std::vector<std::size_t>> cellsOfTargets;
    };

    PatternCharacters characters;
    // The first one is the state at the start of a value. An accepting state can be reached from each state.
    std::vector<State> states;
    // True if each character of a value can match only one place in the pattern. The order in which a matcher tries the
    // alternatives then has no effect.
    bool isUnambiguous = true;
    // True if the pattern repeats a part that may be empty without a limit, such as a* in (a*b?)*.
    bool repeatsEmptyPart = false;
};

// Returns nothing if the automaton would be too large, or if the pattern has a part that XML Schema does not have.
// `tree` is the pattern as Xerces has parsed it, and `tokens` the factory that made the tree. Cost: bounded.
std::optional<PatternAutomaton> MakePatternAutomaton(const xercesc::Token& tree, xercesc::TokenFactory& tokens);
