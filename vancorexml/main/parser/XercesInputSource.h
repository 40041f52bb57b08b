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

// How the parser determines the encoding of a text.
enum class TextEncoding {
    Detected,  // from the byte order mark, the XML declaration, or the first characters (see FindUnmarkedUtf16)
    Utf8,      // always UTF-8; the encoding in the XML declaration is ignored
};

// A memory buffer that Xerces reads. Movable, not copyable.
//
// Ownership: shares the bytes, so they live at least as long as this object.
//
// Threads: one at a time.
class VANCOREXML_API XercesInputSource {
public:
    // A xercesc::InputSource. Only the parser uses it, so callers need no header of Xerces.
    class Buffer;

    // Makes a view of `bytes` that begins at `startOffset`, which must not exceed their size. `id` becomes
    // the system id. With ColonProcessingSanitize, the view shows a rewritten copy if there is a name to
    // rewrite. Never changes `bytes`.
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

    // The buffer dies with this object. A move hands the buffer over, so the reference then stays valid
    // while the new object lives.
    const Buffer& Get() const noexcept { return *m_source; }
    // The bytes that the view points into.
    const std::shared_ptr<std::string>& Bytes() const noexcept { return m_bytes; }
    // True if the bytes are a rewritten copy.
    bool IsRewritten() const noexcept { return m_isRewritten; }
    // The bytes before the rewriting. Null if nothing was rewritten. Also null if this object was the only owner of
    // these bytes: it frees them, so that the document is not in memory twice.
    const std::shared_ptr<std::string>& Given() const noexcept { return m_given; }
    // The part of the bytes that the view shows.
    std::string_view View() const noexcept { return std::string_view(*m_bytes).substr(m_startOffset); }
    // Maps positions in the view to positions in the bytes that were given. Null if these are the same, because
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
