#include "vanxml/MatchCount.h"

#include <random>

#include "tests/common/TestSupport.h"
#include "tests/tool/ToolRun.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"

using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

// Returns the number of lines that query prints for the same path without --count.
std::size_t CountPrintedMatches(const std::string& file, const std::string& path)
{
    const std::string output = RunTool({"query", file, path}).output;
    return static_cast<std::size_t>(std::count(output.begin(), output.end(), '\n'));
}

std::size_t CountInTree(const VString& file, const QueryPath& path)
{
    const std::unique_ptr<DOM> document = DOMParser().ParseXmlFile(file);
    const VString libraryPath = path.LibraryPath();
    std::size_t count = 0;
    for (const DOMElement& match : DOMPath::Walk(*document->GetDocumentRoot(), libraryPath))
        count += match.GetName().IsEmpty() ? 0U : 1U;
    return count;
}

std::string MakeDocument(std::mt19937& random)
{
    static constexpr const char* names[] = {"a", "b", "c"};
    static constexpr const char* attributes[] = {"", " i='1'", " i='&lt;&#x31;'", " j='2' i=\"1\"", " j='a\tb'"};
    std::string document = "<a>";
    std::vector<std::string> open{"a"};
    for (int i = 0; i < 60; ++i) {
        if (random() % 2 == 0 && open.size() < 6) {
            open.emplace_back(names[random() % 3]);
            document += "<" + open.back() + attributes[random() % 5] + ">";
        } else if (open.size() > 1) {
            document += "text</" + open.back() + ">";
            open.pop_back();
        }
    }
    for (; !open.empty(); open.pop_back())
        document += "</" + open.back() + ">";
    return document;
}

}  // namespace

TEST(MatchCountTest, EventsAndTreesCountTheSame)
{
    const TemporaryFolder folder;
    std::mt19937 random(3);
    for (int i = 0; i < 200; ++i) {
        const std::string document = MakeDocument(random);
        const VString file = folder.Write("a.xml", document);
        for (const char* text : {"//b",
                 "a/*",
                 "/a/b",
                 "//*[@i]",
                 "//b[@i='1']",
                 "//*[@i='<1']",
                 "//b[2]",
                 "a//b",
                 "a///c",
                 "//*[@j='a b']",
                 "//c/@i",
                 "//@j",
                 "x"}) {
            const QueryPath path{text};
            SourceDocument source = SourceDocument::Read(file);
            const std::optional<std::size_t> count = CountMatches(source, path, path.Attribute());
            ASSERT_TRUE(count) << document;
            // A process takes long, so only a few documents are compared with it.
            if (i < 2) {
                EXPECT_EQ(CountPrintedMatches(file.toStdString(), text), *count) << text << " in " << document;
            }
            if (!path.HasPredicates() && path.Attribute().IsEmpty()) {
                EXPECT_EQ(CountInTree(file, path), *count) << text << " in " << document;
            }
        }
    }
}

TEST(MatchCountTest, CountsDefaultAttributesOfADocumentType)
{
    const TemporaryFolder folder;
    const std::string file =
        folder.Write("a.xml", "<!DOCTYPE a [<!ATTLIST b i CDATA '1'>]><a><b/><b i='2'/></a>").toStdString();
    EXPECT_EQ(RunTool({"query", "--count", file, "//b[@i='1']"}).output, "1\n");
    EXPECT_EQ(RunTool({"query", "--count", file, "//b"}).output, "2\n");
}

TEST(MatchCountTest, ADocumentWithAnErrorIsNotCounted)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a><b/><c></a>").toStdString();
    const ToolResult counted = RunTool({"query", "--count", file, "//b"});
    EXPECT_EQ(counted.status, 2);
    EXPECT_EQ(counted.output, "");
    EXPECT_THAT(counted.errors, StartsWith(file + ":1:"));
    EXPECT_EQ(counted.errors, RunTool({"query", file, "//b"}).errors);
}

TEST(MatchCountTest, CountsStandardInput)
{
    EXPECT_EQ(RunTool({"query", "--count", "-", "//b"}, "<a><b/></a>").output, "1\n");
}
