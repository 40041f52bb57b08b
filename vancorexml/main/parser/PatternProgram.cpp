#include "vancorexml/main/parser/PatternProgram.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <xercesc/util/regx/RegxUtil.hpp>
#include <xercesc/validators/datatype/DatatypeValidator.hpp>
#include <xercesc/validators/schema/SchemaGrammar.hpp>

#include "vancorexml/main/parser/PatternAutomaton.h"

using xercesc::Op;
using xercesc::RegularExpression;
using xercesc::Token;

namespace {

// Gives access to the protected members of each expression.
struct Expression : RegularExpression {
    static constexpr auto Options() { return &Expression::fOptions; }
    static constexpr auto Operations() { return &Expression::fOperations; }
    static constexpr auto Tree() { return &Expression::fTokenTree; }
    static constexpr auto Tokens() { return &Expression::fTokenFactory; }
    static constexpr auto Factory() { return &Expression::fOpFactory; }
};

// Gives access to the expression of each type.
struct Type : xercesc::DatatypeValidator {
    static constexpr auto GetExpression() { return &Type::getRegex; }
};

// Marks the options of an expression that Replace has seen. Xerces does not use this bit.
constexpr unsigned int Seen = 1u << 30;

// True if Xerces matches a repetition in the tree recursively, or in quadratic time. It calls itself for alternatives,
// and it measures the whole value before it compares a text of several characters. The recursion here is shallow,
// because MakePatternAutomaton has refused deep trees. Both ignore a part that is repeated zero times.
bool HasCostlyRepetition(const Token& tree, bool isRepeated)
{
    const Token::tokType type = tree.getTokenType();
    if (isRepeated && (type == Token::T_UNION || type == Token::T_STRING))
        return true;
    if (type == Token::T_CLOSURE && tree.getMax() == 0)
        return false;
    if (type == Token::T_CLOSURE || type == Token::T_PAREN)
        return HasCostlyRepetition(*tree.getChild(0), isRepeated || type == Token::T_CLOSURE);
    for (XMLSize_t i = 0; i < tree.size(); ++i) {
        if (HasCostlyRepetition(*tree.getChild(i), isRepeated))
            return true;
    }
    return false;
}

void Append(std::u16string& text, XMLInt32 character)
{
    if (character < 0x10000) {
        text += static_cast<XMLCh>(character);
        return;
    }
    XMLCh high = 0;
    XMLCh low = 0;
    xercesc::RegxUtil::decomposeToSurrogates(character, high, low);
    text += high;
    text += low;
}

// Matches a short value with a program of Xerces. The result is the one of Xerces, which may take exponential time, but
// this class finds each part of it only once. The program must not repeat a part that may be empty without a limit.
class ShortMatch {
public:
    explicit ShortMatch(std::u16string_view value) noexcept : m_value(value) {}

    // Returns false also if it takes too many levels of calls to find out.
    bool Accepts(const Op* program) { return FindEnd(program, 0) == static_cast<int>(m_value.size()) && !m_isTooDeep; }
    std::size_t CountSteps() const noexcept { return m_ends.size(); }

private:
    static constexpr int None = -1;
    static constexpr std::size_t MostLevels = 250;

    // Returns where Xerces stops if it starts at `operation` and at the offset `start`, or None if the value from there
    // does not match.
    int FindEnd(const Op* operation, std::size_t start)
    {
        if (!operation)
            return static_cast<int>(start);
        // The place stays None while it is being computed, so a loop that reads nothing ends.
        const auto [place, isNew] = m_ends.try_emplace({operation, start}, None);
        if (isNew && m_level == MostLevels) {
            m_isTooDeep = true;
        } else if (isNew) {
            ++m_level;
            place->second = Run(*operation, start);
            --m_level;
        }
        return place->second;
    }

    int Run(const Op& operation, std::size_t start)
    {
        const Op* const next = operation.getNextOp();
        switch (operation.getOpType()) {
        case Op::O_CHAR:
        case Op::O_DOT:
        case Op::O_RANGE: return MatchesCharacter(operation, start) ? FindEnd(next, FindNext(start)) : None;
        case Op::O_STRING: {
            const std::u16string_view text(operation.getLiteral());
            return m_value.substr(start).starts_with(text) ? FindEnd(next, start + text.size()) : None;
        }
        case Op::O_FINITE_CLOSURE: {
            int end = FindEnd(operation.getChild(), start);
            while (end > static_cast<int>(start)) {
                start = static_cast<std::size_t>(end);
                end = FindEnd(operation.getChild(), start);
            }
            return FindEnd(next, start);
        }
        case Op::O_CLOSURE:
        case Op::O_QUESTION: {
            const int end = FindEnd(operation.getChild(), start);
            return end != None ? end : FindEnd(next, start);
        }
        case Op::O_UNION: {
            int end = None;
            for (XMLSize_t i = 0; i < operation.getSize(); ++i)
                end = std::max(end, FindEnd(operation.elementAt(i), start));
            return end;
        }
        default: return None;
        }
    }

    bool MatchesCharacter(const Op& operation, std::size_t start) const
    {
        if (start == m_value.size())
            return false;
        XMLInt32 character = m_value[start];
        if (FindNext(start) != start + 1)
            character = xercesc::RegxUtil::composeFromSurrogate(m_value[start], m_value[start + 1]);
        if (operation.getOpType() == Op::O_CHAR)
            return character == operation.getData();
        if (operation.getOpType() == Op::O_DOT)
            return !xercesc::RegxUtil::isEOLChar(static_cast<XMLCh>(character));
        // The cast is safe: the set only completes its index.
        auto* const set = const_cast<Token*>(operation.getToken());
        return static_cast<xercesc::RangeToken*>(set)->match(character);
    }

    // Returns the offset behind a character.
    std::size_t FindNext(std::size_t start) const
    {
        return start + (xercesc::RegxUtil::isHighSurrogate(m_value[start]) ? 2 : 1);
    }

    std::u16string_view m_value;
    std::map<std::pair<const Op*, std::size_t>, int> m_ends;
    std::size_t m_level = 0;
    bool m_isTooDeep = false;
};

// True if no accepted value is the start of another one. Where Xerces stops is then always the end of the value.
bool IsPrefixFree(const PatternAutomaton& automaton)
{
    return std::all_of(automaton.states.begin(), automaton.states.end(), [](const PatternAutomaton::State& state) {
        return !state.accepts || state.cellsOfTargets.empty();
    });
}

// True if Xerces, with its own program, probably accepts the values that the automaton accepts. Tries values along
// random ways through the automaton. Values that the automaton refuses do not match the pattern, so Xerces refuses them
// too.
bool SeemsEqualToXerces(const Op* program, const PatternAutomaton& automaton)
{
    constexpr int Ways = 200;
    constexpr int LongestWay = 12;
    std::size_t steps = 100'000;  // some milliseconds
    std::uint32_t random = 1;
    // Returns a number below `end`.
    const auto draw = [&random](std::size_t end) {
        random = random * 1664525 + 1013904223;
        return (random >> 8) % end;
    };
    for (int way = 0; way < Ways; ++way) {
        std::u16string value;
        std::size_t state = 0;
        for (int i = 0; i < LongestWay; ++i) {
            const PatternAutomaton::State& from = automaton.states[state];
            if (from.accepts) {
                ShortMatch match(value);
                if (!match.Accepts(program))
                    return false;
                if (match.CountSteps() > steps)
                    return false;
                steps -= match.CountSteps();
            }
            if (from.cellsOfTargets.empty())
                break;
            auto target = from.cellsOfTargets.begin();
            std::advance(target, draw(from.cellsOfTargets.size()));
            state = target->first;
            Append(value, automaton.characters.SampleOf(target->second[draw(target->second.size())]));
        }
    }
    return true;
}

// Writes an automaton as a program of Xerces.
//
// The operations of a state try the next states one after the other. A loop to the state itself comes first, because
// Xerces runs it without memory for each character. At most one of the operations succeeds, so their order has no
// effect. In an accepting state, Xerces may stop behind the last operation. It accepts the value if all of the value
// is read.
class Writer {
public:
    Writer(PatternAutomaton& automaton, xercesc::OpFactory& operations)
        : m_automaton(automaton),
          m_operations(operations)
    {}

    const Op* Write()
    {
        std::vector<const Op*> first;
        for (std::size_t state = 0; state < m_automaton.states.size(); ++state)
            first.push_back(WriteState(state));
        for (const auto& [operation, target] : m_steps)
            operation->setNextOp(first[target]);
        return first.front();
    }

private:
    const Op* WriteState(std::size_t number)
    {
        const PatternAutomaton::State& state = m_automaton.states[number];
        const Op* first = nullptr;
        bool mayStop = state.accepts;
        for (const auto& [target, cells] : state.cellsOfTargets) {
            if (target == number)
                continue;
            Op* const step = m_operations.createRangeOp(&m_automaton.characters.Join(cells));
            m_steps.emplace_back(step, target);
            if (std::exchange(mayStop, true)) {
                xercesc::ChildOp* const attempt = m_operations.createQuestionOp(false);
                attempt->setChild(step);
                attempt->setNextOp(first);
                first = attempt;
            } else {
                first = step;
            }
        }
        if (const auto loop = state.cellsOfTargets.find(number); loop != state.cellsOfTargets.end()) {
            xercesc::ChildOp* const repetition = m_operations.createClosureOp(-1);
            repetition->setOpType(Op::O_FINITE_CLOSURE);
            repetition->setChild(m_operations.createRangeOp(&m_automaton.characters.Join(loop->second)));
            repetition->setNextOp(first);
            first = repetition;
        }
        return first;
    }

    PatternAutomaton& m_automaton;
    xercesc::OpFactory& m_operations;
    std::vector<std::pair<Op*, std::size_t>> m_steps;
};

PatternProgram::Outcome ReplaceUnseen(RegularExpression& expression)
{
    using PatternProgram::Outcome;
    const Token& tree = *(expression.*Expression::Tree());
    std::optional<PatternAutomaton> automaton = MakePatternAutomaton(tree, *(expression.*Expression::Tokens()));
    if (!automaton)
        return Outcome::Impossible;
    // If a part that may be empty is repeated, Xerces may call itself without end. No result could be compared.
    if (!automaton->repeatsEmptyPart) {
        if (automaton->isUnambiguous && !HasCostlyRepetition(tree, false))
            return Outcome::Unneeded;
        const bool isEqual = automaton->isUnambiguous || IsPrefixFree(*automaton) ||
            SeemsEqualToXerces(expression.*Expression::Operations(), *automaton);
        if (!isEqual)
            return Outcome::Impossible;
    }
    expression.*Expression::Operations() = Writer(*automaton, expression.*Expression::Factory()).Write();
    return Outcome::Replaced;
}

}  // namespace

PatternProgram::Outcome PatternProgram::Replace(RegularExpression& expression)
{
    unsigned int& options = expression.*Expression::Options();
    if ((options & Seen) != 0)
        return Outcome::Unneeded;
    const Outcome outcome = ReplaceUnseen(expression);
    options |= Seen;
    return outcome;
}

void PatternProgram::ReplaceAll(xercesc::XMLGrammarPool& schemas)
{
    auto grammars = schemas.getGrammarEnumerator();
    while (grammars.hasMoreElements()) {
        auto* const grammar = dynamic_cast<xercesc::SchemaGrammar*>(&grammars.nextElement());
        auto* const types = grammar ? grammar->getDatatypeRegistry()->getUserDefinedRegistry() : nullptr;
        if (!types)
            continue;
        xercesc::RefHashTableOfEnumerator<xercesc::DatatypeValidator> all(types);
        while (all.hasMoreElements()) {
            const xercesc::DatatypeValidator& type = all.nextElement();
            if (RegularExpression* const expression = (type.*Type::GetExpression())())
                Replace(*expression);
        }
    }
}
