// Tasks: parse into the lightweight tree and destroy it, beside the tree of a document.
#include <benchmark/benchmark.h>

#include <utility>
#include <vector>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"

namespace {

// Returns whether both trees have the same names, attributes and texts.
bool IsSame(const StandaloneDOMElement& lightweight, const DOMElement& element)
{
    std::vector<std::pair<const StandaloneDOMElement*, const DOMElement*>> open{{&lightweight, &element}};
    while (!open.empty()) {
        const auto [a, b] = open.back();
        open.pop_back();
        const auto children = a->GetChildren();
        if (a->GetName() != b->GetName() || a->GetAttributes() != b->GetAttributes() ||
            a->GetAllText() != b->GetText() || children.size() != b->GetChildren().size())
            return false;
        for (std::size_t i = 0; i < children.size(); ++i)
            open.emplace_back(&children[i].get(), b->GetChildren()[i]);
    }
    return true;
}

}  // namespace

void RegisterLightweightTasks()
{
    for (const CorpusFile& file : LargeDocuments()) {
        {
            const auto lightweight = StandaloneDOMParser().ParseXmlString(file.bytes, VString("memory"));
            const auto document = DOMParser().ParseXmlString(file.bytes, VString("memory"));
            Require(IsSame(*lightweight.first, document->GetRoot()), "the lightweight tree of " + file.name);
        }
        benchmark::RegisterBenchmark(("lightweight/" + file.name + "/vancorexml").c_str(),
            [&file](benchmark::State& state) {
                const StandaloneDOMParser parser;
                for (auto _ : state)
                    benchmark::DoNotOptimize(parser.ParseXmlString(file.bytes, VString("memory")));
            })
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("lightweight/" + file.name + "/document-tree").c_str(),
            [&file](benchmark::State& state) {
                DOMParser parser;
                for (auto _ : state)
                    benchmark::DoNotOptimize(parser.ParseXmlString(file.bytes, VString("memory")));
            })
            ->Unit(benchmark::kMillisecond);
    }
}
