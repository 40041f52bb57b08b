// Tasks: parse or copy a document with one thread, and with two threads that each have a parser and documents.
#include <benchmark/benchmark.h>

#include <functional>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

namespace {

// Registers a task that repeats `run`, once with one thread and once with two. `prepare` makes what a thread needs.
template <typename Prepare, typename Run>
void Register(const std::string& task, const CorpusFile& file, Prepare prepare, Run run)
{
    benchmark::RegisterBenchmark((task + "/" + file.name + "/vancorexml").c_str(),
        [&file, prepare, run](benchmark::State& state) {
            const auto own = prepare(file);
            for (auto _ : state)
                run(*own, file);
            // The rates of the threads are added up.
            state.SetBytesProcessed(
                static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(file.bytes.size()));
        })
        ->Threads(1)
        ->Threads(2)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterThreadTasks()
{
    for (const CorpusFile& file : LargeDocuments()) {
        Register(
            "threads-parse",
            file,
            [](const CorpusFile&) { return MakeVancoreXmlPeer(); },
            [](Peer& peer, const CorpusFile& read) { benchmark::DoNotOptimize(peer.Parse(read.bytes)); });
        // Includes the destruction of the copy.
        Register(
            "threads-copy",
            file,
            [](const CorpusFile& read) { return MakeVancoreXmlPeer()->Parse(read.bytes); },
            [](PeerDocument& document, const CorpusFile&) { benchmark::DoNotOptimize(document.Copy()); });
    }
}
