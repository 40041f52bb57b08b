#include "vancorexml/main/parser/StandaloneDOMParser.h"

#include <string>
#include <utility>
#include <vector>

#include "metrics2/Metrics.h"
#include "vancoredata/VResource.h"
#include "vancoreplatform/Encoding.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/ElementPages.h"
#include "vancorexml/main/parser/InputSourceUtils.h"
#include "vancorexml/main/parser/PositionCounter.h"
#include "vancorexml/main/parser/StatisticsHandler.h"
#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesTreeParser.h"

// Builds the tree from the events of a parse. Not in the unnamed namespace, because StandaloneDOMElement declares it a
// friend.
class StandaloneDOMBuilder final : public TreeBuilder {
public:
    explicit StandaloneDOMBuilder(bool keepWhitespaceText)
        : TreeBuilder(keepWhitespaceText),
          m_root(std::make_unique<StandaloneDOMElement>("Document")),
          m_open{m_root.get()}
    {}

    void StartElement(const VString& name, const TagAttributes& attributes) override
    {
        std::unique_ptr<StandaloneDOMElement> element(new (m_pages) StandaloneDOMElement(name));
        m_open.push_back(element.get());
        m_open[m_open.size() - 2]->AppendChild(std::move(element));
        attributes.AddTo(m_open.back()->GetAttributes());
    }

    void EndElement() override
    {
        m_open.pop_back();
        if (m_open.size() == 1)
            m_pages.Release();
    }

    void Characters(VString&& text) override { m_open.back()->AppendText(std::move(text)); }

    std::unique_ptr<StandaloneDOMElement> ReleaseRoot() { return std::move(m_root); }

private:
    std::unique_ptr<StandaloneDOMElement> m_root;
    std::vector<StandaloneDOMElement*> m_open;  // the root and the open elements, the innermost last
    ElementPages m_pages{sizeof(StandaloneDOMElement)};
};

namespace {

// Corrects the positions of a document that was parsed without the text `skipped` in front of it.
void CountSkipped(std::vector<ParseDiagnostic>& diagnostics, const VString& skipped)
{
    const std::string text = skipped.toStdString();
    const SourcePosition begin = PositionCounter(text).At(text.size());
    const auto correct = [begin](SourcePosition& position) {
        if (position.line == 0)
            return;
        if (position.line == 1)
            position.column += begin.column - 1;
        position.line += begin.line - 1;
    };
    for (ParseDiagnostic& diagnostic : diagnostics) {
        correct(diagnostic.start);
        correct(diagnostic.end);
        if (diagnostic.related)
            correct(diagnostic.related->start);
    }
}

}  // namespace

struct StandaloneDOMParser::Impl {
    // `skipped` is the text in front of the source, for positions.
    Result Parse(InputSource& source, bool keepWhitespaceText, const VString& skipped) const;

    std::vector<std::unique_ptr<InputSource>> xsdSources;
    StatisticsHandler statisticsHandler;
};

StandaloneDOMParser::StandaloneDOMParser() : m_impl(std::make_unique<Impl>()) {}

StandaloneDOMParser::~StandaloneDOMParser() = default;

void StandaloneDOMParser::AddXSDInputSource(std::unique_ptr<InputSource> source)
{
    m_impl->xsdSources.push_back(std::move(source));
}

void StandaloneDOMParser::AddXSDResourceId(QtVanResourceId id)
{
    const VString name = LookupResource(id);
    AddXSDInputSource(std::make_unique<StringInputSource>(UTF8StringVResource(name).GetString(), name, false));
}

void StandaloneDOMParser::SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler)
{
    m_impl->statisticsHandler.Set(std::move(handler));
}

StandaloneDOMParser::Result StandaloneDOMParser::ParseXmlBytes(const std::vector<unsigned char>& bytes) const
{
    const Metrics::Scope metrics("StandaloneDOMParser_ParseXmlBytes");
    BinaryInputSource source(bytes, VString(), false);
    return ParseXmlInputSource(source, false);
}

StandaloneDOMParser::Result StandaloneDOMParser::ParseXmlFile(const VString& fileName) const
{
    const Metrics::Scope metrics("StandaloneDOMParser_ParseXmlFile");
    const std::unique_ptr<InputSource> source = InputSourceUtils::InputSourceFromFileName(fileName, true);
    return ParseXmlInputSource(*source, false);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): part of the public interface.
StandaloneDOMParser::Result StandaloneDOMParser::ParseXmlString(const VString& text, VString id) const
{
    const Metrics::Scope metrics("StandaloneDOMParser_ParseXmlString");
    const VString document = text.trimLeft();
    StringInputSource source(document, id, false);
    return m_impl->Parse(source, false, text.left(text.length() - document.length()));
}

// Valid UTF-8 without white space in front is parsed as it is. Other text is converted, which also repairs it.
// NOLINTNEXTLINE(performance-unnecessary-value-param): part of the public interface.
StandaloneDOMParser::Result StandaloneDOMParser::ParseXmlString(const std::string& utf8, VString id) const
{
    constexpr std::size_t MaxSize = VString::MaxLength;
    if (!utf8.starts_with('<') || utf8.size() > MaxSize || FindInvalidUtf8(utf8.data(), utf8.size()) != utf8.size())
        return ParseXmlString(VString::fromStdString(utf8), std::move(id));
    const Metrics::Scope metrics("StandaloneDOMParser_ParseXmlString");
    BorrowedInputSource source(utf8, id, false, TextEncoding::Utf8);
    return m_impl->Parse(source, false, VString());
}

StandaloneDOMParser::Result StandaloneDOMParser::ParseXmlString(const char* utf8, VString id) const
{
    return ParseXmlString(std::string(utf8 ? utf8 : ""), std::move(id));
}

StandaloneDOMParser::Result StandaloneDOMParser::ParseXmlInputSource(InputSource& source, bool keepWhitespaceText) const
{
    return m_impl->Parse(source, keepWhitespaceText, VString());
}

StandaloneDOMParser::Result StandaloneDOMParser::Impl::Parse(
    InputSource& source, bool keepWhitespaceText, const VString& skipped) const
{
    const Metrics::Scope metrics("StandaloneDOMParser_ParseXmlInputSource");
    const auto builder = std::make_shared<StandaloneDOMBuilder>(keepWhitespaceText);
    const std::unique_ptr<XercesTreeParser> parser = XercesTreeParser::Create(source, builder);
    parser->LoadSchemas(xsdSources);
    const std::vector<ParseDiagnostic> faultsOfSchemas = parser->GetDiagnostics();
    parser->Parse();
    Result result(builder->ReleaseRoot(), parser->GetErrors());
    result.diagnostics = parser->GetDiagnostics();
    CountSkipped(result.diagnostics, skipped);
    result.diagnostics.insert(result.diagnostics.begin(), faultsOfSchemas.begin(), faultsOfSchemas.end());
    statisticsHandler.Call(source);
    return result;
}
