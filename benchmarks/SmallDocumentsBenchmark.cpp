// Tasks: parse many small documents with one parser.
#include <benchmark/benchmark.h>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

void RegisterSmallDocumentTasks(const Peers& peers)
{
    const std::vector<CorpusFile>& files = SmallDocuments();
    std::size_t bytes = 0;
    for (const CorpusFile& file : files)
        bytes += file.bytes.size();
    const auto reference = MakeXercesSaxPeer();
    for (const auto& owned : peers) {
        Peer* peer = owned.get();
        for (std::size_t i = 0; i < files.size(); i += 40) {
            Require(IsSameTree(peer->Parse(files[i].bytes)->GetDigest(),
                        reference->Parse(files[i].bytes)->GetDigest(),
                        files[i].bytes),
                peer->Name() + " parses " + files[i].path);
        }
        benchmark::RegisterBenchmark(("small-documents/cldr/" + peer->Name()).c_str(),
            [=, &files](benchmark::State& state) {
                for (auto _ : state) {
                    for (const CorpusFile& file : files)
                        benchmark::DoNotOptimize(peer->Parse(file.bytes));
                }
                state.SetBytesProcessed(
                    static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
            })
            ->Unit(benchmark::kMillisecond);
    }
}
