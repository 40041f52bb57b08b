#include "vanxml/SourceDocument.h"

#include <utility>

#include "vancoreplatform/VCType.h"
#include "vancoreplatform/VFile.h"
#include "vancorexml/main/parser/InputSourceUtils.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"
#include "vansys/LogicException.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/StandardStreams.h"

namespace {

// Files from this size on are left to the library, which reads them in chunks.
constexpr unsigned long long streamedSize = 0x40000000;

std::string LeadingWhitespace(const VString& text)
{
    int length = 0;
    while (length < text.length() && VCType::isSpace(text[length]))
        ++length;
    return text.left(length).toStdString();
}

// From where the source begins to its end.
std::shared_ptr<std::string> ReadAll(InputSource& source)
{
    auto bytes = std::make_shared<std::string>();
    std::string chunk;
    source.ResetToStart();
    while (source.GetBytes(chunk, 1u << 20) && !chunk.empty())
        *bytes += chunk;
    source.ResetToStart();
    return bytes;
}

SourcePositions FindPositions(std::string_view skipped, const std::shared_ptr<std::string>& given)
{
    try {
        return SourcePositions(skipped, *given, *XercesColonSanitizer::Sanitize(given));
    } catch (const LogicException&) {
        // A text without an element: it cannot be rewritten, nor parsed.
        return SourcePositions(skipped, *given, *given);
    }
}

}  // namespace

SourceDocument::SourceDocument(std::unique_ptr<InputSource> source, std::string skipped)
    : m_source(std::move(source)),
      m_skipped(std::move(skipped))
{}

SourceDocument SourceDocument::Read(const VString& name)
{
    VString text;
    if (name == "-") {
        const std::string bytes = StandardStreams::ReadInput();
        text = VFile::DecodeText(bytes.data(), bytes.size(), name, true);
    } else if (GetFileSize(VPath(name)) >= streamedSize) {
        return SourceDocument(InputSourceUtils::InputSourceFromFileName(name, true), std::string());
    } else {
        text = VFile::LoadTextFile(name, true);
    }
    return SourceDocument(std::make_unique<StringInputSource>(text, name, true), LeadingWhitespace(text));
}

const SourcePositions& SourceDocument::Positions()
{
    if (!m_positions)
        m_positions = FindPositions(m_skipped, ReadAll(*m_source));
    return *m_positions;
}

std::string SourceDocument::ErrorLine(const VString& message)
{
    return FormatErrorLine(Name(), Positions().MapMessage(message, Name()));
}
