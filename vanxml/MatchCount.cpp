#include "vanxml/MatchCount.h"

#include <memory>

#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vanxml/ErrorLines.h"

namespace {

class EventCounter : public SAXInterface {
public:
    EventCounter(const QueryPath& path, const VString& attribute) : m_matcher(path), m_attribute(attribute) {}

    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        const bool isMatch = m_matcher.Enter(name, attributes);
        if (isMatch && (m_attribute.IsEmpty() || attributes.contains(m_attribute)))
            ++count;
    }
    void EndElement() override { m_matcher.Leave(); }
    void Characters(const VString&) override {}

    std::size_t count = 0;

private:
    QueryMatcher m_matcher;
    const VString& m_attribute;
};

}  // namespace

std::optional<std::size_t> CountMatches(SourceDocument& source, const QueryPath& path, const VString& attribute)
{
    const auto counter = std::make_shared<EventCounter>(path, attribute);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source.Source(), counter);
    parser->Parse();
    ThrowIfOutOfMemory(parser->GetDiagnostics());
    if (parser->HasErrors())
        return std::nullopt;
    return counter->count;
}
