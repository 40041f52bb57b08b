// Compares the linear scanners with the reference scanners on random texts.
#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "tests/input/ReferenceScanners.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/VersionSniffer.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

namespace {

const std::vector<std::string> Letters = {
    "<", ">", "!", "?", "/", "-", "[", "]", "&", "\"", "'", ":", "=", " ", "a", "é"};
const std::vector<std::string> Pieces = {
    "<a",
    "<b",
    " :b='",
    " :c=\"",
    "'",
    "\"",
    ">",
    "/>",
    "</a>",
    "<!--",
    "-->",
    "<![CDATA[",
    "]]>",
    "<?p",
    "?>",
    "<!D",
    " :d = ",
    ":",
    "=",
    " ",
    "\n",
    "x",
    " version='1.2'",
    "version",
    "é",
};

class RandomTexts {
public:
    std::string Make(const std::vector<std::string>& parts, std::size_t maxParts)
    {
        std::string text;
        for (std::size_t n = m_random() % (maxParts + 1); n > 0; --n)
            text += parts[m_random() % parts.size()];
        return text;
    }
    std::size_t Below(std::size_t bound) { return m_random() % bound; }

private:
    std::mt19937 m_random{20261121};
};

// Calls `check` with `count` random texts, but stops after a failure. Half of the texts consist of single characters,
// the other half of typical pieces of markup.
template <typename Check>
void ForRandomTexts(int count, const Check& check)
{
    RandomTexts texts;
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        const std::string text = i % 2 ? texts.Make(Letters, 24) : texts.Make(Pieces, 12);
        SCOPED_TRACE(text);
        check(text, texts);
    }
}

}  // namespace

TEST(LinearScannersTest, SanitizeMatchesTheReference)
{
    int rewritten = 0;
    ForRandomTexts(500000, [&rewritten](const std::string& text, RandomTexts&) {
        const auto input = std::make_shared<std::string>(text);
        const std::optional<std::string> expected = reference::Sanitize(text);
        if (!expected) {
            EXPECT_THROW(XercesColonSanitizer::Sanitize(input), LogicException);
            return;
        }
        const auto output = XercesColonSanitizer::Sanitize(input);
        EXPECT_EQ(*output, *expected);
        EXPECT_EQ(output == input, *expected == text);
        rewritten += output != input ? 1 : 0;
    });
    EXPECT_GT(rewritten, 1000);
}

TEST(LinearScannersTest, FindTagEndMatchesTheReference)
{
    ForRandomTexts(200000, [](const std::string& text, RandomTexts&) {
        for (std::size_t start = text.find('<'); start != std::string::npos; start = text.find('<', start + 1))
            EXPECT_EQ(XmlUtils::FindTagEnd(text, start), reference::FindTagEnd(text, start)) << start;
    });
}

TEST(LinearScannersTest, FindFirstElementTagMatchesTheReference)
{
    ForRandomTexts(100000, [](const std::string& text, RandomTexts&) {
        const XmlUtils::TagRange found = XmlUtils::FindFirstElementTag(text);
        const XmlUtils::TagRange expected = reference::FindFirstElementTag(text);
        EXPECT_EQ(found.start, expected.start);
        EXPECT_EQ(found.length, expected.length);
    });
}

TEST(LinearScannersTest, GetAttributeValueInTagMatchesTheReference)
{
    int found = 0;
    ForRandomTexts(200000, [&found](const std::string& body, RandomTexts&) {
        const std::string text = "<" + body + ">";
        for (const char* name : {"a", ":b", "aa", "'", " ", "version", "\xC3"}) {
            const XmlUtils::TagRange tag{0, text.size()};
            const auto value = XmlUtils::GetAttributeValueInTag(text, name, tag);
            EXPECT_EQ(value, reference::GetAttributeValueInTag(text, name, tag)) << name;
            found += value ? 1 : 0;
        }
        // The tag is in the middle of other text.
        const std::string around = "x='" + text + "' a='1'>";
        const XmlUtils::TagRange inner{3, text.size()};
        const auto expected = reference::GetAttributeValueInTag(around, "a", inner);
        EXPECT_EQ(XmlUtils::GetAttributeValueInTag(around, "a", inner), expected);
    });
    EXPECT_GT(found, 1000);
}

TEST(LinearScannersTest, AreQuotesMatchingInRangeMatchesTheReference)
{
    ForRandomTexts(100000, [](const std::string& text, RandomTexts& texts) {
        if (text.empty())
            return;
        const std::size_t start = texts.Below(text.size());
        const std::size_t end = start + texts.Below(text.size() - start);
        const bool expected = reference::AreQuotesMatching(text, start, end);
        EXPECT_EQ(XmlUtils::AreQuotesMatchingInRange(text, start, end), expected) << start << " to " << end;
    });
}

TEST(LinearScannersTest, XMLRangeTableMatchesTheReference)
{
    ForRandomTexts(100000, [](const std::string& text, RandomTexts& texts) {
        const std::vector<reference::Range> ranges = reference::FindRanges(text);
        XMLRangeTable table(text);
        for (std::size_t position = 0; position <= text.size(); position += 1 + texts.Below(3)) {
            std::size_t end = 12345;
            const XMLRangeType type = table.GetRangeTypeAt(position, end);
            const auto range = std::find_if(ranges.begin(), ranges.end(), [position](const reference::Range& r) {
                return r.start <= position && position < r.end;
            });
            EXPECT_EQ(type, range == ranges.end() ? XMLRangeTypeNone : range->type) << position;
            EXPECT_EQ(end, range == ranges.end() ? 12345 : range->end) << position;
        }
    });
}

TEST(LinearScannersTest, VersionSnifferMatchesASearchOfTheWholeBuffer)
{
    int found = 0;
    ForRandomTexts(20000, [&found](const std::string& text, RandomTexts& texts) {
        // Insert up to 400 blanks, so that tags and comments cross the ends of the blocks that the sniffer reads.
        std::string spread;
        for (const char byte : text) {
            if (byte == ' ')
                spread.append(texts.Below(400), ' ');
            spread += byte;
        }
        Utf8InputSource source(spread, "sniffed", false);
        const Nullable<VersionNumber> version = VersionSniffer(source, VString());
        const std::optional<std::string> expected = reference::Sniff(spread, 512);
        ASSERT_EQ(version.IsPresent(), expected.has_value());
        if (!expected)
            return;
        EXPECT_EQ(version.GetValue().GetAsString(), VString::fromStdString(*expected));
        ++found;
    });
    EXPECT_GT(found, 40);
}
