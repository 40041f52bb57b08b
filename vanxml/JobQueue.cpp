#include "vanxml/JobQueue.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>
#include <system_error>

#include "vanxml/OptionChecks.h"

void AddJobsOption(CLI::App& command, unsigned& jobs)
{
    command
        .add_option("--jobs",
            jobs,
            "The number of documents to process at the same time; the default is the number of the machine's cores")
        ->check(IsWholeNumber(1, 1024))
        ->type_name("N");
}

void JobThreads::Start(unsigned jobs, std::size_t count, const std::function<void()>& run)
{
    const std::size_t wanted = jobs > 0 ? jobs : std::max(1u, std::thread::hardware_concurrency());
    const std::size_t threads = std::min(wanted, count);
    m_threads.reserve(threads);
    try {
        for (std::size_t i = 1; i < threads; ++i)
            m_threads.emplace_back(run);
    } catch (const std::system_error&) {
        // The system refuses to create more threads. The existing ones do all the work.
    } catch (const std::bad_alloc&) {
        // There is no memory for more threads.
    }
}

void JobThreads::Join()
{
    for (std::thread& thread : m_threads)
        thread.join();
}
