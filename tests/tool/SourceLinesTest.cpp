#include "vanxml/SourceLines.h"

#include "tests/common/TestSupport.h"

namespace {

// Shows an excerpt: the line before, a slash and the line; an ellipsis stands for a cut, and "-" for a missing line.
std::string Show(const std::optional<SourceExcerpt>& excerpt)
{
    if (!excerpt)
        return "none";
    const auto show = [](const LinePart& part) {
        return (part.firstColumn > 1 ? "…" : "") + part.text + (part.isContinued ? "…" : "");
    };
    return (excerpt->before ? show(*excerpt->before) : "-") + "/" + show(excerpt->line);
}

// Reads the text in chunks of `chunkSize` bytes.
std::string Find(const std::string& text, SourcePosition place, std::size_t chunkSize = 1000)
{
    SourceLines lines({place});
    for (std::size_t i = 0; i < text.size(); i += chunkSize)
        lines.Add(std::string_view(text).substr(i, chunkSize));
    return Show(lines.Finish().front());
}

}  // namespace

TEST(SourceLinesTest, ReturnsTheLineAndTheLineBefore)
{
    const std::string text = "one\ntwo\nthree";
    EXPECT_EQ(Find(text, {1, 1}), "-/one");
    EXPECT_EQ(Find(text, {2, 3}), "one/two");
    EXPECT_EQ(Find(text, {3, 6}), "two/three");
}

TEST(SourceLinesTest, ReturnsNothingForUnknownPlacesAndLinesBehindTheEnd)
{
    EXPECT_EQ(Find("one", {0, 0}), "none");
    EXPECT_EQ(Find("one", {2, 1}), "none");
    EXPECT_EQ(Find("", {2, 1}), "none");
}

TEST(SourceLinesTest, EmptyLastLineIsALine)
{
    EXPECT_EQ(Find("", {1, 1}), "-/");
    EXPECT_EQ(Find("one\n", {2, 1}), "one/");
}

TEST(SourceLinesTest, LineEndsMayBeCarriageReturnsAndSplitBetweenChunks)
{
    const std::string text = "a\r\nb\rc\n\r\nd";
    for (const std::size_t chunkSize : {1u, 2u, 3u, 100u}) {
        EXPECT_EQ(Find(text, {2, 1}, chunkSize), "a/b");
        EXPECT_EQ(Find(text, {3, 1}, chunkSize), "b/c");
        EXPECT_EQ(Find(text, {4, 1}, chunkSize), "c/");
        EXPECT_EQ(Find(text, {5, 1}, chunkSize), "/d");
        EXPECT_EQ(Find(text, {6, 1}, chunkSize), "none");
    }
}

TEST(SourceLinesTest, CharactersMayBeSplitBetweenChunks)
{
    const std::string text = "😀漢ü\xFF\xE6\xBC\n\xF0\x9F";
    for (std::size_t chunkSize = 1; chunkSize < 8; ++chunkSize) {
        EXPECT_EQ(Find(text, {1, 1}, chunkSize), "-/😀漢ü\xFF\xE6\xBC");
        EXPECT_EQ(Find(text, {2, 1}, chunkSize), "😀漢ü\xFF\xE6\xBC/\xF0\x9F");
    }
}

TEST(SourceLinesTest, SkipsAByteOrderMark)
{
    EXPECT_EQ(Find("\uFEFFa\n\uFEFFb", {1, 1}), "-/a");
    EXPECT_EQ(Find("\uFEFFa\n\uFEFFb", {2, 1}), "a/\uFEFFb");
}

TEST(SourceLinesTest, CutsLongLinesAroundThePlace)
{
    const std::string line = std::string(500, 'a') + "X" + std::string(500, 'b');
    const std::string around = "…" + std::string(100, 'a') + "X" + std::string(99, 'b') + "…";
    EXPECT_EQ(Find(line + "\n" + line, {2, 501}), around + "/" + around);
    EXPECT_EQ(Find("short\n" + line, {2, 501}), "-/" + around);
    EXPECT_EQ(Find(line, {1, 1}), "-/" + std::string(100, 'a') + "…");
    EXPECT_EQ(Find(line, {1, 1002}), "-/…" + std::string(100, 'b'));
}

TEST(SourceLinesTest, CountsColumnsInCodeUnits)
{
    std::string line;
    for (int i = 0; i < 100; ++i)
        line += "😀";
    EXPECT_EQ(Find(line + "X" + std::string(200, 'b'), {1, 201}),
        "-/…" + line.substr(50 * 4) + "X" + std::string(99, 'b') + "…");
}

TEST(SourceLinesTest, BlanksStandForTheTextBeforeTheStart)
{
    SourceLines lines({{3, 4}, {4, 1}}, {3, 3});
    lines.Add("<a>\n</b>");
    const auto excerpts = lines.Finish();
    EXPECT_EQ(Show(excerpts[0]), "/  <a>");
    EXPECT_EQ(Show(excerpts[1]), "  <a>/</b>");
}

TEST(SourceLinesTest, PlacesMayBeInAnyOrderAndEqual)
{
    SourceLines lines({{2, 1}, {1, 1}, {2, 1}, {0, 0}});
    lines.Add("a\nb\nc");
    const auto excerpts = lines.Finish();
    EXPECT_EQ(Show(excerpts[0]), "a/b");
    EXPECT_EQ(Show(excerpts[1]), "-/a");
    EXPECT_EQ(Show(excerpts[2]), "a/b");
    EXPECT_EQ(Show(excerpts[3]), "none");
}

TEST(SourceLinesTest, IsCompleteBehindTheLastPlace)
{
    SourceLines lines({{2, 1}});
    lines.Add("a\nb");
    EXPECT_FALSE(lines.IsComplete());
    lines.Add("\nc");
    EXPECT_TRUE(lines.IsComplete());
}

// Searching the line anew for each place would take minutes.
TEST(SourceLinesTest, ManyPlacesOnALongLineAreFoundInOnePass)
{
    const std::string text = std::string(4'000'000, 'a') + "\n" + std::string(4'000'000, 'b');
    std::vector<SourcePosition> places;
    for (std::uint64_t i = 0; i < 20'000; ++i)
        places.push_back({2, 1 + i * 200});
    SourceLines lines(places);
    lines.Add(text);
    const auto excerpts = lines.Finish();
    EXPECT_EQ(Show(excerpts[10'000]), "…" + std::string(200, 'a') + "…/…" + std::string(200, 'b') + "…");
}
