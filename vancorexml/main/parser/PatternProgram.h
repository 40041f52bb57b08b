// Programs that match the patterns of schemas in linear time.
#pragma once

#include <xercesc/framework/XMLGrammarPool.hpp>
#include <xercesc/util/regx/RegularExpression.hpp>

// Xerces compares a value with a pattern by trying one alternative after the other. With some patterns it calls itself
// for each character of the value, or the time grows with the square of the length of the value or faster. For such a
// pattern, these functions build a deterministic automaton. They write it with the operations that Xerces executes, so
// it replaces the program that Xerces made. Each character then decides how to continue, and nothing is tried twice.
//
// The new program accepts the values that match the pattern. Xerces refuses some of them, for example "1234" for
// \d{1,3}(,?\d{3})*, because it stops at the first end that it finds. A pattern keeps its program if a sample of values
// shows such a difference. The sample cannot find every difference. No sample is needed in two cases, which are the
// usual ones: each character can match only one place of the pattern, or no accepted value is the start of another
// accepted value. A pattern that repeats a part that may be empty, such as a* in (a*|b)*, is not compared either,
// because Xerces may call itself without end for it.
//
// Threads: one at a time for each pool and each expression.
namespace PatternProgram {

enum class Outcome {
    Replaced,
    // The pattern already has a linear program that needs no stack, or was seen before.
    Unneeded,
    // The automaton would be too large, or would accept other values. The pattern keeps its program.
    Impossible,
};

// Replaces the programs of all patterns in the schemas of the pool. The programs belong to the schemas.
//
// Throws std::bad_alloc. The next call then handles the remaining patterns. Cost: about a millisecond for a usual
// pattern that the function has not seen before, and up to 0.2 seconds for a huge one.
void ReplaceAll(xercesc::XMLGrammarPool& schemas);

// Replaces the program of an expression with the syntax of XML Schema. See ReplaceAll.
Outcome Replace(xercesc::RegularExpression& expression);

}  // namespace PatternProgram
