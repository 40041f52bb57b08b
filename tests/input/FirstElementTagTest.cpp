#include "vancorexml/main/parser/FirstElementTag.h"

#include <string>

#include "tests/common/EndlessSource.h"
#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

std::string ReadTag(const std::string& text)
{
    Utf8InputSource source(text, "document", false);
    return ReadFirstElementTag(source);
}

}  // namespace

TEST(FirstElementTagTest, ReturnsTheTagBehindDeclarationsAndComments)
{
    EXPECT_EQ(
        ReadTag("<?xml version='1.0'?><!-- <b> --><!DOCTYPE a [<!ELEMENT a ANY>]>\n<a c='>'><b/></a>"), "<a c='>'>");
}

TEST(FirstElementTagTest, ReturnsAnEmptyTextWithoutACompleteTag)
{
    for (const char* text : {"", "no element", "<a", "<a b='>", "<!-- <a> ", "<?xml version='1.0'?>"})
        EXPECT_EQ(ReadTag(text), "") << text;
}

TEST(FirstElementTagTest, StopsReadingAfterTheBlockThatCompletesTheTag)
{
    const std::string tag = "<a b='" + std::string(600, 'x') + "'>";
    testsupport::EndlessSource source(tag);
    EXPECT_EQ(ReadFirstElementTag(source), tag);
    EXPECT_EQ(source.blocks, 2);
    EXPECT_TRUE(source.IsAtStart());
}
