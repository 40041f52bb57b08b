// Tasks: parse documents of 1 MB to 200 MB, to compare the cost per element.
#include <benchmark/benchmark.h>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

void RegisterScalingTasks()
{
    for (const std::size_t megabytes : {1U, 10U, 50U, 200U}) {
        benchmark::RegisterBenchmark(("scaling/" + std::to_string(megabytes) + "MB/vancorexml").c_str(),
            [megabytes](benchmark::State& state) {
                const std::string text = MakeDocument(megabytes * 1000000);
                const auto peer = MakeVancoreXmlPeer();
                const std::size_t elements = peer->Parse(text)->GetDigest().elements;
                Require(elements > megabytes * 1000000 / 60, "the generated document");
                for (auto _ : state)
                    benchmark::DoNotOptimize(peer->Parse(text));
                // The time per element for parsing and destruction.
                state.counters["per_element"] = benchmark::Counter(static_cast<double>(elements),
                    benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
            })
            ->Unit(benchmark::kMillisecond);
    }
}
