// Tasks: copy and compare whole trees.
#include <benchmark/benchmark.h>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

void RegisterCopyTasks(const Peers& peers)
{
    for (const CorpusFile& file : LargeDocuments()) {
        for (const auto& peer : peers) {
            if (!peer->BuildsTree())
                continue;
            std::shared_ptr<PeerDocument> document = peer->Parse(file.bytes);
            std::shared_ptr<PeerDocument> copy = document->Copy();
            if (!copy)
                continue;
            Require(copy->GetDigest() == document->GetDigest(), peer->Name() + " copies " + file.name);
            benchmark::RegisterBenchmark(("copy/" + file.name + "/" + peer->Name()).c_str(),
                [document](benchmark::State& state) {
                    for (auto _ : state)
                        benchmark::DoNotOptimize(document->Copy());
                })
                ->Unit(benchmark::kMillisecond);
            if (!document->CanCompare())
                continue;
            Require(document->Equals(*copy), peer->Name() + " compares " + file.name);
            benchmark::RegisterBenchmark(("compare/" + file.name + "/" + peer->Name()).c_str(),
                [document, copy](benchmark::State& state) {
                    for (auto _ : state)
                        benchmark::DoNotOptimize(document->Equals(*copy));
                })
                ->Unit(benchmark::kMillisecond);
        }
    }
}
