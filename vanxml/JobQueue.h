// Runs jobs on several threads and returns their results in order.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

// Adds the option --jobs, which sets `jobs`.
void AddJobsOption(CLI::App& command, unsigned& jobs);

// The additional threads of a JobQueue, without the type of its results.
//
// Threads: one at a time.
class JobThreads {
public:
    // Starts min(jobs, count) - 1 threads, each of which calls `run`. If `jobs` is 0, it is the number of the machine's
    // cores. Starts fewer threads if the system refuses to create more.
    void Start(unsigned jobs, std::size_t count, const std::function<void()>& run);
    void Join();

private:
    std::vector<std::thread> m_threads;
};

// Runs the jobs 0 to `count` - 1. `Result` is movable and has an operation `std::size_t Size() const`, which returns
// the approximate number of bytes that it owns.
//
// While the finished results that wait for WaitFor own `mostWaiting` bytes or more, no new job starts. So the memory
// is bounded by `mostWaiting` plus the running jobs and one result of each thread.
//
// Ownership: owns the threads and the results. The destructor waits for the running jobs and starts no others.
//
// Threads: one thread creates the queue and calls WaitFor. It is one of the threads that run jobs: while WaitFor has to
// wait, it runs the next job. If it only waited, each result would have to wake it: the check of 5,000 small documents
// with two jobs then needs 4,900 changes between threads and 8 % more CPU time.
template <typename Result>
class JobQueue {
public:
    using Job = std::function<Result(std::size_t number)>;
    static constexpr std::size_t defaultMostWaiting = std::size_t{64} << 20;

    // Each thread calls `makeJob` at most once, then the job for one number after the other. So a job may own data that
    // is not thread-safe. `jobs` is the number of threads, with the one that calls WaitFor. 0 stands for the number of
    // the machine's cores.
    JobQueue(
        std::size_t count, unsigned jobs, std::function<Job()> makeJob, std::size_t mostWaiting = defaultMostWaiting)
        : m_makeJob(std::move(makeJob)),
          m_mostWaiting(mostWaiting),
          m_results(count)
    {
        m_threads.Start(jobs, count, [this] { RunJobs(); });
    }

    ~JobQueue()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_next = m_results.size();
            m_changed.notify_all();
        }
        m_threads.Join();
    }

    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    // Waits for the result of a job and returns it. Call it once for each job, from 0 up. Rethrows the exception that
    // ended a job, or the creation of one.
    Result WaitFor(std::size_t number)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        // Numbers are given out in order. So if no job may start, this one has been started.
        while (!m_results[number] && !m_failure) {
            if (!MayStart())
                m_changed.wait(lock);
            else
                RunNext(lock, m_ownJob);
        }
        if (!m_results[number])
            std::rethrow_exception(m_failure);
        Result result = std::move(*m_results[number]);
        m_results[number].reset();
        m_waiting -= result.Size();
        m_changed.notify_all();
        return result;
    }

private:
    void RunJobs()
    {
        Job job;
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return MayStart() || m_next == m_results.size(); });
            if (m_next == m_results.size())
                return;
            RunNext(lock, job);
        }
    }

    bool MayStart() const { return m_next < m_results.size() && m_waiting < m_mostWaiting; }

    // Runs the job for the next number without the lock. Makes the job first if it is empty.
    void RunNext(std::unique_lock<std::mutex>& lock, Job& job)
    {
        const std::size_t number = m_next++;
        lock.unlock();
        std::optional<Result> result;
        std::exception_ptr failure;
        try {
            if (!job)
                job = m_makeJob();
            result = job(number);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        if (failure) {
            m_failure = failure;
            m_next = m_results.size();
        } else {
            m_waiting += result->Size();
            m_results[number] = std::move(result);
        }
        m_changed.notify_all();
    }

    const std::function<Job()> m_makeJob;
    const std::size_t m_mostWaiting;
    Job m_ownJob;  // of the thread that calls WaitFor

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_next = 0;                        // guarded by m_mutex
    std::size_t m_waiting = 0;                     // bytes of the waiting results; guarded by m_mutex
    std::vector<std::optional<Result>> m_results;  // guarded by m_mutex
    std::exception_ptr m_failure;                  // guarded by m_mutex

    JobThreads m_threads;  // last: the threads use the other members
};
