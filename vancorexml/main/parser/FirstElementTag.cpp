#include "vancorexml/main/parser/FirstElementTag.h"

#include <algorithm>

#include "vancorexml/main/parser/InputSourceResetter.h"

namespace {

constexpr unsigned int RunSize = 512;

}  // namespace

std::optional<XmlUtils::TagRange> FirstTagFinder::Find(const std::string& text)
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

// Moves to the next "<". Returns false if the text ends before it is clear which construct the "<" begins.
bool FirstTagFinder::BeginConstruct(const std::string& text)
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

std::size_t FirstTagFinder::FindTerminator(const std::string& text)
{
    const std::size_t found = text.find(m_terminator, m_position);
    if (found != XmlUtils::npos)
        return found + m_terminator.size() - 1;
    // The text may end inside the terminator, so the next search starts with its last bytes.
    m_position = std::max(m_position, text.size() - (m_terminator.size() - 1));
    return XmlUtils::npos;
}

std::size_t FirstTagFinder::FindTagEnd(const std::string& text)
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

// Defined here because it uses the finder. XMLUtils.cpp must not include FirstElementTag.h, which includes XMLUtils.h.
XmlUtils::TagRange XmlUtils::FindFirstElementTag(const std::string& text)
{
    return FirstTagFinder().Find(text).value_or(TagRange());
}

std::string ReadFirstElementTag(InputSource& source)
{
    const InputSourceResetter resetter(source);
    std::string text;
    std::string run;
    FirstTagFinder finder;
    while (source.GetBytes(run, RunSize)) {
        text += run;
        if (const std::optional<XmlUtils::TagRange> range = finder.Find(text))
            return text.substr(range->start, range->length);
    }
    return std::string();
}
