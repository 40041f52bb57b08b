#include "vancorexml/main/parser/VersionSniffer.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "vancorexml/main/parser/InputSourceResetter.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace {

constexpr unsigned int RunSize = 512;

// Finds the root element's start tag in a text that arrives in runs, as
// XmlUtils::FindFirstElementTag does in a whole one. What was looked at is not looked at again:
// it remembers the construct it is in, and within a tag the quote.
class RootTagFinder {
public:
    // The start tag once it is complete. `text` only ever grows at its end.
    std::optional<XmlUtils::TagRange> Find(const std::string& text)
    {
        for (;;) {
            if (m_start == XmlUtils::npos && !BeginConstruct(text))
                return std::nullopt;
            const std::size_t end = m_terminator.empty() ? FindTagEnd(text) : FindTerminator(text);
            if (end == XmlUtils::npos)
                return std::nullopt;
            const XmlUtils::TagRange range{m_start, end - m_start + 1};
            const char kind = text[m_start + 1];
            m_start = XmlUtils::npos;
            m_position = end + 1;
            if (kind != '?' && kind != '!')
                return range;
        }
    }

private:
    // At the next "<" of which enough has arrived to know what it begins.
    bool BeginConstruct(const std::string& text)
    {
        m_position = std::min(text.find('<', m_position), text.size());
        const std::string_view rest = std::string_view(text).substr(m_position);
        if (rest.size() <= 2 || rest == "<!-")
            return false;
        m_start = m_position;
        ++m_position;
        m_quote = 0;
        m_terminator = rest[1] == '?' ? "?>" : rest.starts_with("<!--") ? "-->" : rest.starts_with("<![") ? "]]>" : "";
        return true;
    }

    std::size_t FindTerminator(const std::string& text)
    {
        const std::size_t found = text.find(m_terminator, m_position);
        if (found != XmlUtils::npos)
            return found + m_terminator.size() - 1;
        // The terminator may lie across the end of what has arrived.
        m_position = std::max(m_position, text.size() - (m_terminator.size() - 1));
        return XmlUtils::npos;
    }

    std::size_t FindTagEnd(const std::string& text)
    {
        for (; m_position < text.size(); ++m_position) {
            const char byte = text[m_position];
            if (m_quote == 0 && byte == '>')
                return m_position;
            if (byte != '\'' && byte != '"')
                continue;
            if (m_quote == 0)
                m_quote = byte;
            else if (m_quote == byte)
                m_quote = 0;
        }
        return XmlUtils::npos;
    }

    std::size_t m_start = XmlUtils::npos;  // of the construct, npos between constructs
    std::size_t m_position = 0;            // everything before is looked at
    std::string_view m_terminator;         // of the construct; empty for what ends at a ">"
    char m_quote = 0;
};

}  // namespace

Nullable<VersionNumber> VersionSniffer(InputSource& source, const VString& attributeName)
{
    const InputSourceResetter resetter(source);
    const std::string name = attributeName.IsEmpty() ? "version" : attributeName.toStdString();
    std::string text;
    std::string run;
    RootTagFinder finder;
    while (source.GetBytes(run, RunSize)) {
        text += run;
        const std::optional<XmlUtils::TagRange> range = finder.Find(text);
        if (!range)
            continue;
        const std::string tag = text.substr(range->start, range->length);
        const std::optional<std::string> value = XmlUtils::GetAttributeValueInTag(tag, name, {0, tag.size()});
        if (!value)
            return {};
        return VersionNumber(VString::fromStdString(*value), u'.', u'-', 0);
    }
    return {};
}
