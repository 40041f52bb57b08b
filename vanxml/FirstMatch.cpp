#include "vanxml/FirstMatch.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

#include "vancoreplatform/VScanString.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vanxml/DiagnosticText.h"
#include "vanxml/InputPieces.h"
#include "vanxml/SourceDocument.h"

namespace {

// Ends the parse when the first match is complete.
class FirstMatchHandler : public SAXInterface {
public:
    explicit FirstMatchHandler(const FirstMatchQuery& query) : m_query(query), m_matcher(query.path) {}

    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        if (m_match) {
            Open(name, attributes);
            return;
        }
        if (m_depth == m_levels.size())
            m_levels.emplace_back();
        Level& level = m_levels[m_depth++];
        level.name = name;
        level.position = ++level.counts[name];
        const bool isMatch = m_matcher.Enter(name, attributes) && HasAttribute(attributes);
        if (!isMatch)
            return;
        m_match.emplace();
        m_match->tree = std::make_unique<DOM>();
        m_match->path = PathOfMatch();
        int line = 0;
        int column = 0;
        parser->GetCurrentLocation(line, column);
        m_match->place = {static_cast<std::uint64_t>(line), static_cast<std::uint64_t>(column)};
        m_open.push_back(&m_match->tree->GetRoot());
        Open(name, attributes);
        m_isDone = !m_query.needsContent;
    }

    void EndElement() override
    {
        if (m_match) {
            m_open.pop_back();
            m_isDone |= m_open.size() == 1;
            return;
        }
        m_matcher.Leave();
        // The element may have had children.
        if (m_depth < m_levels.size())
            m_levels[m_depth].counts.clear();
        --m_depth;
    }

    // Drops white space between elements, as the parser of documents does.
    void Characters(const VString& text) override
    {
        if (!m_match)
            return;
        VScanString scan(text.View());
        scan.skipWhitespace();
        if (!scan.IsAtEnd())
            m_open.back()->AppendText(text);
    }

    bool IsDone() override { return m_isDone; }

    // Returns the match if it is complete.
    std::optional<FirstMatch> Release()
    {
        if (!m_isDone)
            return std::nullopt;
        return std::move(m_match);
    }

    SAXFileLocation* parser = nullptr;

private:
    // The elements with one parent that were entered so far.
    struct Level {
        VString name;  // of the open element
        std::size_t position = 0;
        std::map<VString, std::size_t> counts;
    };

    bool HasAttribute(const AttributeMap& attributes) const
    {
        return m_query.attribute.IsEmpty() || attributes.find(m_query.attribute) != attributes.end();
    }

    void Open(const VString& name, const AttributeMap& attributes)
    {
        DOMElement& element = m_open.back()->AddNewChild(name, nullptr);
        element.GetAttributes() = attributes;
        m_open.push_back(&element);
    }

    std::string PathOfMatch() const
    {
        std::string path;
        for (std::size_t i = 0; i < m_depth; ++i) {
            path += "/" + m_levels[i].name.toStdString();
            if (i > 0)
                path += "[" + std::to_string(m_levels[i].position) + "]";
        }
        return path;
    }

    const FirstMatchQuery& m_query;
    QueryMatcher m_matcher;
    std::vector<Level> m_levels;
    std::size_t m_depth = 0;
    std::optional<FirstMatch> m_match;
    std::vector<DOMElement*> m_open;  // the elements of the match that are open, below their parent
    bool m_isDone = false;
};

// Returns the match, or nothing if there is none. Sets `errors` if the document is complete and has errors instead.
std::optional<FirstMatch> Search(
    SourceDocument& source, bool isComplete, const FirstMatchQuery& query, std::string& errors)
{
    const auto handler = std::make_shared<FirstMatchHandler>(query);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source.Source(), handler);
    handler->parser = parser.get();
    parser->Parse();
    ThrowIfOutOfMemory(parser->GetDiagnostics());
    std::optional<FirstMatch> match = handler->Release();
    if (match)
        match->place = source.MapPosition(match->place);
    else if (isComplete && parser->HasErrors())
        errors = FormatDiagnostics(parser->GetDiagnostics(), source);
    return match;
}

}  // namespace

std::optional<FirstMatch> FindFirstMatch(const VString& name, const FirstMatchQuery& query, std::string& errors)
{
    InputPieces pieces(name);
    std::optional<FirstMatch> match;
    // Each piece but the last one ends with an error, because the document is cut off.
    while (!match && pieces.ReadMore()) {
        if (std::optional<SourceDocument> source = pieces.GetDocument())
            match = Search(*source, pieces.IsComplete(), query, errors);
    }
    return match;
}
