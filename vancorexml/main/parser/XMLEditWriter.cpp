#include "vancorexml/main/parser/XMLEditWriter.h"

#include <algorithm>

#include "vancorexml/main/parser/XMLReferences.h"
#include "vancorexml/main/parser/XMLUtils.h"

using Kind = XMLToken::Kind;

namespace {

constexpr std::string_view CDataStart = "<![CDATA[";
constexpr std::string_view CDataEnd = "]]>";
constexpr std::string_view LineEnds = "\r\n";

// Returns the line end at `offset`; empty if there is none.
std::string_view LineEndAt(std::string_view text, std::size_t offset) noexcept
{
    const std::string_view rest = text.substr(offset);
    if (rest.starts_with("\r\n"))
        return rest.substr(0, 2);
    const bool isLineEnd = rest.starts_with('\n') || rest.starts_with('\r');
    return rest.substr(0, isLineEnd ? 1 : 0);
}

std::size_t SkipBlanks(std::string_view text, std::size_t offset) noexcept
{
    return std::min(text.find_first_not_of(" \t", offset), text.size());
}

XMLToken ReadTag(std::string_view text, const FoundElement& element)
{
    XMLTokenReader reader(text.substr(element.start, element.tagEnd - element.start));
    XMLToken token;
    reader.Next(token);
    return token;
}

// True if a parser reports `value` for an attribute that is written as `written`. False if `written` refers to an
// entity.
bool IsValue(std::string_view written, const VString& value)
{
    return !XMLReferences::HasEntity(written) &&
        XMLReferences::Decode(written, XMLReferences::Place::Attribute) == value.toStdString();
}

// The texts of an element without child elements.
struct ElementText {
    std::vector<XMLToken> tokens;  // texts and CDATA sections
    std::size_t main = 0;          // index of the first CDATA section or text that is not blank; 0 if there is none
    std::string decoded;           // as a parser reports it, if there are no entities
    bool hasEntity = false;
};

// Returns the content of a CDATA section with its line ends as a parser reports them.
std::string DecodeCData(std::string_view token)
{
    const std::string_view content =
        token.substr(CDataStart.size(), token.size() - CDataStart.size() - CDataEnd.size());
    std::string decoded;
    for (std::size_t i = 0; i < content.size(); ++i) {
        if (content[i] != '\r')
            decoded += content[i];
        else if (!content.substr(i + 1).starts_with('\n'))
            decoded += '\n';
    }
    return decoded;
}

ElementText ReadText(std::string_view content)
{
    ElementText text;
    bool hasMain = false;
    XMLTokenReader reader(content);
    XMLToken token;
    while (reader.Next(token)) {
        if (token.kind != Kind::CData && token.kind != Kind::Text)
            continue;
        const bool isCData = token.kind == Kind::CData;
        text.decoded += isCData ? DecodeCData(token.text) : XMLReferences::Decode(token.text);
        text.hasEntity |= !isCData && XMLReferences::HasEntity(token.text);
        if (!hasMain && (isCData || !XmlUtils::IsBlank(token.text))) {
            hasMain = true;
            text.main = text.tokens.size();
        }
        text.tokens.push_back(token);
    }
    return text;
}

}  // namespace

XMLEditWriter::XMLEditWriter(std::string_view text,
    const ElementFindings& findings,
    const std::vector<CombinedChange>& changes,
    const XMLCharacters& characters)
    : m_text(text),
      m_findings(findings),
      m_changes(changes),
      m_characters(characters),
      m_firstLineEnd(LineEndAt(text, std::min(text.find_first_of(LineEnds), text.size())))
{}

XMLEditWriter::~XMLEditWriter() = default;

std::vector<TextEdit> XMLEditWriter::Run()
{
    m_edits.reserve(m_findings.elements.size());
    std::size_t deletedEnd = 0;             // the end of the last deleted element
    std::vector<const FoundElement*> open;  // the found elements around the next one
    const auto endElements = [&](std::size_t offset) {
        for (; !open.empty() && open.back()->end <= offset; open.pop_back())
            End(*open.back(), m_changes[open.back()->changes]);
    };
    for (const FoundElement& element : m_findings.elements) {
        if (element.end <= deletedEnd)
            continue;
        endElements(element.start);
        const CombinedChange& change = m_changes[element.changes];
        if (!IsAllowed(element, change))
            continue;
        Start(element, change);
        if (change.isDeleted)
            deletedEnd = element.end;
        else
            open.push_back(&element);
    }
    endElements(m_text.size());
    // An insertion behind an element may have a larger offset than the edits that follow it. Edits of the same offset
    // keep their order. Sorting takes memory, and most edits are sorted already.
    const auto isLess = [](const TextEdit& a, const TextEdit& b) { return a.offset < b.offset; };
    if (!std::is_sorted(m_edits.begin(), m_edits.end(), isLess))
        std::stable_sort(m_edits.begin(), m_edits.end(), isLess);
    return std::move(m_edits);
}

bool XMLEditWriter::IsAllowed(const FoundElement& element, const CombinedChange& change)
{
    const std::size_t before = m_errors.size();
    const auto report = [&](const VString& message) { m_errors.push_back({element.start, message}); };
    for (const VString& message : change.contradictions)
        report(message);
    if (change.text && element.hasElements)
        report("the text cannot be changed, because the element contains elements");
    if (element.parent == FoundElement::None) {
        const auto hasElements = [](const XMLFragment* fragment) { return fragment->Elements().HasChildren(); };
        if (change.isDeleted)
            report("the document element cannot be deleted");
        if (std::any_of(change.before.begin(), change.before.end(), hasElements) ||
            std::any_of(change.after.begin(), change.after.end(), hasElements))
            report("a document can have only one element at the top");
    }
    return m_errors.size() == before;
}

void XMLEditWriter::Start(const FoundElement& element, const CombinedChange& change)
{
    if (change.isDeleted) {
        Delete(element, change);
        return;
    }
    if (!change.before.empty()) {
        if (HasOwnLine(element)) {
            const std::string_view indentation = IndentationAt(element.start);
            const std::string_view lineEnd = LineEndBefore(element.start - indentation.size());
            Add(element.start,
                0,
                Write(change.before, "", std::string(lineEnd).append(indentation), lineEnd, indentation));
        } else {
            Add(element.start, 0, WriteInline(change.before));
        }
    }
    if (change.name)
        Add(element.start + 1, ReadTag(m_text, element).name.size(), std::string(*change.name));
    ChangeAttributes(element, change);
    if (element.isEmptyTag) {
        FillEmptyTag(element, change);
        return;
    }
    const bool isInline = IsInline(element, change);
    if (!isInline && !element.hasNodes) {
        FillBlank(element, change);
        return;
    }
    if (isInline)
        Add(element.tagEnd, 0, WriteInline(change.prepended));
    else
        Prepend(element, change.prepended);
    if (change.text)
        ChangeText(element, *change.text);
}

void XMLEditWriter::End(const FoundElement& element, const CombinedChange& change)
{
    if (!change.isDeleted && !element.isEmptyTag) {
        if (IsInline(element, change))
            Add(element.endTag, 0, WriteInline(change.appended));
        else if (element.hasNodes)
            Append(element, change.appended);
        if (change.name)
            Add(element.endTag + 2, ReadTag(m_text, element).name.size(), std::string(*change.name));
    }
    if (change.after.empty() || change.isDeleted)
        return;
    const std::optional<std::size_t> lineEndOffset = SkipRestOfLine(element.end);
    if (HasOwnLine(element) && lineEndOffset) {
        const std::string_view indentation = IndentationAt(element.start);
        const std::string_view lineEnd = LineEndBefore(element.start - indentation.size());
        Add(*lineEndOffset, 0, Write(change.after, std::string(lineEnd).append(indentation), "", lineEnd, indentation));
    } else {
        Add(element.end, 0, WriteInline(change.after));
    }
}

// Fragments beside the deleted element take its place.
void XMLEditWriter::Delete(const FoundElement& element, const CombinedChange& change)
{
    Fragments fragments = change.before;
    fragments.insert(fragments.end(), change.after.begin(), change.after.end());
    const bool hasNodes =
        std::any_of(fragments.begin(), fragments.end(), [](const XMLFragment* each) { return each->NodeCount() > 0; });
    const std::size_t length = element.end - element.start;
    const bool followsDeletion = !hasNodes && m_deletion.end == element.start && m_deletion.end > 0;
    if (!HasOwnLine(element) && !followsDeletion) {
        Add(element.start, length, WriteInline(fragments));
        return;
    }
    std::size_t start = element.start;
    std::size_t lineStart = start - IndentationAt(start).size();
    if (hasNodes) {
        const std::string_view indentation = IndentationAt(start);
        const std::string_view lineEnd = LineEndBefore(lineStart);
        const std::string prefix = std::string(lineEnd).append(indentation);
        Add(start, length, Write(fragments, prefix, "", lineEnd, indentation).substr(prefix.size()));
        return;
    }
    // Combine the deletions of neighbours on one line into one edit.
    if (followsDeletion) {
        m_edits.pop_back();
        start = m_deletion.start;
        lineStart = m_deletion.lineStart;
    }
    const std::size_t rest = SkipBlanks(m_text, element.end);
    const std::string_view lineEnd = LineEndAt(m_text, rest);
    m_deletion = {start, lineStart, rest};
    // Delete the white space behind the element too, because the rest of the line takes the place of the element.
    if (lineEnd.empty())
        Add(start, rest - start, "");
    else
        Add(lineStart, rest + lineEnd.size() - lineStart, "");
}

void XMLEditWriter::ChangeAttributes(const FoundElement& element, const CombinedChange& change)
{
    if (change.attributes.empty())
        return;
    const XMLToken tag = ReadTag(m_text, element);
    const auto offsetOf = [&](std::string_view part) {
        return element.start + static_cast<std::size_t>(part.data() - tag.text.data());
    };
    std::vector<bool> isDone(change.attributes.size());
    XMLAttributeReader reader(tag);
    XMLAttributeToken attribute;
    std::size_t end = element.start + 1 + tag.name.size();  // of the previous attribute
    std::string_view space;                                 // in front of the last attribute
    char quote = '\'';
    while (reader.Next(attribute)) {
        const std::size_t start = offsetOf(attribute.text);
        const std::size_t previousEnd = std::exchange(end, start + attribute.text.size());
        space = m_text.substr(previousEnd, start - previousEnd);
        quote = attribute.quote;
        for (std::size_t i = 0; i < change.attributes.size(); ++i) {
            const CombinedChange::Attribute& changed = change.attributes[i];
            if (changed.name != attribute.name)
                continue;
            isDone[i] = true;
            const std::string_view old = attribute.value;
            if (!changed.value)
                Add(previousEnd, end - previousEnd, "");
            else if (!IsValue(old, *changed.value))
                Add(offsetOf(old), old.size(), m_characters.EscapeValue(*changed.value, quote));
        }
    }
    const bool hasLines = space.find_first_of(LineEnds) != std::string_view::npos;
    std::string added;
    for (std::size_t i = 0; i < change.attributes.size(); ++i) {
        const CombinedChange::Attribute& changed = change.attributes[i];
        if (isDone[i] || !changed.value)
            continue;
        ((added += hasLines ? space : " ") += changed.name) += '=';
        ((added += quote) += m_characters.EscapeValue(*changed.value, quote)) += quote;
    }
    Add(end, 0, std::move(added));
}

// Replaces "/>" by the content and an end tag.
void XMLEditWriter::FillEmptyTag(const FoundElement& element, const CombinedChange& change)
{
    Fragments fragments = change.prepended;
    std::string content = WriteInline(fragments);
    const bool isInline = IsInline(element, change) || !HasOwnLine(element);
    if (isInline) {
        if (change.text)
            content += m_characters.EscapeText(*change.text, DefaultLineEnd());
        content += WriteInline(change.appended);
    } else {
        fragments.insert(fragments.end(), change.appended.begin(), change.appended.end());
        const std::string_view indentation = IndentationAt(element.start);
        const std::string_view lineEnd = LineEndBefore(element.start - indentation.size());
        const std::string child = ChildIndentation(element);
        content = Write(fragments, std::string(lineEnd) + child, "", lineEnd, child);
        if (!content.empty())
            (content += lineEnd) += indentation;
    }
    if (content.empty())
        return;
    const XMLToken tag = ReadTag(m_text, element);
    const std::string name = change.name ? *change.name : std::string(tag.name);
    const bool hasBlank = tag.text.ends_with(" />") && !XmlUtils::IsBlank(tag.text.substr(tag.text.size() - 4, 1));
    const std::size_t length = hasBlank ? 3 : 2;
    Add(element.tagEnd - length, length, ">" + content + "</" + name + ">");
}

// Fills an element that contains at most white space.
void XMLEditWriter::FillBlank(const FoundElement& element, const CombinedChange& change)
{
    Fragments fragments = change.prepended;
    fragments.insert(fragments.end(), change.appended.begin(), change.appended.end());
    if (fragments.empty())
        return;
    if (!HasOwnLine(element)) {
        Add(element.endTag, 0, WriteInline(fragments));
        return;
    }
    const std::string_view indentation = IndentationAt(element.start);
    const std::string_view lineEnd = LineEndBefore(element.start - indentation.size());
    const std::string child = ChildIndentation(element);
    std::string content = Write(fragments, std::string(lineEnd) + child, "", lineEnd, child);
    if (content.empty())
        return;
    (content += lineEnd) += indentation;
    Add(element.tagEnd, element.endTag - element.tagEnd, std::move(content));
}

// Replaces the first text that is not white space only, or else the first text, by the value. Removes all other text.
void XMLEditWriter::ChangeText(const FoundElement& element, const VString& value)
{
    const ElementText text = ReadText(m_text.substr(element.tagEnd, element.endTag - element.tagEnd));
    if (!text.hasEntity && text.decoded == value.toStdString())
        return;
    if (text.tokens.empty()) {
        Add(element.tagEnd, 0, m_characters.EscapeText(value, DefaultLineEnd()));
        return;
    }
    for (std::size_t i = 0; i < text.tokens.size(); ++i) {
        const XMLToken& token = text.tokens[i];
        const auto offset = static_cast<std::size_t>(token.text.data() - m_text.data());
        Add(offset, token.text.size(), i == text.main ? WriteText(value, token.kind) : std::string());
    }
}

// Returns the value as a CDATA section if it replaces one and can be written as one, and otherwise as escaped text.
std::string XMLEditWriter::WriteText(const VString& value, XMLToken::Kind kind) const
{
    const std::string plain = value.toStdString();
    if (kind != Kind::CData || plain.empty() || plain.find(CDataEnd) != std::string::npos ||
        m_characters.NeedsReferences(value))
        return m_characters.EscapeText(value, DefaultLineEnd());
    std::string written(CDataStart);
    for (const char byte : plain) {
        if (byte == '\n')
            written += DefaultLineEnd();
        else
            written += byte;
    }
    return written += CDataEnd;
}

// Inserts nodes in front of the first node of the content.
void XMLEditWriter::Prepend(const FoundElement& element, const Fragments& fragments)
{
    if (fragments.empty())
        return;
    const std::optional<std::size_t> lineEndOffset = SkipRestOfLine(element.tagEnd);
    const std::string_view lineEnd = lineEndOffset ? LineEndAt(m_text, *lineEndOffset) : std::string_view();
    if (lineEnd.empty()) {
        Add(element.tagEnd, 0, WriteInline(fragments));
        return;
    }
    const std::size_t first = m_text.find_first_not_of(" \t\r\n", *lineEndOffset);
    const std::string indentation =
        first == element.endTag ? ChildIndentation(element) : std::string(IndentationAt(first));
    Add(*lineEndOffset, 0, Write(fragments, std::string(lineEnd) + indentation, "", lineEnd, indentation));
}

// Inserts nodes behind the last node of the content.
void XMLEditWriter::Append(const FoundElement& element, const Fragments& fragments)
{
    if (fragments.empty())
        return;
    if (element.lastLineNode == FoundElement::None) {
        Add(element.endTag, 0, WriteInline(fragments));
        return;
    }
    const std::string_view indentation = IndentationAt(element.lastLineNode);
    const std::string_view lineEnd = LineEndBefore(element.lastLineNode - indentation.size());
    const std::string prefix = std::string(lineEnd).append(indentation);
    // The white space behind the last node.
    std::size_t blank = element.endTag;
    while (XmlUtils::IsWhitespace(m_text[blank - 1]))
        --blank;
    blank = SkipBlanks(m_text, blank);
    const std::string_view found = LineEndAt(m_text, blank);
    if (blank >= element.endTag || found.empty())
        Add(element.endTag, 0, Write(fragments, prefix, "", lineEnd, indentation));
    else
        Add(blank + found.size(), 0, Write(fragments, indentation, lineEnd, lineEnd, indentation));
}

bool XMLEditWriter::IsInline(const FoundElement& element, const CombinedChange& change) const
{
    return change.text || m_findings.isInline[element.number];
}

bool XMLEditWriter::HasOwnLine(const FoundElement& element) const
{
    const bool isInInline = element.parent != FoundElement::None && m_findings.isInline[element.parent];
    return !m_firstLineEnd.empty() && !isInInline && FindLineStart(m_text, element.start);
}

std::string_view XMLEditWriter::IndentationAt(std::size_t offset) const
{
    const std::size_t start = FindLineStart(m_text, offset).value_or(offset);
    return m_text.substr(start, offset - start);
}

std::string XMLEditWriter::ChildIndentation(const FoundElement& element) const
{
    const std::string_view own = IndentationAt(element.start);
    std::string_view unit = own.starts_with('\t') ? "\t" : "  ";
    if (element.parent != FoundElement::None) {
        const std::string_view parent = IndentationAt(element.parentStart);
        if (own.size() > parent.size() && own.starts_with(parent))
            unit = own.substr(parent.size());
    }
    return std::string(own).append(unit);
}

std::string_view XMLEditWriter::LineEndBefore(std::size_t lineStart) const
{
    if (lineStart == 0)
        return m_firstLineEnd;
    const bool isPair = lineStart > 1 && m_text.substr(lineStart - 2, 2) == "\r\n";
    const std::size_t length = isPair ? 2 : 1;
    return m_text.substr(lineStart - length, length);
}

std::optional<std::size_t> XMLEditWriter::SkipRestOfLine(std::size_t offset) const
{
    std::size_t end = offset;  // of the last comment
    for (std::size_t position = SkipBlanks(m_text, offset);; position = SkipBlanks(m_text, end)) {
        if (position == m_text.size() || !LineEndAt(m_text, position).empty())
            return position;
        if (!m_text.substr(position).starts_with("<!--"))
            return std::nullopt;
        end = m_text.find("-->", position + 4);
        if (end == std::string_view::npos)
            return std::nullopt;
        end += 3;
        if (m_text.substr(position, end - position).find_first_of(LineEnds) != std::string_view::npos)
            return std::nullopt;
    }
}

std::string XMLEditWriter::Write(const Fragments& fragments,
    std::string_view prefix,
    std::string_view suffix,
    std::string_view lineEnd,
    std::string_view indentation)
{
    std::string written;
    for (const XMLFragment* fragment : fragments) {
        for (std::size_t node = 0; node < fragment->NodeCount(); ++node) {
            written += prefix;
            fragment->AppendNode(written, node, lineEnd, indentation);
            written += suffix;
        }
    }
    return written;
}

std::string XMLEditWriter::WriteInline(const Fragments& fragments) const
{
    return Write(fragments, "", "", DefaultLineEnd(), "");
}

void XMLEditWriter::Add(std::size_t offset, std::size_t length, std::string&& replacement)
{
    if (m_text.substr(offset, length) != replacement)
        m_edits.push_back({offset, length, std::move(replacement)});
}
