// Measures the memory that a parser keeps between parses.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/util/XMLException.hpp>
#include <xercesc/validators/datatype/DatatypeValidatorFactory.hpp>

#include "tests/common/TestMemory.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/SmallBlocks.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

TEST(KeptMemoryTest, SmallBlocksPoolsBlocksAndFreesThemInItsDestructor)
{
    const std::size_t before = CountLiveMemory().blocks;
    {
        std::vector<void*> used(20000);
        const std::size_t beforeUse = CountLiveMemory().blocks;
        SmallBlocks blocks;
        for (std::size_t i = 0; i < used.size(); ++i)
            used[i] = blocks.Allocate(i % 200);
        for (void* const block : used)
            blocks.Free(block);
        const std::size_t kept = CountLiveMemory().blocks - beforeUse;
        EXPECT_LE(kept, HasAddressSanitizer ? 0 : 600);
        EXPECT_GE(kept, HasAddressSanitizer ? 0 : 100);
    }
    EXPECT_EQ(CountLiveMemory().blocks, before);
}

struct EndRow {
    const char* name;
    const char* end;  // the end of the document, after the text
};

class KeptTextTest : public testing::TestWithParam<EndRow> {};

TEST_P(KeptTextTest, ParserDoesNotKeepALongText)
{
    const std::string end = GetParam().end;
    DOMParser parser;
    parser.ParseXmlString("<a>short" + end, "id");
    const std::size_t before = CountLiveMemory().bytes;
    parser.ParseXmlString("<a>" + std::string(8'000'000, 'x') + end, "id");
    // Xerces keeps a buffer of a million code units, which are two million bytes.
    EXPECT_LT(CountLiveMemory().bytes, before + 3'000'000);
}

// The parser restores the colons of such a text in a buffer.
TEST(KeptMemoryTest, ParserDoesNotKeepALongTextThatLooksLikeAnAttribute)
{
    DOMParser parser;
    parser.ParseXmlString("<a>b :c='d'></a>", "id");
    const std::size_t before = CountLiveMemory().bytes;
    parser.ParseXmlString("<a>" + std::string(8'000'000, 'x') + " b :c='d'></a>", "id");
    EXPECT_LT(CountLiveMemory().bytes, before + 3'000'000);
}

const EndRow EndRows[] = {
    {"EndTag", "</a>"},
    {"NoEndTag", ""},
    {"WrongEndTag", "</b>"},
    {"UndeclaredEntity", "&undeclared;</a>"},
};

INSTANTIATE_TEST_SUITE_P(
    BeforeEnd, KeptTextTest, testing::ValuesIn(EndRows), [](const auto& row) { return row.param.name; });

TEST(KeptMemoryTest, ParserDoesNotKeepTheStackOfADeepDocument)
{
    std::string text;
    for (int i = 0; i < 200'000; ++i)
        text += "<a>";
    for (int i = 0; i < 200'000; ++i)
        text += "</a>";
    DOMParser parser;
    parser.ParseXmlString("<a/>", "id");
    const std::size_t before = CountLiveMemory().bytes;
    parser.ParseXmlString(std::as_const(text), "id");
    EXPECT_LT(CountLiveMemory().bytes, before + 8'500'000);
}

// If the parser kept the builder, the builder would point to the open elements of a destroyed document.
TEST(KeptMemoryTest, ParserDoesNotKeepTheBuilder)
{
    std::string text;
    for (int i = 0; i < 20'000; ++i)
        text += "<a>";
    DOMParser parser;
    parser.ParseXmlString("<a>", "id");
    const std::size_t before = CountLiveMemory().bytes;
    parser.ParseXmlString(std::as_const(text), "id");
    EXPECT_LT(CountLiveMemory().bytes, before + 50'000);
}

// All threads share the built-in types of Xerces. If a type created a part when it is first used, two threads could
// create the part at the same time.
TEST(KeptMemoryTest, BuiltInTypesAreCompleteBeforeTheirFirstUse)
{
    const XercesInitializer initializer;
    auto& types = *xercesc::DatatypeValidatorFactory::getBuiltInRegistry();
    xercesc::RefHashTableOfEnumerator<xercesc::DatatypeValidator> next(&types);
    ASSERT_TRUE(next.hasMoreElements());
    while (next.hasMoreElements()) {
        const XMLCh* const name = static_cast<const XMLCh*>(next.nextElementKey());
        xercesc::DatatypeValidator& type = *types.get(name);
        const std::size_t before = CountLiveMemory().blocks;
        for (const XMLCh* const value : {u"a", u"de-CH1", u"+12", u"-1", u"1.5E3", u"2026-11-22", u"true", u"&", u""}) {
            try {
                type.validate(value);
            } catch (const xercesc::XMLException&) {  // the value is none of the type
            }
        }
        EXPECT_EQ(CountLiveMemory().blocks, before) << VString(name);
    }
}

}  // namespace
