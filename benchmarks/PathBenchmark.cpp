// Tasks: find elements by path.
#include <benchmark/benchmark.h>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"

namespace {

struct Paths {
    const char* document;
    std::vector<std::string> paths;
};

// The paths for each document: a name at any depth, a path of names, a path with a wildcard.
const std::vector<Paths> Table = {
    {"ssg-debian11-ds.xml",
        {"//xccdf-1.2:Rule",
            "/ds:data-stream-collection/ds:component/xccdf-1.2:Benchmark",
            "/ds:data-stream-collection/*/xccdf-1.2:Benchmark"}},
    {"freedesktop.org.xml", {"//glob", "/mime-info/mime-type/glob", "/mime-info/*/glob"}},
    {"vk.xml", {"//name", "/registry/types/type", "/registry/*/type"}},
};

}  // namespace

void RegisterPathTasks(const Peers& peers)
{
    static const char* const kinds[] = {"path-any", "path-named", "path-star"};
    for (std::size_t i = 0; i < Table.size(); ++i) {
        const CorpusFile& file = LargeDocuments()[i];
        for (std::size_t k = 0; k < 3; ++k) {
            const std::string path = Table[i].paths[k];
            std::size_t reference = std::string::npos;
            for (const auto& peer : peers) {
                if (!peer->BuildsTree())
                    continue;
                std::shared_ptr<PeerDocument> document = peer->Parse(file.bytes);
                const std::size_t count = document->CountPath(path);
                if (count == std::string::npos)
                    continue;
                if (reference == std::string::npos)
                    reference = count;
                Require(count == reference && count > 0,
                    peer->Name() + " finds " + path + ": " + std::to_string(count) + ", the reference " +
                        std::to_string(reference));
                benchmark::RegisterBenchmark((std::string(kinds[k]) + "/" + file.name + "/" + peer->Name()).c_str(),
                    [document, path](benchmark::State& state) {
                        for (auto _ : state)
                            benchmark::DoNotOptimize(document->CountPath(path));
                    })
                    ->Unit(benchmark::kMicrosecond);
            }
        }
    }
}
