#include "vansys/VReadWriteLock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "tests/common/TestSupport.h"

namespace {

// Locks for writing on another thread. The constructor returns when that thread is about to lock.
class Writer {
public:
    explicit Writer(VReadWriteLock& lock)
        : m_thread([this, &lock] {
              m_isAboutToLock.set_value();
              const VWriteLocker locker(lock);
              m_wrote = true;
          })
    {
        m_isAboutToLock.get_future().wait();
    }
    ~Writer() { m_thread.join(); }

    bool HasWritten() const { return m_wrote; }

private:
    std::promise<void> m_isAboutToLock;
    std::atomic<bool> m_wrote{false};
    std::thread m_thread;
};

// Runs `function` on another thread and waits for its end.
template <typename Function>
void RunOnAnotherThread(Function function)
{
    std::thread(function).join();
}

// Returns the time to lock and unlock one lock while the thread holds `held` others: the shortest of several runs.
[[maybe_unused]] double NanosecondsPerLock(int held)
{
    std::vector<std::unique_ptr<VReadWriteLock>> locks;
    for (int i = 0; i < held; ++i) {
        locks.push_back(std::make_unique<VReadWriteLock>(0));
        locks.back()->LockForRead();
    }
    VReadWriteLock oneMore(0);
    double least = std::numeric_limits<double>::max();
    for (int run = 0; run < 20; ++run) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 100; ++i)
            const VReadLocker locker(oneMore);
        const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
        least = std::min(least, elapsed.count() / 100);
    }
    for (const auto& lock : locks)
        lock->UnlockRead();
    return least;
}

}  // namespace

TEST(VReadWriteLockThreadTest, ReadersShareTheLock)
{
    VReadWriteLock lock(0);
    const VReadLocker here(lock);
    bool readThere = false;
    RunOnAnotherThread([&] {
        const VReadLocker there(lock);
        readThere = true;
    });
    EXPECT_TRUE(readThere);
}

TEST(VReadWriteLockThreadTest, AReaderBlocksAWriter)
{
    VReadWriteLock lock(0);
    auto reader = std::make_unique<VReadLocker>(lock);
    Writer writer(lock);
    EXPECT_FALSE(writer.HasWritten());
    reader.reset();
}

TEST(VReadWriteLockThreadTest, AReaderReentersPastAWaitingWriter)
{
    VReadWriteLock lock(0);
    auto reader = std::make_unique<VReadLocker>(lock);
    Writer writer(lock);
    for (int i = 0; i < 1000; ++i) {
        const VReadLocker again(lock);
        EXPECT_FALSE(writer.HasWritten());
    }
    reader.reset();
}

TEST(VReadWriteLockThreadTest, AWriterReenters)
{
    VReadWriteLock lock(0);
    auto outer = std::make_unique<VWriteLocker>(lock);
    Writer other(lock);
    {
        const VWriteLocker inner(lock);
    }
    EXPECT_FALSE(other.HasWritten());
    outer.reset();
}

TEST(VReadWriteLockThreadTest, AWriterCanRead)
{
    VReadWriteLock lock(0);
    auto outer = std::make_unique<VWriteLocker>(lock);
    Writer other(lock);
    {
        const VReadLocker inner(lock);
        const VWriteLocker innermost(lock);
        const VReadLocker last(lock);
    }
    EXPECT_FALSE(other.HasWritten());
    outer.reset();
}

TEST(VReadWriteLockThreadTest, UnlocksInAnyOrderOfModes)
{
    VReadWriteLock lock(0);
    lock.LockForWrite();
    lock.LockForRead();
    lock.UnlockWrite();
    {
        Writer other(lock);
        EXPECT_FALSE(other.HasWritten());
        lock.UnlockRead();
    }
    RunOnAnotherThread([&lock] { const VWriteLocker there(lock); });
}

TEST(VReadWriteLockThreadTest, WritingUnderAReadRaisesTheAssertion)
{
    VReadWriteLock lock(0);
    const VReadLocker reader(lock);
    try {
        lock.LockForWrite();
        FAIL() << "no assertion";
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetFile(), VString("vansys\\VReadWriteLock"));
        EXPECT_GT(exception.GetLine(), 0);
        EXPECT_EQ(exception.GetExpression(), VString("no write lock under a read lock"));
        EXPECT_EQ(exception.GetErrorInfo().GetCode(), 0x5D1E7A60u);
        EXPECT_EQ(exception.GetErrorInfo().GetKey(), VString("LogicException_LogicAssert_0x5D1E7A60"));
    }
}

TEST(VReadWriteLockThreadTest, TheAssertionKeepsTheReadLock)
{
    VReadWriteLock lock(0);
    {
        const VReadLocker reader(lock);
        EXPECT_THROW(lock.LockForWrite(), LogicException);
        RunOnAnotherThread([&lock] { const VReadLocker there(lock); });
    }
    RunOnAnotherThread([&lock] { const VWriteLocker there(lock); });
}

TEST(VReadWriteLockThreadTest, AnUnlockWithoutALockDoesNothing)
{
    VReadWriteLock lock(0);
    lock.UnlockRead();
    lock.UnlockWrite();
    const VReadLocker reader(lock);
    lock.UnlockWrite();
    RunOnAnotherThread([&lock] { lock.UnlockRead(); });
    EXPECT_THROW(lock.LockForWrite(), LogicException);
}

TEST(VReadWriteLockThreadTest, AThreadHoldsManyLocks)
{
    std::vector<std::unique_ptr<VReadWriteLock>> locks;
    for (int i = 0; i < 40; ++i) {
        locks.push_back(std::make_unique<VReadWriteLock>(0));
        locks.back()->LockForRead();
    }
    for (const auto& lock : locks) {
        lock->LockForRead();
        EXPECT_THROW(lock->LockForWrite(), LogicException);
        lock->UnlockRead();
    }
    for (std::size_t i = 0; i < locks.size(); i += 2)
        locks[i]->UnlockRead();
    for (std::size_t i = 1; i < locks.size(); i += 2)
        locks[i]->UnlockRead();
    RunOnAnotherThread([&locks] {
        for (const auto& lock : locks)
            const VWriteLocker there(*lock);
    });
}

TEST(VReadWriteLockTest, OptionsOtherThanZeroRaiseTheAssertion)
{
    for (const int options : {1, -1}) {
        try {
            const VReadWriteLock lock(options);
            FAIL() << "no assertion";
        } catch (const LogicException& exception) {
            EXPECT_EQ(exception.GetExpression(), VString("options == 0"));
            EXPECT_EQ(exception.GetErrorInfo().GetCode(), 0x6B20F4D1u);
        }
    }
}

// 20,000 held locks would make a linear search hundreds of times slower. Cache misses make locking two to ten times
// slower. The thread sanitizer's deadlock detector allows only 64 locks.
#if !defined(__SANITIZE_THREAD__)
TEST(VReadWriteLockTest, ManyHeldLocksDoNotSlowLockingDown)
{
    EXPECT_LT(NanosecondsPerLock(20000), 40 * NanosecondsPerLock(100));
}
#endif

TEST(VReadWriteLockThreadTest, ANewLockAtTheSameAddressIsFree)
{
    for (int i = 0; i < 3; ++i) {
        VReadWriteLock lock(0);
        const VWriteLocker writer(lock);
    }
}

TEST(VReadWriteLockThreadTest, ReadersSeeNoPartialWrites)
{
    VReadWriteLock lock(0);
    std::array<int, 16> values{};
    std::atomic<int> faults{0};
    const auto work = [&](bool writes) {
        for (int round = 0; round < 500; ++round) {
            if (writes) {
                const VWriteLocker writer(lock);
                for (int& value : values)
                    ++value;
            }
            const VReadLocker reader(lock);
            const VReadLocker again(lock);
            for (const int value : values)
                faults += value != values[0];
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(work, i % 2 == 0);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(values[0], 2000);
}
