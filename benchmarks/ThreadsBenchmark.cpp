// Tasks: parse a document with one thread, and with two threads that each have a parser.
#include <benchmark/benchmark.h>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

void RegisterThreadTasks()
{
    for (const CorpusFile& file : LargeDocuments()) {
        benchmark::RegisterBenchmark(("threads/" + file.name + "/vancorexml").c_str(),
            [&file](benchmark::State& state) {
                const auto peer = MakeVancoreXmlPeer();
                for (auto _ : state)
                    benchmark::DoNotOptimize(peer->Parse(file.bytes));
                // The rates of the threads are added up.
                state.SetBytesProcessed(
                    static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(file.bytes.size()));
            })
            ->Threads(1)
            ->Threads(2)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    }
}
