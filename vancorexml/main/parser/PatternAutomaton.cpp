#include "vancorexml/main/parser/PatternAutomaton.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/regx/RegxUtil.hpp>

using xercesc::RangeToken;
using xercesc::Token;

namespace {

// The largest pattern that gets an automaton. Most patterns are far below these limits. Repetitions within each other,
// and ambiguous ones such as (a|b)*a(a|b){20}, exceed them even in a short pattern. The limits bound the time to 0.2
// seconds.
constexpr std::size_t MostNodes = 20'000;
constexpr std::size_t MostSets = 250;
constexpr std::size_t MostStates = 5'000;
constexpr std::size_t MostSteps = 2'000'000;
// Levels of parentheses and repetitions. The functions that read the tree call themselves for each level.
constexpr std::size_t MostLevels = 200;

// Thrown if a pattern gets no automaton.
struct NoAutomaton {};

PatternCharacters::Set MakeEmptySet()
{
    return std::make_unique<RangeToken>(Token::T_RANGE);
}

PatternCharacters::Set Copy(const RangeToken& set)
{
    PatternCharacters::Set copy = MakeEmptySet();
    copy->mergeRanges(&set);
    return copy;
}

// Returns the characters of a set that are not in the other one.
PatternCharacters::Set Subtract(const RangeToken& set, RangeToken& other)
{
    PatternCharacters::Set difference = Copy(set);
    difference->subtractRanges(&other);
    return difference;
}

// Returns a character of a set, which must not be empty: a printable one of ASCII if there is one, otherwise the first.
XMLInt32 FindSample(RangeToken& set)
{
    for (XMLInt32 character = u'!'; character <= u'~'; ++character) {
        if (set.match(character))
            return character;
    }
    // The class does not tell its ranges, and the characters of all planes are too many to try.
    XMLInt32 low = 0;
    XMLInt32 high = Token::UTF16_MAX;
    while (low < high) {
        const XMLInt32 middle = (low + high) / 2;
        RangeToken upper(Token::T_RANGE);
        upper.addRange(middle + 1, Token::UTF16_MAX);
        if (Subtract(set, upper)->empty())
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

}  // namespace

PatternCharacters::Set PatternCharacters::MakeSet(const Token& token)
{
    Set set = MakeEmptySet();
    if (token.getTokenType() == Token::T_DOT) {
        // Xerces looks only at the lower 16 bits of a character to find out whether it ends a line.
        for (XMLInt32 plane = 0; plane <= Token::UTF16_MAX; plane += 0x10000) {
            set->addRange(plane, plane + u'\n' - 1);
            set->addRange(plane + u'\n' + 1, plane + u'\r' - 1);
            set->addRange(plane + u'\r' + 1, plane + 0x2027);
            set->addRange(plane + 0x202A, plane + 0xFFFF);
        }
        return set;
    }
    // Threads share the sets of the classes such as \c. Xerces sorts such a set when it first copies it, and makes its
    // index when it first matches a character, both without a lock.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    // The cast is safe: a token of this type is a RangeToken, and its order and index do not change the set.
    auto& range = const_cast<RangeToken&>(static_cast<const RangeToken&>(token));
    if (range.empty())
        throw NoAutomaton();
    set = Copy(range.getTokenType() == Token::T_RANGE ? range : *RangeToken::complementRanges(&range, &m_tokens));
    range.createMap();
    return set;
}

std::size_t PatternCharacters::Add(const Token& token)
{
    if (token.getTokenType() == Token::T_CHAR)
        return Add(token.getChar());
    const auto [place, isNew] = m_numbersOfTokens.try_emplace(&token, m_sets.size());
    if (isNew)
        Insert(*MakeSet(token));
    return place->second;
}

std::size_t PatternCharacters::Add(XMLInt32 character)
{
    const auto [place, isNew] = m_numbersOfCharacters.try_emplace(character, m_sets.size());
    if (isNew) {
        RangeToken set(Token::T_RANGE);
        set.addRange(character, character);
        Insert(set);
    }
    return place->second;
}

void PatternCharacters::Insert(const RangeToken& set)
{
    if (m_sets.size() >= MostSets)
        throw NoAutomaton();
    // Xerces matches no half of a surrogate pair.
    RangeToken surrogates(Token::T_RANGE);
    surrogates.addRange(0xD800, 0xDFFF);
    m_sets.push_back(Subtract(set, surrogates));
}

void PatternCharacters::FindCells()
{
    for (const Set& set : m_sets) {
        Set rest = Copy(*set);
        const std::size_t count = m_cells.size();
        for (std::size_t i = 0; i < count && !rest->empty(); ++i) {
            const Set cell = Copy(*m_cells[i]);
            Set outside = Subtract(*cell, *set);
            Set inside = outside->empty() ? Copy(*cell) : Subtract(*cell, *outside);
            if (inside->empty())
                continue;
            rest = Subtract(*rest, *inside);
            if (!outside->empty()) {
                m_cells[i] = std::move(inside);
                m_cells.push_back(std::move(outside));
            }
        }
        if (!rest->empty())
            m_cells.push_back(std::move(rest));
        if (m_cells.size() > MostSets)
            throw NoAutomaton();
    }
    for (const Set& cell : m_cells)
        m_samples.push_back(FindSample(*cell));
    for (const Set& set : m_sets) {
        std::vector<std::size_t>& cells = m_cellsOfSets.emplace_back();
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            if (set->match(m_samples[i]))
                cells.push_back(i);
        }
    }
}

RangeToken& PatternCharacters::Join(const std::vector<std::size_t>& cells)
{
    RangeToken*& joined = m_joined[cells];
    if (!joined) {
        RangeToken* const token = m_tokens.createRange();
        for (const std::size_t cell : cells)
            token->mergeRanges(m_cells[cell].get());
        token->compactRanges();
        token->createMap();
        joined = token;
    }
    return *joined;
}

namespace {

// A place in a pattern. A matcher goes from node to node.
struct Node {
    enum class Kind {
        Characters,  // needs a character of a set, then goes to the only successor
        Branch,      // goes to each successor
        End,         // of the pattern
    };

    Kind kind;
    std::size_t set = 0;
    std::vector<std::size_t> successors;
};

// Makes an automaton: first a graph of nodes, then a state for each set of nodes that a matcher can be at.
class Builder {
public:
    explicit Builder(xercesc::TokenFactory& tokens) : m_automaton{PatternCharacters(tokens), {}} {}

    PatternAutomaton Build(const Token& tree)
    {
        const std::size_t end = AddNode({Node::Kind::End, 0, {}});
        m_first = AddPart(tree, end, 0);
        m_automaton.characters.FindCells();
        FindStates();
        return std::move(m_automaton);
    }

private:
    using Places = std::vector<std::size_t>;  // numbers of nodes of characters and of the end, in increasing order

    std::size_t AddNode(Node node);
    // Adds the nodes of a part of the pattern that is followed by the node `next`. Returns the first node.
    std::size_t AddPart(const Token& part, std::size_t next, std::size_t level);
    std::size_t AddText(const XMLCh* text, std::size_t next);
    std::size_t AddRepetition(const Token& repetition, std::size_t next, std::size_t level);
    void CountSteps(std::size_t count);
    // Inserts the places that can be reached from a node without a character.
    void Reach(std::size_t node, Places& places);
    void FindStates();
    // Returns the number of the state at these places.
    std::size_t FindState(Places places);
    void FindTargets(std::size_t state);

    PatternAutomaton m_automaton;
    std::vector<Node> m_nodes;
    std::size_t m_first = 0;
    std::size_t m_steps = 0;
    std::map<Places, std::size_t> m_numbersOfStates;
    std::vector<Places> m_placesOfStates;
    std::vector<bool> m_isReached;  // by node, false between two calls of Reach
};

std::size_t Builder::AddNode(Node node)
{
    if (m_nodes.size() >= MostNodes)
        throw NoAutomaton();
    m_nodes.push_back(std::move(node));
    return m_nodes.size() - 1;
}

std::size_t Builder::AddPart(const Token& part, std::size_t next, std::size_t level)
{
    if (level > MostLevels)
        throw NoAutomaton();
    // An empty part adds no node, so the limit of nodes does not bound the number of parts.
    CountSteps(1);
    switch (part.getTokenType()) {
    case Token::T_CHAR:
    case Token::T_RANGE:
    case Token::T_NRANGE:
    case Token::T_DOT: return AddNode({Node::Kind::Characters, m_automaton.characters.Add(part), {next}});
    case Token::T_STRING: return AddText(part.getString(), next);
    case Token::T_EMPTY: return next;
    case Token::T_PAREN: return AddPart(*part.getChild(0), next, level + 1);
    case Token::T_CONCAT:
        for (XMLSize_t i = part.size(); i != 0; --i)
            next = AddPart(*part.getChild(i - 1), next, level + 1);
        return next;
    case Token::T_UNION: {
        Node branch{Node::Kind::Branch, 0, {}};
        for (XMLSize_t i = 0; i < part.size(); ++i)
            branch.successors.push_back(AddPart(*part.getChild(i), next, level + 1));
        return AddNode(std::move(branch));
    }
    case Token::T_CLOSURE: return AddRepetition(part, next, level);
    default: throw NoAutomaton();
    }
}

std::size_t Builder::AddText(const XMLCh* text, std::size_t next)
{
    using xercesc::RegxUtil;
    for (XMLSize_t i = xercesc::XMLString::stringLen(text); i != 0; --i) {
        XMLInt32 character = text[i - 1];
        if (RegxUtil::isLowSurrogate(text[i - 1]) && i > 1 && RegxUtil::isHighSurrogate(text[i - 2])) {
            character = RegxUtil::composeFromSurrogate(text[i - 2], text[i - 1]);
            --i;
        }
        next = AddNode({Node::Kind::Characters, m_automaton.characters.Add(character), {next}});
    }
    return next;
}

std::size_t Builder::AddRepetition(const Token& repetition, std::size_t next, std::size_t level)
{
    const Token& part = *repetition.getChild(0);
    const int least = std::max(repetition.getMin(), 0);
    const int most = repetition.getMax();
    std::size_t first = next;
    if (most < 0) {
        m_automaton.repeatsEmptyPart |= part.getMinLength() == 0;
        first = AddNode({Node::Kind::Branch, 0, {}});
        const std::size_t body = AddPart(part, first, level + 1);
        m_nodes[first].successors = {body, next};
    }
    for (int i = least; i < most; ++i)
        first = AddNode({Node::Kind::Branch, 0, {AddPart(part, first, level + 1), next}});
    for (int i = 0; i < least; ++i)
        first = AddPart(part, first, level + 1);
    return first;
}

void Builder::CountSteps(std::size_t count)
{
    m_steps += count;
    if (m_steps > MostSteps)
        throw NoAutomaton();
}

void Builder::Reach(std::size_t node, Places& places)
{
    m_isReached.resize(m_nodes.size());
    Places reached{node};
    m_isReached[node] = true;
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const Node& from = m_nodes[reached[i]];
        if (from.kind != Node::Kind::Branch) {
            places.push_back(reached[i]);
            continue;
        }
        for (const std::size_t successor : from.successors) {
            CountSteps(1);
            if (!m_isReached[successor])
                reached.push_back(successor);
            m_isReached[successor] = true;
        }
    }
    CountSteps(reached.size());
    for (const std::size_t each : reached)
        m_isReached[each] = false;
}

void Builder::FindStates()
{
    Places start;
    Reach(m_first, start);
    FindState(std::move(start));
    for (std::size_t state = 0; state < m_automaton.states.size(); ++state)
        FindTargets(state);
}

std::size_t Builder::FindState(Places places)
{
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    const auto [place, isNew] = m_numbersOfStates.try_emplace(places, m_automaton.states.size());
    if (isNew) {
        if (m_automaton.states.size() >= MostStates)
            throw NoAutomaton();
        m_automaton.states.emplace_back().accepts = std::any_of(
            places.begin(), places.end(), [this](std::size_t node) { return m_nodes[node].kind == Node::Kind::End; });
        m_placesOfStates.push_back(std::move(places));
    }
    return place->second;
}

void Builder::FindTargets(std::size_t state)
{
    std::map<std::size_t, Places> placesOfCells;
    for (const std::size_t node : Places(m_placesOfStates[state])) {
        if (m_nodes[node].kind == Node::Kind::End)
            continue;
        Places next;
        Reach(m_nodes[node].successors.front(), next);
        const std::vector<std::size_t>& cells = m_automaton.characters.CellsOf(m_nodes[node].set);
        // Nothing could follow, and the program of an automaton has no state without a way to its end.
        if (cells.empty())
            throw NoAutomaton();
        for (const std::size_t cell : cells) {
            CountSteps(1 + next.size());
            Places& places = placesOfCells[cell];
            if (!places.empty())
                m_automaton.isUnambiguous = false;
            places.insert(places.end(), next.begin(), next.end());
        }
    }
    for (auto& [cell, places] : placesOfCells) {
        const std::size_t target = FindState(std::move(places));
        m_automaton.states[state].cellsOfTargets[target].push_back(cell);
    }
}

}  // namespace

std::optional<PatternAutomaton> MakePatternAutomaton(const Token& tree, xercesc::TokenFactory& tokens)
{
    try {
        return Builder(tokens).Build(tree);
    } catch (const NoAutomaton&) {
        return std::nullopt;
    }
}
