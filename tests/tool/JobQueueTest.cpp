#include "vanxml/JobQueue.h"

#include <atomic>
#include <barrier>
#include <chrono>
#include <memory>
#include <stdexcept>

#include "tests/common/TestSupport.h"

namespace {

struct Number {
    std::size_t value = 0;
    std::size_t size = 0;

    std::size_t Size() const { return size; }
};

using Queue = JobQueue<Number>;

}  // namespace

TEST(JobQueueTest, ReturnsTheResultsInOrder)
{
    for (const unsigned jobs : {0u, 1u, 2u, 7u}) {
        Queue queue(100, jobs, [] { return [](std::size_t number) { return Number{number * number, 1}; }; });
        for (std::size_t number = 0; number < 100; ++number)
            EXPECT_EQ(queue.WaitFor(number).value, number * number);
    }
}

TEST(JobQueueTest, EachThreadMakesAndRunsItsJob)
{
    for (const unsigned jobs : {3u, 8u}) {
        std::atomic<int> made{0};
        std::barrier allRun(3);
        const auto makeJob = [&]() -> Queue::Job {
            ++made;
            return [&](std::size_t number) {
                allRun.arrive_and_wait();
                return Number{number, 0};
            };
        };
        {
            Queue queue(3, jobs, makeJob);
            for (std::size_t number = 0; number < 3; ++number)
                queue.WaitFor(number);
        }
        EXPECT_EQ(made, 3);
    }
}

TEST(JobQueueTest, OneThreadRunsEachJobWhenItsResultIsNeeded)
{
    std::size_t started = 0;
    Queue queue(3, 1, [&] { return [&](std::size_t number) { return Number{number, ++started}; }; });
    for (std::size_t number = 0; number < 3; ++number)
        EXPECT_EQ(queue.WaitFor(number).size, number + 1);
}

TEST(JobQueueTest, StartsNoJobWhileTooManyResultsWait)
{
    std::atomic<std::size_t> started{0};
    const auto job = [&](std::size_t number) {
        ++started;
        return Number{number, 10};
    };
    Queue queue(
        1000, 2, [&] { return job; }, 50);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    // Five results of ten bytes reach the limit; the other thread may have started one more before.
    EXPECT_LE(started, 6u);
    for (std::size_t number = 0; number < 1000; ++number)
        EXPECT_EQ(queue.WaitFor(number).value, number);
    EXPECT_EQ(started, 1000u);
}

TEST(JobQueueTest, ResultsAboveTheLimitArriveOneAfterTheOther)
{
    Queue queue(
        50, 4, [] { return [](std::size_t number) {
                        return Number{number, 1000};
                    }; }, 1);
    for (std::size_t number = 0; number < 50; ++number)
        EXPECT_EQ(queue.WaitFor(number).value, number);
}

TEST(JobQueueTest, RethrowsTheExceptionOfAJob)
{
    const auto job = [](std::size_t number) {
        if (number == 5)
            throw std::runtime_error("five");
        return Number{number, 0};
    };
    for (const unsigned jobs : {1u, 3u}) {
        Queue queue(10, jobs, [&] { return job; });
        const auto waitForAll = [&] {
            for (std::size_t number = 0; number < 10; ++number)
                queue.WaitFor(number);
        };
        EXPECT_THROW(waitForAll(), std::runtime_error);
    }
}

TEST(JobQueueTest, DestructionDoesNotRunTheOtherJobs)
{
    std::atomic<std::size_t> started{0};
    const auto job = [&](std::size_t number) {
        ++started;
        return Number{number, 10};
    };
    {
        Queue queue(
            1000, 2, [&] { return job; }, 50);
        queue.WaitFor(0);
    }
    EXPECT_LE(started, 8u);
}
