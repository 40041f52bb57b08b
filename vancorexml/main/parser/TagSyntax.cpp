#include "vancorexml/main/parser/TagSyntax.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vancorexml/main/parser/XMLUtils.h"
#include "vansys/TextHash.h"

namespace {

constexpr std::size_t Stop = SyntaxText::Stop;

// Returns the length of the typographic quote at `at`, which some editors write in place of a straight one, or 0.
std::size_t TypographicQuoteLength(const SyntaxText& text, std::size_t at) noexcept
{
    static constexpr std::array<std::string_view, 9> Quotes{
        "\u201C", "\u201D", "\u201E", "\u201F", "\u2018", "\u2019", "\u201A", "\u00AB", "\u00BB"};
    for (const std::string_view quote : Quotes) {
        if (text.Has(quote, at))
            return quote.size();
    }
    return 0;
}

// Returns an assignment for a message, such as "id='1'". Uses the quote before the value, if it has one.
std::string WriteAttribute(const SyntaxText& text, TextRange name, TextRange value)
{
    const bool hasDouble = text.Get(value).find('"') != std::string_view::npos;
    const char before = text.At(value.start - 1);
    const char quote = IsQuote(before) ? before : hasDouble ? '\'' : '"';
    return text.Excerpt(name) + "=" + quote + text.Excerpt(value) + quote;
}

// Scans the inside of one start tag.
class StartTagScanner {
public:
    StartTagScanner(SyntaxText& text, const DeclaredEntities& entities, std::size_t start, ScannedTag& tag)
        : m_text(text),
          m_entities(entities),
          m_start(start),
          m_tag(tag)
    {}

    std::size_t Scan();

private:
    struct Attribute {
        TextRange name;
        TextRange value;
    };

    std::size_t ScanAttribute(std::size_t at);
    std::size_t ScanValue(TextRange name, std::size_t quoteAt);
    std::size_t CheckDuplicate(const Attribute& attribute);

    std::size_t FailUnclosedTag(std::size_t at);
    std::size_t FailSlash(std::size_t at);
    std::size_t FailCharacter(std::size_t at);
    std::size_t FailMissingBlank(std::size_t at);
    std::size_t FailDoubledQuotes(std::size_t at, std::size_t end);
    std::size_t FailMissingEquals(TextRange name, std::size_t at);
    std::size_t FailMissingQuotes(TextRange name, std::size_t at);
    std::size_t FailUnclosedValue(TextRange name, TextRange value);
    std::size_t FailLessThanInValue(TextRange name, std::size_t at);

    std::size_t FindDoubledQuote(std::size_t at) const;
    std::size_t FindOtherQuote(TextRange value) const;
    bool IsAttributeAt(std::size_t at) const;
    bool CanFollowValue(std::size_t at) const;
    bool EndsWithAssignment(TextRange value) const;
    bool IsUnclosedValue(TextRange value) const;
    std::size_t FindProbableValueEnd(std::size_t start) const;
    SyntaxFault& Fail(DiagnosticCode code, TextRange range, const std::string& message)
    {
        return m_text.Fail(code, range, message);
    }
    SyntaxFault& FailAttribute(DiagnosticCode code, TextRange range, const std::string& message, TextRange name)
    {
        SyntaxFault& fault = Fail(code, range, message);
        fault.attribute = VString::fromStdString(std::string(m_text.Get(name)));
        return fault;
    }

    SyntaxText& m_text;
    const DeclaredEntities& m_entities;
    const std::size_t m_start;
    ScannedTag& m_tag;
    std::unordered_map<std::string_view, Attribute, TextHash> m_attributes;
    TextRange m_lastName;  // of the last attribute with a value
};

std::size_t StartTagScanner::Scan()
{
    std::size_t at = m_tag.name.end;
    for (;;) {
        const std::size_t blanksEnd = m_text.SkipBlanks(at);
        const bool hasBlank = blanksEnd > at;
        at = blanksEnd;
        if (at >= m_text.Size() || m_text.At(at) == '<')
            return FailUnclosedTag(at);
        if (m_text.At(at) == '>')
            return at + 1;
        if (m_text.Has("/>", at)) {
            m_tag.isEmpty = true;
            return at + 2;
        }
        if (m_text.SkipName(at) == at)
            return FailCharacter(at);
        if (!hasBlank)
            return FailMissingBlank(at);
        at = ScanAttribute(at);
        if (at == Stop)
            return Stop;
    }
}

// `at` is at a character of a name.
std::size_t StartTagScanner::ScanAttribute(std::size_t at)
{
    const TextRange name{at, m_text.SkipName(at)};
    if (!m_text.IsNameStart(at)) {
        Fail(DiagnosticCode::MalformedTag,
            name,
            m_text.Quote(name) + " cannot be the name of an attribute; a name begins with a letter, '_' or ':'");
        return Stop;
    }
    at = m_text.SkipBlanks(name.end);
    if (m_text.At(at) != '=')
        return FailMissingEquals(name, at);
    at = m_text.SkipBlanks(at + 1);
    if (!IsQuote(m_text.At(at)))
        return FailMissingQuotes(name, at);
    return ScanValue(name, at);
}

std::size_t StartTagScanner::ScanValue(TextRange name, std::size_t quoteAt)
{
    static constexpr ByteSet Markup("<&");
    const std::size_t start = quoteAt + 1;
    const std::size_t end = m_text.Find(m_text.Get({quoteAt, start}), start);
    if (end == Stop)
        return FailUnclosedValue(name, {start, m_text.Size()});
    const TextRange value{start, end};
    if (IsUnclosedValue(value))
        return FailUnclosedValue(name, value);
    for (std::size_t at = start; at < end;) {
        const std::size_t markup = m_text.FindAny(Markup, at, end);
        at = m_text.CheckCharacters({at, markup});
        if (at != Stop && at < end && m_text.At(at) == '<')
            return FailLessThanInValue(name, at);
        if (at != Stop && at < end)
            at = ScanReference(m_text, m_entities, at);
        if (at == Stop) {
            m_text.Fault()->attribute = VString::fromStdString(std::string(m_text.Get(name)));
            return Stop;
        }
    }
    m_lastName = name;
    return CheckDuplicate({name, value}) == Stop ? Stop : end + 1;
}

std::size_t StartTagScanner::CheckDuplicate(const Attribute& attribute)
{
    const std::string_view name = m_text.Get(attribute.name);
    const auto [first, isNew] = m_attributes.try_emplace(name, attribute);
    if (isNew)
        return attribute.value.end;
    const Attribute& other = first->second;
    const bool isSame = m_text.Get(other.value) == m_text.Get(attribute.value);
    SyntaxFault& fault = FailAttribute(DiagnosticCode::DuplicateAttribute,
        {attribute.name.start, attribute.value.end + 1},
        "attribute " + m_text.Quote(attribute.name) + " appears twice in this tag" +
            (isSame ? ", with the same value; remove one" : "; remove or rename one"),
        attribute.name);
    fault.value = VString::fromStdString(std::string(m_text.Get(attribute.value)));
    fault.relatedStart = other.name.start;
    fault.relatedMessage =
        VString::fromStdString("the first one, with the value " + m_text.Quote(other.value) + ", stands");
    return Stop;
}

// `at` is at a "<" or at the end of the text.
std::size_t StartTagScanner::FailUnclosedTag(std::size_t at)
{
    const TextRange range{m_start, m_text.TrimEnd({m_start, at})};
    const std::string name = m_text.Quote(m_tag.name);
    Fail(DiagnosticCode::MalformedTag,
        range,
        at >= m_text.Size() ? "the document ends inside the start tag of element " + name + "; the file may be cut off"
                            : "the start tag of element " + name + " is not closed; add '>'");
    return Stop;
}

std::size_t StartTagScanner::FailSlash(std::size_t at)
{
    const std::size_t next = m_text.SkipBlanks(at + 1);
    const bool isClose = m_text.At(next) == '>';
    const bool isEnd = next >= m_text.Size() || m_text.At(next) == '<';
    const char* const message = isClose ? "'/>' must not contain a blank"
        : isEnd                         ? "'>' is missing after '/'"
                                        : "'/' is allowed only at the end of a tag, as '/>'";
    Fail(DiagnosticCode::MalformedTag, {at, isClose ? next + 1 : at + 1}, message);
    return Stop;
}

// `at` is at a character that neither ends the tag nor begins an attribute.
std::size_t StartTagScanner::FailCharacter(std::size_t at)
{
    static constexpr ByteSet NoTag("&|()+*,;@");
    const char byte = m_text.At(at);
    const bool isText =
        m_attributes.empty() && (NoTag.FindFirst(m_text.Get({at, at + 1})) == 0 || m_text.Has("//", at));
    if (isText)
        return FailLessThan(m_text, m_start);
    if (byte == '/')
        return FailSlash(at);
    const TextRange character = m_text.CharacterAt(at);
    if (m_text.CheckCharacters(character) == Stop)
        return Stop;
    const std::string name = m_text.DescribeCharacterAt(at);
    std::string message = name + " is not allowed in a tag; remove it";
    if (byte == '\\' && m_text.At(m_text.SkipBlanks(at + 1)) == '>')
        message = "'\\' is not allowed in a tag; write '/' in place of '\\'";
    else if (byte == '=')
        message = "the name of an attribute is missing before '='";
    else if (IsQuote(byte) && IsQuote(m_text.At(at - 1)) && !m_attributes.empty())
        message = "there is one quote too many; remove it";
    else if (IsQuote(byte))
        message = "the name of an attribute and '=' are missing before the value";
    else if (name.starts_with("U+"))
        message = "the character " + name + " is not allowed in a tag; write an ordinary blank";
    Fail(DiagnosticCode::MalformedTag, character, message);
    return Stop;
}

// `at` is at a name that directly follows a value or the name of the element.
std::size_t StartTagScanner::FailMissingBlank(std::size_t at)
{
    const TextRange name{at, m_text.SkipName(at)};
    const char quote = m_text.At(at - 1);
    if (const std::size_t end = FindDoubledQuote(at); end != Stop)
        return FailDoubledQuotes(at, end);
    if (IsQuote(quote) && !IsAttributeAt(at)) {
        const std::string reference = quote == '"' ? "'&quot;'" : "'&apos;'";
        Fail(DiagnosticCode::MalformedTag,
            {at - 1, at},
            "the value of an attribute ends at this quote; write a quote inside a value as " + reference);
        return Stop;
    }
    FailAttribute(
        DiagnosticCode::MalformedTag, name, "a blank is missing before attribute " + m_text.Quote(name), name);
    return Stop;
}

// Returns the offset of the quote behind the value at `at`, as in a=""b"" or a=""b". Returns Stop if the quotes before
// the value are not doubled.
std::size_t StartTagScanner::FindDoubledQuote(std::size_t at) const
{
    static constexpr ByteSet ValueEnd("<>\"'\r\n");
    const char quote = m_text.At(at - 1);
    const bool isDoubled = IsQuote(quote) && m_text.At(at - 2) == quote && m_text.At(at - 3) == '=';
    if (!isDoubled || IsAttributeAt(at))
        return Stop;
    const std::size_t end = m_text.FindAny(ValueEnd, at);
    const bool isTwice = m_text.At(end + 1) == quote;
    return m_text.At(end) == quote && CanFollowValue(end + (isTwice ? 2 : 1)) ? end : Stop;
}

// `at` is at the value between doubled quotes, and `end` is behind it.
std::size_t StartTagScanner::FailDoubledQuotes(std::size_t at, std::size_t end)
{
    const TextRange value{at, end};
    const bool isTwice = m_text.At(end + 1) == m_text.At(end);
    SyntaxFault& fault = FailAttribute(DiagnosticCode::MalformedTag,
        {at - 2, end + (isTwice ? 2 : 1)},
        "the quotes of attribute " + m_text.Quote(m_lastName) + " are doubled; write '" +
            WriteAttribute(m_text, m_lastName, value) + "'",
        m_lastName);
    fault.value = VString::fromStdString(std::string(m_text.Get(value)));
    return Stop;
}

// `at` is behind the name and the white space that follows it.
std::size_t StartTagScanner::FailMissingEquals(TextRange name, std::size_t at)
{
    const std::string quoted = m_text.Quote(name);
    const std::string example = "'" + m_text.Excerpt(name) + "=\"...\"'";
    if (at >= m_text.Size() || m_text.At(at) == '<')
        return FailUnclosedTag(at);
    const bool isValue = IsQuote(m_text.At(at)) || TypographicQuoteLength(m_text, at) > 0;
    const bool hasColon = name.end > name.start + 1 && m_text.At(name.end - 1) == ':';
    if (isValue && hasColon) {
        const TextRange colon{name.end - 1, name.end};
        const TextRange attribute{name.start, colon.start};
        FailAttribute(DiagnosticCode::MalformedTag,
            colon,
            "write '=' in place of ':' between attribute " + m_text.Quote(attribute) + " and its value",
            attribute);
        return Stop;
    }
    if (isValue) {
        FailAttribute(DiagnosticCode::MalformedTag,
            {name.start, at + 1},
            "'=' is missing between attribute " + quoted + " and its value",
            name);
        return Stop;
    }
    const bool isPlausible = m_text.At(at) == '>' || m_text.At(at) == '/' || (at > name.end && m_text.IsNameStart(at));
    if (!isPlausible)
        return FailCharacter(at);
    const char* const hint = IsAttributeAt(at) ? "; a name cannot contain a blank" : "";
    FailAttribute(
        DiagnosticCode::MissingValue, name, "attribute " + quoted + " has no value; write " + example + hint, name);
    return Stop;
}

// `at` is behind "=" and the white space that follows it.
std::size_t StartTagScanner::FailMissingQuotes(TextRange name, std::size_t at)
{
    static constexpr ByteSet ValueEnd(" \t\r\n<>\"'");
    if (at >= m_text.Size())
        return FailUnclosedTag(at);
    const std::string quoted = m_text.Quote(name);
    if (const std::size_t length = TypographicQuoteLength(m_text, at)) {
        std::size_t end = at + length;
        while (end < m_text.Size() && TypographicQuoteLength(m_text, end) == 0 && m_text.At(end) != '>' &&
            m_text.At(end) != '<')
            ++end;
        const TextRange value{at + length, end};
        SyntaxFault& fault = FailAttribute(DiagnosticCode::UnquotedValue,
            {at, end + TypographicQuoteLength(m_text, end)},
            "the value of attribute " + quoted + " must stand in straight quotes, not in " +
                m_text.Quote({at, at + length}) + ": write '" + WriteAttribute(m_text, name, value) + "'",
            name);
        fault.value = VString::fromStdString(std::string(m_text.Get(value)));
        return Stop;
    }
    if (m_text.At(at) == '=') {
        FailAttribute(DiagnosticCode::MalformedTag,
            {at, at + 1},
            "only one '=' is allowed between attribute " + quoted + " and its value",
            name);
        return Stop;
    }
    std::size_t end = m_text.FindAny(ValueEnd, at);
    if (m_text.At(end) == '>' && end > at && m_text.At(end - 1) == '/')
        --end;
    if (end == at) {
        FailAttribute(DiagnosticCode::MissingValue,
            {name.start, m_text.TrimEnd({name.start, at})},
            "attribute " + quoted + " has no value after '='; write '" + m_text.Excerpt(name) + "=\"...\"'",
            name);
        return Stop;
    }
    // In a="b c" without the first quote, the value extends to the second quote.
    static constexpr ByteSet Assignment("<>=\"'");
    const std::size_t next = m_text.FindAny(Assignment, at);
    const bool hasClosingQuote = IsQuote(m_text.At(next)) && CanFollowValue(next + 1);
    const TextRange value{at, hasClosingQuote ? next : end};
    SyntaxFault& fault = FailAttribute(DiagnosticCode::UnquotedValue,
        {at, hasClosingQuote ? value.end + 1 : value.end},
        hasClosingQuote ? "the value of attribute " + quoted + " has no opening quote; write '" +
                WriteAttribute(m_text, name, value) + "'"
                        : "the value of attribute " + quoted + " must stand in quotes; write '" +
                WriteAttribute(m_text, name, value) + "'",
        name);
    fault.value = VString::fromStdString(std::string(m_text.Get(value)));
    return Stop;
}

// `value` extends to the quote that a parser takes for the end of the value.
std::size_t StartTagScanner::FailUnclosedValue(TextRange name, TextRange value)
{
    TextRange probable{value.start, FindProbableValueEnd(value.start)};
    const TextRange range{name.start, probable.end};
    const char* problem = " has no closing quote";
    if (const std::size_t quoteAt = FindOtherQuote(probable); quoteAt != Stop) {
        probable.end = quoteAt;
        problem = m_text.At(quoteAt) == '"' ? " begins with ' but ends with \"" : " begins with \" but ends with '";
    }
    const bool isCut = m_text.TrimEnd({range.end, m_text.Size()}) == range.end;
    if (isCut)
        problem = " has no closing quote before the end of the document";
    const std::string advice =
        isCut ? "the file may be cut off" : "write '" + WriteAttribute(m_text, name, probable) + "'";
    SyntaxFault& fault = FailAttribute(DiagnosticCode::UnclosedValue,
        range,
        "the value of attribute " + m_text.Quote(name) + problem + "; " + advice,
        name);
    fault.value = VString::fromStdString(std::string(m_text.Get(probable)));
    return Stop;
}

std::size_t StartTagScanner::FailLessThanInValue(TextRange name, std::size_t at)
{
    const bool isProgram = m_text.Has("<?=", at) || m_text.Has("<?php", at);
    const TextRange program{at, at + (m_text.Has("<?=", at) ? 3 : 5)};
    FailAttribute(DiagnosticCode::BareLessThan,
        {at, at + 1},
        isProgram ? m_text.Quote(program) + " in the value of attribute " + m_text.Quote(name) +
                " is PHP code, which must be run first"
                  : "the text '<' must be written as '&lt;' in the value of attribute " + m_text.Quote(name),
        name)
        .value = "<";
    return Stop;
}

// True if an attribute with a value, such as "a='1'", is at `at`.
bool StartTagScanner::IsAttributeAt(std::size_t at) const
{
    if (!m_text.IsNameStart(at))
        return false;
    const std::size_t equals = m_text.SkipBlanks(m_text.SkipName(at));
    return m_text.At(equals) == '=' && IsQuote(m_text.At(m_text.SkipBlanks(equals + 1)));
}

// True if `at` is the end of the text or at something that is allowed behind the closing quote of a value.
bool StartTagScanner::CanFollowValue(std::size_t at) const
{
    return at >= m_text.Size() || m_text.BlankLength(at) > 0 || m_text.At(at) == '>' || m_text.Has("/>", at);
}

// True if the value ends with a name and "=", so that its closing quote probably opens the value of another attribute.
bool StartTagScanner::EndsWithAssignment(TextRange value) const
{
    const std::string_view text = m_text.Get({value.start, m_text.TrimEnd(value)});
    if (!text.ends_with('='))
        return false;
    const TextRange before{value.start, value.start + text.size() - 1};
    const std::size_t nameEnd = m_text.TrimEnd(before);
    std::size_t nameStart = nameEnd;
    while (nameStart > value.start && XmlUtils::IsNameChar(m_text.At(nameStart - 1)))
        --nameStart;
    return nameStart < nameEnd && nameStart > value.start && m_text.BlankLength(nameStart - 1) > 0;
}

// True if the closing quote of the value probably belongs to another attribute or to the text behind the tag. The
// result is true only if the value or the rest of the tag is not well-formed.
bool StartTagScanner::IsUnclosedValue(TextRange value) const
{
    const std::string_view text = m_text.Get(value);
    const bool hasFaultBehind = !CanFollowValue(value.end + 1);
    const std::size_t less = text.find('<');
    const bool hasLess = less != std::string_view::npos;
    if (!hasFaultBehind && !hasLess)
        return false;
    if (EndsWithAssignment(value))
        return true;
    if (hasFaultBehind && IsAttributeAt(value.end + 1))
        return false;
    const std::size_t greater = text.find('>');
    const bool hasTagBehind = hasLess && greater < less &&
        (m_text.At(value.start + less + 1) == '/' || m_text.IsNameStart(value.start + less + 1));
    return hasTagBehind || (hasFaultBehind && greater != std::string_view::npos);
}

// Returns the offset of the quote at the end of the value if it differs from the one before the value and is the only
// one of its kind, as in "b'. Returns Stop if there is none.
std::size_t StartTagScanner::FindOtherQuote(TextRange value) const
{
    const char other = m_text.At(value.start - 1) == '"' ? '\'' : '"';
    const std::size_t found = m_text.Get(value).find(other);
    return found != std::string_view::npos && value.start + found + 1 == value.end ? value.end - 1 : Stop;
}

// Returns the place where the closing quote of the value is probably missing: in front of the next attribute, the end
// of the tag or the end of the line.
std::size_t StartTagScanner::FindProbableValueEnd(std::size_t start) const
{
    static constexpr ByteSet End("<>\r\n");
    const std::size_t end = m_text.FindAny(End, start);
    std::size_t at = start;
    while (at < end) {
        const std::size_t next = m_text.SkipBlanks(at);
        if (next > at && IsAttributeAt(next))
            return at;
        at = next > at ? next : std::max(m_text.SkipName(at), at + 1);
    }
    const bool endsTag = m_text.At(end) == '>' && end > start && m_text.At(end - 1) == '/';
    return m_text.TrimEnd({start, endsTag ? end - 1 : end});
}

}  // namespace

std::size_t ScanStartTag(SyntaxText& text, const DeclaredEntities& entities, std::size_t at, ScannedTag& tag)
{
    tag.name = {at + 1, text.SkipName(at + 1)};
    tag.isEmpty = false;
    return StartTagScanner(text, entities, at, tag).Scan();
}

std::size_t ScanEndTag(SyntaxText& text, std::size_t at, ScannedTag& tag)
{
    tag.name = {at + 2, text.SkipName(at + 2)};
    const std::size_t end = text.SkipBlanks(tag.name.end);
    const std::string name = text.Excerpt(tag.name);
    if (text.At(end) == '>')
        return end + 1;
    if (end >= text.Size() || text.At(end) == '<') {
        text.Fail(DiagnosticCode::MalformedTag,
            {at, text.TrimEnd({at, end})},
            "the end tag of element " + text.Quote(tag.name) + " is not closed; add '>'");
    } else if (text.Has("/>", end)) {
        text.Fail(
            DiagnosticCode::MalformedTag, {end, end + 2}, "an end tag must not end with '/>'; write '</" + name + ">'");
    } else if (end > tag.name.end && text.IsNameStart(end)) {
        text.Fail(DiagnosticCode::MalformedTag,
            {end, text.SkipName(end)},
            "an end tag must not have attributes; write '</" + name + ">'");
    } else {
        text.Fail(DiagnosticCode::MalformedTag,
            text.CharacterAt(end),
            text.DescribeCharacterAt(end) + " is not allowed in an end tag; write '</" + name + ">'");
    }
    return Stop;
}

std::size_t FailLessThan(SyntaxText& text, std::size_t at)
{
    static constexpr ByteSet TagEnd("<>=");
    const std::size_t begin = text.Has("</", at) ? at + 2 : at + 1;
    const std::size_t next = text.SkipBlanks(begin);
    const std::string tag = begin == at + 2 ? "'</'" : "'<'";
    if (text.Has("<<<<<<< ", at)) {
        text.Fail(DiagnosticCode::BareLessThan,
            {at, at + 7},
            "this line is the mark of a conflict of versions; resolve the conflict and remove its marks");
        return Stop;
    }
    if (text.Has("<\\", at) && text.IsNameStart(at + 2) && text.At(text.SkipName(at + 2)) == '>') {
        text.Fail(DiagnosticCode::MalformedTag, {at + 1, at + 2}, "write '/' in place of '\\' in an end tag");
        return Stop;
    }
    if (begin == at + 2 || text.At(next) == '>' || next >= text.Size()) {
        text.Fail(DiagnosticCode::MalformedTag,
            {at, next >= text.Size() ? begin : next},
            next > begin && text.IsNameStart(next)
                ? "a blank is not allowed between " + tag + " and the name of the element"
                : "the name of the element is missing after " + tag);
        return Stop;
    }
    // "< name>" and "<1st>" are tags with a fault, "a < b" and "x <5" are text.
    const std::size_t name = text.At(next) == '/' ? text.SkipBlanks(next + 1) : next;
    const std::size_t nameEnd = text.SkipName(name);
    const std::size_t end = text.FindAny(TagEnd, nameEnd);
    const bool isTag = nameEnd > name &&
        (text.At(nameEnd) == '>' || text.Has("/>", nameEnd) ||
            (text.BlankLength(nameEnd) > 0 && text.At(end) == '=' &&
                text.SkipName(text.SkipBlanks(nameEnd)) == text.TrimEnd({nameEnd, end})));
    if (isTag && text.IsNameStart(name)) {
        text.Fail(DiagnosticCode::MalformedTag,
            {at, nameEnd},
            "a blank is not allowed between '<' and " + text.Quote({next, nameEnd}));
    } else if (isTag && name == begin) {
        text.Fail(DiagnosticCode::MalformedTag,
            {at, nameEnd},
            text.Quote({name, nameEnd}) + " cannot be the name of an element; a name begins with a letter or '_'");
    } else {
        text.Fail(DiagnosticCode::BareLessThan, {at, at + 1}, "the text '<' must be written as '&lt;'").value = "<";
    }
    return Stop;
}
