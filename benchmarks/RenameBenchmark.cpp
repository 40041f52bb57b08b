// Tasks: look up renames on one thread and on eight.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "benchmarks/Tasks.h"
#include "vancorexml/main/parser/DOM.h"

namespace {

constexpr int Fields = 1000000;

struct Renames {
    DOM document;
    std::vector<FieldName> fields;
};

// Renames every second of 100 data sources, and 1,000 fields. The field renames use the new names of the data
// sources.
std::shared_ptr<Renames> MakeRenames()
{
    auto renames = std::make_shared<Renames>();
    for (int i = 0; i < 100; i += 2) {
        renames->document.AddDataSourceRename(
            VString("source ") + VString::number(i), VString("renamed ") + VString::number(i));
    }
    for (int i = 0; i < 1000; ++i) {
        renames->document.AddFieldRename(
            FieldName(VString("renamed ") + VString::number(i % 50 * 2), VString("field ") + VString::number(i)),
            FieldName("target", VString::number(i)));
    }
    renames->fields.reserve(Fields);
    for (int i = 0; i < Fields; ++i) {
        renames->fields.emplace_back(
            VString("source ") + VString::number(i % 100), VString("field ") + VString::number(i % 5000));
    }
    return renames;
}

std::size_t CountRenamed(const Renames& renames)
{
    std::size_t renamed = 0;
    for (const FieldName& field : renames.fields)
        renamed += renames.document.RenameField(field) != field ? 1U : 0U;
    return renamed;
}

}  // namespace

void RegisterRenameTasks()
{
    const std::shared_ptr<Renames> renames = MakeRenames();
    Require(CountRenamed(*renames) == Fields / 2, "RenameField over a million fields");
    benchmark::RegisterBenchmark("renames/one-thread/vancorexml", [renames](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(CountRenamed(*renames));
        state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * Fields);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("renames/eight-threads/vancorexml",
        [renames](benchmark::State& state) {
            for (auto _ : state)
                benchmark::DoNotOptimize(CountRenamed(*renames));
            state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * Fields);
        })
        ->Threads(8)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}
