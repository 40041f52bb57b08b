#include "vancorexml/main/parser/PatternExample.h"

#include <algorithm>

namespace {

constexpr std::size_t LongestExample = 60;
// Groups that are nested more deeply are not understood. Bounds the call stack.
constexpr int DeepestGroup = 20;

bool IsDigit(char16_t unit) noexcept
{
    return unit >= u'0' && unit <= u'9';
}

// Reads a pattern from left to right and writes a text that matches it.
class ExampleWriter {
public:
    ExampleWriter(std::u16string_view pattern, std::size_t repetitions) : m_rest(pattern), m_repetitions(repetitions) {}

    std::optional<std::u16string> Write()
    {
        std::u16string example = WriteAlternatives(0);
        if (m_hasFailed || !m_rest.empty())
            return std::nullopt;
        return example;
    }

private:
    std::u16string WriteAlternatives(int depth);
    std::u16string WritePiece(int depth);
    std::u16string WriteAtom(int depth);
    std::u16string WriteEscape();
    std::u16string WriteClass();
    std::size_t ReadCount();
    std::size_t ReadNumber();
    bool Skip(char16_t unit);
    char16_t Next();
    std::u16string Fail()
    {
        m_hasFailed = true;
        m_rest = {};
        return std::u16string();
    }

    std::u16string_view m_rest;
    const std::size_t m_repetitions;
    bool m_hasFailed = false;
};

bool ExampleWriter::Skip(char16_t unit)
{
    const bool isNext = m_rest.starts_with(unit);
    if (isNext)
        m_rest.remove_prefix(1);
    return isNext;
}

char16_t ExampleWriter::Next()
{
    if (m_rest.empty()) {
        m_hasFailed = true;
        return u'\0';
    }
    const char16_t unit = m_rest.front();
    m_rest.remove_prefix(1);
    return unit;
}

// Writes the first of the alternatives and skips the others.
std::u16string ExampleWriter::WriteAlternatives(int depth)
{
    std::u16string first;
    bool isFirst = true;
    do {
        std::u16string branch;
        while (!m_rest.empty() && !m_rest.starts_with(u'|') && !m_rest.starts_with(u')')) {
            branch += WritePiece(depth);
            if (branch.size() > LongestExample)
                return Fail();
        }
        if (isFirst)
            first = std::move(branch);
        isFirst = false;
    } while (Skip(u'|'));
    return first;
}

std::u16string ExampleWriter::WritePiece(int depth)
{
    const std::u16string atom = WriteAtom(depth);
    const std::size_t count = ReadCount();
    if (atom.size() * count > LongestExample)
        return Fail();
    std::u16string piece;
    for (std::size_t i = 0; i < count; ++i)
        piece += atom;
    return piece;
}

std::u16string ExampleWriter::WriteAtom(int depth)
{
    const char16_t unit = Next();
    switch (unit) {
    case u'(': {
        if (depth == DeepestGroup)
            return Fail();
        std::u16string group = WriteAlternatives(depth + 1);
        return Skip(u')') ? group : Fail();
    }
    case u'[': return WriteClass();
    case u'\\': return WriteEscape();
    case u'.': return u"a";
    case u'*':
    case u'+':
    case u'?':
    case u'{':
    case u'}':
    case u']': return Fail();
    default: return std::u16string(1, unit);
    }
}

// Writes a character of the set whose backslash is read.
std::u16string ExampleWriter::WriteEscape()
{
    const char16_t unit = Next();
    switch (unit) {
    case u'd': return u"0";
    case u's': return u" ";
    case u'n': return u"\n";
    case u'r': return u"\r";
    case u't': return u"\t";
    case u'w':
    case u'i':
    case u'c':
    case u'D':
    case u'S': return u"a";
    case u'W':
    case u'I':
    case u'C': return u" ";
    case u'p': {
        const std::size_t end = m_rest.find(u'}');
        if (!m_rest.starts_with(u'{') || end == std::u16string_view::npos)
            return Fail();
        const std::u16string_view category = m_rest.substr(1, end - 1);
        m_rest.remove_prefix(end + 1);
        if (category == u"L" || category == u"Ll" || category == u"IsBasicLatin")
            return u"a";
        if (category == u"Lu")
            return u"A";
        return category == u"N" || category == u"Nd" ? u"0" : Fail();
    }
    default: {
        const bool isLetter = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || IsDigit(unit);
        return isLetter ? Fail() : std::u16string(1, unit);
    }
    }
}

// Writes the first character of the class whose "[" is read, or a letter that is not in a negated class.
std::u16string ExampleWriter::WriteClass()
{
    const bool isNegated = Skip(u'^');
    std::u16string first;
    std::u16string excluded;
    while (!m_rest.empty() && !m_rest.starts_with(u']')) {
        // A class without the characters of another class, such as [a-z-[aeiou]].
        if (m_rest.starts_with(u"-["))
            return Fail();
        const char16_t unit = Next();
        const std::u16string character = unit == u'\\' ? WriteEscape() : std::u16string(1, unit);
        if (m_hasFailed || unit == u'[')
            return Fail();
        if (first.empty())
            first = character;
        excluded += character;
        const bool isRange = m_rest.size() > 1 && m_rest[0] == u'-' && m_rest[1] != u']' && m_rest[1] != u'[';
        if (isRange) {
            m_rest.remove_prefix(1);
            const char16_t last = Next();
            if (last == u'\\')
                WriteEscape();
        }
    }
    if (!Skip(u']') || first.empty())
        return Fail();
    if (!isNegated)
        return first;
    const std::u16string_view candidates = u"aA0-";
    const std::size_t free = candidates.find_first_not_of(excluded);
    return free == std::u16string_view::npos ? Fail() : std::u16string(1, candidates[free]);
}

// Reads a quantifier, if there is one. Returns how often the atom before it is written.
std::size_t ExampleWriter::ReadCount()
{
    if (Skip(u'?'))
        return 0;
    if (Skip(u'*'))
        return m_repetitions - 1;
    if (Skip(u'+'))
        return m_repetitions;
    if (!Skip(u'{'))
        return 1;
    const std::size_t least = ReadNumber();
    std::size_t most = least;
    if (Skip(u','))
        most = m_rest.starts_with(u'}') ? LongestExample : ReadNumber();
    if (!Skip(u'}'))
        Fail();
    return std::min(least + m_repetitions - 1, std::max(least, most));
}

std::size_t ExampleWriter::ReadNumber()
{
    if (m_rest.empty() || !IsDigit(m_rest.front()))
        Fail();
    std::size_t number = 0;
    while (!m_rest.empty() && IsDigit(m_rest.front())) {
        number = std::min<std::size_t>(number * 10 + static_cast<std::size_t>(Next() - u'0'), LongestExample + 1);
    }
    return number;
}

}  // namespace

std::optional<std::u16string> MakePatternExample(std::u16string_view pattern, std::size_t repetitions)
{
    return ExampleWriter(pattern, repetitions).Write();
}
