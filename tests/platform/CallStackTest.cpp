#include "vancoreplatform/CallStack.h"

#include <cstddef>
#include <cstdint>

#include <gtest/gtest.h>

#if defined(__linux__)
#  include <ucontext.h>

#  include <vector>

#  include "tests/common/ThreadStack.h"
#endif

TEST(CallStackTest, TheLowestAddressIsBelowTheFrames)
{
    EXPECT_LT(CallStack::FindLowestAddress(), CallStack::GetAddress());
}

#if defined(__linux__)

TEST(CallStackTest, TheLowestAddressFitsTheStackOfTheThread)
{
    constexpr std::size_t Size = 1 << 20;
    std::uintptr_t lowest = 0;
    std::uintptr_t address = 0;
    testsupport::RunWithStack(Size, [&] {
        lowest = CallStack::FindLowestAddress();
        address = CallStack::GetAddress();
    });
    EXPECT_LT(lowest, address);
    EXPECT_GT(lowest, address - (Size - 120 * 1024));
}

namespace {

ucontext_t coroutine;
ucontext_t caller;
std::uintptr_t lowestOfCoroutine = 1;

void RunCoroutine()
{
    lowestOfCoroutine = CallStack::FindLowestAddress();
}

}  // namespace

TEST(CallStackTest, TheStackOfACoroutineIsUnknown)
{
    std::vector<char> stack(256 * 1024);
    getcontext(&coroutine);
    coroutine.uc_stack.ss_sp = stack.data();
    coroutine.uc_stack.ss_size = stack.size();
    coroutine.uc_link = &caller;
    makecontext(&coroutine, RunCoroutine, 0);
    swapcontext(&caller, &coroutine);
    EXPECT_EQ(lowestOfCoroutine, 0u);
}

#endif
