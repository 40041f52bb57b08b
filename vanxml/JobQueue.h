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

// The threads of a JobQueue, without the type of its results.
//
// Threads: one at a time.
class JobThreads {
public:
    // Starts min(jobs, count) threads, each of which calls `run`. If `jobs` is 0, it is the number of the machine's
    // cores. Starts none if one would be enough, and fewer if the system refuses to create more. Returns the number of
    // threads.
    std::size_t Start(unsigned jobs, std::size_t count, const std::function<void()>& run);
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
// Threads: one thread creates the queue and calls WaitFor. If a single thread would be enough, the queue
// creates none: WaitFor then runs the job itself.
template <typename Result>
class JobQueue {
public:
    using Job = std::function<Result(std::size_t number)>;
    static constexpr std::size_t defaultMostWaiting = std::size_t{64} << 20;

    // Each thread calls `makeJob` once, then the job for one number after the other. So a job may own data that is not
    // thread-safe. `jobs` is the number of threads, 0 for the number of the machine's cores.
    JobQueue(
        std::size_t count, unsigned jobs, std::function<Job()> makeJob, std::size_t mostWaiting = defaultMostWaiting)
        : m_makeJob(std::move(makeJob)),
          m_mostWaiting(mostWaiting),
          m_results(count)
    {
        m_hasThreads = m_threads.Start(jobs, count, [this] { RunJobs(); }) > 0;
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
        if (!m_hasThreads) {
            if (!m_ownJob)
                m_ownJob = m_makeJob();
            return m_ownJob(number);
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_results[number] || m_failure; });
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
        try {
            const Job job = m_makeJob();
            while (const std::optional<std::size_t> number = NextNumber())
                Finish(*number, job(*number));
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_failure = std::current_exception();
            m_changed.notify_all();
        }
    }

    // Returns nothing if no job is left. Numbers are given out in order, so the next result that WaitFor returns is
    // always finished or in progress: waiting here cannot block the queue.
    std::optional<std::size_t> NextNumber()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_waiting < m_mostWaiting || m_next == m_results.size(); });
        if (m_next == m_results.size())
            return std::nullopt;
        return m_next++;
    }

    void Finish(std::size_t number, Result&& result)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_results[number] = std::move(result);
        m_waiting += m_results[number]->Size();
        m_changed.notify_all();
    }

    const std::function<Job()> m_makeJob;
    const std::size_t m_mostWaiting;
    bool m_hasThreads = false;
    Job m_ownJob;  // the job of the thread that calls WaitFor, if there are no other threads

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_next = 0;                        // guarded by m_mutex
    std::size_t m_waiting = 0;                     // bytes of the waiting results; guarded by m_mutex
    std::vector<std::optional<Result>> m_results;  // guarded by m_mutex
    std::exception_ptr m_failure;                  // guarded by m_mutex

    JobThreads m_threads;  // last: the threads use the other members
};
