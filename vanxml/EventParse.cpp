#include "vanxml/EventParse.h"

#include <algorithm>

#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vanxml/DiagnosticText.h"

std::string ParseEvents(SourceDocument& source,
    const std::shared_ptr<SAXInterface>& handler,
    const std::function<void(SAXFileLocation& location)>& begin)
{
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source.Source(), handler);
    if (begin)
        begin(*parser);
    parser->Parse();
    ThrowIfOutOfMemory(parser->GetDiagnostics());
    return parser->HasErrors() ? FormatDiagnostics(parser->GetDiagnostics(), source) : std::string();
}

bool IsBlankText(const VString& text) noexcept
{
    const std::u16string_view units = text.View();
    return std::all_of(units.begin(), units.end(), [](char16_t unit) { return XmlUtils::IsWhitespace(unit); });
}

std::uint64_t CountUtf8Bytes(const VString& text) noexcept
{
    std::uint64_t bytes = 0;
    for (const char16_t unit : text.View()) {
        const bool isSurrogate = unit >= 0xD800 && unit < 0xE000;  // a pair takes four bytes
        if (unit < 0x80)
            bytes += 1;
        else
            bytes += unit < 0x800 || isSurrogate ? 2 : 3;
    }
    return bytes;
}
