#include "vancorexml/main/parser/VersionSniffer.h"

#include <stdexcept>
#include <string>

#include "tests/common/EndlessSource.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

struct SniffRow {
    const char* name;
    std::string text;
    const char* attribute;
    const char* version;  // null for absent
};

class SniffRows : public testing::TestWithParam<SniffRow> {};

// Throws on its second read.
class FailingSource : public InputSource {
public:
    FailingSource() : InputSource("failing") {}
    bool GetNextLine(std::string&) override { return false; }
    bool GetBytes(std::string& bytes, unsigned int count) override
    {
        if (m_reads++ > 0)
            throw std::runtime_error("the disk is gone");
        bytes.assign(count, ' ');
        return true;
    }
    void ResetToStart() override
    {
        m_reads = 0;
        ++resets;
    }
    unsigned long long Size() const override { return 1024; }

    int resets = 0;

private:
    int m_reads = 0;
};

}  // namespace

TEST_P(SniffRows, ReadsTheVersionAndResetsTheSource)
{
    Utf8InputSource source(GetParam().text, "sniffed", false);
    const Nullable<VersionNumber> version = VersionSniffer(source, GetParam().attribute);
    ASSERT_EQ(version.IsPresent(), GetParam().version != nullptr);
    if (GetParam().version)
        EXPECT_EQ(version.GetValue().GetAsString(), VString(GetParam().version));
    else
        EXPECT_EQ(version.GetValue(), VersionNumber("0.0.0", u'.', u'-', 0));
    std::string first;
    if (!GetParam().text.empty()) {
        ASSERT_TRUE(source.GetBytes(first, 4));
        EXPECT_EQ(first, GetParam().text.substr(0, 4));
    }
}

const SniffRow SniffedTexts[] = {
    {"Plain", "<a version='18.1'/>", "", "18.1"},
    {"GivenAttribute", "<a version='18.1' format=\"2.0\"/>", "format", "2.0"},
    {"AfterDeclarationCommentAndDoctype",
        "<?xml version='1.0'?>\n<!-- version='3' --><!DOCTYPE a [<!ELEMENT a ANY>]>\n<a version='18.1'>",
        "",
        "18.1"},
    {"SuffixOfAnotherName", "<a build_version='1'/>", "", nullptr},
    {"OnlyOnAChild", "<a><b version='1'/></a>", "", nullptr},
    {"Empty", "", "", nullptr},
    {"IncompleteTag", "<a version='18.1'", "", nullptr},
    {"IllFormedVersion", "<a version='new'/>", "", "new"},
    {"LongTag", "<a b='" + std::string(2000, 'x') + "' version='10.5'/>", "", "10.5"},
    {"TagAcrossTwoBlocks", std::string(508, ' ') + "<a version='10.4'/>", "", "10.4"},
    {"CommentEndAcrossTwoBlocks", "<!--" + std::string(506, ' ') + "--><a version='10.3'/>", "", "10.3"},
    {"CommentStartAcrossTwoBlocks", std::string(510, ' ') + "<!-- <b version='1'> --><a version='10.2'/>", "", "10.2"},
    {"ApostropheInACommentOfADoctype", "<!DOCTYPE a [<!-- don't -->]><a version='18.1'/>", "", nullptr},
};

INSTANTIATE_TEST_SUITE_P(
    VersionSnifferTest, SniffRows, testing::ValuesIn(SniffedTexts), [](const auto& row) { return row.param.name; });

TEST(VersionSnifferTest, ResetsAFailingSourceAndRethrows)
{
    FailingSource source;
    EXPECT_THROW(VersionSniffer(source, VString()), std::runtime_error);
    EXPECT_EQ(source.resets, 1);
}

TEST(VersionSnifferTest, ThrowsForAFileThatIsNotUtf8)
{
    const testsupport::TemporaryFolder folder;
    FileInputSource source(folder.Write("latin1.xml", "<a version='1' b='\xE9t\xE9'/>"));
    EXPECT_THROW(VersionSniffer(source, VString()), VantoraException);
}

TEST(VersionSnifferTest, StopsReadingAfterTheBlockThatCompletesTheTag)
{
    testsupport::EndlessSource source("<a b='" + std::string(600, 'x') + "' version='18.1'>");
    EXPECT_EQ(VersionSniffer(source, VString()).GetValue().GetAsString(), VString("18.1"));
    EXPECT_EQ(source.blocks, 2);
    EXPECT_EQ(source.longestBlock, 512u);
}
