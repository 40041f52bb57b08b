#include "vancorexml/main/parser/XMLElementFinder.h"

#include <algorithm>

#include "vancorexml/main/parser/XMLReferences.h"
#include "vancorexml/main/parser/XMLUtils.h"

using Kind = XMLToken::Kind;

namespace {

constexpr std::string_view SpaceAttribute = "xml:space";

// True if a parser can report "preserve" for this value of xml:space. A parser removes blanks around the value of an
// attribute that the document type declares.
bool MayMeanPreserve(std::string_view value)
{
    const std::string decoded = XMLReferences::Decode(value, XMLReferences::Place::Attribute);
    const std::size_t start = std::min(decoded.find_first_not_of(' '), decoded.size());
    const std::string trimmed = decoded.substr(start, decoded.find_last_not_of(' ') + 1 - start);
    return trimmed == "preserve" || XMLReferences::HasEntity(value);
}

}  // namespace

std::optional<std::size_t> FindLineStart(std::string_view text, std::size_t offset) noexcept
{
    while (offset > 0 && (text[offset - 1] == ' ' || text[offset - 1] == '\t'))
        --offset;
    const bool isStart = offset == 0 || text[offset - 1] == '\n' || text[offset - 1] == '\r';
    return isStart ? std::optional(offset) : std::nullopt;
}

// Matches the elements of the text with one path.
struct XMLElementFinder::Matcher {
    explicit Matcher(const VString& path) : steps(path)
    {
        for (const VString& segment : steps.Segments())
            names.push_back(segment.toStdString());
        // Nothing below the document matches.
        depthBelow = steps.CanMatch() ? 0 : 1;
    }

    bool StartElement(const XMLToken& token)
    {
        if (depthBelow > 0) {
            depthBelow += token.isEmpty ? 0 : 1;
            return false;
        }
        const bool isMatch = steps.Visit([&](std::size_t segment) { return names[segment] == token.name; });
        if (!token.isEmpty && !steps.Enter())
            depthBelow = 1;
        return isMatch;
    }

    void EndElement()
    {
        if (depthBelow > 0)
            --depthBelow;
        else
            steps.Leave();
    }

    DOMPathSteps steps;
    std::vector<std::string> names;  // the segments in UTF-8
    std::size_t depthBelow = 0;  // open elements, counted from the one below which nothing matches; 0 if there is none
};

struct XMLElementFinder::OpenElement {
    std::size_t number;
    std::size_t start;
    std::size_t found = FoundElement::None;  // its index in the findings
    std::size_t lastLineNode = FoundElement::None;
    bool hasNodes = false;
    bool hasElements = false;
    bool hasText = false;
    bool isPreserved = false;
};

XMLElementFinder::XMLElementFinder(std::string_view text,
    const std::vector<VString>& paths,
    const std::vector<std::pair<std::size_t, std::size_t>>& numbers,
    const std::set<std::u16string>& preserved)
    : m_text(text),
      m_reader(text),
      m_numbers(numbers)
{
    for (const VString& path : paths)
        m_matchers.emplace_back(path);
    for (const std::u16string& name : preserved)
        m_preserved.insert(VString(name.data(), name.size()).toStdString());
    m_findings.matches.resize(paths.size());
}

XMLElementFinder::~XMLElementFinder() = default;

ElementFindings XMLElementFinder::Run(std::size_t expected)
{
    m_findings.elements.reserve(expected);
    XMLToken token;
    while (m_reader.Next(token)) {
        switch (token.kind) {
        case Kind::StartTag: StartElement(token); break;
        case Kind::EndTag: {
            const std::size_t offset = m_reader.OffsetOf(token.text);
            if (!m_open.empty())
                EndElement(offset, offset + token.text.size());
            break;
        }
        case Kind::Text:
            if (!m_open.empty())
                ReadText(token);
            break;
        case Kind::CData:
            if (!m_open.empty())
                m_open.back().hasText = true;
            break;
        case Kind::Comment:
        case Kind::ProcessingInstruction: AddNode(m_reader.OffsetOf(token.text)); break;
        case Kind::DocumentType: m_findings.documentType = token.text; break;
        case Kind::Declaration: m_findings.isVersion11 = FindAttributeValue(token, "version") == "1.1"; break;
        }
    }
    return std::move(m_findings);
}

void XMLElementFinder::AddNode(std::size_t offset)
{
    if (m_open.empty())
        return;
    OpenElement& open = m_open.back();
    open.hasNodes = true;
    if (open.found != FoundElement::None && FindLineStart(m_text, offset))
        open.lastLineNode = offset;
}

void XMLElementFinder::ReadText(const XMLToken& token)
{
    if (XmlUtils::IsBlank(token.text))
        return;
    m_open.back().hasText = true;
    std::string_view rest = token.text;
    for (std::size_t at = XMLReferences::FindEntity(rest); at != std::string_view::npos;
         at = XMLReferences::FindEntity(rest)) {
        rest.remove_prefix(at);
        m_findings.entityReferences.push_back({m_reader.OffsetOf(rest), m_findings.elementCount});
        rest.remove_prefix(1);
    }
}

void XMLElementFinder::StartElement(const XMLToken& token)
{
    const std::size_t start = m_reader.OffsetOf(token.text);
    OpenElement open{m_findings.elementCount++, start};
    m_findings.isInline.push_back(false);
    open.isPreserved = IsPreserved(token);
    if (const std::vector<std::size_t>& changes = Match(token); !changes.empty()) {
        open.found = m_findings.elements.size();
        FoundElement element;
        element.number = open.number;
        element.start = start;
        element.tagEnd = start + token.text.size();
        element.isEmptyTag = token.isEmpty;
        element.changes = IndexOf(changes);
        if (!m_open.empty()) {
            element.parent = m_open.back().number;
            element.parentStart = m_open.back().start;
        }
        m_findings.elements.push_back(element);
    }
    if (!m_open.empty())
        m_open.back().hasElements = true;
    AddNode(start);
    m_open.push_back(open);
    if (token.isEmpty) {
        const std::size_t end = start + token.text.size();
        EndElement(end, end);
    }
}

void XMLElementFinder::EndElement(std::size_t endTag, std::size_t end)
{
    const OpenElement& open = m_open.back();
    m_findings.isInline[open.number] = open.hasText || open.isPreserved;
    if (open.found != FoundElement::None) {
        FoundElement& element = m_findings.elements[open.found];
        element.endTag = endTag;
        element.end = end;
        element.lastLineNode = open.lastLineNode;
        element.hasNodes = open.hasNodes;
        element.hasElements = open.hasElements;
    }
    m_open.pop_back();
    if (endTag != end) {
        for (Matcher& matcher : m_matchers)
            matcher.EndElement();
    }
}

const std::vector<std::size_t>& XMLElementFinder::Match(const XMLToken& token)
{
    m_changes.clear();
    for (std::size_t i = 0; i < m_matchers.size(); ++i) {
        if (m_matchers[i].StartElement(token)) {
            ++m_findings.matches[i];
            m_changes.push_back(i);
        }
    }
    const std::size_t number = m_findings.elementCount - 1;
    for (; m_nextNumber < m_numbers.size() && m_numbers[m_nextNumber].first == number; ++m_nextNumber)
        m_changes.push_back(m_numbers[m_nextNumber].second);
    return m_changes;
}

std::size_t XMLElementFinder::IndexOf(const std::vector<std::size_t>& changes)
{
    const auto [entry, isNew] = m_changeLists.try_emplace(changes, m_findings.changeLists.size());
    if (isNew)
        m_findings.changeLists.push_back(changes);
    return entry->second;
}

bool XMLElementFinder::IsPreserved(const XMLToken& token) const
{
    // Most tags do not contain the name of the attribute.
    if (token.text.find(SpaceAttribute) != std::string_view::npos) {
        const std::string_view value = FindAttributeValue(token, SpaceAttribute);
        if (!value.empty())
            return MayMeanPreserve(value);
    }
    if (!m_preserved.empty() && m_preserved.count(std::string(token.name)) > 0)
        return true;
    return !m_open.empty() && m_open.back().isPreserved;
}
