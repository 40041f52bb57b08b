// Tasks: record, query and collect errors in a tree.
#include <benchmark/benchmark.h>

#include <vector>

#include "benchmarks/Tasks.h"
#include "vancorexml/main/parser/DOM.h"

namespace {

constexpr int Groups = 1000;
constexpr int PerGroup = 100;

// Makes a tree of 1,000 groups of 100 elements. Appends all groups and elements to `elements` in document order.
std::unique_ptr<DOM> MakeTree(std::vector<const DOMElement*>& elements)
{
    auto document = std::make_unique<DOM>();
    DOMElement& top = document->GetRoot().AddNewChild("top", nullptr);
    for (int g = 0; g < Groups; ++g) {
        DOMElement& group = top.AddNewChild("group", nullptr);
        elements.push_back(&group);
        for (int i = 0; i < PerGroup; ++i)
            elements.push_back(&group.AddNewChild("item", nullptr));
    }
    return document;
}

// Adds two errors to each element of every second group: 100,000 errors in all.
void AddErrors(const std::vector<const DOMElement*>& elements)
{
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (i / (PerGroup + 1) % 2 == 0 && i % (PerGroup + 1) != 0) {
            elements[i]->Error("first", VError::ErrorInfo::NoError, false, false);
            elements[i]->Error("second", VError::ErrorInfo::NoError, false, false);
        }
    }
}

std::size_t CountWithErrors(const std::vector<const DOMElement*>& elements)
{
    std::size_t count = 0;
    for (const DOMElement* element : elements)
        count += element->HasErrors() ? 1U : 0U;
    return count;
}

}  // namespace

void RegisterDiagnosticsTasks()
{
    auto elements = std::make_shared<std::vector<const DOMElement*>>();
    const std::shared_ptr<DOM> document = MakeTree(*elements);
    AddErrors(*elements);
    Require(CountWithErrors(*elements) == Groups / 2 * (PerGroup + 1), "HasErrors on every element");
    Require(document->GetErrors().size() == Groups / 2 * PerGroup * 2, "GetErrors");
    benchmark::RegisterBenchmark("diagnostics/has-errors-everywhere/vancorexml",
        [document, elements](benchmark::State& state) {
            for (auto _ : state)
                benchmark::DoNotOptimize(CountWithErrors(*elements));
        })
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("diagnostics/record-and-ask/vancorexml",
        [document, elements](benchmark::State& state) {
            for (auto _ : state) {
                document->ClearErrors();
                AddErrors(*elements);
                benchmark::DoNotOptimize(CountWithErrors(*elements));
            }
        })
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("diagnostics/collect/vancorexml", [document](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(document->GetErrors());
    })->Unit(benchmark::kMillisecond);
}
