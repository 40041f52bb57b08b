// A view of bytes in memory for the parser.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

class SourceMap;

// How the parser finds out the encoding of a text.
enum class TextEncoding {
    Detected,  // by its byte order mark and its XML declaration
    Utf8,      // it is UTF-8 whatever its XML declaration says
};

// The memory buffer that Xerces reads, together with a share of the bytes it points into:
// the bytes live as long as this object. Movable, not copyable.
//
// Threads: one at a time.
class VANCOREXML_API XercesInputSource {
public:
    // A xercesc::InputSource, which only the parser uses: callers need no header of Xerces.
    class Buffer;

    // A view of `bytes` from `startOffset` (bytes, at most their number) to the end, with `id`
    // as its system id. With ColonProcessingSanitize the view shows a rewritten copy if there is
    // something to rewrite; `bytes` themselves never change.
    XercesInputSource(std::shared_ptr<std::string> bytes,
        std::size_t startOffset,
        const VString& id,
        ColonProcessingMode mode,
        TextEncoding encoding);
    XercesInputSource(XercesInputSource&& other) noexcept;
    XercesInputSource& operator=(XercesInputSource&& other) noexcept;
    ~XercesInputSource();
    XercesInputSource(const XercesInputSource&) = delete;
    XercesInputSource& operator=(const XercesInputSource&) = delete;

    // Valid while this object lives, also when it is moved.
    const Buffer& Get() const noexcept { return *m_source; }
    // The bytes that the view points into.
    const std::shared_ptr<std::string>& Bytes() const noexcept { return m_bytes; }
    // Whether the bytes are a rewritten copy.
    bool IsRewritten() const noexcept { return m_isRewritten; }
    // The bytes before the rewriting. Null when they were not rewritten, and when this object was their only owner.
    const std::shared_ptr<std::string>& Given() const noexcept { return m_given; }
    // The part of the bytes that the view shows.
    std::string_view View() const noexcept { return std::string_view(*m_bytes).substr(m_startOffset); }
    // Maps positions in the view to positions in the bytes as they were given. Null when these are the same:
    // the view starts at offset 0 and nothing was rewritten.
    const std::shared_ptr<SourceMap>& GetSourceMap() const noexcept { return m_map; }

private:
    std::unique_ptr<Buffer> m_source;
    std::shared_ptr<std::string> m_bytes;
    std::shared_ptr<std::string> m_given;
    bool m_isRewritten = false;
    std::size_t m_startOffset;
    std::shared_ptr<SourceMap> m_map;
};
