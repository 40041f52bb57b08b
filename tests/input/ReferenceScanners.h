// Reference scanners. They are simple and slow, because each call searches its text from the start. The linear scanners
// of the library must have the same results.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "vancorexml/main/parser/XMLRangeTable.h"
#include "vancorexml/main/parser/XMLUtils.h"

namespace reference {

inline constexpr std::size_t npos = std::string::npos;

inline bool IsQuote(char byte)
{
    return byte == '\'' || byte == '"';
}

inline bool AreQuotesMatching(const std::string& text, std::size_t start, std::size_t end)
{
    for (std::size_t i = start; i <= end && i < text.size(); ++i) {
        if (!IsQuote(text[i]))
            continue;
        const std::size_t close = text.find(text[i], i + 1);
        if (close == npos || close > end)
            return false;
        i = close;
    }
    return true;
}

// Returns the end of the tag that begins at `start`, which must be the position of a "<".
inline std::size_t FindTagEnd(const std::string& text, std::size_t start)
{
    if (start + 2 >= text.size())
        return npos;
    std::string terminator = ">";
    if (text.compare(start, 2, "<?") == 0)
        terminator = "?>";
    else if (text.compare(start, 4, "<!--") == 0)
        terminator = "-->";
    else if (text.compare(start, 3, "<![") == 0)
        terminator = "]]>";
    std::size_t found = text.find(terminator, start + 1);
    if (terminator == ">") {
        while (found != npos && !AreQuotesMatching(text, start, found))
            found = text.find(">", found + 1);
    }
    return found == npos ? npos : found + terminator.size() - 1;
}

inline XmlUtils::TagRange FindFirstElementTag(const std::string& text)
{
    for (std::size_t open = text.find('<'); open != npos;) {
        const std::size_t end = FindTagEnd(text, open);
        if (end == npos)
            return {};
        if (text[open + 1] != '?' && text[open + 1] != '!')
            return {open, end - open + 1};
        open = text.find('<', end + 1);
    }
    return {};
}

inline std::optional<std::string> GetAttributeValueInTag(
    const std::string& text, const std::string& name, const XmlUtils::TagRange& range)
{
    const std::size_t end = range.start + range.length - 1;
    for (std::size_t at = text.find(name, range.start); at != npos && at <= end;
         at = text.find(name, at + name.size())) {
        if (at == range.start || !AreQuotesMatching(text, range.start, at) || !XmlUtils::IsWhitespace(text[at - 1]))
            continue;
        std::size_t i = at + name.size();
        while (i < text.size() && XmlUtils::IsWhitespace(text[i]))
            ++i;
        if (i >= end || text[i] != '=')
            continue;
        ++i;
        while (i < text.size() && XmlUtils::IsWhitespace(text[i]))
            ++i;
        if (i >= end || !IsQuote(text[i]))
            continue;
        const std::size_t close = text.find(text[i], i + 1);
        if (close == npos || close > end)
            return std::nullopt;
        return text.substr(i + 1, close - i - 1);
    }
    return std::nullopt;
}

struct Range {
    std::size_t start;
    std::size_t end;
    XMLRangeType type;
};

inline std::vector<Range> FindRanges(const std::string& text)
{
    std::vector<Range> ranges;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t bang = text.find('!', position);
        if (bang == npos || bang == 0)
            break;
        if (text[bang - 1] != '<') {
            position = bang + 1;
            continue;
        }
        const std::size_t start = bang - 1;
        XMLRangeType type = XMLRangeTypeDeclaration;
        std::string terminator = ">";
        if (text.compare(start, 9, "<![CDATA[") == 0) {
            type = XMLRangeTypeCData;
            terminator = "]]>";
        } else if (text.compare(start, 4, "<!--") == 0) {
            type = XMLRangeTypeComment;
            terminator = "-->";
        }
        const std::size_t found = text.find(terminator, start + 1);
        position = found == npos ? text.size() : found + terminator.size();
        ranges.push_back({start, position, type});
    }
    return ranges;
}

// Returns the positions of the colons to rewrite.
inline std::vector<std::size_t> FindColons(const std::string& text)
{
    const std::vector<Range> ranges = FindRanges(text);
    std::vector<std::size_t> colons;
    for (std::size_t position = 0;;) {
        const std::size_t colon = text.find(':', position);
        if (colon == npos)
            return colons;
        position = colon + 1;
        if (colon == 0 || !XmlUtils::IsWhitespace(text[colon - 1]))
            continue;
        std::size_t i = colon + 1;
        while (i < text.size() && XmlUtils::IsNameChar(text[i]))
            ++i;
        while (i < text.size() && XmlUtils::IsWhitespace(text[i]))
            ++i;
        if (i >= text.size() || text[i] != '=') {
            position = i;
            continue;
        }
        bool isInRange = false;
        for (const Range& range : ranges) {
            if (range.start <= colon && colon < range.end) {
                position = range.end;
                isInRange = true;
            }
        }
        if (isInRange)
            continue;
        const std::size_t close = text.find('>', colon + 1);
        if (close == npos)
            continue;
        const std::size_t open = text.find('<', colon + 1);
        const bool mayEnd = open == npos ? text[close - 1] == '/' : open >= close;
        if (mayEnd && AreQuotesMatching(text, colon, close))
            colons.push_back(colon);
    }
}

// Returns the rewritten text. Returns nothing if the library raises an exception because the text has no element.
inline std::optional<std::string> Sanitize(const std::string& text)
{
    const std::vector<std::size_t> colons = FindColons(text);
    if (colons.empty())
        return text;
    const XmlUtils::TagRange tag = reference::FindFirstElementTag(text);
    if (tag.start == npos)
        return std::nullopt;
    std::size_t insertPosition = tag.start + 1;
    while (XmlUtils::IsWhitespace(text[insertPosition]))
        ++insertPosition;
    while (XmlUtils::IsNameChar(text[insertPosition]))
        ++insertPosition;
    // Rewrite from the end, so that earlier positions stay valid.
    std::string result = text;
    bool isDeclared = false;
    const auto declare = [&] {
        if (!isDeclared)
            result.insert(insertPosition, " xmlns:IllegalColon='http://vancorexml.invalid/xml/ThisShouldNotAppear'");
        isDeclared = true;
    };
    for (auto colon = colons.rbegin(); colon != colons.rend(); ++colon) {
        if (*colon < insertPosition)
            declare();
        result.replace(*colon, 1, "IllegalColon:");
    }
    declare();
    return result;
}

// Returns the version attribute of the root element. Searches the whole buffer again after every block.
inline std::optional<std::string> Sniff(const std::string& text, std::size_t blockSize)
{
    for (std::size_t length = std::min(blockSize, text.size());; length = std::min(length + blockSize, text.size())) {
        const std::string buffer = text.substr(0, length);
        const XmlUtils::TagRange range = reference::FindFirstElementTag(buffer);
        if (range.start != npos)
            return reference::GetAttributeValueInTag(buffer, "version", range);
        if (length == text.size())
            return std::nullopt;
    }
}

}  // namespace reference
