#include "vancorexml/main/parser/XercesColonSanitizer.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "metrics2/Metrics.h"
#include "vancorexml/main/parser/ColonRewriting.h"
#include "vancorexml/main/parser/XMLRangeTable.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\XercesColonSanitizer";
// Unreachable: FindDeclarationPlace always returns a place behind the name that it found.
constexpr AssertionSite NoDeclarationPlace{File, 60, "xmlnsInsertPoint != string::npos", 0xA9890139};
// Unreachable: Next passes only the positions of colons.
constexpr AssertionSite NoColonToTest{File, 112, "input[idx] == c_colon", 0x5DACA14D};
constexpr AssertionSite NoElement{File, 188, "range.start != string::npos", 0x6FFE1D79};

}  // namespace Assertions

constexpr std::size_t npos = std::string::npos;

// Finds the next occurrence of one character, from positions that only increase. All calls together read every
// byte at most once.
class NextPosition {
public:
    NextPosition(const std::string& text, char character) : m_text(text), m_character(character) {}

    // Returns the first occurrence at or after `from`, or npos.
    std::size_t From(std::size_t from)
    {
        if (!m_isKnown || (m_position != npos && m_position < from)) {
            m_position = m_text.find(m_character, from);
            m_isKnown = true;
        }
        return m_position;
    }

private:
    const std::string& m_text;
    const char m_character;
    std::size_t m_position = 0;
    bool m_isKnown = false;
};

// Tests whether the quotes from a position to a ">" match. The positions must only increase. All answers for
// a ">" are computed together, from right to left: the quotes from a quote on match if its closing quote exists
// and the quotes after the closing quote match.
class QuotesUpTo {
public:
    explicit QuotesUpTo(const std::string& text) : m_text(text) {}

    bool Match(std::size_t from, std::size_t close)
    {
        if (close != m_close)
            ComputeMatches(from, close);
        while (!m_quotes.empty() && m_quotes.back().position < from)
            m_quotes.pop_back();
        return m_quotes.empty() || m_quotes.back().matches;
    }

private:
    struct Quote {
        std::size_t position;
        bool matches;  // from this quote up to the ">"
    };

    void ComputeMatches(std::size_t from, std::size_t close)
    {
        m_close = close;
        m_quotes.clear();
        bool matches = true;
        // True if the quotes behind the nearest apostrophe to the right match; false if there is no apostrophe.
        // The same for the nearest double quote.
        bool behindApostrophe = false;
        bool behindDouble = false;
        for (std::size_t i = close; i-- > from;) {
            if (m_text[i] != '\'' && m_text[i] != '"')
                continue;
            bool& behind = m_text[i] == '\'' ? behindApostrophe : behindDouble;
            const bool matchesFromHere = behind;
            behind = matches;
            matches = matchesFromHere;
            m_quotes.push_back({i, matches});
        }
    }

    const std::string& m_text;
    std::size_t m_close = npos;
    std::vector<Quote> m_quotes;  // the rightmost first
};

// Finds the colons to rewrite, one after the other.
class ColonFinder {
public:
    explicit ColonFinder(const std::string& text)
        : m_text(text),
          m_nextClose(text, '>'),
          m_nextOpen(text, '<'),
          m_quotes(text)
    {}

    // Returns the position of the next colon to rewrite, or npos. The positions increase.
    std::size_t Next()
    {
        for (;;) {
            const std::size_t colon = m_text.find(':', m_position);
            if (colon == npos)
                return npos;
            m_position = colon + 1;
            if (colon == 0 || !XmlUtils::IsWhitespace(m_text[colon - 1]))
                continue;
            if (BeginsAttributeName(colon))
                return colon;
        }
    }

private:
    // True if the colon begins the name of an attribute. If not, may move m_position over text without such
    // colons.
    bool BeginsAttributeName(std::size_t colon)
    {
        if (m_text[colon] != ':')
            ThrowLogicException(Assertions::NoColonToTest);
        std::size_t behindName = colon + 1;
        while (behindName < m_text.size() && XmlUtils::IsNameChar(m_text[behindName]))
            ++behindName;
        while (behindName < m_text.size() && XmlUtils::IsWhitespace(m_text[behindName]))
            ++behindName;
        if (behindName == m_text.size() || m_text[behindName] != '=') {
            m_position = behindName;
            return false;
        }

        if (!m_ranges)
            m_ranges.emplace(m_text);
        std::size_t rangeEnd = 0;
        if (m_ranges->GetRangeTypeAt(colon, rangeEnd) != XMLRangeTypeNone) {
            m_position = rangeEnd;
            return false;
        }

        const std::size_t close = m_nextClose.From(colon + 1);
        if (close == npos)
            return false;
        const std::size_t open = m_nextOpen.From(colon + 1);
        // If no "<" follows, only the tag of an empty element can end here: a start tag would lack its end tag.
        const bool mayEndHere = open != npos ? open > close : m_text[close - 1] == '/';
        return mayEndHere && m_quotes.Match(colon, close);
    }

    const std::string& m_text;
    std::size_t m_position = 0;
    std::optional<XMLRangeTable> m_ranges;
    NextPosition m_nextClose;
    NextPosition m_nextOpen;
    QuotesUpTo m_quotes;
};

// Returns the position behind the name of the document element.
std::size_t FindDeclarationPlace(const std::string& text)
{
    const XmlUtils::TagRange tag = XmlUtils::FindFirstElementTag(text);
    if (tag.start == npos)
        ThrowLogicException(Assertions::NoElement);
    std::size_t place = tag.start + 1;
    while (XmlUtils::IsWhitespace(text[place]))
        ++place;
    while (XmlUtils::IsNameChar(text[place]))
        ++place;
    return place;
}

}  // namespace

std::shared_ptr<std::string> XercesColonSanitizer::Sanitize(const std::shared_ptr<std::string>& text)
{
    return ColonRewriting::Rewrite(text).text;
}

ColonRewriting::Rewritten ColonRewriting::Rewrite(const std::shared_ptr<std::string>& text)
{
    const Metrics::Scope scope("XercesColonSanitizer");
    const std::string& input = *text;
    ColonFinder colons(input);
    std::size_t colon = colons.Next();
    if (colon == npos)
        return {text, {}};

    const std::size_t declarationPlace = FindDeclarationPlace(input);
    if (declarationPlace == npos)
        ThrowLogicException(Assertions::NoDeclarationPlace);
    auto output = std::make_shared<std::string>();
    std::vector<SourceMap::Insertion> insertions;
    output->reserve(input.size() + 64);
    std::size_t copied = 0;
    // A processing instruction before the document element may contain the first colons.
    bool isDeclared = false;
    const auto copyTo = [&](std::size_t end) {
        output->append(input, copied, end - copied);
        copied = end;
    };
    const auto declare = [&] {
        const std::size_t start = output->size();
        output->append(" ").append(DeclarationName).append("='").append(Namespace).append("'");
        insertions.push_back({start, output->size() - start});
        isDeclared = true;
    };
    for (; colon != npos; colon = colons.Next()) {
        if (!isDeclared && colon >= declarationPlace) {
            copyTo(declarationPlace);
            declare();
        }
        copyTo(colon);
        // The prefix ends with the colon of the document, so that byte is not inserted.
        insertions.push_back({output->size(), Prefix.size() - 1});
        *output += Prefix;
        copied = colon + 1;
    }
    if (!isDeclared) {
        copyTo(std::max(declarationPlace, copied));
        declare();
    }
    copyTo(input.size());
    return {std::move(output), std::move(insertions)};
}

std::set<std::string> ColonRewriting::FindNames(const std::string& text)
{
    std::set<std::string> names;
    ColonFinder colons(text);
    for (std::size_t colon = colons.Next(); colon != npos; colon = colons.Next()) {
        const auto start = text.begin() + static_cast<std::ptrdiff_t>(colon + 1);
        names.emplace(start, std::find_if_not(start, text.end(), [](char byte) { return XmlUtils::IsNameChar(byte); }));
    }
    return names;
}

VString XercesColonSanitizer::RestoreName(const VString& qualifiedName)
{
    const std::u16string_view name = RestoreNameView(qualifiedName.View());
    return name.size() == qualifiedName.View().size() ? qualifiedName : VString(name.data(), name.size());
}

std::u16string_view XercesColonSanitizer::RestoreNameView(std::u16string_view qualifiedName) noexcept
{
    constexpr std::u16string_view prefix = ColonRewriting::ReadPrefix;
    if (qualifiedName.starts_with(prefix))
        return qualifiedName.substr(prefix.size() - 1);
    if (qualifiedName.starts_with(ColonRewriting::ReadDeclarationName))
        return {};
    return qualifiedName;
}
