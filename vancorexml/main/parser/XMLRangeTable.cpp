#include "vancorexml/main/parser/XMLRangeTable.h"

#include <vector>

#include "vancorexml/main/parser/XMLUtils.h"
#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\XMLRangeTable";
constexpr AssertionSite PositionDecreases{
    File, 104, "GetRangeTypeAt must be called with increasing positions", 0x1A238B43};
constexpr AssertionSite CopiesMovedFromTable{File, 141, "other.m_pImpl != nullptr", 0x7DE85DF8};

}  // namespace Assertions

struct Range {
    std::uint64_t start;
    std::uint64_t end;  // one past the terminator
    XMLRangeType type;
};

XMLRangeType TypeAt(const std::string& text, std::size_t start)
{
    if (XmlUtils::ContainsSubstringAt(text, "<![CDATA[", start))
        return XMLRangeTypeCData;
    if (XmlUtils::ContainsSubstringAt(text, "<!--", start))
        return XMLRangeTypeComment;
    return XMLRangeTypeDeclaration;
}

const char* TerminatorOf(XMLRangeType type)
{
    switch (type) {
    case XMLRangeTypeCData: return "]]>";
    case XMLRangeTypeComment: return "-->";
    default: return ">";
    }
}

std::vector<Range> FindRanges(const std::string& text)
{
    std::vector<Range> ranges;
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t bang = text.find('!', position);
        if (bang == std::string::npos || bang == 0)
            break;
        if (text[bang - 1] != '<') {
            position = bang + 1;
            continue;
        }
        const std::size_t start = bang - 1;
        const XMLRangeType type = TypeAt(text, start);
        const std::string terminator = TerminatorOf(type);
        const std::size_t found = text.find(terminator, start + 1);
        position = found == std::string::npos ? text.size() : found + terminator.size();
        ranges.push_back({start, position, type});
    }
    return ranges;
}

}  // namespace

struct XMLRangeTable::Impl {
    std::uint64_t cursor = 0;        // the first range not yet passed
    std::uint64_t lastPosition = 0;  // of the previous lookup
    std::vector<Range> ranges;
};

XMLRangeTable::XMLRangeTable() : m_pImpl(std::make_unique<Impl>()) {}

XMLRangeTable::XMLRangeTable(const std::string& text) : XMLRangeTable()
{
    m_pImpl->ranges = FindRanges(text);
}

XMLRangeTable::XMLRangeTable(const XMLRangeTable& other)
{
    if (!other.m_pImpl)
        ThrowLogicException(Assertions::CopiesMovedFromTable);
    m_pImpl = std::make_unique<Impl>(*other.m_pImpl);
}

XMLRangeTable& XMLRangeTable::operator=(const XMLRangeTable& other)
{
    if (this != &other)
        *this = XMLRangeTable(other);
    return *this;
}

XMLRangeTable::XMLRangeTable(XMLRangeTable&& other) noexcept = default;
XMLRangeTable& XMLRangeTable::operator=(XMLRangeTable&& other) noexcept = default;
XMLRangeTable::~XMLRangeTable() = default;

XMLRangeType XMLRangeTable::GetRangeTypeAt(std::size_t pos, std::size_t& rangeEnd)
{
    // A table that was moved from has no ranges.
    if (!m_pImpl)
        return XMLRangeTypeNone;
    Impl& table = *m_pImpl;
    if (pos < table.lastPosition)
        ThrowLogicException(Assertions::PositionDecreases);
    table.lastPosition = pos;

    while (table.cursor < table.ranges.size() && table.ranges[table.cursor].end <= pos)
        ++table.cursor;
    if (table.cursor == table.ranges.size())
        return XMLRangeTypeNone;
    const Range& range = table.ranges[table.cursor];
    if (pos < range.start)
        return XMLRangeTypeNone;
    rangeEnd = static_cast<std::size_t>(range.end);
    return range.type;
}
