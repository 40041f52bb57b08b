#include "vanxml/InputPieces.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VIOException.h"
#include "vanxml/StandardStreams.h"

namespace {

constexpr std::size_t firstPiece = 0x10000;

bool IsAscii(std::string_view bytes)
{
    return std::none_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0x80) != 0; });
}

}  // namespace

InputPieces::InputPieces(const VString& name) : m_name(name)
{
    if (name == "-")
        return;
    m_file = std::make_unique<VFile>(VPath(name));
    m_file->OpenForReading();
}

InputPieces::~InputPieces() = default;

// The size of a pipe is 0.
bool InputPieces::ReadMore()
{
    if (m_isComplete)
        return false;
    const std::size_t size = m_bytes.size();
    const std::size_t count = size == 0 ? firstPiece : 3 * size;
    const unsigned long long fileSize = m_file ? m_file->Size() : 0;
    m_isReadAtOnce = fileSize > 0 && size + count > fileSize / 8;
    if (m_isReadAtOnce) {
        m_bytes = std::string();
        m_isComplete = true;
        return true;
    }
    if (m_file) {
        m_bytes.resize(size + count);
        m_bytes.resize(size + m_file->Read(m_bytes.data() + size, count));
    } else {
        StandardStreams::ReadInput(m_bytes, count);
    }
    m_isComplete = m_bytes.size() < size + count;
    return true;
}

std::optional<SourceDocument> InputPieces::GetDocument() const
{
    if (m_isReadAtOnce)
        return SourceDocument::Read(m_name);
    if (m_isComplete)
        return SourceDocument::Decode(m_bytes.data(), m_bytes.size(), m_name);
    if (!IsEncodingKnown())
        return std::nullopt;
    // The bytes may end inside a character, which has at most four bytes.
    for (std::size_t cut = 0; cut < 4; ++cut) {
        try {
            return SourceDocument::Decode(m_bytes.data(), m_bytes.size() - cut, m_name);
        } catch (const VIO::Exception&) {
            // Try it with fewer bytes.
        }
    }
    return std::nullopt;
}

// Bytes that are valid UTF-8 so far may be in the encoding that the XML declaration names.
bool InputPieces::IsEncodingKnown() const
{
    const std::optional<std::string_view> declared = FindDeclaredEncoding(m_bytes);
    const bool isOther =
        declared && VString(VString::fromStdString(std::string(*declared)).ToQString().toUpper()) != "UTF-8";
    return !isOther || IsAscii(m_bytes);
}
