#include "vanxml/FirstTag.h"

#include <algorithm>

#include "vancorexml/main/parser/InputSourceResetter.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace {

// Reads the attributes of a tag. Positions move forward only, so each character is counted once.
class AttributeScanner {
public:
    AttributeScanner(std::string_view tag, SourcePosition start) : m_tag(tag), m_place(start) {}

    std::string ReadName()
    {
        const std::size_t start = m_offset;
        while (m_offset < m_tag.size() && XmlUtils::IsNameChar(m_tag[m_offset]))
            ++m_offset;
        return std::string(m_tag.substr(start, m_offset - start));
    }

    // Returns false at the end of the tag, and at a text that is not an attribute.
    bool ReadAttribute(FirstTag::Attribute& attribute)
    {
        SkipBlanks();
        attribute.nameStart = CountTo(m_offset);
        attribute.name = ReadName();
        SkipBlanks();
        if (attribute.name.empty() || !Skip('='))
            return false;
        SkipBlanks();
        const char quote = m_offset < m_tag.size() ? m_tag[m_offset] : '\0';
        if ((quote != '"' && quote != '\'') || !Skip(quote))
            return false;
        const std::size_t end = m_tag.find(quote, m_offset);
        if (end == std::string_view::npos)
            return false;
        attribute.value = m_tag.substr(m_offset, end - m_offset);
        attribute.start = CountTo(m_offset);
        attribute.end = CountTo(end);
        m_offset = end + 1;
        return true;
    }

    bool Skip(char expected)
    {
        if (m_offset == m_tag.size() || m_tag[m_offset] != expected)
            return false;
        ++m_offset;
        return true;
    }

private:
    void SkipBlanks()
    {
        while (m_offset < m_tag.size() && XmlUtils::IsWhitespace(m_tag[m_offset]))
            ++m_offset;
    }

    SourcePosition CountTo(std::size_t offset)
    {
        m_place = FindEnd(m_place, m_tag.substr(m_counted, offset - m_counted));
        m_counted = offset;
        return m_place;
    }

    const std::string_view m_tag;
    std::size_t m_offset = 0;
    std::size_t m_counted = 0;
    SourcePosition m_place;  // of the character at m_counted
};

}  // namespace

const FirstTag::Attribute* FirstTag::Find(std::string_view attribute) const
{
    const auto found = std::find_if(
        attributes.begin(), attributes.end(), [&](const Attribute& each) { return each.name == attribute; });
    return found == attributes.end() ? nullptr : &*found;
}

FirstTag ReadFirstTag(InputSource& document, SourcePosition documentStart)
{
    const InputSourceResetter resetter(document);
    FirstTag result;
    std::string text;
    std::string run;
    XmlUtils::TagRange range;
    // The runs double, because each search begins at the start of the text.
    constexpr unsigned longestRun = 1 << 30;
    for (unsigned size = 512; range.start == XmlUtils::npos && document.GetBytes(run, size);) {
        text += run;
        range = XmlUtils::FindFirstElementTag(text);
        size = std::min(2 * size, longestRun);
    }
    if (range.start == XmlUtils::npos)
        return result;
    const std::string_view tag = std::string_view(text).substr(range.start, range.length);
    result.start = FindEnd(documentStart, std::string_view(text).substr(0, range.start));
    result.end = FindEnd(result.start, tag);
    AttributeScanner scanner(tag, result.start);
    scanner.Skip('<');
    result.name = scanner.ReadName();
    for (FirstTag::Attribute attribute; scanner.ReadAttribute(attribute);)
        result.attributes.push_back(attribute);
    return result;
}

SourcePosition FindEnd(SourcePosition start, std::string_view text)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const bool isAtFileStart = start == SourcePosition{1, 1};
    if (isAtFileStart && text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    SourcePosition place = start;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isContinuation = (byte & 0xC0) == 0x80;
        const bool isBeforeLineFeed = byte == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (byte == '\n' || (byte == '\r' && !isBeforeLineFeed))
            place = {place.line + 1, 1};
        else if (!isContinuation && !isBeforeLineFeed)
            place.column += byte >= 0xF0 ? 2 : 1;
    }
    return place;
}
