#include "vancorexml/main/parser/PatternProgram.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/common/TestSupport.h"
#if !defined(_WIN32)
#  include "tests/common/ThreadStack.h"
#endif
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

using PatternProgram::Outcome;
using xercesc::RegularExpression;

struct PatternProgramTest : testing::Test {
    XercesInitializer xerces;
};

std::string ToText(const std::u16string& text)
{
    return VString(text.c_str()).toStdString();
}

std::u16string MakeText(char32_t character)
{
    if (character < 0x10000)
        return {static_cast<char16_t>(character)};
    const char32_t rest = character - 0x10000;
    return {static_cast<char16_t>(0xD800 + (rest >> 10)), static_cast<char16_t>(0xDC00 + (rest & 0x3FF))};
}

// A pattern twice: as Xerces matches it, and with its program replaced.
struct Pair {
    explicit Pair(const std::u16string& pattern) : plain(pattern.c_str(), u"X"), replaced(pattern.c_str(), u"X")
    {
        outcome = PatternProgram::Replace(replaced);
    }

    RegularExpression plain;
    RegularExpression replaced;
    Outcome outcome;
};

// Returns all values of at most `length` letters.
std::vector<std::u16string> MakeValues(const std::u16string& letters, std::size_t length)
{
    std::vector<std::u16string> values{u""};
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].size() == length)
            break;
        for (const char16_t letter : letters)
            values.push_back(std::u16string(values[i]) + letter);
    }
    return values;
}

TEST_F(PatternProgramTest, ReplacesOnlyCostlyPatterns)
{
    struct PatternRow {
        const char16_t* pattern;
        Outcome outcome;
    };
    const PatternRow rows[] = {
        {u"", Outcome::Unneeded},
        {u"[a-z]*", Outcome::Unneeded},
        {u"\\i\\c*", Outcome::Unneeded},
        {u"(\\+|-)?[0-9]+(\\.[0-9]*)?", Outcome::Unneeded},
        {u"[0-9]{5}(-[0-9]{4})?", Outcome::Unneeded},
        {u"([0-9]{1,3}\\.){3}[0-9]{1,3}", Outcome::Unneeded},
        {u"(a|b|cd)*x", Outcome::Replaced},
        {u"(a?b)*", Outcome::Replaced},
        {u"(ab)*", Outcome::Replaced},
        {u"(ab){2,9}", Outcome::Replaced},
        // Ambiguous, with the same result in each order of the alternatives.
        {u"[a-z]*[a-z]*x", Outcome::Replaced},
        {u"([a-z]+)+x", Outcome::Replaced},
        // Ambiguous: Xerces stops too early for "1234" and "aab".
        {u"\\d{1,3}(,?\\d{3})*", Outcome::Impossible},
        {u"a{0,2}(ab)?", Outcome::Impossible},
        // Too large.
        {u"(a|b)*a(a|b){20}", Outcome::Impossible},
    };
    for (const PatternRow& row : rows)
        EXPECT_EQ(Pair(row.pattern).outcome, row.outcome) << ToText(row.pattern);
}

TEST_F(PatternProgramTest, ASecondCallDoesNothing)
{
    RegularExpression expression(u"(a|b|cd)*x", u"X");
    EXPECT_EQ(PatternProgram::Replace(expression), Outcome::Replaced);
    EXPECT_EQ(PatternProgram::Replace(expression), Outcome::Unneeded);
    EXPECT_TRUE(expression.matches(u"abcdx"));
}

TEST_F(PatternProgramTest, AllShortValuesHaveTheResultOfXerces)
{
    const char16_t* const patterns[] = {
        u"(a|b|cd)*x",
        u"(a?b)*",
        u"(ab|cd)+",
        u"(a|ab)*d",
        u"(a|b|ab)*x?",
        u"((a|b)+,?c)*x",
        u"([a-c]|ab|abc)+x",
        u"(a|b){2,5}x?",
        u"[ab]*[ab]*x",
        u"([ab]+)+x",
        u"([^ab]|ab)*",
        u"(.|ab)*b",
        u"(a|[a-d-[b]])*x",
        u"0*18\\.0*1(\\.0+)*(-.*)?",
        u"\\d{1,3}(,?\\d{3})*",
    };
    for (const char16_t* const pattern : patterns) {
        const Pair pair(pattern);
        for (const std::u16string& value : MakeValues(u"abcdx", 6)) {
            ASSERT_EQ(pair.replaced.matches(value.c_str()), pair.plain.matches(value.c_str()))
                << ToText(pattern) << " and " << ToText(value);
        }
    }
}

TEST_F(PatternProgramTest, TextsMayHaveSurrogatePairs)
{
    const Pair pair(u"(\U0001F600\U0001F601|\U0001F600)*x");
    EXPECT_EQ(pair.outcome, Outcome::Replaced);
    for (const std::u16string& value : MakeValues(u"\xD83D\xDE00\xDE01x", 6)) {
        EXPECT_EQ(pair.replaced.matches(value.c_str()), pair.plain.matches(value.c_str()))
            << testing::PrintToString(value);
    }
}

TEST_F(PatternProgramTest, ARepeatedPartMayBeEmpty)
{
    // Xerces calls itself without end for the third pattern.
    for (const char16_t* const pattern : {u"(a*)*x", u"(a*b*)*x", u"(a?|b*)*x", u"((a*|b)?)+x"}) {
        const Pair pair(pattern);
        EXPECT_EQ(pair.outcome, Outcome::Replaced) << ToText(pattern);
        EXPECT_TRUE(pair.replaced.matches(u"x")) << ToText(pattern);
        EXPECT_TRUE(pair.replaced.matches(u"aax")) << ToText(pattern);
        EXPECT_FALSE(pair.replaced.matches(u"aa")) << ToText(pattern);
        EXPECT_FALSE(pair.replaced.matches(u"xa")) << ToText(pattern);
    }
}

// Each class of characters, and each kind of character.
TEST_F(PatternProgramTest, AllCharactersHaveTheResultOfXerces)
{
    const char16_t* const classes[] = {u".",
        u"\\s",
        u"\\S",
        u"\\d",
        u"\\D",
        u"\\w",
        u"\\W",
        u"\\i",
        u"\\I",
        u"\\c",
        u"\\C",
        u"\\p{Lu}",
        u"\\P{L}",
        u"\\p{IsGreek}",
        u"[^a-z]",
        u"[a-z-[aeiou]]",
        u"[^\\d-[b]]",
        u"\U0001F600",
        u"[\U0001F600-\U0001F610]",
        u"\\.",
        u"[\\-a]",
        u"[^\\s]"};
    for (const char16_t* const each : classes) {
        const Pair pair(u"(" + std::u16string(each) + u"|\u20ACx)*");
        EXPECT_EQ(pair.outcome, Outcome::Replaced) << ToText(each);
        for (char32_t character = 1; character <= 0x10FFFF; character += character < 0x3000 ? 1 : 0x101) {
            if (character >= 0xD800 && character < 0xE000)
                continue;
            const std::u16string value = MakeText(character);
            ASSERT_EQ(pair.replaced.matches(value.c_str()), pair.plain.matches(value.c_str()))
                << ToText(each) << " and " << static_cast<unsigned>(character);
        }
        // Xerces ignores the upper half of these characters where it looks for ends of lines.
        for (const char16_t* const value : {u"\U0001000A", u"\U0001000D", u"\U00012028", u"\U00012029", u"\u2028"})
            EXPECT_EQ(pair.replaced.matches(value), pair.plain.matches(value)) << ToText(each);
    }
}

// Makes random patterns. No part that may be empty is repeated without a limit, because Xerces does not always end
// then.
class PatternMaker {
public:
    explicit PatternMaker(unsigned int seed) : m_random(seed) {}

    std::u16string Make() { return MakeAlternatives(3).text; }
    std::size_t Draw(std::size_t end) { return m_random() % end; }

private:
    struct Part {
        std::u16string text;
        bool mayBeEmpty = true;
    };

    Part MakeAlternatives(int depth)
    {
        Part part{u"", false};
        const std::size_t count = Draw(3) == 0 ? 2 + Draw(2) : 1;
        for (std::size_t i = 0; i < count; ++i) {
            const Part sequence = MakeSequence(depth);
            part.text += (i != 0 ? u"|" : u"") + sequence.text;
            part.mayBeEmpty |= sequence.mayBeEmpty;
        }
        return part;
    }

    Part MakeSequence(int depth)
    {
        Part part;
        const std::size_t count = Draw(8) == 0 ? 0 : 1 + Draw(3);
        for (std::size_t i = 0; i < count; ++i) {
            const Part factor = MakeFactor(depth);
            part.text += factor.text;
            part.mayBeEmpty &= factor.mayBeEmpty;
        }
        return part;
    }

    Part MakeFactor(int depth)
    {
        const char16_t* const atoms[] = {u"a", u"b", u"c", u"[ab]", u"[^a]", u".", u"\\d", u"[a-c-[b]]", u"\U0001F600"};
        Part part{u"", false};
        if (depth > 0 && Draw(3) == 0) {
            part = MakeAlternatives(depth - 1);
            part.text = u"(" + part.text + u")";
        } else {
            part.text = atoms[Draw(std::size(atoms))];
        }
        const char16_t* const counters[] = {u"?", u"{2}", u"{1,3}", u"{0,2}", u"*", u"+", u"{2,}"};
        if (Draw(2) == 0)
            return part;
        const std::size_t counter = Draw(part.mayBeEmpty ? 4 : std::size(counters));
        part.text += counters[counter];
        part.mayBeEmpty |= counter == 0 || counter == 3 || counter == 4;
        return part;
    }

    std::mt19937 m_random;
};

TEST_F(PatternProgramTest, RandomPatternsHaveTheResultOfXerces)
{
    PatternMaker maker(20);
    const char16_t* const pieces[] = {u"a", u"b", u"c", u"a", u"b", u"1", u"\U0001F600", u"-", u"\n"};
    std::size_t replaced = 0;
    std::size_t different = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::u16string pattern = maker.Make();
        const Pair pair(pattern);
        replaced += pair.outcome == Outcome::Replaced;
        bool isDifferent = false;
        for (int j = 0; j < 100 && pair.outcome == Outcome::Replaced; ++j) {
            std::u16string value;
            for (std::size_t left = maker.Draw(7); left != 0; --left)
                value += pieces[maker.Draw(std::size(pieces))];
            const bool matches = pair.plain.matches(value.c_str());
            const bool isAccepted = pair.replaced.matches(value.c_str());
            ASSERT_TRUE(isAccepted || !matches) << ToText(pattern) << " and " << ToText(value);
            isDifferent |= isAccepted != matches;
        }
        different += isDifferent;
    }
    EXPECT_GT(replaced, 300u);
    EXPECT_EQ(different, 0u);
}

TEST_F(PatternProgramTest, APartWithoutRepetitionsCostsNothing)
{
    const testsupport::CpuTimeLimit limit(1);
    constexpr int Levels = 28;
    std::u16string part = u"b";
    for (int i = 0; i < Levels; ++i)
        part = u"(" + part + u")+";
    const Pair pair(u"a(" + part + u"){0}");
    EXPECT_EQ(pair.outcome, Outcome::Unneeded);
    EXPECT_TRUE(pair.replaced.matches(u"a"));
    EXPECT_FALSE(pair.replaced.matches(u"ab"));
}

TEST_F(PatternProgramTest, HalvesOfSurrogatePairsMatchNothing)
{
    for (const char16_t* const pattern : {u"(.|\\p{Cs})*(bc)?", u"(.|[\\p{Cs}a])*(bc)?", u"([^a]|\\P{L})*(bc)?"}) {
        const Pair pair(pattern);
        for (const char16_t* const value : {u"",
                 u"bc",
                 u"xbc",
                 u"abc",
                 u"\U0001F600bc",
                 u"\xD83D",
                 u"\xDE00"
                 u"bc"}) {
            EXPECT_EQ(pair.replaced.matches(value), pair.plain.matches(value))
                << ToText(pattern) << " and " << ToText(value);
        }
    }
}

TEST_F(PatternProgramTest, CharactersOfHighPlanesTakeNoLonger)
{
    const testsupport::CpuTimeLimit limit(0.5);
    std::u16string alternatives = u"x";
    for (char32_t i = 0; i < 240; ++i)
        alternatives += u"|" + MakeText(0x10F000 + 2 * i);
    const Pair pair(u"(" + alternatives + u")*");
    EXPECT_EQ(pair.outcome, Outcome::Replaced);
    EXPECT_TRUE(pair.replaced.matches((u"x" + MakeText(0x10F002)).c_str()));
    EXPECT_FALSE(pair.replaced.matches((u"x" + MakeText(0x10F001)).c_str()));
}

#if !defined(_WIN32)

TEST_F(PatternProgramTest, ManyEmptyPartsNeedLittleStack)
{
    testsupport::RunWithStack(1024 * 1024, [] {
        RegularExpression expression(u"(|){19000}a*a?", u"X");
        EXPECT_EQ(PatternProgram::Replace(expression), Outcome::Impossible);
    });
}

#endif

// Xerces uses another way for values of more than 256 units.
TEST_F(PatternProgramTest, LongValuesHaveTheResultOfShortOnes)
{
    const Pair pair(u"(a|b|cd)*x(yz)*");
    for (const std::size_t length : {1U, 100U, 255U, 256U, 257U, 300U, 5000U}) {
        std::u16string value;
        while (value.size() + 1 < length)
            value += value.size() % 3 == 0 ? u"cd" : u"a";
        EXPECT_TRUE(pair.replaced.matches((value + u"x").c_str())) << length;
        EXPECT_TRUE(pair.replaced.matches((value + u"xyzyz").c_str())) << length;
        EXPECT_FALSE(pair.replaced.matches((value + u"xyzy").c_str())) << length;
        EXPECT_FALSE(pair.replaced.matches((value + u"c").c_str())) << length;
        EXPECT_FALSE(pair.replaced.matches((u"c" + value + u"x").c_str())) << length;
    }
}

}  // namespace
