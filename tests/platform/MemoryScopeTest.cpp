#include "vansys/MemoryScope.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "vansys/LogicException.h"

namespace {

// Closes the scope on another thread. Returns the assertion that this raises, or null.
std::unique_ptr<VantoraException> CloseScopeOnAnotherThread(MemoryScope& scope)
{
    std::unique_ptr<VantoraException> raised;
    std::thread([&] {
        try {
            scope.Close();
        } catch (const LogicException& exception) {
            raised.reset(exception.Clone());
        }
    }).join();
    return raised;
}

}  // namespace

TEST(MemoryScopeTest, NoScopeIsOpenByDefault)
{
    EXPECT_EQ(MemoryScope::Current(), nullptr);
}

TEST(MemoryScopeTest, TheInnermostScopeIsCurrent)
{
    const MemoryScope outer("outer");
    EXPECT_STREQ(MemoryScope::Current(), "outer");
    {
        const MemoryScope inner("inner");
        EXPECT_STREQ(MemoryScope::Current(), "inner");
    }
    EXPECT_STREQ(MemoryScope::Current(), "outer");
}

TEST(MemoryScopeTest, CanBeClosedBeforeItsDestruction)
{
    MemoryScope scope("scope");
    scope.Close();
    EXPECT_EQ(MemoryScope::Current(), nullptr);
    scope.Close();
    EXPECT_EQ(MemoryScope::Current(), nullptr);
}

TEST(MemoryScopeTest, ScopesCloseInAnyOrder)
{
    MemoryScope outer("outer");
    MemoryScope inner("inner");
    outer.Close();
    EXPECT_STREQ(MemoryScope::Current(), "inner");
    inner.Close();
    EXPECT_EQ(MemoryScope::Current(), nullptr);
}

TEST(MemoryScopeTest, EachThreadHasItsOwnScopes)
{
    const MemoryScope scope("here");
    const char* there = "unset";
    std::thread([&there] { there = MemoryScope::Current(); }).join();
    EXPECT_EQ(there, nullptr);
}

TEST(MemoryScopeTest, ClosingOnAnotherThreadRaisesTheAssertion)
{
    MemoryScope scope("here");
    const std::unique_ptr<VantoraException> raised = CloseScopeOnAnotherThread(scope);
    const auto* exception = dynamic_cast<const LogicException*>(raised.get());
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->GetFile(), VString("vansys\\MemoryScope"));
    EXPECT_EQ(exception->GetExpression(), VString("MemoryScope can only be used on single thread"));
    EXPECT_EQ(exception->GetErrorInfo().GetCode(), 0x3C6E9D12u);
    EXPECT_EQ(exception->GetErrorInfo().GetKey(), VString("LogicException_LogicAssert_0x3C6E9D12"));
    EXPECT_GT(exception->GetLine(), 0);
}

TEST(MemoryScopeTest, AScopeThatAnotherThreadFailedToCloseStaysOpen)
{
    MemoryScope scope("here");
    EXPECT_NE(CloseScopeOnAnotherThread(scope), nullptr);
    EXPECT_STREQ(MemoryScope::Current(), "here");
    scope.Close();
    EXPECT_EQ(MemoryScope::Current(), nullptr);
}

TEST(MemoryScopeTest, DestructionOnAnotherThreadClosesTheScopeWithoutAnAssertion)
{
    auto scope = std::make_unique<MemoryScope>("here");
    std::thread([&scope] { scope.reset(); }).join();
    EXPECT_EQ(MemoryScope::Current(), nullptr);
}
