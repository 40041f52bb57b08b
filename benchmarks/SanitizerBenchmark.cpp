// Tasks: sanitize attribute names that begin with a colon, compared with a copy of the bytes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "benchmarks/Corpus.h"
#include "benchmarks/Tasks.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"

namespace {

// Inserts `attribute` into every `every`-th start tag of `text`.
std::string WithAttribute(const std::string& text, const std::string& attribute, std::size_t every)
{
    std::string result;
    std::size_t tags = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool atName =
            text[i] == '<' && i + 1 < text.size() && ((text[i + 1] | 0x20) >= 'a' && (text[i + 1] | 0x20) <= 'z');
        result += text[i];
        if (!atName || ++tags % every)
            continue;
        while (i + 1 < text.size() && std::strchr(" \t\r\n/>", text[i + 1]) == nullptr)
            result += text[++i];
        result += attribute;
    }
    return result;
}

void Register(const std::string& name, const std::shared_ptr<std::string>& text, bool rewritten)
{
    Require((XercesColonSanitizer::Sanitize(text) != text) == rewritten, "the sanitizer on " + name);
    benchmark::RegisterBenchmark(("sanitize/" + name + "/vancorexml").c_str(), [text](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(XercesColonSanitizer::Sanitize(text));
        state.SetBytesProcessed(
            static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text->size()));
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("sanitize/" + name + "/memcpy").c_str(), [text](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(std::make_shared<std::string>(*text));
        state.SetBytesProcessed(
            static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text->size()));
    })->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterSanitizerTasks()
{
    for (const CorpusFile& file : LargeDocuments()) {
        Register(file.name, std::make_shared<std::string>(file.bytes), false);
        Register(file.name + "+few", std::make_shared<std::string>(WithAttribute(file.bytes, " :mark='1'", 100)), true);
        Register(file.name + "+many", std::make_shared<std::string>(WithAttribute(file.bytes, " :mark='1'", 1)), true);
        // Every tag gets a value with colons, which the sanitizer must not change.
        Register(file.name + "+colons",
            std::make_shared<std::string>(WithAttribute(file.bytes, " mark=' :a: b :c'", 1)),
            false);
    }
}
