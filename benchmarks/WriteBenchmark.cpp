// Tasks: write a tree as text.
#include <benchmark/benchmark.h>

#include <xercesc/sax/SAXParseException.hpp>

#include <cstdio>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

namespace {

// True if the written text is well-formed and parses to the same tree.
bool ReadsBack(const std::string& text, const Digest& digest, const std::string& original)
{
    try {
        return IsSameTree(MakeXercesSaxPeer()->Parse(text)->GetDigest(), digest, original);
    } catch (const xercesc::SAXParseException&) {
        return false;
    }
}

}  // namespace

void RegisterWriteTasks(const Peers& peers)
{
    for (const CorpusFile& file : LargeDocuments()) {
        for (const auto& peer : peers) {
            std::shared_ptr<PeerDocument> document = peer->Parse(file.bytes);
            const std::string text = document->Write();
            if (text.empty())
                continue;
            if (!ReadsBack(text, document->GetDigest(), file.bytes)) {
                Require(peer->Name() != "vancorexml", "what the library writes reads back: " + file.name);
                std::fprintf(stderr,
                    "not timed: what %s writes of %s does not read back\n",
                    peer->Name().c_str(),
                    file.name.c_str());
                continue;
            }
            benchmark::RegisterBenchmark(("write/" + file.name + "/" + peer->Name()).c_str(),
                [document](benchmark::State& state) {
                    for (auto _ : state)
                        benchmark::DoNotOptimize(document->Write());
                })
                ->Unit(benchmark::kMillisecond);
        }
    }
}
