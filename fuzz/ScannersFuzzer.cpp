// Compares the linear scanners with the reference scanners.
#include <memory>
#include <optional>

#include "fuzz/FuzzSupport.h"
#include "tests/input/ReferenceScanners.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"
#include "vansys/LogicException.h"

namespace {

void CheckSanitizer(const std::string& text)
{
    const std::optional<std::string> expected = reference::Sanitize(text);
    const auto input = std::make_shared<std::string>(text);
    try {
        Require(*XercesColonSanitizer::Sanitize(input) == expected, "Sanitize rewrites as the reference does");
    } catch (const LogicException&) {
        Require(!expected, "Sanitize raises an exception only for a text without an element");
    }
}

void CheckRangeTable(const std::string& text)
{
    const std::vector<reference::Range> ranges = reference::FindRanges(text);
    auto range = ranges.begin();
    XMLRangeTable table(text);
    for (std::size_t position = 0; position < text.size(); ++position) {
        while (range != ranges.end() && range->end <= position)
            ++range;
        const bool isInside = range != ranges.end() && range->start <= position;
        std::size_t end = 0;
        const XMLRangeType type = table.GetRangeTypeAt(position, end);
        Require(type == (isInside ? range->type : XMLRangeTypeNone), "the range table finds the type");
        Require(end == (isInside ? range->end : 0), "the range table finds the end");
    }
}

void CheckTag(const std::string& text, std::size_t start)
{
    const std::size_t end = XmlUtils::FindTagEnd(text, start);
    Require(end == reference::FindTagEnd(text, start), "FindTagEnd finds the end of the reference");
    if (end == XmlUtils::npos)
        return;
    Require(XmlUtils::AreQuotesMatchingInRange(text, start, end) == reference::AreQuotesMatching(text, start, end),
        "AreQuotesMatchingInRange agrees with the reference");
    const XmlUtils::TagRange tag{start, end - start + 1};
    for (const char* name : {"version", ":b", "a", "'"}) {
        Require(XmlUtils::GetAttributeValueInTag(text, name, tag) == reference::GetAttributeValueInTag(text, name, tag),
            "GetAttributeValueInTag finds the value of the reference");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    CheckSanitizer(text);
    CheckRangeTable(text);
    const XmlUtils::TagRange first = XmlUtils::FindFirstElementTag(text);
    const XmlUtils::TagRange expected = reference::FindFirstElementTag(text);
    Require(first.start == expected.start && first.length == expected.length,
        "FindFirstElementTag finds the tag of the reference");
    for (std::size_t start = text.find('<'); start != std::string::npos; start = text.find('<', start + 1))
        CheckTag(text, start);
    return 0;
}
