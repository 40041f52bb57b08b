#include "vancorexml/main/parser/SyntaxFaultFinder.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VCType.h"
#include "vancorexml/main/parser/DeclarationSyntax.h"
#include "vancorexml/main/parser/ForeignFormat.h"
#include "vancorexml/main/parser/PositionCounter.h"
#include "vancorexml/main/parser/ReferenceSyntax.h"
#include "vancorexml/main/parser/SourceMap.h"
#include "vancorexml/main/parser/SyntaxText.h"
#include "vancorexml/main/parser/TagSyntax.h"

namespace {

constexpr std::size_t Stop = SyntaxText::Stop;

// Messages name at most this number of open elements.
constexpr std::size_t MostNames = 3;

// Scans a document from its start to its end.
class DocumentScanner {
public:
    explicit DocumentScanner(std::string_view text) : m_text(text) {}

    std::optional<SyntaxFault> Scan();

private:
    struct Element {
        std::size_t start;  // of its start tag
        TextRange name;
        std::size_t contentStart;
    };

    // A part of the text that looks like a start tag without its "<".
    struct LooseTag {
        TextRange name;
        TextRange range;  // from the name to behind ">"
        std::size_t depth;
    };

    // Open elements in words.
    struct OpenElements {
        std::string subject;  // the first words of a sentence, such as "elements 'b' and 'a' are"
        std::string advice;   // such as "add '</b></a>'"
    };

    std::size_t ScanAll();
    std::size_t ScanMarkup(std::size_t at);
    std::size_t ScanExclamation(std::size_t at);
    std::size_t ScanInstruction(std::size_t at);
    std::size_t ScanCData(std::size_t at);
    std::size_t ScanStart(std::size_t at);
    std::size_t ScanEnd(std::size_t at);
    std::size_t ScanText(std::size_t at);
    std::size_t ScanOutsideText(std::size_t at);
    std::size_t CheckEnd();

    std::size_t FailMismatch(std::size_t at, std::size_t end, TextRange name);
    std::size_t FailStillOpen(TextRange tag, TextRange name, std::size_t count);
    std::size_t FailVoidElement();
    std::size_t FailMissingSlash();
    std::size_t FailUnexpectedEnd(TextRange tag, TextRange name);
    std::size_t FailMissingBracket(TextRange loose, TextRange endTag);
    std::size_t FailSecondType(std::size_t at);
    std::size_t Fail(DiagnosticCode code, TextRange range, const std::string& message)
    {
        m_text.Fail(code, range, message);
        return Stop;
    }
    // Adds the other place to the fault.
    std::size_t Relate(std::size_t start, const std::string& message)
    {
        m_text.Fault()->relatedStart = start;
        m_text.Fault()->relatedMessage = VString::fromStdString(message);
        return Stop;
    }
    std::size_t RelateOpening(const Element& element)
    {
        return Relate(element.start, "element " + m_text.Quote(element.name) + " was opened");
    }
    std::size_t RelateRootEnd() { return Relate(m_lastEnd, "element " + m_text.Quote(m_root.name) + " was closed"); }

    void CollectLooseTags(TextRange text);
    TextRange FindLooseTag(TextRange name) const;
    OpenElements NameOpenElements(std::size_t count) const;
    bool IsVoidElement(const Element& element) const;
    bool IsTextBetween(const Element& element, std::size_t end) const;
    std::size_t FindMissingSlash() const;
    bool IsHtml() const;
    void DescribeAsHtml();
    bool IsTagAt(std::size_t at) const
    {
        return m_text.At(at) == '<' && (m_text.At(at + 1) == '/' || m_text.IsNameStart(at + 1));
    }
    // Returns an end tag for a message.
    std::string EndTagOf(TextRange name) const { return "</" + m_text.Excerpt(name) + ">"; }
    bool IsEndTagAt(std::size_t at, TextRange name) const
    {
        return m_text.Has("</", at) && IsSame({at + 2, m_text.SkipName(at + 2)}, name);
    }
    bool IsSame(TextRange a, TextRange b) const { return m_text.Get(a) == m_text.Get(b); }

    SyntaxText m_text;
    DeclaredEntities m_entities;
    std::vector<Element> m_open;
    std::vector<LooseTag> m_looseTags;
    Element m_root{Stop, {}, Stop};
    TextRange m_documentType{Stop, Stop};
    std::size_t m_declaration = Stop;  // the start of the XML declaration
    // The tag that closed the last element, and the name of that element.
    std::size_t m_lastEnd = Stop;
    TextRange m_lastName;
};

std::optional<SyntaxFault> DocumentScanner::Scan()
{
    ScanAll();
    if (m_text.Fault() && IsHtml())
        DescribeAsHtml();
    return std::move(m_text.Fault());
}

std::size_t DocumentScanner::ScanAll()
{
    const std::string format = RecognizeForeignFormat(m_text.From(0));
    if (!format.empty()) {
        const std::size_t first = std::min(m_text.SkipBlanks(0), m_text.Size() - 1);
        const bool isArchive = format.ends_with("archive");
        return Fail(DiagnosticCode::NotXml,
            m_text.CharacterAt(first),
            "the file is " + format + ", not XML" + (isArchive ? "; unpack it first" : ""));
    }
    // The parser skips white space in front of the XML declaration.
    std::size_t at = 0;
    while (at < m_text.Size() && VCType::isSpace(static_cast<signed char>(m_text.At(at))))
        ++at;
    if (m_text.Has("<?xml", at) && m_text.SkipName(at + 2) == at + 5) {
        m_declaration = at;
        at = ScanDeclaration(m_text, at);
    } else if (EqualsIgnoringCase(m_text.From(at).substr(0, 5), "<?xml") && m_text.SkipName(at + 2) == at + 5) {
        return Fail(DiagnosticCode::BadDeclaration,
            {at, at + 5},
            "the XML declaration must begin with '<?xml', in small letters");
    }
    while (at < m_text.Size())
        at = m_text.At(at) == '<' ? ScanMarkup(at) : m_open.empty() ? ScanOutsideText(at) : ScanText(at);
    return at == Stop ? Stop : CheckEnd();
}

std::size_t DocumentScanner::ScanMarkup(std::size_t at)
{
    if (m_text.Has("<!", at))
        return ScanExclamation(at);
    if (m_text.Has("<?", at))
        return ScanInstruction(at);
    if (m_text.Has("</", at) && m_text.IsNameStart(at + 2))
        return ScanEnd(at);
    return m_text.IsNameStart(at + 1) ? ScanStart(at) : FailLessThan(m_text, at);
}

// `at` is at "<!".
std::size_t DocumentScanner::ScanExclamation(std::size_t at)
{
    if (m_text.Has("<!--", at))
        return ScanComment(m_text, at);
    if (m_text.Has("<![CDATA[", at))
        return ScanCData(at);
    if (m_text.Has("<!DOCTYPE", at)) {
        if (m_root.start != Stop || m_documentType.start != Stop)
            return FailSecondType(at);
        m_documentType = {at, at + 9};
        const std::size_t end = ScanDocumentType(m_text, at, m_entities);
        if (end != Stop)
            m_documentType.end = end;
        return end;
    }
    const std::string_view rest = m_text.From(at);
    const TextRange keyword{at, m_text.SkipName(at + 2)};
    if (EqualsIgnoringCase(rest.substr(0, 9), "<!doctype")) {
        m_documentType = {at, at + 9};
        return Fail(DiagnosticCode::BadDocumentType, {at, at + 9}, "'<!DOCTYPE' must be written in capital letters");
    }
    if (EqualsIgnoringCase(rest.substr(0, 9), "<![cdata[")) {
        return Fail(DiagnosticCode::MalformedTag, {at, at + 9}, "'<![CDATA[' must be written in capital letters");
    }
    if (m_text.At(at + 2) == '-') {
        return Fail(DiagnosticCode::BadComment, {at, at + 3}, "a comment must begin with '<!--' and end with '-->'");
    }
    if (m_text.Has("<![", at)) {
        return Fail(DiagnosticCode::MalformedTag,
            {at, at + 3},
            "only '<![CDATA[' may begin with '<!['; write '&lt;![' if this is text");
    }
    for (const std::string_view declaration : {"<!ELEMENT", "<!ATTLIST", "<!ENTITY", "<!NOTATION"}) {
        if (m_text.Get(keyword) == declaration) {
            return Fail(DiagnosticCode::BadDocumentType,
                keyword,
                m_text.Quote(keyword) + " is allowed only between '[' and ']' of '<!DOCTYPE'");
        }
    }
    return Fail(DiagnosticCode::MalformedTag,
        keyword,
        m_text.Quote(keyword) + " is unknown; after '<!' only '--', 'DOCTYPE' and '[CDATA[' may follow");
}

std::size_t DocumentScanner::FailSecondType(std::size_t at)
{
    const TextRange range{at, at + 9};
    if (m_documentType.start != Stop) {
        Fail(DiagnosticCode::BadDocumentType, range, "a document has only one document type; remove the second one");
        return Relate(m_documentType.start, "the first one began");
    }
    Fail(DiagnosticCode::BadDocumentType, range, "the document type must stand before the first element");
    return RelateOpening(m_root);
}

// `at` is at "<?".
std::size_t DocumentScanner::ScanInstruction(std::size_t at)
{
    const std::size_t end = ScanProcessingInstruction(m_text, at);
    const bool isDeclaration = m_text.Fault() && m_text.Fault()->code == DiagnosticCode::MisplacedDeclaration;
    if (!isDeclaration)
        return end;
    const TextRange range{at, at + 5};
    if (m_declaration != Stop) {
        Fail(DiagnosticCode::MisplacedDeclaration,
            range,
            m_open.empty() && m_root.start != Stop
                ? "a second XML declaration: the file contains two documents; split it"
                : "a second XML declaration is not allowed; remove it");
        return Relate(m_declaration, "the first one stands");
    }
    return Fail(DiagnosticCode::MisplacedDeclaration,
        range,
        "the XML declaration must stand at the very start of the document; move it there or remove it");
}

// `at` is at "<![CDATA[".
std::size_t DocumentScanner::ScanCData(std::size_t at)
{
    const std::size_t start = at + 9;
    if (m_open.empty())
        return Fail(DiagnosticCode::TextOutsideRoot, {at, start}, "a CDATA section is allowed only inside an element");
    const std::size_t end = m_text.Find("]]>", start);
    if (end == Stop)
        return FailUnclosedSection(m_text, {at, start}, "the CDATA section", "]]>");
    return m_text.CheckCharacters({start, end}) == Stop ? Stop : end + 3;
}

std::size_t DocumentScanner::ScanStart(std::size_t at)
{
    const bool isSecond = m_open.empty() && m_root.start != Stop;
    if (isSecond) {
        const TextRange name{at + 1, m_text.SkipName(at + 1)};
        Fail(DiagnosticCode::SecondRoot,
            {at, name.end},
            "a document has only one root element; put " + m_text.Quote(name) + " into " + m_text.Quote(m_root.name) +
                ", or both into a new element");
        return RelateRootEnd();
    }
    ScannedTag tag;
    const std::size_t end = ScanStartTag(m_text, m_entities, at, tag);
    const Element element{at, tag.name, end};
    if (m_root.start == Stop)
        m_root = element;
    if (end != Stop && !tag.isEmpty) {
        m_open.push_back(element);
    } else if (end != Stop) {
        m_lastEnd = at;
        m_lastName = tag.name;
    }
    return end;
}

std::size_t DocumentScanner::ScanEnd(std::size_t at)
{
    ScannedTag tag;
    const std::size_t end = ScanEndTag(m_text, at, tag);
    // A wrong name is the earlier fault. It also explains an end tag that is not closed.
    const std::size_t tagEnd = end == Stop ? tag.name.end : end;
    if (m_open.empty())
        return FailUnexpectedEnd({at, tagEnd}, tag.name);
    if (!IsSame(m_open.back().name, tag.name))
        return FailMismatch(at, tagEnd, tag.name);
    m_open.pop_back();
    m_lastEnd = at;
    m_lastName = tag.name;
    return end;
}

// Records the fault of an end tag of another element than the innermost open one. Which tag is wrong can only be
// guessed: if an outer element has this name, the inner elements are not closed; if the names are similar, one of them
// is misspelt; if the next end tag is the expected one, this end tag is superfluous.
std::size_t DocumentScanner::FailMismatch(std::size_t at, std::size_t end, TextRange name)
{
    const Element& inner = m_open.back();
    const TextRange tag{at, end};
    const VString written = VString::fromStdString(std::string(m_text.Get(name)));
    const VString expected = VString::fromStdString(std::string(m_text.Get(inner.name)));
    const bool isNear = !FindNearestName(written, {expected}).IsEmpty();
    const std::size_t next = m_text.SkipBlanks(end);
    const auto outer =
        std::find_if(m_open.rbegin(), m_open.rend(), [&](const Element& open) { return IsSame(open.name, name); });
    // The end tag is not that of the outer element if this element ends later.
    const bool isLastTag = outer + 1 != m_open.rend() || !IsTagAt(next);
    const TextRange loose = FindLooseTag(name);
    if (outer == m_open.rend() && loose.start != Stop)
        return FailMissingBracket(loose, tag);
    const bool isOuterEnd = outer != m_open.rend() && !(isNear && (IsEndTagAt(next, name) || !isLastTag));
    if (isOuterEnd)
        return FailStillOpen(tag, name, static_cast<std::size_t>(outer - m_open.rbegin()));
    if (!isNear && IsEndTagAt(next, inner.name))
        return FailUnexpectedEnd(tag, name);
    const std::string expectedTag = Quoted(EndTagOf(inner.name));
    const std::string message = "the end tag " + Quoted(EndTagOf(name)) + " does not fit the open element " +
        m_text.Quote(inner.name) + (isNear ? "; did you mean " + expectedTag + "?" : ", which needs " + expectedTag);
    Fail(DiagnosticCode::MismatchedEndTag, tag, message);
    m_text.Fault()->value = written;
    if (isNear)
        m_text.Fault()->suggestion = expected;
    return RelateOpening(inner);
}

// Records the fault of the end tag of an outer element, with `count` open elements inside.
std::size_t DocumentScanner::FailStillOpen(TextRange tag, TextRange name, std::size_t count)
{
    const Element& inner = m_open.back();
    const std::string endTag = Quoted(EndTagOf(name));
    if (IsVoidElement(inner)) {
        FailVoidElement();
        return Relate(tag.start, endTag + " stands");
    }
    if (FindMissingSlash() != Stop)
        return FailMissingSlash();
    const bool isCrossed = IsEndTagAt(m_text.SkipBlanks(tag.end), inner.name);
    if (isCrossed) {
        Fail(DiagnosticCode::MismatchedEndTag,
            tag,
            "the elements " + m_text.Quote(inner.name) + " and " + m_text.Quote(name) + " overlap; write " +
                Quoted(EndTagOf(inner.name)) + " before " + endTag);
    } else {
        const OpenElements open = NameOpenElements(count);
        Fail(DiagnosticCode::UnclosedElement, tag, open.subject + " still open; " + open.advice + " before " + endTag);
    }
    return RelateOpening(inner);
}

// Names the `count` innermost open elements.
DocumentScanner::OpenElements DocumentScanner::NameOpenElements(std::size_t count) const
{
    const TextRange innermost = m_open.back().name;
    const bool isOneName = std::all_of(m_open.rbegin(),
        m_open.rbegin() + static_cast<std::ptrdiff_t>(count),
        [&](const Element& element) { return IsSame(element.name, innermost); });
    if (count > 1 && isOneName) {
        return {std::to_string(count) + " elements " + m_text.Quote(innermost) + " are",
            "each needs " + Quoted(EndTagOf(innermost))};
    }
    std::string names;
    std::string endTags;
    for (std::size_t i = 0; i < std::min(count, MostNames); ++i) {
        const TextRange name = m_open[m_open.size() - 1 - i].name;
        names += (i == 0 ? "" : i + 1 == count ? " and " : ", ") + m_text.Quote(name);
        endTags += EndTagOf(name);
    }
    if (count > MostNames) {
        names += " and " + std::to_string(count - MostNames) + " more";
        endTags += "...";
    }
    return {count == 1 ? "element " + names + " is" : "elements " + names + " are", "add " + Quoted(endTags)};
}

// Returns the start of a tag that is probably meant to close the innermost open element or the one around it, as in
// "<b>text<b>" or "<b>text<b/>". Returns Stop if there is none.
std::size_t DocumentScanner::FindMissingSlash() const
{
    const Element& inner = m_open.back();
    if (m_open.size() > 1) {
        const Element& outer = m_open[m_open.size() - 2];
        const std::size_t next = m_text.SkipBlanks(inner.contentStart);
        const bool hasText = next < m_text.Size() && m_text.At(next) != '<';
        const bool hasAttributes = m_text.At(inner.name.end) != '>';
        if (IsSame(inner.name, outer.name) && !hasAttributes && !hasText && IsTextBetween(outer, inner.start))
            return inner.start;
    }
    const bool isEmptyTag = m_lastEnd != Stop && m_lastEnd > inner.start && m_text.Has("/>", m_lastName.end);
    return isEmptyTag && IsSame(m_lastName, inner.name) && IsTextBetween(inner, m_lastEnd) ? m_lastEnd : Stop;
}

// True if the element contains only text from its start tag to `end`.
bool DocumentScanner::IsTextBetween(const Element& element, std::size_t end) const
{
    const TextRange content{element.contentStart, end};
    return m_text.TrimEnd(content) > content.start && m_text.Get(content).find('<') == std::string_view::npos;
}

// Records the fault of the tag that FindMissingSlash returns.
std::size_t DocumentScanner::FailMissingSlash()
{
    const std::size_t start = FindMissingSlash();
    const bool isEmptyTag = start != m_open.back().start;
    const Element& element = isEmptyTag ? m_open.back() : m_open[m_open.size() - 2];
    const TextRange tag{start, start + element.name.end - element.name.start + (isEmptyTag ? 3 : 2)};
    Fail(DiagnosticCode::UnclosedElement,
        tag,
        "element " + m_text.Quote(element.name) + " is not closed; write " + Quoted(EndTagOf(element.name)) +
            " in place of " + m_text.Quote(tag));
    return RelateOpening(element);
}

// Records that the innermost open element is one that HTML never closes.
std::size_t DocumentScanner::FailVoidElement()
{
    const Element& element = m_open.back();
    const bool isWhole = m_text.At(element.name.end) == '>';
    const std::string name = m_text.Excerpt(element.name);
    return Fail(DiagnosticCode::UnclosedElement,
        {element.start, element.name.end + (isWhole ? 1 : 0)},
        "element '" + name + "' is not closed; XML needs '<" + name + "/>' where HTML has '<" + name + ">'");
}

std::size_t DocumentScanner::FailUnexpectedEnd(TextRange tag, TextRange name)
{
    const bool isClosed = m_lastEnd != Stop && IsSame(m_lastName, name);
    const std::string end = "the end tag '" + EndTagOf(name) + "' has no start tag; remove it";
    Fail(DiagnosticCode::UnexpectedEndTag, tag, end);
    if (isClosed)
        return Relate(m_lastEnd, "element " + m_text.Quote(name) + " was closed");
    return m_open.empty() ? Stop : RelateOpening(m_open.back());
}

// `loose` is a start tag without its "<".
std::size_t DocumentScanner::FailMissingBracket(TextRange loose, TextRange endTag)
{
    Fail(DiagnosticCode::MalformedTag, loose, "'<' is missing before " + m_text.Quote(loose));
    return Relate(endTag.start, "the end tag " + m_text.Quote(endTag) + " stands");
}

// Collects the parts of the text that look like a start tag without its "<": "name>" behind white space, and a line
// that begins with a name and an attribute.
void DocumentScanner::CollectLooseTags(TextRange text)
{
    static constexpr ByteSet Separators(">\r\n");
    for (std::size_t at = text.start; at < text.end;) {
        const std::size_t start = at;
        const std::size_t end = m_text.FindAny(Separators, at, text.end);
        at = end + 1;
        if (m_text.At(end) != '>' || end == text.end)
            continue;
        const std::size_t first = m_text.SkipBlanks(start);
        TextRange name{first, m_text.SkipName(first)};
        const std::size_t attribute = m_text.SkipBlanks(name.end);
        const bool hasAttribute =
            attribute > name.end && IsQuote(m_text.At(end - 1)) && m_text.At(m_text.SkipName(attribute)) == '=';
        if (!hasAttribute) {
            name = {end, end};
            while (name.start > first && m_text.BlankLength(name.start - 1) == 0)
                --name.start;
        }
        const bool isName = m_text.IsNameStart(name.start) && m_text.SkipName(name.start) == name.end;
        if (isName && name.end > name.start)
            m_looseTags.push_back({name, {name.start, end + 1}, m_open.size()});
    }
}

// Returns the last start tag without "<" that has this name and the same parent as the current place. Its start is Stop
// if there is none.
TextRange DocumentScanner::FindLooseTag(TextRange name) const
{
    const auto found = std::find_if(m_looseTags.rbegin(), m_looseTags.rend(), [&](const LooseTag& tag) {
        return tag.depth == m_open.size() && IsSame(tag.name, name);
    });
    const bool isInside = found != m_looseTags.rend() && found->range.start >= m_open.back().start;
    return isInside ? found->range : TextRange{Stop, Stop};
}

// Scans text in an element up to the next "<".
std::size_t DocumentScanner::ScanText(std::size_t at)
{
    static constexpr ByteSet Markup("<&");
    const std::size_t end = m_text.FindAny(Markup, at);
    const std::size_t sectionEnd = m_text.Get({at, end}).find("]]>");
    const bool hasSectionEnd = sectionEnd != std::string_view::npos;
    if (m_text.CheckCharacters({at, hasSectionEnd ? at + sectionEnd : end}) == Stop)
        return Stop;
    if (hasSectionEnd) {
        Fail(DiagnosticCode::SectionEndInText,
            {at + sectionEnd, at + sectionEnd + 3},
            "the text ']]>' must be written as ']]&gt;'");
        m_text.Fault()->value = "]]>";
        return Stop;
    }
    CollectLooseTags({at, end});
    return m_text.At(end) == '&' ? ScanReference(m_text, m_entities, end) : end;
}

// Scans the text before or after the root element up to the next "<".
std::size_t DocumentScanner::ScanOutsideText(std::size_t at)
{
    static constexpr ByteSet Markup("<");
    at = m_text.SkipBlanks(at);
    if (at >= m_text.Size() || m_text.At(at) == '<')
        return at;
    const TextRange text{at, m_text.TrimEnd({at, m_text.FindAny(Markup, at)})};
    if (m_text.CheckCharacters(m_text.CharacterAt(at)) == Stop)
        return Stop;
    const std::string character = m_text.DescribeCharacterAt(at);
    const bool isInvisible = character.starts_with("U+");
    const std::string subject = isInvisible ? "the invisible character " + character : "the text " + m_text.Quote(text);
    const TextRange range = isInvisible ? m_text.CharacterAt(at) : text;
    const bool isDeclarationBehind =
        m_declaration == Stop && m_text.Has("<?xml", m_text.SkipBlanks(text.end)) && m_root.start == Stop;
    if (isDeclarationBehind && !isInvisible) {
        return Fail(DiagnosticCode::TextOutsideRoot,
            text,
            "the document begins with other output, " + m_text.Quote(text) + "; remove it, because '<?xml' must " +
                "stand at the very start");
    }
    if (m_root.start == Stop) {
        return Fail(
            DiagnosticCode::TextOutsideRoot, range, subject + " is not allowed before the root element; remove it");
    }
    Fail(DiagnosticCode::TextOutsideRoot,
        range,
        subject + " is not allowed after the root element; " +
            (isInvisible ? "remove it" : "remove it, or move it before '" + EndTagOf(m_root.name) + "'"));
    return RelateRootEnd();
}

std::size_t DocumentScanner::CheckEnd()
{
    const std::size_t end = m_text.TrimEnd({0, m_text.Size()});
    if (end == 0) {
        return Fail(DiagnosticCode::EmptyDocument,
            {0, 0},
            std::string(m_text.Size() == 0 ? "the file is empty" : "the file contains only white space") +
                "; an XML document needs a root element");
    }
    if (m_root.start == Stop)
        return Fail(DiagnosticCode::EmptyDocument, {end, end}, "the document has no root element; add one");
    if (m_open.empty())
        return end;
    const Element& inner = m_open.back();
    if (IsVoidElement(inner))
        return FailVoidElement();
    if (FindMissingSlash() != Stop)
        return FailMissingSlash();
    const OpenElements open = NameOpenElements(m_open.size());
    Fail(DiagnosticCode::UnclosedElement,
        {end, end},
        "the document ends, but " + open.subject + " still open; " + open.advice);
    return RelateOpening(inner);
}

// True for an element that exists only in HTML and never has an end tag there.
bool DocumentScanner::IsVoidElement(const Element& element) const
{
    static constexpr std::array<std::string_view, 6> Names{"br", "hr", "img", "input", "meta", "wbr"};
    return std::any_of(Names.begin(), Names.end(), [&](std::string_view name) {
        return EqualsIgnoringCase(m_text.Get(element.name), name);
    });
}

// True if the document is probably HTML and not XHTML.
bool DocumentScanner::IsHtml() const
{
    const bool hasType = m_documentType.start != Stop;
    const auto tagAt = [&](std::size_t start) { return m_text.Get({start, m_text.FindAny(ByteSet(">"), start)}); };
    if (m_root.start != Stop && tagAt(m_root.start).find("xmlns") != std::string_view::npos)
        return false;
    if (!hasType)
        return m_root.start != Stop && EqualsIgnoringCase(m_text.Get(m_root.name), "html");
    const std::size_t name = m_text.SkipBlanks(m_documentType.start + 9);
    return EqualsIgnoringCase(m_text.Get({name, m_text.SkipName(name)}), "html") &&
        tagAt(m_documentType.start).find("XHTML") == std::string_view::npos;
}

// Replaces the fault by one of the whole file.
void DocumentScanner::DescribeAsHtml()
{
    const std::size_t first = m_text.Fault()->start;
    const TextRange tag{m_root.start, m_root.name.end};
    const TextRange range = m_documentType.start == Stop ? tag : m_documentType;
    Fail(DiagnosticCode::NotXml, range, "the file is HTML, which is not XML; convert it to XHTML");
    if (first != range.start)
        Relate(first, "the first part that XML does not allow is");
}

}  // namespace

std::optional<SyntaxFault> FindSyntaxFault(std::string_view text)
{
    return DocumentScanner(text).Scan();
}

void DescribeSyntaxFault(const SyntaxFault& fault, std::string_view text, SourceMap* map, ParseDiagnostic& diagnostic)
{
    PositionCounter counter(text);
    const auto locate = [&](std::size_t offset) {
        const SourcePosition position = counter.At(offset);
        return map ? map->Map(position) : position;
    };
    diagnostic.message = fault.message;
    diagnostic.start = locate(fault.start);
    diagnostic.end = locate(fault.end);
    diagnostic.attribute = fault.attribute;
    diagnostic.value = fault.value;
    diagnostic.suggestion = fault.suggestion;
    if (fault.relatedStart != std::string_view::npos)
        diagnostic.related = {fault.relatedMessage, locate(fault.relatedStart)};
}
