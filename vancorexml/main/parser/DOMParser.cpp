#include "vancorexml/main/parser/DOMParser.h"

#include <utility>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"
#include "vancoredata/VResource.h"
#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOMBuilder.h"
#include "vancorexml/main/parser/InputSourceUtils.h"
#include "vancorexml/main/parser/StatisticsHandler.h"
#include "vancorexml/main/parser/TreeBuilder.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesTreeParser.h"
#include "vansys/LogicException.h"
#include "vansys/MemoryScope.h"

namespace {

namespace Assertions {

// Unreachable: a Parser records each message together with its ErrorInfo.
constexpr AssertionSite ErrorWithoutInfo{
    "vancorexml\\main\\parser\\DOMParser", 97, "errors.size() == errorInfos.size()", 0x46AC9E8D};

}  // namespace Assertions

// The number of leading bytes of a document that are recorded with its metrics.
constexpr unsigned int MetricsTextLength = 128;

void RecordSource(Metrics::Scope& metrics, InputSource& source)
{
    metrics.Record("'xmls'", source.Size());
    if (!metrics.IsOpen())
        return;
    std::string text;
    source.GetBytes(text, MetricsTextLength);
    metrics.Record("'xmlt'", VString::fromStdString(text));
    source.ResetToStart();
}

void CopyErrors(const Parser& parser, DOMElement& root)
{
    if (!parser.HasErrors())
        return;
    const std::vector<VString>& errors = parser.GetErrors();
    const std::vector<VError::ErrorInfo> errorInfos = parser.GetMetadataForErrors();
    if (errors.size() != errorInfos.size())
        ThrowLogicException(Assertions::ErrorWithoutInfo);
    for (std::size_t i = 0; i < errors.size(); ++i)
        root.Error(errors[i], errorInfos[i], false, false);
}

}  // namespace

struct DOMParser::Impl {
    // Releases the kept driver to a parse, or makes a new one. The parse owns its driver alone: a callback
    // that starts another parse gets another driver, and a parse that throws destroys its driver. A driver
    // cannot drop schemas, so one that has, or is about to get, schemas is never reused.
    std::shared_ptr<XercesTreeParser> ReleaseDriver(InputSource& source, const std::shared_ptr<TreeBuilder>& builder);
    // Keeps the driver for the next parse unless it has schemas. Makes it forget the source and the builder.
    void AdoptDriver(std::shared_ptr<XercesTreeParser> used);

    // An empty source, to which the kept driver refers between two parses.
    StringInputSource nothing{VString(), VString(), false};
    // Null before the first parse and while a parse uses the driver.
    std::shared_ptr<XercesTreeParser> driver;
    std::vector<std::unique_ptr<InputSource>> xsdSources;
    bool enableLineNumbers = false;
    bool restrictExternalPaths = false;
    StatisticsHandler statisticsHandler;
    std::vector<ParseDiagnostic> diagnostics;
};

std::shared_ptr<XercesTreeParser> DOMParser::Impl::ReleaseDriver(
    InputSource& source, const std::shared_ptr<TreeBuilder>& builder)
{
    std::shared_ptr<XercesTreeParser> kept = std::exchange(driver, nullptr);
    if (!kept || !xsdSources.empty())
        return XercesTreeParser::Create(source, builder);
    kept->Reload(source, builder);
    return kept;
}

void DOMParser::Impl::AdoptDriver(std::shared_ptr<XercesTreeParser> used)
{
    if (!used->GetLoadedXSDs().empty())
        return;
    used->Reload(nothing, std::shared_ptr<TreeBuilder>());
    used->ClearErrorsAndWarnings();
    driver = std::move(used);
}

DOMParser::DOMParser() : m_impl(std::make_unique<Impl>()) {}

DOMParser::~DOMParser() = default;

void DOMParser::SetEnableLineNumbersOnElements(bool enable)
{
    m_impl->enableLineNumbers = enable;
}

bool DOMParser::GetEnableLineNumbersOnElements() const
{
    return m_impl->enableLineNumbers;
}

void DOMParser::SetRestrictExternalPaths(bool restrict)
{
    m_impl->restrictExternalPaths = restrict;
}

bool DOMParser::GetRestrictExternalPaths() const
{
    return m_impl->restrictExternalPaths;
}

void DOMParser::SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler)
{
    m_impl->statisticsHandler.Set(std::move(handler));
}

void DOMParser::AddXSDInputSource(std::unique_ptr<InputSource> source)
{
    m_impl->xsdSources.push_back(std::move(source));
}

void DOMParser::AddXSDResourceId(QtVanResourceId id)
{
    const VString name = LookupResource(id);
    AddXSDInputSource(std::make_unique<StringInputSource>(UTF8StringVResource(name).GetString(), name, false));
}

const std::vector<ParseDiagnostic>& DOMParser::GetDiagnostics() const noexcept
{
    return m_impl->diagnostics;
}

std::unique_ptr<DOM> DOMParser::ParseXmlBytes(const std::vector<unsigned char>& bytes)
{
    const Metrics::Scope metrics("DOMParser_ParseXmlBytes");
    BinaryInputSource source(bytes, VString(), false);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlBytes(std::vector<unsigned char>&& bytes)
{
    const Metrics::Scope metrics("DOMParser_ParseXmlBytes");
    BinaryInputSource source(bytes, VString(), false);
    std::vector<unsigned char>().swap(bytes);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(const std::string& text, const VString& id)
{
    Metrics::Scope metrics("DOMParser_ParseXmlString");
    metrics.Record("'xmls'", text.size());
    BorrowedInputSource source(text, id, true);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(std::string&& text, const VString& id)
{
    Metrics::Scope metrics("DOMParser_ParseXmlString");
    metrics.Record("'xmls'", text.size());
    Utf8InputSource source(std::exchange(text, std::string()), id, true);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(const VString& text, const VString& id)
{
    Metrics::Scope metrics("DOMParser_ParseXmlString");
    metrics.Record("'xmls'", static_cast<std::uint64_t>(text.length()));
    StringInputSource source(text, id, true);
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(VString&& text, const VString& id)
{
    Metrics::Scope metrics("DOMParser_ParseXmlString");
    metrics.Record("'xmls'", static_cast<std::uint64_t>(text.length()));
    StringInputSource source(text, id, true);
    text = VString();
    return ParseXmlInputSource(source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlString(const char* text, const VString& id)
{
    return ParseXmlString(std::string(text ? text : ""), id);
}

std::unique_ptr<DOM> DOMParser::ParseXmlFile(const VString& fileName)
{
    art::Activity activity("dom-parser.parse-xml-file");
    activity.Tag("filename", fileName);
    const std::unique_ptr<InputSource> source = InputSourceUtils::InputSourceFromFileName(fileName, true);
    activity.Tag("source-size", source->Size());
    return ParseXmlInputSource(*source, false);
}

std::unique_ptr<DOM> DOMParser::ParseXmlInputSource(InputSource& source, bool keepBlankText)
{
    MemoryScope memory("DOMParser");
    Metrics::Scope metrics(
        m_impl->xsdSources.empty() ? "DOMParser_ParseXmlInputSource" : "DOMParser_ParseXmlInputSource_withXSD");
    RecordSource(metrics, source);

    auto document = std::make_unique<DOM>(m_impl->restrictExternalPaths);
    const auto builder = std::make_shared<DOMBuilder>(*document, keepBlankText);
    const std::shared_ptr<XercesTreeParser> driver = m_impl->ReleaseDriver(source, builder);
    if (m_impl->enableLineNumbers)
        builder->SetLocationProvider(*driver);
    driver->LoadSchemas(m_impl->xsdSources);
    CopyErrors(*driver, document->GetRoot());
    std::vector<ParseDiagnostic> diagnostics = driver->GetDiagnostics();
    driver->Parse();
    CopyErrors(*driver, document->GetRoot());
    diagnostics.insert(diagnostics.end(), driver->GetDiagnostics().begin(), driver->GetDiagnostics().end());
    if (!diagnostics.empty())
        document->SetParseDiagnostics(diagnostics);
    m_impl->diagnostics = std::move(diagnostics);
    m_impl->AdoptDriver(driver);
    m_impl->statisticsHandler.Call(source);
    memory.Close();
    return document;
}
