// Measures the bytes that a parser keeps allocated between parses. The operator new of this program counts them. On
// systems where it replaces the operator new of shared libraries, the count includes the library's allocations.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/SmallBlocks.h"

namespace {

std::size_t liveBytes = 0;
std::size_t liveBlocks = 0;

// A header before each block. Its alignment is the one that the block needs.
struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Head {
    std::size_t size;
};

void* Allocate(std::size_t size)
{
    auto* const head = static_cast<Head*>(std::malloc(sizeof(Head) + size));
    if (!head)
        throw std::bad_alloc();
    head->size = size;
    liveBytes += size;
    ++liveBlocks;
    return head + 1;
}

void Free(void* memory) noexcept
{
    if (!memory)
        return;
    Head* const head = static_cast<Head*>(memory) - 1;
    liveBytes -= head->size;
    --liveBlocks;
    std::free(head);
}

}  // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}
void* operator new[](std::size_t size)
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    Free(memory);
}
void operator delete[](void* memory) noexcept
{
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    Free(memory);
}

namespace {

TEST(KeptMemoryTest, SmallBlocksPoolsBlocksAndFreesThemInItsDestructor)
{
    const std::size_t before = liveBlocks;
    {
        std::vector<void*> used(20000);
        const std::size_t beforeUse = liveBlocks;
        SmallBlocks blocks;
        for (std::size_t i = 0; i < used.size(); ++i)
            used[i] = blocks.Allocate(i % 200);
        for (void* const block : used)
            blocks.Free(block);
        const std::size_t kept = liveBlocks - beforeUse;
        EXPECT_LE(kept, HasAddressSanitizer ? 0 : 600);
        EXPECT_GE(kept, HasAddressSanitizer ? 0 : 100);
    }
    EXPECT_EQ(liveBlocks, before);
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
    const std::size_t before = liveBytes;
    parser.ParseXmlString("<a>" + std::string(8'000'000, 'x') + end, "id");
    // Xerces keeps a buffer of a million code units, which are two million bytes.
    EXPECT_LT(liveBytes, before + 3'000'000);
}

const EndRow EndRows[] = {
    {"EndTag", "</a>"},
    {"NoEndTag", ""},
    {"WrongEndTag", "</b>"},
    {"UndeclaredEntity", "&undeclared;</a>"},
};

INSTANTIATE_TEST_SUITE_P(
    BeforeEnd, KeptTextTest, testing::ValuesIn(EndRows), [](const auto& row) { return row.param.name; });

// If the parser kept the builder, the builder would point to the open elements of a destroyed document.
TEST(KeptMemoryTest, ParserDoesNotKeepTheBuilder)
{
    std::string text;
    for (int i = 0; i < 20'000; ++i)
        text += "<a>";
    DOMParser parser;
    parser.ParseXmlString("<a>", "id");
    const std::size_t before = liveBytes;
    parser.ParseXmlString(std::as_const(text), "id");
    EXPECT_LT(liveBytes, before + 50'000);
}

}  // namespace
