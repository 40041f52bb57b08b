#include "vansys/InitOnce.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "vansys/VRecursiveMutex.h"

TEST(InitOnceTest, RunsOnceForAllThreads)
{
    InitOnce once;
    std::atomic<int> runs{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            once([&runs] { ++runs; });
            EXPECT_EQ(runs, 1);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(runs, 1);
}

TEST(VRecursiveMutexThreadTest, TheHolderCanLockItAgain)
{
    VRecursiveMutex mutex;
    const VRecursiveMutexLocker outer(mutex);
    const VRecursiveMutexLocker inner(mutex);
    bool lockedByAnotherThread = true;
    std::thread([&] { lockedByAnotherThread = mutex.try_lock(); }).join();
    EXPECT_FALSE(lockedByAnotherThread);
}

TEST(InitOnceTest, TheNextCallTriesAgainAfterAFailure)
{
    InitOnce once;
    EXPECT_THROW(once([] { throw std::runtime_error("not yet"); }), std::runtime_error);
    bool ran = false;
    once([&ran] { ran = true; });
    EXPECT_TRUE(ran);
}
