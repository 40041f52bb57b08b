#include "vanxml/SourceDocument.h"

#include <algorithm>
#include <utility>

#include "art-cpp/Activity.h"
#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VFile.h"
#include "vancorexml/main/parser/EncodingFaults.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vanxml/FirstTag.h"
#include "vanxml/StandardStreams.h"

namespace {

// A decoded document in memory. Keeps the map of the last XercesInputSource that it made for a parser.
class DecodedSource final : public Utf8InputSource {
public:
    DecodedSource(std::string&& utf8, const VString& name)
        : Utf8InputSource(std::make_shared<std::string>(std::move(utf8)), name, true, true)
    {}

    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        XercesInputSource view = Utf8InputSource::GetXercesInputSource(mode);
        m_map = view.GetSourceMap();
        return view;
    }

    const std::shared_ptr<SourceMap>& Map() const noexcept { return m_map; }

private:
    std::shared_ptr<SourceMap> m_map;
};

// Returns the position of the first character that is not white space.
SourcePosition FindStart(std::string_view text)
{
    const auto first =
        std::find_if_not(text.begin(), text.end(), [](char byte) { return XmlUtils::IsWhitespace(byte); });
    return FindEnd({1, 1}, text.substr(0, static_cast<std::size_t>(first - text.begin())));
}

}  // namespace

SourceDocument::SourceDocument(
    std::unique_ptr<InputSource> source, const std::shared_ptr<SourceMap>& map, SourcePosition start)
    : m_source(std::move(source)),
      m_map(&map),
      m_start(start)
{}

SourceDocument SourceDocument::Read(const VString& name)
{
    art::Activity activity("vanxml.read");
    activity.Tag("file", name);
    if (name == "-")
        return FromText(DecodeToUtf8(StandardStreams::ReadInput(), name, true), name);
    return FromText(VFile::LoadXmlFile(name), name);
}

SourceDocument SourceDocument::Decode(const char* bytes, std::size_t length, const VString& name)
{
    return FromText(DecodeToUtf8(std::string(bytes, length), name, true), name);
}

SourceDocument SourceDocument::FromText(DecodedText&& decoded, const VString& name)
{
    const SourcePosition start = FindStart(decoded.text);
    std::optional<ParseDiagnostic> fault = EncodingFaults::CheckDeclaration(decoded.text, decoded.encoding);
    auto source = std::make_unique<DecodedSource>(std::move(decoded.text), name);
    const std::shared_ptr<SourceMap>& map = source->Map();
    SourceDocument document(std::move(source), map, start);
    document.m_encodingFault = std::move(fault);
    return document;
}

SourceMap::Position SourceDocument::MapPosition(SourceMap::Position scanned)
{
    return *m_map ? (*m_map)->Map(scanned) : scanned;
}
