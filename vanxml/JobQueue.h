// Runs jobs on several threads and returns their results in order.
#pragma once

#include <algorithm>
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
// is bounded by `mostWaiting` plus the running jobs and the results of one group for each thread.
//
// If there are many jobs with small results, a thread takes a group of up to 16 and hands over their results together:
// with single jobs, checking 5,000 small files on two threads needed 6,000 changes between threads. After the first
// result of more than 64 KB, each group is a single job.
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
    static constexpr std::size_t mostJobsOfGroup = 16;
    static constexpr std::size_t leastGroups = 512;  // so that no thread waits long for the last group of another
    static constexpr std::size_t mostBytesInGroup = std::size_t{64} << 10;

    // Jobs that a thread runs one after the other.
    struct Group {
        std::size_t next = 0;  // the job that runs, or is the next one
        std::size_t end = 0;
        std::vector<Result> results;  // of the jobs in front of `next`
    };

    void RunJobs()
    {
        Group group;
        try {
            const Job job = m_makeJob();
            while (NextGroup(group)) {
                for (; group.next < group.end; ++group.next)
                    group.results.push_back(job(group.next));
                const std::lock_guard<std::mutex> lock(m_mutex);
                Finish(group);
            }
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            Finish(group);
            m_failure = std::current_exception();
        }
    }

    // Returns false if no job is left. Numbers are given out in order, so the next result that WaitFor returns is
    // always finished or in progress: waiting here cannot block the queue.
    bool NextGroup(Group& group)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_waiting < m_mostWaiting || m_next == m_results.size(); });
        group.next = m_next;
        const std::size_t wanted = m_hasLargeResults ? 1 : m_results.size() / leastGroups;
        m_next += std::min(std::clamp<std::size_t>(wanted, 1, mostJobsOfGroup), m_results.size() - m_next);
        group.end = m_next;
        return group.next < group.end;
    }

    // Hands over the results. The caller holds m_mutex.
    void Finish(Group& group)
    {
        for (std::size_t i = 0; i < group.results.size(); ++i) {
            const std::size_t size = group.results[i].Size();
            m_waiting += size;
            m_hasLargeResults |= size > mostBytesInGroup;
            m_results[group.next - group.results.size() + i] = std::move(group.results[i]);
        }
        group.results.clear();
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
    bool m_hasLargeResults = false;                // guarded by m_mutex
    std::vector<std::optional<Result>> m_results;  // guarded by m_mutex
    std::exception_ptr m_failure;                  // guarded by m_mutex

    JobThreads m_threads;  // last: the threads use the other members
};
