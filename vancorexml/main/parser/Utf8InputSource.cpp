#include "vancorexml/main/parser/Utf8InputSource.h"

#include <algorithm>
#include <utility>

#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VCType.h"
#include "vancorexml/main/parser/XercesInputSource.h"

namespace {

// A byte from 0x80 up is negative, so no part of a multi-byte character counts as white space.
std::size_t CountLeadingWhitespace(const std::string& bytes)
{
    const auto first = std::find_if(
        bytes.begin(), bytes.end(), [](char byte) { return !VCType::isSpace(static_cast<signed char>(byte)); });
    return static_cast<std::size_t>(first - bytes.begin());
}

}  // namespace

Utf8InputSource::Utf8InputSource(std::string&& bytes, const VString& id, bool skipLeadingWhitespace)
    : Utf8InputSource(std::make_shared<std::string>(std::move(bytes)), id, skipLeadingWhitespace, false)
{}

Utf8InputSource::Utf8InputSource(const std::string& bytes, const VString& id, bool skipLeadingWhitespace)
    : Utf8InputSource(std::string(bytes), id, skipLeadingWhitespace)
{}

Utf8InputSource::Utf8InputSource(
    std::shared_ptr<std::string> bytes, const VString& id, bool skipLeadingWhitespace, bool isDecoded)
    : InputSource(id),
      m_bytes(std::move(bytes)),
      m_isDecoded(isDecoded)
{
    if (skipLeadingWhitespace && (isDecoded || !FindUnmarkedUtf16(*m_bytes)))
        m_start = m_position = CountLeadingWhitespace(*m_bytes);
}

Utf8InputSource::~Utf8InputSource() = default;

bool Utf8InputSource::GetNextLine(std::string& line)
{
    if (m_position >= m_bytes->size())
        return false;
    const std::size_t lineFeed = m_bytes->find('\n', m_position);
    const std::size_t end = lineFeed == std::string::npos ? m_bytes->size() : lineFeed + 1;
    line.assign(*m_bytes, m_position, end - m_position);
    m_position = end;
    return true;
}

bool Utf8InputSource::GetBytes(std::string& bytes, unsigned int count)
{
    if (m_position >= m_bytes->size())
        return false;
    bytes.assign(*m_bytes, m_position, count);
    m_position += bytes.size();
    return true;
}

void Utf8InputSource::ResetToStart()
{
    m_position = m_start;
}

unsigned long long Utf8InputSource::Size() const
{
    return m_bytes->size();
}

XercesInputSource Utf8InputSource::GetXercesInputSource(ColonProcessingMode mode)
{
    return XercesInputSource(m_bytes, m_start, Id(), mode, m_isDecoded ? TextEncoding::Utf8 : TextEncoding::Detected);
}

StringInputSource::StringInputSource(const VString& text, const VString& id, bool skipLeadingWhitespace)
    : StringInputSource(std::make_shared<std::string>(text.toStdString()), id, skipLeadingWhitespace)
{}

StringInputSource::StringInputSource(std::shared_ptr<std::string> utf8, const VString& id, bool skipLeadingWhitespace)
    : Utf8InputSource(std::move(utf8), id, skipLeadingWhitespace, true)
{}

std::unique_ptr<StringInputSource> StringInputSource::FromUtf8(
    std::string&& utf8, const VString& id, bool skipLeadingWhitespace)
{
    return std::unique_ptr<StringInputSource>(
        new StringInputSource(std::make_shared<std::string>(std::move(utf8)), id, skipLeadingWhitespace));
}

StringInputSource::~StringInputSource() = default;

BinaryInputSource::BinaryInputSource(
    const std::vector<unsigned char>& bytes, const VString& id, bool skipLeadingWhitespace)
    : Utf8InputSource(std::string(bytes.begin(), bytes.end()), id, skipLeadingWhitespace)
{}

BinaryInputSource::~BinaryInputSource() = default;
