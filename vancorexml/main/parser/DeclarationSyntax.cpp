#include "vancorexml/main/parser/DeclarationSyntax.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "vancoreplatform/NearestName.h"
#include "vancorexml/main/parser/XMLTokenReader.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace {

constexpr std::size_t Stop = SyntaxText::Stop;

// The parts of an XML declaration, in their order.
constexpr std::array<std::string_view, 3> partNames{"version", "encoding", "standalone"};
constexpr std::array<std::string_view, 3> partExamples{"version=\"1.0\"", "encoding=\"UTF-8\"", "standalone=\"yes\""};

// Scans the inside of an XML declaration.
class DeclarationScanner {
public:
    DeclarationScanner(SyntaxText& text, std::size_t start) : m_text(text), m_start(start) {}

    std::size_t Scan();

private:
    std::size_t ScanPart(std::size_t at);
    std::size_t FindClosingQuote(std::size_t start, char quote) const;
    std::size_t CheckName(TextRange name);
    TextRange FindVersion(std::size_t at) const;
    std::size_t CheckValue(std::size_t part, TextRange value);
    std::size_t Fail(TextRange range, const std::string& message)
    {
        m_text.Fail(DiagnosticCode::BadDeclaration, range, message);
        return Stop;
    }

    SyntaxText& m_text;
    const std::size_t m_start;
    std::size_t m_next = 0;  // the first part that may follow
};

std::size_t DeclarationScanner::Scan()
{
    std::size_t at = m_start + 5;
    for (;;) {
        const std::size_t blanksEnd = m_text.SkipBlanks(at);
        const bool hasBlank = blanksEnd > at;
        at = blanksEnd;
        if (m_text.Has("?>", at) && m_next == 0)
            return Fail(
                {m_start, at + 2}, "the XML declaration must begin with the version: write '<?xml version=\"1.0\"?>'");
        if (m_text.Has("?>", at))
            return at + 2;
        if (at >= m_text.Size() || m_text.At(at) == '<')
            return Fail({m_start, m_text.TrimEnd({m_start, at})}, "the XML declaration is not closed; add '?>'");
        const bool isWrongEnd = m_text.At(at) == '>' || m_text.At(at) == '?' || m_text.Has("/>", at);
        if (isWrongEnd) {
            const std::size_t end = std::min(at + (m_text.At(at) == '>' ? 1 : 2), m_text.Size());
            return Fail({at, end}, "the XML declaration must end with '?>'");
        }
        if (!m_text.IsNameStart(at)) {
            return Fail(
                m_text.CharacterAt(at), m_text.DescribeCharacterAt(at) + " is not allowed in the XML declaration");
        }
        if (!hasBlank) {
            return Fail({at, m_text.SkipName(at)},
                "a blank is missing before " + m_text.Quote({at, m_text.SkipName(at)}) + " in the XML declaration");
        }
        at = ScanPart(at);
        if (at == Stop)
            return Stop;
    }
}

std::size_t DeclarationScanner::ScanPart(std::size_t at)
{
    const TextRange name{at, m_text.SkipName(at)};
    if (CheckName(name) == Stop)
        return Stop;
    const std::size_t part = m_next - 1;
    const std::string example = "write " + std::string(partExamples[part]);
    at = m_text.SkipBlanks(name.end);
    if (m_text.At(at) != '=')
        return Fail(name, "'=' is missing after " + m_text.Quote(name) + " in the XML declaration; " + example);
    at = m_text.SkipBlanks(at + 1);
    const std::size_t start = at + 1;
    if (!IsQuote(m_text.At(at))) {
        return Fail({name.start, at},
            "the value of " + m_text.Quote(name) + " in the XML declaration must stand in quotes; " + example);
    }
    const char quote = m_text.At(at);
    at = FindClosingQuote(start, quote);
    if (m_text.At(at) != quote) {
        return Fail({name.start, m_text.TrimEnd({name.start, at})},
            "the value of " + m_text.Quote(name) + " in the XML declaration has no closing quote; " + example);
    }
    return CheckValue(part, {start, at}) == Stop ? Stop : at + 1;
}

// `start` is behind the opening quote. Returns the offset of the closing one, or of the place where it should be: at
// the first "<" or ">". But the parser accepts these inside a version, if the declaration goes on behind it.
std::size_t DeclarationScanner::FindClosingQuote(std::size_t start, char quote) const
{
    const auto find = [&](std::string_view ends) {
        std::size_t at = start;
        while (at < m_text.Size() && ends.find(m_text.At(at)) == std::string_view::npos)
            ++at;
        return at;
    };
    const char ends[] = {quote, '<', '>'};
    const std::size_t first = find({ends, std::size(ends)});
    if (first == m_text.Size() || m_text.At(first) == quote)
        return first;
    const std::size_t closing = find({ends, 1});
    XMLTokenReader reader(m_text.Get({m_start, m_text.Size()}));
    XMLToken declaration;
    return reader.Next(declaration) && m_start + declaration.text.size() > closing ? closing : first;
}

// Checks that the part is allowed here, and sets `m_next` behind it.
std::size_t DeclarationScanner::CheckName(TextRange name)
{
    const auto found = std::find(partNames.begin(), partNames.end(), m_text.Get(name));
    const auto part = static_cast<std::size_t>(found - partNames.begin());
    const std::string quoted = m_text.Quote(name);
    if (found == partNames.end()) {
        const std::vector<VString> known{"version", "encoding", "standalone"};
        const VString nearest = FindNearestName(VString::fromStdString(std::string(m_text.Get(name))), known);
        Fail(name,
            quoted + " is not allowed in the XML declaration; " +
                (nearest.IsEmpty() ? "only version, encoding and standalone are"
                                   : "did you mean '" + nearest.toStdString() + "'?"));
        m_text.Fault()->suggestion = nearest;
        return Stop;
    }
    if (m_next == 0 && part != 0) {
        const TextRange version = FindVersion(name.end);
        const bool isBehind = version.end > version.start;
        return Fail(name,
            "the XML declaration must begin with the version: " +
                (isBehind ? "move " + m_text.Excerpt(version) : "write " + std::string(partExamples[0])) + " before " +
                quoted);
    }
    if (part + 1 == m_next)
        return Fail(name, quoted + " appears twice in the XML declaration; remove one");
    if (part < m_next) {
        return Fail(name,
            quoted + " stands at the wrong place in the XML declaration; the order is version, encoding, standalone");
    }
    m_next = part + 1;
    return name.end;
}

// Returns the version with its value in the rest of the XML declaration, or an empty range.
TextRange DeclarationScanner::FindVersion(std::size_t at) const
{
    static constexpr ByteSet DeclarationEnd("<>");
    const std::string_view rest = m_text.Get({at, m_text.FindAny(DeclarationEnd, at)});
    const std::size_t found = rest.find("version");
    if (found == std::string_view::npos || found == 0 || m_text.BlankLength(at + found - 1) == 0)
        return {at, at};
    const std::size_t start = at + found;
    const std::size_t equals = m_text.SkipBlanks(start + partNames[0].size());
    const std::size_t quoteAt = m_text.SkipBlanks(equals + 1);
    if (m_text.At(equals) != '=' || !IsQuote(m_text.At(quoteAt)))
        return {at, at};
    const std::size_t end = m_text.Get({quoteAt + 1, at + rest.size()}).find(m_text.At(quoteAt));
    return {start, end == std::string_view::npos ? start : quoteAt + 1 + end + 1};
}

std::size_t DeclarationScanner::CheckValue(std::size_t part, TextRange value)
{
    const std::string_view written = m_text.Get(value);
    const std::string quoted = m_text.Quote(value);
    if (part == 0) {
        // The parser reads every other version 1.x like 1.0.
        if (written == "1.1")
            m_text.SetVersion11();
        else if (!written.starts_with("1."))
            Fail(value, "XML has no version " + quoted + "; write version=\"1.0\"");
    } else if (part == 1) {
        const bool isLetter = !written.empty() && ((written[0] | 0x20) >= 'a' && (written[0] | 0x20) <= 'z');
        const bool isName = isLetter && std::all_of(written.begin(), written.end(), [](char byte) {
            return byte != ':' && XmlUtils::IsNameChar(byte);
        });
        if (!isName) {
            m_text.Fail(DiagnosticCode::UnknownEncoding,
                value,
                quoted + " is not the name of an encoding; write for example encoding=\"UTF-8\"");
        }
    } else if (written != "yes" && written != "no") {
        Fail(value, "the value of 'standalone' must be 'yes' or 'no', not " + quoted);
    }
    if (!m_text.Fault())
        return value.end;
    m_text.Fault()->value = VString::fromStdString(std::string(written));
    return Stop;
}

constexpr std::array<std::string_view, 4> declarationKeywords{"<!ELEMENT", "<!ATTLIST", "<!ENTITY", "<!NOTATION"};

// Scans a document type declaration.
class DocumentTypeScanner {
public:
    DocumentTypeScanner(SyntaxText& text, std::size_t start, DeclaredEntities& entities)
        : m_text(text),
          m_start(start),
          m_entities(entities)
    {}

    std::size_t Scan();

private:
    std::size_t ScanExternalId(std::size_t at);
    std::size_t ScanSubset(std::size_t at);
    std::size_t ScanMarkup(std::size_t at);
    std::size_t ScanMarkupDeclaration(std::size_t at);
    std::size_t CheckKeyword(TextRange keyword);
    std::size_t Fail(TextRange range, const std::string& message)
    {
        m_text.Fail(DiagnosticCode::BadDocumentType, range, message);
        return Stop;
    }
    std::size_t FailUnclosed(std::size_t at, std::string_view end)
    {
        return Fail({m_start, m_text.TrimEnd({m_start, std::min(at, m_text.Size())})},
            "the document type is not closed; add '" + std::string(end) + "'");
    }

    SyntaxText& m_text;
    const std::size_t m_start;
    DeclaredEntities& m_entities;
};

std::size_t DocumentTypeScanner::Scan()
{
    std::size_t at = m_text.SkipBlanks(m_start + 9);
    const TextRange name{at, m_text.SkipName(at)};
    if (at >= m_text.Size())
        return FailUnclosed(at, ">");
    if (at == m_start + 9 || !m_text.IsNameStart(at)) {
        return Fail({m_start, m_start + 9},
            at == m_start + 9 && m_text.IsNameStart(at) ? "a blank is missing after '<!DOCTYPE'"
                                                        : "the name of the root element is missing after '<!DOCTYPE'");
    }
    at = m_text.SkipBlanks(name.end);
    if (m_text.IsNameStart(at) && at > name.end)
        at = ScanExternalId(at);
    if (at == Stop)
        return Stop;
    at = m_text.SkipBlanks(at);
    if (m_text.At(at) == '[')
        at = ScanSubset(at + 1);
    if (at == Stop)
        return Stop;
    at = m_text.SkipBlanks(at);
    if (m_text.At(at) == '>')
        return at + 1;
    if (at >= m_text.Size() || m_text.At(at) == '<')
        return FailUnclosed(at, ">");
    return Fail(
        m_text.CharacterAt(at), m_text.DescribeCharacterAt(at) + " is not allowed in the document type; remove it");
}

// `at` is at a name, which should be SYSTEM or PUBLIC. Returns the offset behind the quoted texts that follow.
std::size_t DocumentTypeScanner::ScanExternalId(std::size_t at)
{
    const TextRange keyword{at, m_text.SkipName(at)};
    const bool isPublic = m_text.Get(keyword) == "PUBLIC";
    if (!isPublic && m_text.Get(keyword) != "SYSTEM") {
        return Fail(keyword,
            m_text.Quote(keyword) +
                " is not allowed in the document type; write SYSTEM or PUBLIC, in capital letters, or remove it");
    }
    m_entities.mayBeIncomplete = true;
    at = keyword.end;
    const std::string usage = isPublic ? "PUBLIC must be followed by a name and a location, each in quotes"
                                       : "SYSTEM must be followed by a location in quotes";
    for (int i = 0; i < (isPublic ? 2 : 1); ++i) {
        const std::size_t quoteAt = m_text.SkipBlanks(at);
        if (quoteAt >= m_text.Size())
            return FailUnclosed(quoteAt, ">");
        if (quoteAt == at || !IsQuote(m_text.At(quoteAt)))
            return Fail(keyword, usage);
        const std::size_t end = m_text.Find(m_text.Get({quoteAt, quoteAt + 1}), quoteAt + 1);
        if (end == Stop)
            return Fail({quoteAt, quoteAt + 1}, "a quote in the document type is not closed");
        at = end + 1;
    }
    return at;
}

// `at` is behind "[". Returns the offset behind "]".
std::size_t DocumentTypeScanner::ScanSubset(std::size_t at)
{
    for (;;) {
        at = m_text.SkipBlanks(at);
        if (at >= m_text.Size())
            return FailUnclosed(at, "]>");
        const char byte = m_text.At(at);
        if (byte == ']')
            return at + 1;
        if (byte == '%') {
            const std::size_t end = m_text.SkipName(at + 1);
            if (m_text.At(end) != ';')
                return Stop;
            m_entities.mayBeIncomplete = true;
            at = end + 1;
        } else if (byte == '<') {
            at = ScanMarkup(at);
            if (at == Stop)
                return Stop;
        } else if (byte == '>') {
            const std::size_t next = m_text.SkipBlanks(at + 1);
            const bool isInside = m_text.At(next) == ']' || (m_text.Has("<!", next) && !m_text.Has("<!--", next));
            return Fail({at, at + 1},
                isInside ? "there is one '>' too many in the document type; remove it"
                         : "']' is missing before '>' at the end of the document type");
        } else {
            return Stop;
        }
    }
}

std::size_t DocumentTypeScanner::ScanMarkup(std::size_t at)
{
    if (m_text.Has("<!--", at))
        return ScanComment(m_text, at);
    if (m_text.Has("<?", at))
        return ScanProcessingInstruction(m_text, at);
    if (m_text.Has("<!", at))
        return ScanMarkupDeclaration(at);
    const bool isTag = m_text.IsNameStart(at + (m_text.Has("</", at) ? 2 : 1));
    if (!isTag)
        return Stop;
    Fail({at, at + 1}, "the document type is not closed before this tag; add ']>'");
    m_text.Fault()->relatedStart = m_start;
    m_text.Fault()->relatedMessage = "the document type began";
    return Stop;
}

// `keyword` begins with "<!".
std::size_t DocumentTypeScanner::CheckKeyword(TextRange keyword)
{
    if (std::find(declarationKeywords.begin(), declarationKeywords.end(), m_text.Get(keyword)) !=
        declarationKeywords.end())
        return keyword.end;
    std::vector<VString> known;
    known.reserve(declarationKeywords.size());
    for (const std::string_view each : declarationKeywords)
        known.push_back(VString::fromStdString(std::string(each)));
    const VString nearest = FindNearestName(VString::fromStdString(std::string(m_text.Get(keyword))), known);
    Fail(keyword,
        m_text.Quote(keyword) + " is not allowed in the document type" +
            (nearest.IsEmpty() ? "" : "; did you mean '" + nearest.toStdString() + "'?"));
    m_text.Fault()->suggestion = nearest;
    return Stop;
}

std::size_t DocumentTypeScanner::ScanMarkupDeclaration(std::size_t at)
{
    static constexpr ByteSet EndOrQuote("><\"'");
    const std::size_t start = at;
    if (CheckKeyword({at, m_text.SkipName(at + 2)}) == Stop)
        return Stop;
    for (at = m_text.FindAny(EndOrQuote, start + 2);; at = m_text.FindAny(EndOrQuote, at + 1)) {
        if (m_text.At(at) == '>')
            break;
        if (!IsQuote(m_text.At(at)))
            return Stop;
        at = m_text.Find(m_text.Get({at, at + 1}), at + 1);
        if (at == Stop)
            return Stop;
    }
    const std::size_t nameStart = m_text.SkipBlanks(start + 8);
    if (m_text.Has("<!ENTITY", start) && m_text.IsNameStart(nameStart)) {
        const TextRange name{nameStart, m_text.SkipName(nameStart)};
        const std::size_t quoteAt = m_text.SkipBlanks(name.end);
        const bool hasText = IsQuote(m_text.At(quoteAt));
        const std::size_t textStart = quoteAt + 1;
        const TextRange text = hasText ? TextRange{textStart, m_text.Find(m_text.Get({quoteAt, textStart}), textStart)}
                                       : TextRange{name.end, name.end};
        m_entities.declarations.try_emplace(m_text.Get(name), DeclaredEntity{name, text, {}});
    }
    return at + 1;
}

}  // namespace

std::size_t ScanDeclaration(SyntaxText& text, std::size_t at)
{
    return DeclarationScanner(text, at).Scan();
}

std::size_t ScanDocumentType(SyntaxText& text, std::size_t at, DeclaredEntities& entities)
{
    const std::size_t end = DocumentTypeScanner(text, at, entities).Scan();
    // Parameter entities may declare an entity earlier, with another text.
    if (!entities.mayBeIncomplete)
        FindRecursion(text, entities);
    return end;
}

std::size_t FailUnclosedSection(SyntaxText& text, TextRange opening, const std::string& subject, const std::string& end)
{
    // The last two characters, or the first two: "]>" or "]]".
    const std::string partialEnds[] = {end.substr(1), end.substr(0, 2)};
    for (const std::string& partialEnd : partialEnds) {
        for (std::size_t at = text.Find(partialEnd, opening.end); at != Stop; at = text.Find(partialEnd, at + 1)) {
            const TextRange range{at, at + partialEnd.size()};
            const std::size_t next = text.SkipBlanks(range.end);
            if (next < text.Size() && text.At(next) != '<')
                continue;
            SyntaxFault& fault = text.Fail(DiagnosticCode::UnclosedSection,
                range,
                subject + " is not closed; write " + Quoted(end) + " in place of " + text.Quote(range));
            fault.value = VString::fromStdString(partialEnd);
            fault.suggestion = VString::fromStdString(end);
            fault.relatedStart = opening.start;
            fault.relatedMessage = VString::fromStdString(subject + " began");
            return Stop;
        }
    }
    text.Fail(DiagnosticCode::UnclosedSection, opening, subject + " is not closed; add " + Quoted(end));
    return Stop;
}

std::size_t ScanComment(SyntaxText& text, std::size_t at)
{
    const std::size_t start = at + 4;
    const std::size_t hyphens = text.Find("--", start);
    if (text.CheckCharacters({start, std::min(hyphens, text.Size())}) == Stop)
        return Stop;
    if (hyphens == Stop) {
        return FailUnclosedSection(text, {at, start}, "the comment", "-->");
    }
    if (text.At(hyphens + 2) == '>')
        return hyphens + 3;
    if (hyphens >= start + 2 && text.Has("<!--", hyphens - 2)) {
        SyntaxFault& fault = text.Fail(DiagnosticCode::BadComment,
            {hyphens - 2, hyphens + 2},
            "a comment cannot contain another comment; close the first one with '-->' before this place");
        fault.relatedStart = at;
        fault.relatedMessage = "the first one began";
        return Stop;
    }
    std::size_t end = hyphens + 2;
    while (text.At(end) == '-')
        ++end;
    text.Fail(DiagnosticCode::BadComment,
        {hyphens, end},
        text.At(end) == '>'
            ? "a comment must end with '-->', without further hyphens"
            : "'--' is not allowed inside a comment; write '- -' or '-', or close the comment with '-->'");
    return Stop;
}

std::size_t ScanProcessingInstruction(SyntaxText& text, std::size_t at)
{
    const TextRange target{at + 2, text.SkipName(at + 2)};
    const auto fail = [&](DiagnosticCode code, TextRange range, const std::string& message) {
        text.Fail(code, range, message);
        return Stop;
    };
    if (!text.IsNameStart(target.start)) {
        return fail(DiagnosticCode::BadProcessingInstruction,
            {at, at + (text.At(at + 2) == '=' ? 3 : 2)},
            text.At(at + 2) == '='
                ? "'<?=' is PHP code, which must be run first; a processing instruction begins with a name"
                : text.BlankLength(at + 2) > 0
                ? "a blank is not allowed between '<?' and the name of the processing instruction"
                : "a processing instruction begins with a name after '<?'; write '&lt;?' if this is text");
    }
    if (text.Get(target) == "xml") {
        return fail(DiagnosticCode::MisplacedDeclaration,
            {at, target.end},
            "an XML declaration is allowed only at the start of the document; remove it");
    }
    if (EqualsIgnoringCase(text.Get(target), "xml")) {
        return fail(DiagnosticCode::BadProcessingInstruction,
            target,
            "a processing instruction cannot have the name " + text.Quote(target) + "; XML reserves it");
    }
    const std::size_t end = text.Find("?>", target.end);
    if (end == Stop) {
        return fail(DiagnosticCode::UnclosedSection,
            {at, target.end},
            "the processing instruction " + text.Quote(target) + " is not closed; add '?>'");
    }
    if (end > target.end && text.BlankLength(target.end) == 0) {
        return fail(DiagnosticCode::BadProcessingInstruction,
            text.CharacterAt(target.end),
            text.DescribeCharacterAt(target.end) + " is not allowed in the name of a processing instruction");
    }
    return text.CheckCharacters({target.end, end}) == Stop ? Stop : end + 2;
}
