#include "vanxml/SourceDocument.h"

#include <utility>

#include "vancoreplatform/VFile.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vanxml/StandardStreams.h"

namespace {

// Files of at least this many bytes are read in chunks.
constexpr unsigned long long streamedSize = 0x40000000;

// A source that keeps the map of the last XercesInputSource that it made for a parser.
template <typename Source>
class MappedSource final : public Source {
public:
    using Source::Source;

    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        XercesInputSource view = Source::GetXercesInputSource(mode);
        m_map = view.GetSourceMap();
        return view;
    }

    const std::shared_ptr<SourceMap>& Map() const noexcept { return m_map; }

private:
    std::shared_ptr<SourceMap> m_map;
};

}  // namespace

SourceDocument::SourceDocument(std::unique_ptr<InputSource> source, const std::shared_ptr<SourceMap>& map)
    : m_source(std::move(source)),
      m_map(&map)
{}

SourceDocument SourceDocument::Read(const VString& name)
{
    VString text;
    if (name == "-") {
        const std::string bytes = StandardStreams::ReadInput();
        text = VFile::DecodeText(bytes.data(), bytes.size(), name, true);
    } else if (GetFileSize(VPath(name)) >= streamedSize) {
        auto source = std::make_unique<MappedSource<FileInputSource>>(name);
        const std::shared_ptr<SourceMap>& map = source->Map();
        return SourceDocument(std::move(source), map);
    } else {
        text = VFile::LoadTextFile(name, true);
    }
    auto source = std::make_unique<MappedSource<StringInputSource>>(text, name, true);
    const std::shared_ptr<SourceMap>& map = source->Map();
    return SourceDocument(std::move(source), map);
}

SourceMap::Position SourceDocument::MapPosition(SourceMap::Position scanned)
{
    return *m_map ? (*m_map)->Map(scanned) : scanned;
}
