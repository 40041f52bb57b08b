// The heap that a parsed document holds, as the allocator counts it.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

namespace {

std::size_t HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace

void RegisterHeapTasks(const Peers& peers)
{
    for (const CorpusFile& file : LargeDocuments()) {
        for (const auto& owned : peers) {
            Peer* peer = owned.get();
            if (!peer->BuildsTree())
                continue;
            benchmark::RegisterBenchmark(("heap/" + file.name + "/" + peer->Name()).c_str(),
                [=, &file](benchmark::State& state) {
                    std::size_t held = 0;
                    for (auto _ : state) {
                        peer->Parse(file.bytes).reset();  // makes the parser allocate the memory that it keeps
                        const std::size_t before = HeapInUse();
                        const auto document = peer->Parse(file.bytes);
                        held = HeapInUse() - before;
                    }
                    state.counters["bytes"] = static_cast<double>(held);
                    state.counters["per_file_byte"] =
                        static_cast<double>(held) / static_cast<double>(file.bytes.size());
                })
                ->Iterations(1);
        }
    }
}
