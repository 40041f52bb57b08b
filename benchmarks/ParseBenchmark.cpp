// Tasks: parse from memory, parse and destroy, parse from a file.
#include <benchmark/benchmark.h>

#include <chrono>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

// Times `parse` without the destruction of the tree.
template <typename Parse>
void TimeParse(benchmark::State& state, std::size_t bytes, const Parse& parse)
{
    for (auto _ : state) {
        const auto start = Clock::now();
        std::unique_ptr<PeerDocument> document = parse();
        state.SetIterationTime(Seconds(Clock::now() - start));
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

template <typename Parse>
void TimeParseAndDestroy(benchmark::State& state, std::size_t bytes, const Parse& parse)
{
    for (auto _ : state) {
        const auto start = Clock::now();
        parse().reset();
        state.SetIterationTime(Seconds(Clock::now() - start));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

}  // namespace

void RegisterParseTasks(const Peers& peers)
{
    for (const CorpusFile& file : LargeDocuments()) {
        const Digest reference = MakeXercesSaxPeer()->Parse(file.bytes)->GetDigest();
        for (const auto& owned : peers) {
            Peer* peer = owned.get();
            Require(IsSameTree(peer->Parse(file.bytes)->GetDigest(), reference, file.bytes),
                peer->Name() + " parses " + file.name);
            Require(IsSameTree(peer->ParseFile(file.path)->GetDigest(), reference, file.bytes),
                peer->Name() + " parses the file " + file.name);
            const auto fromBytes = [peer, &file] { return peer->Parse(file.bytes); };
            const auto fromFile = [peer, &file] { return peer->ParseFile(file.path); };
            const std::string end = "/" + file.name + "/" + peer->Name();
            benchmark::RegisterBenchmark(("parse" + end).c_str(),
                [=, &file](benchmark::State& state) { TimeParse(state, file.bytes.size(), fromBytes); })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark(("parse-destroy" + end).c_str(),
                [=, &file](benchmark::State& state) { TimeParseAndDestroy(state, file.bytes.size(), fromBytes); })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark(("parse-file" + end).c_str(),
                [=, &file](benchmark::State& state) { TimeParse(state, file.bytes.size(), fromFile); })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
}
