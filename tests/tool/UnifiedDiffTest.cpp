#include "vanxml/UnifiedDiff.h"

#include <cstdio>
#include <functional>
#include <numeric>
#include <random>

#include "tests/common/CollidingTexts.h"
#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

// Applies a unified diff. Unlike the program `patch` it accepts a hunk only at its exact place.
class Patch {
public:
    Patch(const std::string& before, const std::string& diff) : m_before(SplitLines(before)), m_diff(SplitLines(diff))
    {}

    std::string Apply()
    {
        EXPECT_THAT(m_diff.at(0), StartsWith("--- "));
        EXPECT_THAT(m_diff.at(1), StartsWith("+++ "));
        for (m_line = 2; m_line < m_diff.size();)
            ApplyHunk();
        CopyTo(m_before.size());
        return m_after;
    }

private:
    void ApplyHunk()
    {
        std::size_t beforeLine = 0;
        std::size_t beforeCount = 0;
        std::size_t afterLine = 0;
        std::size_t afterCount = 0;
        const char* format = "@@ -%zu,%zu +%zu,%zu @@\n";
        ASSERT_EQ(std::sscanf(m_diff[m_line].c_str(), format, &beforeLine, &beforeCount, &afterLine, &afterCount), 4)
            << m_diff[m_line];
        ++m_line;
        CopyTo(beforeCount == 0 ? beforeLine : beforeLine - 1);
        EXPECT_EQ(m_afterLines, afterCount == 0 ? afterLine : afterLine - 1);
        const std::size_t beforeEnd = m_position + beforeCount;
        const std::size_t afterEnd = m_afterLines + afterCount;
        while (m_line < m_diff.size() && m_diff[m_line][0] != '@')
            ApplyLine();
        EXPECT_EQ(m_position, beforeEnd);
        EXPECT_EQ(m_afterLines, afterEnd);
    }

    void ApplyLine()
    {
        const char mark = m_diff[m_line][0];
        std::string line = m_diff[m_line++].substr(1);
        if (m_line < m_diff.size() && m_diff[m_line][0] == '\\') {
            EXPECT_EQ(m_diff[m_line], "\\ No newline at end of file\n");
            line.pop_back();
            ++m_line;
        }
        if (mark != '+') {
            EXPECT_EQ(m_before.at(m_position++), line);
        }
        if (mark != '-')
            Append(line);
    }

    void CopyTo(std::size_t position)
    {
        EXPECT_LE(m_position, position);
        while (m_position < position)
            Append(m_before.at(m_position++));
    }

    void Append(const std::string& line)
    {
        m_after += line;
        ++m_afterLines;
    }

    const std::vector<std::string> m_before;
    const std::vector<std::string> m_diff;
    std::size_t m_line = 0;      // the next line of the diff
    std::size_t m_position = 0;  // the next line of the text before
    std::size_t m_afterLines = 0;
    std::string m_after;
};

void ExpectApplies(const std::string& before, const std::string& after)
{
    const std::string diff = UnifiedDiff("a.xml", before, after);
    if (before == after) {
        EXPECT_EQ(diff, "");
    } else {
        EXPECT_EQ(Patch(before, diff).Apply(), after) << diff;
    }
}

using LineMaker = std::function<std::string(std::size_t)>;

std::string MakeLines(std::size_t count, const LineMaker& make)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += make(i) + "\n";
    return text;
}

std::string Digits(std::size_t number)
{
    return std::to_string(number);
}

std::size_t CountMarkedLines(const std::string& diff)
{
    std::size_t count = 0;
    for (const std::string& line : SplitLines(diff))
        count += (line[0] == '-' || line[0] == '+') ? 1U : 0U;
    return count - 2;  // without the header
}

}  // namespace

TEST(UnifiedDiffTest, EqualTextsHaveNoDiff)
{
    EXPECT_EQ(UnifiedDiff("a.xml", "", ""), "");
    EXPECT_EQ(UnifiedDiff("a.xml", "<a/>\n", "<a/>\n"), "");
}

TEST(UnifiedDiffTest, ShowsThreeLinesOfContext)
{
    const std::string before = MakeLines(20, Digits);
    std::string after = before;
    after.replace(after.find("10\n"), 3, "ten\n");
    const std::string expected = "--- a.xml\n+++ a.xml\n@@ -8,7 +8,7 @@\n 7\n 8\n 9\n-10\n+ten\n 11\n 12\n 13\n";
    EXPECT_EQ(UnifiedDiff("a.xml", before, after), expected);
}

TEST(UnifiedDiffTest, ChangesWithSixEqualLinesBetweenShareAHunk)
{
    const std::string before = MakeLines(30, Digits);
    const auto change = [&](std::size_t first, std::size_t second) {
        return MakeLines(30, [=](std::size_t i) { return i == first || i == second ? "changed" : Digits(i); });
    };
    EXPECT_THAT(UnifiedDiff("a.xml", before, change(10, 17)), HasSubstr("@@ -8,14 +8,14 @@\n"));
    const std::string apart = UnifiedDiff("a.xml", before, change(10, 18));
    EXPECT_THAT(apart, HasSubstr("@@ -8,7 +8,7 @@\n"));
    EXPECT_THAT(apart, HasSubstr("@@ -16,7 +16,7 @@\n"));
}

TEST(UnifiedDiffTest, EmptyTextHasLineZero)
{
    EXPECT_EQ(UnifiedDiff("a", "", "x\n"), "--- a\n+++ a\n@@ -0,0 +1,1 @@\n+x\n");
    EXPECT_EQ(UnifiedDiff("a", "x\n", ""), "--- a\n+++ a\n@@ -1,1 +0,0 @@\n-x\n");
}

TEST(UnifiedDiffTest, MarksAMissingLineEnd)
{
    const std::string mark = "\\ No newline at end of file\n";
    EXPECT_EQ(UnifiedDiff("a", "x", "x\n"), "--- a\n+++ a\n@@ -1,1 +1,1 @@\n-x\n" + mark + "+x\n");
    EXPECT_EQ(UnifiedDiff("a", "y\nx", "z\nx"), "--- a\n+++ a\n@@ -1,2 +1,2 @@\n-y\n+z\n x\n" + mark);
}

TEST(UnifiedDiffTest, CopiesCarriageReturnsAndBytesThatAreNotUtf8)
{
    EXPECT_EQ(UnifiedDiff("a", "x\r\n\xFF\r\n", "x\n\xFF\r\n"), "--- a\n+++ a\n@@ -1,2 +1,2 @@\n-x\r\n+x\n \xFF\r\n");
}

TEST(UnifiedDiffTest, TextsWithNulGiveOneLine)
{
    const std::string utf16("<\0a\0/\0>\0", 8);
    const std::string line = "a.xml would change; its encoding has no lines that a diff can show\n";
    EXPECT_EQ(UnifiedDiff("a.xml", utf16, "<a/>"), line);
    EXPECT_EQ(UnifiedDiff("a.xml", "<a/>", utf16), line);
}

TEST(UnifiedDiffTest, NameIsOneLineAndEndsWithATabIfItHasBlanks)
{
    EXPECT_THAT(UnifiedDiff("a\nb", "x", "y"), StartsWith("--- a\\nb\n+++ a\\nb\n"));
    EXPECT_THAT(UnifiedDiff("a b", "x", "y"), StartsWith("--- a b\t\n+++ a b\t\n"));
}

TEST(UnifiedDiffTest, FindsAMovedLineAsOneDeletionAndOneInsertion)
{
    const std::string before = MakeLines(50, Digits);
    const std::string after = MakeLines(50, [](std::size_t i) { return Digits((i + 1) % 50); });
    EXPECT_EQ(CountMarkedLines(UnifiedDiff("a", before, after)), 2u);
}

TEST(UnifiedDiffTest, FindsFewEditsAmongManyRepeatedLines)
{
    const std::size_t count = 100000;
    const auto repeated = [](std::size_t i) { return Digits(i % 3); };
    const auto changed = [&](std::size_t i) { return i % 2500 == 1200 ? "x" : repeated(i); };
    EXPECT_EQ(CountMarkedLines(UnifiedDiff("a", MakeLines(count, repeated), MakeLines(count, changed))), 80u);
}

// All texts of up to four lines with two different lines, with and without a line end at the end.
TEST(UnifiedDiffTest, DiffsOfAllSmallTextsApply)
{
    std::vector<std::string> texts{""};
    for (std::size_t first = 0, length = 1; length <= 4; ++length) {
        const std::size_t end = texts.size();
        for (; first < end; ++first) {
            texts.push_back(texts[first] + "a\n");
            texts.push_back(texts[first] + "b\n");
        }
    }
    const std::size_t complete = texts.size();
    for (std::size_t i = 1; i < complete; ++i)
        texts.push_back(texts[i].substr(0, texts[i].size() - 1));
    for (const std::string& before : texts) {
        for (const std::string& after : texts)
            ExpectApplies(before, after);
    }
}

TEST(UnifiedDiffTest, DiffsOfRandomTextsApply)
{
    std::mt19937 random(12);
    for (int round = 0; round < 3000; ++round) {
        const std::size_t alphabet = 1 + random() % 60;
        const auto line = [&](std::size_t) { return Digits(random() % alphabet) + (random() % 4 == 0 ? "\r" : ""); };
        std::vector<std::string> lines = SplitLines(MakeLines(random() % 80, line));
        const std::string before = std::accumulate(lines.begin(), lines.end(), std::string());
        for (std::size_t edits = random() % 12; edits > 0; --edits) {
            const auto place = lines.begin() + static_cast<std::ptrdiff_t>(random() % (lines.size() + 1));
            if (random() % 2 == 0 || place == lines.end())
                lines.insert(place, Digits(random() % alphabet) + "\n");
            else
                lines.erase(place);
        }
        std::string after = std::accumulate(lines.begin(), lines.end(), std::string());
        if (!after.empty() && random() % 4 == 0)
            after.pop_back();
        ExpectApplies(before, after);
    }
}

namespace {

// Each line has the same std::hash, with the line feed behind it.
std::string CollidingLine(std::size_t i)
{
    static const std::vector<std::string> lines = testsupport::CollidingTexts<char>::Make(1 << 14, 1);
    return lines[i % lines.size()];
}

struct Hostile {
    const char* name;
    LineMaker before;
    LineMaker after;
};

std::ostream& operator<<(std::ostream& out, const Hostile& texts)
{
    return out << texts.name;
}

constexpr std::size_t HostileCount = 300000;

std::string PseudoRandom(std::size_t number, std::size_t modulus)
{
    return Digits(number * 2654435761u / 65536 % modulus);
}

// In each third place a line becomes unique only after the texts were split at the one before: 1 x 2 1 x 3 2 x 4 3 …
std::string Chain(std::size_t i)
{
    return i % 3 == 0 ? Digits(i / 3 + 1) : i % 3 == 1 ? Digits(i / 3) : "x";
}

const Hostile HostileTexts[] = {
    {"NothingInCommon", Digits, [](std::size_t i) { return "x" + Digits(i); }},
    {"Reversed", Digits, [](std::size_t i) { return Digits(HostileCount - i); }},
    {"OneLineManyTimes", [](std::size_t) { return "a"; }, [](std::size_t i) { return i % 2 == 0 ? "a" : "b"; }},
    {"EachLineTwice",
        [](std::size_t i) { return Digits(i % (HostileCount / 2)); },
        [](std::size_t i) { return Digits(i / 2); }},
    {"TenLinesInRandomOrder",
        [](std::size_t i) { return PseudoRandom(i, 10); },
        [](std::size_t i) { return PseudoRandom(i + 7, 10); }},
    {"RandomOrder",
        [](std::size_t i) { return PseudoRandom(i, HostileCount); },
        [](std::size_t i) { return PseudoRandom(HostileCount - i, HostileCount); }},
    {"LinesWithTheSameHash", CollidingLine, [](std::size_t i) { return CollidingLine(i + 1); }},
    {"LinesThatBecomeUniqueOneByOne", Chain, [](std::size_t i) { return i % 3 == 2 ? "y" : Chain(i); }},
};

class UnifiedDiffHostileTest : public testing::TestWithParam<Hostile> {};

}  // namespace

TEST_P(UnifiedDiffHostileTest, TakesLittleTimeAndApplies)
{
    const std::string before = MakeLines(HostileCount, GetParam().before);
    const std::string after = MakeLines(HostileCount, GetParam().after);
    std::string diff;
    {
        const testsupport::CpuTimeLimit limit(10);
        diff = UnifiedDiff("a.xml", before, after);
    }
    EXPECT_TRUE(Patch(before, diff).Apply() == after);
}

INSTANTIATE_TEST_SUITE_P(Texts, UnifiedDiffHostileTest, testing::ValuesIn(HostileTexts), [](const auto& test) {
    return std::string(test.param.name);
});
