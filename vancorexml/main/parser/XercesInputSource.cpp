#include "vancorexml/main/parser/XercesInputSource.h"

#include <utility>
#include <vector>

#include <xercesc/framework/XMLRecognizer.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vancoreplatform/FileEncoding.h"
#include "vancorexml/main/parser/ColonRewriting.h"
#include "vancorexml/main/parser/SourceMap.h"
#include "vancorexml/main/parser/XercesBuffer.h"
#include "vancorexml/main/parser/XercesPlatform.h"

static_assert(sizeof(XMLCh) == sizeof(char16_t));

namespace {

// Returns the name of UTF-16 for bytes without a byte order mark and without an XML declaration. Xerces detects UTF-16
// only with one of them.
const XMLCh* FindUndetectedUtf16(std::string_view bytes)
{
    const char* const name = FindUnmarkedUtf16(bytes);
    const auto* const start = reinterpret_cast<const XMLByte*>(bytes.data());
    if (!name || xercesc::XMLRecognizer::basicEncodingProbe(start, bytes.size()) != xercesc::XMLRecognizer::UTF_8)
        return nullptr;
    return name == std::string_view("UTF-16LE") ? xercesc::XMLUni::fgUTF16LEncodingString
                                                : xercesc::XMLUni::fgUTF16BEncodingString;
}

}  // namespace

XercesInputSource::XercesInputSource(std::shared_ptr<std::string> bytes,
    std::size_t startOffset,
    const VString& id,
    ColonProcessingMode mode,
    TextEncoding encoding)
    : m_bytes(std::move(bytes)),
      m_startOffset(startOffset)
{
    const XercesInitializer xerces;
    std::vector<SourceMap::Insertion> insertions;
    if (mode == ColonProcessingSanitize) {
        ColonRewriting::Rewritten rewritten = ColonRewriting::Rewrite(m_bytes);
        m_given = std::exchange(m_bytes, std::move(rewritten.text));
        insertions = std::move(rewritten.insertions);
    }
    m_isRewritten = m_given && m_given != m_bytes;
    if (startOffset != 0 || m_isRewritten)
        m_map = std::make_shared<SourceMap>(m_bytes, startOffset, std::move(insertions));
    // Keep the original bytes only if another object owns them anyway. Otherwise a rewritten file would be in
    // memory twice.
    if (!m_isRewritten || m_given.use_count() == 1)
        m_given.reset();
    const auto* start = reinterpret_cast<const XMLByte*>(m_bytes->data()) + startOffset;
    m_source = std::make_unique<Buffer>(
        start, m_bytes->size() - startOffset, id.utf16(), false, xercesc::XMLPlatformUtils::fgMemoryManager);
    // The bytes outlive the parse, so the stream need not copy them.
    m_source->setCopyBufToStream(false);
    if (encoding == TextEncoding::Utf8)
        m_source->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    else if (const XMLCh* name = FindUndetectedUtf16(View()))
        m_source->setEncoding(name);
}

XercesInputSource::XercesInputSource(XercesInputSource&& other) noexcept = default;

XercesInputSource& XercesInputSource::operator=(XercesInputSource&& other) noexcept = default;

XercesInputSource::~XercesInputSource() = default;
