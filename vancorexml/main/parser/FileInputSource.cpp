#include "vancorexml/main/parser/FileInputSource.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"
#include "vancoreplatform/VLog.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vancorexml/van-codegen/gen-strings/vancorexml-strings.h"
#include "vansys/LogicException.h"
#include "vansys/Unicode.h"
#include "vansys/VantoraException.h"

namespace {

namespace Assertions {

constexpr AssertionSite ReadSizeIsZero{
    "vancorexml\\main\\parser\\FileInputSource", 41, "size != 0", 0x2BE7C041};  // own code

}  // namespace Assertions

}  // namespace

FileInputSource::FileInputSource(const VString& fileName) : InputSource(fileName), m_file(VPath(fileName))
{
    try {
        m_file.OpenForReading();
    } catch (const VIO::Exception& exception) {
        LogMessage(VLog::Warn,
            VFormatString("FileInputSource::FileInputSource( \"%1\" ) error: %2")
                .arg(fileName)
                .arg(exception.GetMessage()));
        throw;
    }
}

FileInputSource::~FileInputSource() = default;

void FileInputSource::SetReadSize(unsigned long long size)
{
    if (size == 0)
        ThrowLogicException(Assertions::ReadSizeIsZero);
    m_readSize = size;
}

bool FileInputSource::ReadChunk()
{
    m_position = 0;
    // If the read throws, the chunk must be empty.
    std::vector<char> chunk = std::exchange(m_chunk, {});
    chunk.resize(m_readSize);
    chunk.resize(m_file.Read(chunk.data(), chunk.size()));
    m_chunk = std::move(chunk);
    return !m_chunk.empty();
}

void FileInputSource::RequireUtf8()
{
    if (!m_encodingChecked) {
        m_encodingAcceptable = DetectEncoding(m_chunk.data(), m_chunk.size()) == Encoding::Utf8;
        m_encodingChecked = true;
    }
    if (!m_encodingAcceptable) {
        throw VantoraException(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_INVALID_ENCODING),
            VError::ErrorInfo(VantoraError::MakeError(0xE19C2DF8, "VantoraException_InvalidEncoding_0xE19C2DF8")));
    }
}

bool FileInputSource::GetNextLine(std::string& line)
{
    if (!HasBytes())
        return false;
    RequireUtf8();
    line.clear();
    bool atLineFeed = false;
    while (!atLineFeed && HasBytes()) {
        const auto start = m_chunk.begin() + static_cast<std::ptrdiff_t>(m_position);
        const auto lineFeed = std::find(start, m_chunk.end(), '\n');
        atLineFeed = lineFeed != m_chunk.end();
        const auto end = atLineFeed ? lineFeed + 1 : lineFeed;
        line.append(start, end);
        m_position += static_cast<unsigned long long>(end - start);
    }
    line.resize(Unicode::normalizeLineEndings(line.data(), line.size()));
    return true;
}

bool FileInputSource::GetBytes(std::string& bytes, unsigned int count)
{
    if (!HasBytes())
        return false;
    RequireUtf8();
    bytes.clear();
    while (bytes.size() < count && HasBytes()) {
        const std::size_t run = std::min<std::size_t>(count - bytes.size(), m_chunk.size() - m_position);
        bytes.append(m_chunk.data() + m_position, run);
        m_position += run;
    }
    return true;
}

void FileInputSource::ResetToStart()
{
    m_chunk.clear();
    m_position = 0;
    m_file.Seek(0);
}

unsigned long long FileInputSource::Size() const
{
    return m_file.Size();
}

XercesInputSource FileInputSource::GetXercesInputSource(ColonProcessingMode mode)
{
    constexpr unsigned int RunSize = 0x100000;
    auto bytes = std::make_shared<std::string>();
    bytes->reserve(RunSize);
    std::string run;
    while (GetBytes(run, RunSize) && !run.empty())
        bytes->append(run);
    return XercesInputSource(std::move(bytes), 0, Id(), mode, TextEncoding::Utf8);
}
